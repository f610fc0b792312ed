#pragma once

// The convert face's road from a named PDF to a finished document: intake, page range, target
// and the engine run.

#include "dialogs/ConvertFlow.h"

struct AppContext;

class ConversionFlow final : public ConvertFlow
{
public:
    explicit ConversionFlow(AppContext& context);

    bool PrepareSource(WelcomeForm& welcome) override;
    void RunIntake(WelcomeForm& welcome, const QString& startDirectory) override;
    void PageRangeChosen(WelcomeForm& welcome) override;
    bool AskOutputFile(WelcomeForm& welcome) override;
    void RunConversion(WelcomeForm& welcome) override;

private:
    AppContext& m_context;
};
