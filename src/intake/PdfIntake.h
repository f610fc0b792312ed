#pragma once

// The PDF intake: names the source PDF, counts its pages through the PDF access library, asks
// for a password for as long as the library refuses the one it got, records the password for
// the engine and has the first page rendered. Every failure on this road ends the run, told to
// the user where there is something to tell.

#include "dialogs/ConversionController.h"

#include <QString>

struct AppContext;
class Form;
class PdfAccessLibrary;

// The open dialog; false when the user backed out and no PDF is named.
bool PickSourcePdf(AppContext& context, Form& owner);

// The intake's steps after the summary's refresh on the first activation.
IntakeOutcome RunPdfIntake(AppContext& context, PdfAccessLibrary& pdfAccess, Form& owner,
                           const QString& startDirectory);
