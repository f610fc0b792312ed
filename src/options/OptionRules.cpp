#include "options/OptionRules.h"

namespace {

constexpr qint16 LegalPleading = 3;
constexpr qint16 TabsAndSpaces = 1;
constexpr qint16 FlowingText = 3;
constexpr qint16 TextBoxes = 2;
constexpr qint16 Bitmap = 1;

}  // namespace

qint16 KnownDocumentType(qint16 documentType)
{
    return documentType >= 1 && documentType <= 3 ? documentType : qint16{2};
}

qint16 KnownConversionMethod(qint16 conversionMethod)
{
    return conversionMethod >= 1 && conversionMethod <= 3 ? conversionMethod : TextBoxes;
}

void ChooseDocumentType(OptionValues& values, qint16 documentType)
{
    values.DocumentType = documentType;
    if (documentType == LegalPleading) {
        values.DetectHeader = 1;
        values.ConversionMethod = TabsAndSpaces;
    }
}

bool MethodIsOpen(const OptionValues& values)
{
    return values.DocumentType != LegalPleading;
}

qint16 ShownConversionMethod(const OptionValues& values)
{
    return MethodIsOpen(values) ? KnownConversionMethod(values.ConversionMethod) : TabsAndSpaces;
}

AdvancedControls AdvancedControlsFor(const OptionValues& values, bool hostedByWord)
{
    AdvancedControls controls;
    controls.textFeatures = values.ConversionMethod != FlowingText;
    controls.header = controls.textFeatures && values.ConversionMethod != TextBoxes;
    controls.headerLocked = values.DocumentType == LegalPleading;
    controls.richTextFormat = !hostedByWord;
    return controls;
}

bool QualityApplies(qint16 imageFormat)
{
    return imageFormat != Bitmap;
}
