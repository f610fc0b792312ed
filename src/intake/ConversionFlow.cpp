#include "intake/ConversionFlow.h"

#include "conversion/OutputNaming.h"
#include "conversion/OutputTarget.h"
#include "conversion/WaitForm.h"
#include "core/AppContext.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/WelcomeForm.h"
#include "intake/ConvertFlowFactory.h"
#include "intake/PageRangeChoice.h"
#include "intake/PdfIntake.h"
#include "platform/PdfAccessLibrary.h"
#include "run/RunState.h"

ConversionFlow::ConversionFlow(AppContext& context, PdfAccessLibrary& pdfAccess)
    : m_context(context), m_pdfAccess(pdfAccess)
{
}

bool ConversionFlow::PrepareSource(WelcomeForm& welcome)
{
    if (m_context.state.SourcePath.isEmpty() && !PickSourcePdf(m_context, welcome))
        return false;
    DeriveOutputPath(m_context.state);
    return true;
}

void ConversionFlow::RunIntake(WelcomeForm& welcome, const QString& startDirectory)
{
    RunPdfIntake(m_context, m_pdfAccess, welcome, startDirectory);
}

void ConversionFlow::PageRangeChosen(WelcomeForm& welcome)
{
    ComboPageRangeChosen(m_context.state, welcome);
}

bool ConversionFlow::AskOutputFile(WelcomeForm& welcome)
{
    return ::AskOutputFile(m_context, &welcome);
}

void ConversionFlow::RunConversion(WelcomeForm& welcome)
{
    DialogRuntime& runtime = welcome.Runtime();
    QPointer<WaitForm> waitForm;
    runtime.Instance(waitForm, m_context);
    waitForm->Begin(welcome);
    if (waitForm && runtime.IsLoaded(waitForm))
        runtime.Unload(*waitForm);
}

std::unique_ptr<ConvertFlow> CreateConvertFlow(AppContext& context, PdfAccessLibrary& pdfAccess)
{
    return std::make_unique<ConversionFlow>(context, pdfAccess);
}
