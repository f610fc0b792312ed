#pragma once

// The engine's command lines. The options never travel here: the engine reads them from the
// settings store, where the caller has just saved them.

#include <QString>
#include <QStringList>

#include <optional>

struct RunState;

// The engine program in the application directory, without quotes.
QString EngineProgram(const QString& applicationDir);

// "<source>" "<target>" -C
QString ConversionArguments(const RunState& state);

// "<source>" "<preview stem>.rtf" -C -P -H
QString PreviewArguments(const RunState& state);

// The arguments the engine must receive for `parameters`, when splitting that text wouldn't give
// them back: a name with a quote in it can't be written in the text. Empty otherwise, so the
// text is what the engine is started with.
std::optional<QStringList> ExactEngineArguments(const QString& parameters,
                                                const QStringList& intended);

QStringList ConversionArgumentList(const RunState& state);
QStringList PreviewArgumentList(const RunState& state);
