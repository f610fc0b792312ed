#include "services/DialogLanguage.h"

#include "platform/UserLanguage.h"

#include <QAbstractButton>
#include <QFont>
#include <QGroupBox>
#include <QLabel>
#include <QWidget>

namespace {

const QString JapaneseFontFamily = QStringLiteral("MS UI-Gothic");
constexpr qreal JapaneseFontPoints = 9.0;

// The texts of one target joined in order; empty when any of its rows is missing, so that the
// control keeps its English text rather than half a caption.
std::optional<QString> joinedRows(qint32 offset, const QList<qint32>& ids)
{
    QString joined;
    for (const qint32 id : ids) {
        const std::optional<QString> text = LoadResString(offset + id);
        if (!text)
            return std::nullopt;
        joined += *text;
    }
    return joined;
}

}  // namespace

void ApplyDialogFont(QWidget& dialog, qint32 language)
{
    if (language != LanguageJapanese)
        return;
    const QList<QWidget*> controls = dialog.findChildren<QWidget*>();
    for (QWidget* control : controls) {
        QFont font = control->font();
        font.setFamily(JapaneseFontFamily);
        font.setPointSizeF(JapaneseFontPoints);
        control->setFont(font);
    }
}

bool ApplyDialogLanguage(QWidget& dialog, const QList<DialogText>& texts)
{
    const qint32 language = GetUserDefaultLangID();
    const qint32 offset = LanguageOffset(language);
    if (offset < 0)
        return false;
    ApplyDialogFont(dialog, language);
    for (const DialogText& text : texts) {
        const std::optional<QString> joined = joinedRows(offset, text.ids);
        if (joined && text.apply)
            text.apply(*joined);
    }
    return true;
}

QString DisplayedCaption(const QString& caption)
{
    QString shown;
    shown.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption.at(i) != u'&') {
            shown += caption.at(i);
            continue;
        }
        // "&&" shows one ampersand; a single one only marks the next letter.
        if (i + 1 < caption.size() && caption.at(i + 1) == u'&') {
            shown += u'&';
            ++i;
        }
    }
    return shown;
}

void SetControlText(QWidget& control, const QString& text)
{
    if (auto* frame = qobject_cast<QGroupBox*>(&control)) {
        frame->setTitle(text);
    } else if (auto* button = qobject_cast<QAbstractButton*>(&control)) {
        button->setText(text);
    } else if (auto* label = qobject_cast<QLabel*>(&control)) {
        // A label with a buddy reads access keys itself; any other shows its text verbatim.
        label->setText(label->buddy() ? text : DisplayedCaption(text));
    } else if (control.isWindow()) {
        control.setWindowTitle(text);
    }
}

std::function<void(const QString&)> CaptionOf(QWidget* control)
{
    return [control](const QString& value) { SetControlText(*control, value); };
}
