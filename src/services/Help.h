#pragma once

// Help topics of the dialogs, shown by a separate viewer process the program does not wait for.

#include <QString>

class HelpViewer;
class QWidget;

namespace HelpTopics {
inline const QString Main = QStringLiteral("::/options.htm#convertPDF");
inline const QString DocumentType = QStringLiteral("::/options.htm#convertPDFType");
inline const QString ConversionMethod = QStringLiteral("::/options.htm#convertPDFConversion");
inline const QString Advanced = QStringLiteral("::/options.htm#convertPDFAdvanced");
}  // namespace HelpTopics

// The help file's location, set once at start: the application directory, the help folder,
// and its start topic, as in "/opt/app/Sandpiper::/Vorek/use.htm".
QString ApplicationHelpFile(const QString& applicationDir);

// Opens `topic` ("::/page.htm#anchor") of the help in the application directory: the page
// applicationDir/Sandpiper/page.htm at the anchor. Nothing waits for the viewer. A missing
// page or a viewer that fails to start is told to the user in a message box.
void ShowHelpTopic(HelpViewer& viewer, const QString& applicationDir, const QString& topic,
                   QWidget* owner);

// The process-wide help file property, set once at the start.
void SetApplicationHelpFile(const QString& helpFile);
QString ApplicationHelpFileProperty();

// Opens the start page that the help file property names (the help behind F1).
void ShowApplicationHelp(HelpViewer& viewer, QWidget* owner);
