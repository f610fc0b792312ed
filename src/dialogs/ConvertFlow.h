#pragma once

// What the main dialog's convert face asks of the conversion side: picking and opening the
// PDF, the page range, settling the target and running the engine. The main dialog knows no
// more of the conversion than this.

#include <QString>

class WelcomeForm;

class ConvertFlow
{
public:
    virtual ~ConvertFlow() = default;

    // Start of the summary's refresh in the convert face: picks the PDF when none is named and
    // derives the output path. False when the user backed out of picking one.
    virtual bool PrepareSource(WelcomeForm& welcome) = 0;
    // The PDF intake, run on the first activation in the convert face. `startDirectory` is the
    // working directory the activation found, which the intake restores once the PDF is open.
    virtual void RunIntake(WelcomeForm& welcome, const QString& startDirectory) = 0;
    // The page range list changed its selection.
    virtual void PageRangeChosen(WelcomeForm& welcome) = 0;
    // Settles the target with the user; false ends the Convert command with the dialog open.
    virtual bool AskOutputFile(WelcomeForm& welcome) = 0;
    // Runs the engine behind the progress dialog and finishes the result.
    virtual void RunConversion(WelcomeForm& welcome) = 0;
};
