#pragma once

// The options document: the one text through which the options reach the conversion engine
// and outlast a run. It is written by concatenation, byte for byte in a fixed form, and read
// by searching for a quoted key; it is never parsed as XML.

#include "options/OptionValues.h"

#include <QString>

#include <optional>

// Where the document is kept: the per-user settings store of this organisation and
// application, under this value name.
namespace StoreNames {
inline const QString Organisation = QStringLiteral("Velmora Technologies");
inline const QString Application = QStringLiteral("Velmora Sandpiper Converter");
inline const QString OptionsDocument = QStringLiteral("VOREK - RTF");
}  // namespace StoreNames

// The document for `values`. The engine always extracts everything and never opens its result,
// whatever the values say.
QString BuildOptionsDocument(const OptionValues& values);

// The values of a first start, when no document has been stored yet.
OptionValues FirstStartValues();

// Every element of `document` read on its own: a missing or unreadable one keeps the value of a
// first start. This is how the engine takes the document.
OptionValues ReadOptionValues(const QString& document);

// The value of `key` (case ignored), `defaultValue` when the key is missing, "0" when the value
// is empty, and nothing when the read fails (positions past 32,767, no `value` word or no
// closing quote).
std::optional<QString> ReadOptionValue(const QString& document, const QString& key,
                                       const QString& defaultValue);

// Fills `values` from `document` in the reading order, key by key, and sets the fields that are
// never read; stops silently at the first value that fails to read or to convert to a 16-bit
// number, and the fields behind it keep what they held. This is how the dialogs take it.
void ParseOptions(const QString& document, OptionValues& values);

// A text as a 16-bit signed number, the way the stored document's values and store switches
// kept as text are converted: a whole decimal number with an optional sign, blanks (space, tab)
// around it allowed; nothing when the text is anything else or lies outside -32768..32767.
std::optional<qint16> ToInt16(const QString& text);
