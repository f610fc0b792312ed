#include "intake/ConversionFlow.h"

#include "conversion/OutputNaming.h"
#include "dialogs/AppContext.h"
#include "intake/ConvertFlowFactory.h"
#include "run/RunState.h"

ConversionFlow::ConversionFlow(AppContext& context) : m_context(context) {}

bool ConversionFlow::PrepareSource(WelcomeForm&)
{
    if (m_context.state.SourcePath.isEmpty())
        return false;
    DeriveOutputPath(m_context.state);
    return true;
}

void ConversionFlow::RunIntake(WelcomeForm&, const QString&) {}

void ConversionFlow::PageRangeChosen(WelcomeForm&) {}

bool ConversionFlow::AskOutputFile(WelcomeForm&)
{
    return false;
}

void ConversionFlow::RunConversion(WelcomeForm&) {}

std::unique_ptr<ConvertFlow> CreateConvertFlow(AppContext& context)
{
    return std::make_unique<ConversionFlow>(context);
}
