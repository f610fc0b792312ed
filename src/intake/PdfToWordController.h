#pragma once

// The conversion side of the main dialog: the PDF intake, the page range dialog, the target's
// save dialog and the run behind the progress dialog, on the run's record.

#include "dialogs/ConversionController.h"

struct AppContext;
class PdfAccessLibrary;

class PdfToWordController final : public ConversionController
{
public:
    PdfToWordController(AppContext& context, PdfAccessLibrary& pdfAccess);

    bool PrepareSource(Form& owner) override;
    IntakeOutcome RunIntake(Form& owner, const QString& startDirectory) override;
    std::optional<QString> ChoosePageRange(Form& owner) override;
    bool AskOutputFile(Form& owner) override;
    void RunConversion(Form& owner) override;

private:
    AppContext& m_context;
    PdfAccessLibrary& m_pdfAccess;
};
