#pragma once

// The PDF intake: names the source PDF, counts its pages through the PDF access library, asks
// for a password for as long as the library refuses the one it got, records the password for
// the engine, has the first page rendered and places the picture in the main dialog. Every
// failure on this road closes the main dialog, and with it the program.

#include <QString>

struct AppContext;
class PdfAccessLibrary;
class WelcomeForm;

// The open dialog; false when the user backed out and no PDF is named.
bool PickSourcePdf(AppContext& context, WelcomeForm& welcome);

// The intake's steps after the summary's refresh on the first activation.
void RunPdfIntake(AppContext& context, PdfAccessLibrary& pdfAccess, WelcomeForm& welcome,
                  const QString& startDirectory);

// Loads "<preview stem>_1.bmp" into the preview area, centred on the frame and cut to its
// height; without a picture the area says "N/A".
void PlacePreviewPicture(WelcomeForm& welcome, const QString& previewPath);
