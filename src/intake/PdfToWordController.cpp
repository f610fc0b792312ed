#include "intake/PdfToWordController.h"

#include "conversion/OutputNaming.h"
#include "conversion/OutputTarget.h"
#include "conversion/WaitForm.h"
#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "intake/PageRangeForm.h"
#include "intake/PdfIntake.h"
#include "run/RunState.h"

#include <QPointer>

PdfToWordController::PdfToWordController(AppContext& context, PdfAccessLibrary& pdfAccess)
    : m_context(context), m_pdfAccess(pdfAccess)
{
}

bool PdfToWordController::PrepareSource(Form& owner)
{
    if (m_context.state.SourcePath.isEmpty() && !PickSourcePdf(m_context, owner))
        return false;
    DeriveOutputPath(m_context.state);
    return true;
}

IntakeOutcome PdfToWordController::RunIntake(Form& owner, const QString& startDirectory)
{
    return RunPdfIntake(m_context, m_pdfAccess, owner, startDirectory);
}

std::optional<QString> PdfToWordController::ChoosePageRange(Form& owner)
{
    RunState& state = m_context.state;
    const std::optional<PageRangeForm::Choice> choice =
        PageRangeForm::Ask(owner.Runtime(), owner, {state.PageFrom, state.PageTo}, state.PageCount);
    if (!choice)
        return std::nullopt;
    state.PageFrom = choice->pages.from;
    state.PageTo = choice->pages.to;
    return choice->fromText + QStringLiteral(" - ") + choice->toText;
}

bool PdfToWordController::AskOutputFile(Form& owner)
{
    return ::AskOutputFile(m_context, &owner);
}

void PdfToWordController::RunConversion(Form& owner)
{
    DialogRuntime& runtime = owner.Runtime();
    QPointer<WaitForm> waitForm;
    runtime.Instance(waitForm, m_context);
    waitForm->Begin(owner);
    if (waitForm && runtime.IsLoaded(waitForm))
        runtime.Unload(*waitForm);
}
