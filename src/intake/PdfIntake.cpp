#include "intake/PdfIntake.h"

#include "conversion/ThumbnailForm.h"
#include "core/AppContext.h"
#include "core/LocalText.h"
#include "core/TempFiles.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/FileDialogs.h"
#include "dialogs/Placement.h"
#include "intake/PasswordForm.h"
#include "options/SettingsStore.h"
#include "platform/PdfAccessLibrary.h"
#include "run/RunState.h"
#include "services/MessageBoxes.h"

#include <QDir>
#include <QPointer>

namespace {

constexpr qint16 CommaCode = 44;

bool PasswordRefused(qint32 pageCount)
{
    return pageCount == PageCountResults::PasswordNeeded ||
           pageCount == PageCountResults::PasswordRefused;
}

IntakeOutcome Fail(Form& owner, qint32 id, const QString& fallback)
{
    ShowMessage(&owner, LocalText(id, fallback), MessageIcon::Critical);
    return {};
}

// The page count, or empty when the library can't be had; that ends the run with a message.
std::optional<qint32> CountPages(AppContext& context, PdfAccessLibrary& pdfAccess, Form& owner)
{
    RunState& state = context.state;
    const std::optional<qint32> count = pdfAccess.GetPageCount(state.SourcePath, state.Passwords);
    if (!count) {
        ShowMessage(&owner,
                    LocalText(PlatformTexts::PdfLibraryMissing,
                              QStringLiteral("The PDF access library liblomerdoc.so could not be "
                                             "loaded from %1."))
                        .arg(QDir::toNativeSeparators(context.applicationDir)),
                    MessageIcon::Critical);
    }
    return count;
}

}  // namespace

bool PickSourcePdf(AppContext& context, Form& owner)
{
    const QString chosen =
        AskOpenFileName(&owner, LocalText(5601, QStringLiteral("PDF Files (*.pdf)|*.pdf")),
                        RecentPdfFolder(context.settings));
    if (chosen.isEmpty())
        return false;
    context.state.SourcePath = chosen;
    RememberPdfFolder(context.settings, chosen);
    return true;
}

IntakeOutcome RunPdfIntake(AppContext& context, PdfAccessLibrary& pdfAccess, Form& owner,
                           const QString& startDirectory)
{
    RunState& state = context.state;
    DialogRuntime& runtime = owner.Runtime();
    if (state.SourcePath.isEmpty())
        return {};
    // The library is bound by its relative name: the open dialog may have moved the directory.
    QDir::setCurrent(context.applicationDir);
    state.Passwords.clear();
    std::optional<qint32> count = CountPages(context, pdfAccess, owner);
    if (!count)
        return {};
    state.PageCount = *count;

    while (PasswordRefused(state.PageCount)) {
        state.Passwords = PasswordForm::Ask(runtime, owner).value_or(QString());
        if (state.Passwords.isEmpty())
            return {};
        count = CountPages(context, pdfAccess, owner);
        if (!count)
            return {};
        state.PageCount = *count;
        if (PasswordRefused(state.PageCount)) {
            ShowMessage(&owner, LocalText(5608, QStringLiteral("Invalid password!")),
                        MessageIcon::Critical);
            continue;
        }
        // Stored at once: the preview's own save would otherwise read the old password back.
        state.PasswordSeparator = CommaCode;
        state.PasswordLen = static_cast<qint16>(state.Passwords.size() + 1);
        SaveOptions(state, context.settings, true);
    }

    if (state.PageCount == PageCountResults::NoPage)
        return Fail(owner, 5609, QStringLiteral("The PDF file contains no page!"));
    if (state.PageCount < 0)
        return Fail(owner, 5610, QStringLiteral("Unable to open the PDF file!"));
    QDir::setCurrent(startDirectory);

    state.PreviewPath = MakeTempFile(0);

    QPointer<ThumbnailForm> thumbnail;
    runtime.Instance(thumbnail, context);
    CenterDialogOver(*thumbnail, owner);
    runtime.ShowModal(*thumbnail, &owner);
    if (thumbnail && runtime.IsLoaded(thumbnail))
        runtime.Unload(*thumbnail);

    return {true,
            state.PreviewPath.isEmpty() ? QString() : state.PreviewPath + QStringLiteral("_1.bmp")};
}
