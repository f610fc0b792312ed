#include "dialogs/OptionNames.h"

#include "core/LocalText.h"
#include "options/OptionRules.h"

QString DocumentTypeName(qint16 documentType)
{
    switch (KnownDocumentType(documentType)) {
    case 1:
        return LocalText(1707, QStringLiteral("Single-Column PDF"));
    case 3:
        return LocalText(1710, QStringLiteral("Legal Pleading PDF"));
    default:
        return LocalText(1704, QStringLiteral("Multi-Column PDF"));
    }
}

QString ConversionMethodName(qint16 conversionMethod)
{
    switch (KnownConversionMethod(conversionMethod)) {
    case 1:
        return LocalText(1807, QStringLiteral("Exact Placement using Tabs && spaces"));
    case 3:
        return LocalText(1810, QStringLiteral("Flow the text and graphics"));
    default:
        return LocalText(1804, QStringLiteral("Exact Placement using Text Boxes"));
    }
}
