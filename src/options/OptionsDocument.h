#pragma once

// The options document: the one text through which the options reach the conversion engine
// and outlast a run. It is written by concatenation, byte for byte in a fixed form, and read
// by searching for a quoted key; it is never parsed as XML.

#include <QString>

#include <optional>

struct RunState;

// The document for the fields of `state`.
QString BuildOptionsDocument(const RunState& state);

// The value of `key` (case ignored), `defaultValue` when the key is missing, "0" when the value
// is empty, and nothing when the read fails (positions past 32,767, no `value` word or no
// closing quote).
std::optional<QString> ReadOptionValue(const QString& document, const QString& key,
                                       const QString& defaultValue);

// Fills the option fields from state.OptionsDocument, key by key; stops silently at the first
// value that fails to read or to convert to a 16-bit number.
void ParseOptions(RunState& state);

// A text as a 16-bit signed number, the way the stored document's values and store switches
// kept as text are converted: a whole decimal number with an optional sign, blanks (space, tab)
// around it allowed; nothing when the text is anything else or lies outside -32768..32767.
std::optional<qint16> ToInt16(const QString& text);
