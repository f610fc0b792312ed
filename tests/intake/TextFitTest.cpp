// Every caption of every dialog shows whole, in the language of the run, with the fonts the
// program maps the dialogs' fonts to: labels within their width (or their height where they
// wrap), buttons, check boxes and option buttons with their indicators, frames' titles.

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

// What does not fit, as "name: needs N, has M".
QStringList Overflowing(QWidget& dialog)
{
    QStringList found;
    for (QWidget* control : dialog.findChildren<QWidget*>()) {
        if (!control->isVisibleTo(&dialog) || control->objectName().isEmpty())
            continue;
        int needed = 0;
        int has = control->width();
        if (auto* label = qobject_cast<QLabel*>(control)) {
            if (label->text().isEmpty() || !label->pixmap().isNull())
                continue;
            if (label->wordWrap()) {
                needed = label->heightForWidth(label->width());
                has = label->height();
            } else {
                needed = label->sizeHint().width();
            }
        } else if (qobject_cast<QCheckBox*>(control) || qobject_cast<QRadioButton*>(control)) {
            if (static_cast<QAbstractButton*>(control)->text().isEmpty())
                continue;
            needed = control->sizeHint().width();
        } else if (auto* button = qobject_cast<QPushButton*>(control)) {
            // A push button's text needs room for the bevel on either side, not its sizeHint's
            // generous minimum.
            needed = button->fontMetrics().horizontalAdvance(DisplayedCaption(button->text())) + 8;
        } else if (auto* frame = qobject_cast<QGroupBox*>(control)) {
            needed = frame->fontMetrics().horizontalAdvance(frame->title()) + 16;
        } else {
            continue;
        }
        if (needed > has)
            found.append(
                QStringLiteral("%1 \"%2\": needs %3, has %4")
                    .arg(control->objectName(), control->property("text").toString().left(40))
                    .arg(needed)
                    .arg(has));
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
        ProcessPendingEvents();
        EXPECT_EQ(Overflowing(form), QStringList()) << form.objectName().toStdString();
        runtime.Hide(form);
    }
};

TEST_F(TextFitTest, EveryCaptionOfEveryDialogShowsWhole)
{
    env.state.DocumentFormat = 1;
    env.state.ConversionMethod = 1;
    env.state.PreserveTextPosition = 1;
    env.state.DocumentType = 3;
    env.state.ImageFormat = 0;
    for (const qint32 mode : {RunModes::Convert, RunModes::OptionsOnly}) {
        env.state.RunMode = mode;
        env.state.SourcePath = QStringLiteral("/data/report.pdf");
        ExpectAllFits(forms.Welcome());
        runtime.Unload(forms.Welcome());
        ProcessPendingEvents();
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
    QPointer<ThumbnailForm> thumbnail;
    runtime.Instance(thumbnail, env.context);
    thumbnail->show();
    EXPECT_EQ(Overflowing(*thumbnail), QStringList());
}

}  // namespace
