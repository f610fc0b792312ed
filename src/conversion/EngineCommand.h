#pragma once

// The engine's command lines. The options never travel here: the engine reads them from the
// settings store, where the caller has just saved them. The arguments reach the engine as a
// list, exactly as they are, whatever the names hold.

#include <QString>
#include <QStringList>

struct RunState;

// The engine program in the application directory.
QString EngineProgram(const QString& applicationDir);

// <source> <target> -C
QStringList ConversionArguments(const RunState& state);

// <source> <preview stem>.rtf -C -P -H
QStringList PreviewArguments(const RunState& state);
