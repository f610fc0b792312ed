#pragma once

// The name and format of the target file: the target's extension always follows the chosen
// output format, and a given target wins over the source's name.

#include <QString>
#include <QtGlobal>

struct RunState;

// Makes OutputPath from OutputPath (or SourcePath while there is no target) with the extension
// of DocumentFormat. Calling it twice changes nothing.
void DeriveOutputPath(RunState& state);

// `path` with its extension (the last dot of its last component and what follows) replaced by
// the one of `documentFormat`: the name the run really writes when it is given `path`.
QString WithFormatExtension(const QString& path, qint16 documentFormat);
