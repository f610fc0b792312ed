#pragma once

// What the main dialog asks of the conversion side in its convert face: picking and opening the
// PDF, the page range, settling the target and running the engine. Each step returns what the
// dialog shows; the dialog alone touches its own controls.

#include <QString>

#include <optional>

class Form;

// How the intake ended: passed, with the preview picture to show (empty when there is none),
// or not, and then the run is over.
struct IntakeOutcome final
{
    bool passed = false;
    QString previewPicture;
};

class ConversionController
{
public:
    virtual ~ConversionController() = default;

    // Start of the summary's refresh: picks the PDF when none is named and derives the output
    // path. False when the user backed out of picking one.
    virtual bool PrepareSource(Form& owner) = 0;
    // The PDF intake, run on the first activation. `startDirectory` is the working directory the
    // activation found, which the intake restores once the PDF is open. A failure has been told
    // to the user when this returns.
    virtual IntakeOutcome RunIntake(Form& owner, const QString& startDirectory) = 0;
    // The page range dialog: the range's text for the list ("2 - 5"), or nothing when the user
    // backed out.
    virtual std::optional<QString> ChoosePageRange(Form& owner) = 0;
    // Settles the target with the user; false ends the Convert command with the dialog open.
    virtual bool AskOutputFile(Form& owner) = 0;
    // Runs the engine behind the progress dialog and finishes the result.
    virtual void RunConversion(Form& owner) = 0;
};
