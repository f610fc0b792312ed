#pragma once

// The rules that tie the options together, which the option pages obey whatever their widgets:
// known values, what a legal pleading forces, and which of the advanced options apply.

#include "options/OptionValues.h"

#include <QtGlobal>

// A document type the program knows (1 single column, 2 multi-column, 3 legal pleading);
// anything else counts as multi-column.
qint16 KnownDocumentType(qint16 documentType);

// A conversion method the program knows (1 tabs and spaces, 2 text boxes, 3 flow); anything
// else counts as text boxes.
qint16 KnownConversionMethod(qint16 conversionMethod);

// The document type page's choice. A legal pleading keeps its header lines, and its numbered
// lines survive only the tabs-and-spaces method, so both are forced with it.
void ChooseDocumentType(OptionValues& values, qint16 documentType);

// Whether the document type leaves the conversion method to the user: a legal pleading doesn't.
bool MethodIsOpen(const OptionValues& values);

// The conversion method the page shows: the pleading's own, or the known one.
qint16 ShownConversionMethod(const OptionValues& values);

// Which of the advanced page's controls apply.
struct AdvancedControls final
{
    // Joining paragraphs, font names, shrinking fonts, headers: flowing text has none of them.
    bool textFeatures = true;
    // Text boxes carry no header lines of their own.
    bool header = true;
    // A pleading's header lines are part of its layout: the box can't be cleared.
    bool headerLocked = false;
    // The word processor we work for takes its own format only.
    bool richTextFormat = true;
};

AdvancedControls AdvancedControlsFor(const OptionValues& values, bool hostedByWord);

// Whether a picture format has a quality to choose: a bitmap has none.
bool QualityApplies(qint16 imageFormat);
