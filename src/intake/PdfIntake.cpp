#include "intake/PdfIntake.h"

#include "conversion/ThumbnailForm.h"
#include "core/AppContext.h"
#include "core/LocalText.h"
#include "core/TempFiles.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/FileDialogs.h"
#include "dialogs/Placement.h"
#include "dialogs/WelcomeForm.h"
#include "intake/PasswordForm.h"
#include "options/SettingsStore.h"
#include "platform/PdfAccessLibrary.h"
#include "run/RunState.h"
#include "services/MessageBoxes.h"

#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPixmap>
#include <QPointer>

namespace {

constexpr qint16 CommaCode = 44;

bool PasswordRefused(qint32 pageCount)
{
    return pageCount == PageCountResults::PasswordNeeded ||
           pageCount == PageCountResults::PasswordRefused;
}

void EndRun(WelcomeForm& welcome)
{
    welcome.Runtime().Unload(welcome);
}

void Fail(WelcomeForm& welcome, qint32 id, const QString& fallback)
{
    ShowMessage(&welcome, LocalText(id, fallback), MessageIcon::Critical);
    EndRun(welcome);
}

// The page count, or empty when the library can't be had; that ends the run with a message.
std::optional<qint32> CountPages(AppContext& context, PdfAccessLibrary& pdfAccess,
                                 WelcomeForm& welcome)
{
    RunState& state = context.state;
    const std::optional<qint32> count = pdfAccess.GetPageCount(state.SourcePath, state.Passwords);
    if (!count) {
        ShowMessage(&welcome,
                    LocalText(PlatformTexts::PdfLibraryMissing,
                              QStringLiteral("The PDF access library liblomerdoc.so could not be "
                                             "loaded from %1."))
                        .arg(QDir::toNativeSeparators(context.applicationDir)),
                    MessageIcon::Critical);
        EndRun(welcome);
    }
    return count;
}

}  // namespace

bool PickSourcePdf(AppContext& context, WelcomeForm& welcome)
{
    const QString chosen =
        AskOpenFileName(&welcome, LocalText(5601, QStringLiteral("PDF Files (*.pdf)|*.pdf")),
                        RecentPdfFolder(context.settings));
    if (chosen.isEmpty())
        return false;
    context.state.SourcePath = chosen;
    RememberPdfFolder(context.settings, chosen);
    return true;
}

void RunPdfIntake(AppContext& context, PdfAccessLibrary& pdfAccess, WelcomeForm& welcome,
                  const QString& startDirectory)
{
    RunState& state = context.state;
    DialogRuntime& runtime = welcome.Runtime();
    if (state.SourcePath.isEmpty()) {
        EndRun(welcome);
        return;
    }
    // The library is bound by its relative name: the open dialog may have moved the directory.
    QDir::setCurrent(context.applicationDir);
    state.Passwords.clear();
    std::optional<qint32> count = CountPages(context, pdfAccess, welcome);
    if (!count)
        return;
    state.PageCount = *count;

    while (PasswordRefused(state.PageCount)) {
        QPointer<PasswordForm> passwordForm;
        runtime.Instance(passwordForm, state);
        runtime.ShowModal(*passwordForm, &welcome);
        if (passwordForm && runtime.IsLoaded(passwordForm))
            runtime.Unload(*passwordForm);
        if (state.Passwords.isEmpty()) {
            EndRun(welcome);
            return;
        }
        count = CountPages(context, pdfAccess, welcome);
        if (!count)
            return;
        state.PageCount = *count;
        if (PasswordRefused(state.PageCount)) {
            ShowMessage(&welcome, LocalText(5608, QStringLiteral("Invalid password!")),
                        MessageIcon::Critical);
            continue;
        }
        // Stored at once: the preview's own save would otherwise read the old password back.
        state.PasswordSeparator = CommaCode;
        state.PasswordLen = static_cast<qint16>(state.Passwords.size() + 1);
        SaveOptions(state, context.settings, true);
    }

    if (state.PageCount == PageCountResults::NoPage) {
        Fail(welcome, 5609, QStringLiteral("The PDF file contains no page!"));
        return;
    }
    if (state.PageCount < 0) {
        Fail(welcome, 5610, QStringLiteral("Unable to open the PDF file!"));
        return;
    }
    QDir::setCurrent(startDirectory);

    state.PreviewPath = MakeTempFile(0);
    welcome.SetActivated(true);

    QPointer<ThumbnailForm> thumbnail;
    runtime.Instance(thumbnail, context);
    CenterDialogOver(*thumbnail, welcome);
    runtime.ShowModal(*thumbnail, &welcome);
    if (thumbnail && runtime.IsLoaded(thumbnail))
        runtime.Unload(*thumbnail);

    PlacePreviewPicture(welcome, state.PreviewPath);
}

void PlacePreviewPicture(WelcomeForm& welcome, const QString& previewPath)
{
    QLabel& thumb = welcome.PictureThumb();
    const QPixmap picture(previewPath + QStringLiteral("_1.bmp"));
    if (previewPath.isEmpty() || picture.isNull()) {
        // The label beneath it says "N/A".
        thumb.setVisible(false);
        return;
    }
    const QGroupBox& frame = welcome.FramePreview();
    const float frameLeft = welcome.ScaleXToTwips(static_cast<float>(frame.x()));
    const float frameTop = welcome.ScaleYToTwips(static_cast<float>(frame.y()));
    const float frameWidth = welcome.ScaleXToTwips(static_cast<float>(frame.width()));
    const float frameHeight = welcome.ScaleYToTwips(static_cast<float>(frame.height()));
    const float width = welcome.ScaleXToTwips(static_cast<float>(picture.width()));
    float height = welcome.ScaleYToTwips(static_cast<float>(picture.height()));

    // The sums use the frame's place in the dialog although the picture sits in its container.
    const float left = (frameWidth - width) / 2 + frameLeft;
    const float top = (frameHeight - height) / 2 + frameTop;
    const float margin = welcome.ScaleYToTwips(10);
    if (frameHeight - margin < height)
        height = frameHeight - margin;

    thumb.setPixmap(picture);
    thumb.setAlignment(Qt::AlignLeft | Qt::AlignTop);
    welcome.PlaceTwips(thumb, left, top, width, height);
    thumb.setVisible(true);
}
