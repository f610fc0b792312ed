// Every caption of every dialog shows whole, in the language of the run and with the fonts the
// program maps the dialogs' fonts to.

#include "conversion/ThumbnailForm.h"
#include "conversion/WaitForm.h"
#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/PageTestSupport.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PageRangeForm.h"
#include "intake/PasswordForm.h"
#include "services/DialogFonts.h"
#include "services/DialogLanguage.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace {

// The room a control's caption needs and the room it has, or nothing for a control without one.
std::optional<std::pair<int, int>> Room(QWidget& control)
{
    const int width = control.width();
    if (auto* label = qobject_cast<QLabel*>(&control)) {
        if (label->text().isEmpty() || !label->pixmap().isNull())
            return std::nullopt;
        if (label->wordWrap())
            return std::pair(label->heightForWidth(width), label->height());
        return std::pair(label->sizeHint().width(), width);
    }
    if (qobject_cast<QCheckBox*>(&control) || qobject_cast<QRadioButton*>(&control))
        return std::pair(control.sizeHint().width(), width);
    // A push button's text needs room for the bevel on either side, not its sizeHint's generous
    // minimum.
    if (auto* button = qobject_cast<QPushButton*>(&control))
        return std::pair(
            button->fontMetrics().horizontalAdvance(DisplayedCaption(button->text())) + 8, width);
    if (auto* frame = qobject_cast<QGroupBox*>(&control))
        return std::pair(frame->fontMetrics().horizontalAdvance(frame->title()) + 16, width);
    return std::nullopt;
}

// What does not fit on the dialog, as "name "text": needs N, has M".
QStringList Overflowing(QWidget& dialog)
{
    QStringList found;
    for (QWidget* control : dialog.findChildren<QWidget*>()) {
        const auto room = Room(*control);
        if (room && room->first > room->second && control->isVisibleTo(&dialog) &&
            !control->objectName().isEmpty())
            found.append(QStringLiteral("%1 \"%2\": needs %3, has %4")
                             .arg(control->objectName(), control->property("text").toString())
                             .arg(room->first)
                             .arg(room->second));
    }
    return found;
}

class TextFitTest : public PageTest
{
protected:
    static void SetUpTestSuite() { InstallDialogFonts(); }

    void ExpectAllFits(Form& form)
    {
        runtime.Show(form);
        EXPECT_EQ(Overflowing(form), QStringList()) << form.objectName().toStdString();
        runtime.Hide(form);
    }
};

TEST_F(TextFitTest, EveryCaptionOfEveryDialogShowsWhole)
{
    env.state.DocumentFormat = 1;
    env.state.ConversionMethod = 1;
    env.state.DocumentType = 3;
    for (const qint32 mode : {RunModes::Convert, RunModes::OptionsOnly}) {
        env.state.RunMode = mode;
        ExpectAllFits(forms.Welcome());
        runtime.Unload(forms.Welcome());
    }
    ExpectAllFits(forms.DocumentType());
    ExpectAllFits(forms.ConversionMethod());
    ExpectAllFits(forms.OtherOptions());

    QPointer<PasswordForm> password;
    std::optional<QString> typed;
    ExpectAllFits(runtime.Instance(password, typed));
    QPointer<PageRangeForm> pageRange;
    std::optional<PageRangeForm::Choice> range;
    ExpectAllFits(runtime.Instance(pageRange, PageRange{0, 1233}, 1234, range));
    QPointer<WaitForm> wait;
    ExpectAllFits(runtime.Instance(wait, env.context));
    // Shown, the preview dialog would run the engine at once.
    QPointer<ThumbnailForm> thumbnail;
    runtime.Instance(thumbnail, env.context).show();
    EXPECT_EQ(Overflowing(*thumbnail), QStringList());
}

}  // namespace
