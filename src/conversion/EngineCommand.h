#pragma once

// The engine's command lines. The options never travel here: the engine reads them from the
// settings store, where the caller has just saved them.

#include <QString>

struct RunState;

// The engine program in the application directory, without quotes.
QString EngineProgram(const QString& applicationDir);

// "<source>" "<target>" -C
QString ConversionArguments(const RunState& state);

// "<source>" "<preview stem>.rtf" -C -P -H
QString PreviewArguments(const RunState& state);
