#include "conversion/ConversionRun.h"

#include "conversion/EngineCommand.h"
#include "conversion/OutputNaming.h"
#include "conversion/WordFinishing.h"
#include "core/AppContext.h"
#include "core/Events.h"
#include "core/LocalText.h"
#include "platform/DocumentOpener.h"
#include "platform/FileClock.h"
#include "run/RunState.h"
#include "services/MessageBoxes.h"
#include "services/ShellLaunching.h"

#include <QDateTime>
#include <QFileInfo>

void RunConversion(AppContext& context, QWidget* owner, const std::function<void()>& finalizing)
{
    RunState& state = context.state;
    if (state.RunMode != RunModes::Convert)
        return;
    DeriveOutputPath(state);
    const QDateTime start = context.clock.Now(QFileInfo(state.OutputPath).absolutePath());
    const qint32 code =
        LaunchAndWait(context.launcher, nullptr, OpenVerb, EngineProgram(context.applicationDir),
                      ConversionArguments(state), ShowNormal);
    if (code == 0) {
        ShowMessage(owner, LocalText(6901, QStringLiteral("Error loading PDF to Word converter!")),
                    MessageIcon::Critical);
        return;
    }
    // The only evidence of a result is a file written after the engine started.
    const QDateTime written = context.clock.WrittenAt(state.OutputPath);
    if (!written.isValid() || written <= start)
        return;
    bool toldRichText = false;
    if (state.DocumentFormat == 1) {
        if (finalizing)
            finalizing();
        PumpEvents();
        // A file the suite could not finish holds Rich Text Format; the user is told so rather
        // than handed it as a Word document. A word processor that asked for the file reads
        // either.
        if (FinishWithWord(context) == 0 && state.HostedByWord == 0) {
            ShowMessage(owner, KeepAsRichText(state), MessageIcon::Exclamation);
            toldRichText = true;
        }
    }
    PumpEvents();
    if (state.HostedByWord != 0)
        return;
    if (state.LaunchWord == 1)
        OpenDocument(context.opener, nullptr, state.OutputPath, qint16{-1});
    else if (!toldRichText)
        ShowMessage(owner, LocalText(6903, QStringLiteral("Conversion finished")),
                    MessageIcon::Information);
}
