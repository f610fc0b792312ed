#pragma once

// The convert face's road from a named PDF to a finished document: intake, page range, target
// and the engine run.

#include "dialogs/ConvertFlow.h"

#include <QPointer>

struct AppContext;
class PdfAccessLibrary;
class WaitForm;

class ConversionFlow final : public ConvertFlow
{
public:
    ConversionFlow(AppContext& context, PdfAccessLibrary& pdfAccess);

    bool PrepareSource(WelcomeForm& welcome) override;
    void RunIntake(WelcomeForm& welcome, const QString& startDirectory) override;
    void PageRangeChosen(WelcomeForm& welcome) override;
    bool AskOutputFile(WelcomeForm& welcome) override;
    void RunConversion(WelcomeForm& welcome) override;

private:
    AppContext& m_context;
    PdfAccessLibrary& m_pdfAccess;
};
