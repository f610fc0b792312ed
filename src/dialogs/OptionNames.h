#pragma once

// The names of the document type and the conversion method as the summaries show them, in the
// user's language. A value that has no name is named as 2.

#include <QString>
#include <QtGlobal>

QString DocumentTypeName(qint16 documentType);
QString ConversionMethodName(qint16 conversionMethod);
