#pragma once

// The program's temporary files: unique names in the user's temporary folder, all with the
// prefix "~SV", which is the only link between making them and sweeping them at the end.

#include <QString>
#include <QtGlobal>

inline const QString TempFilePrefix = QStringLiteral("~SV");

// With `unique` 0: creates a new empty file "~SV<hex>.tmp" in the temporary folder, readable
// by its owner only, and gives its full path. With another number: the name made from its low
// 16 bits, without creating anything. Empty when the folder can't be used.
QString MakeTempFile(quint32 unique);

// Deletes every file directly in the temporary folder whose name begins with the prefix and
// that belongs to this user, in name order. The first file that can't be deleted ends the
// sweep silently; the rest wait for a later run.
void SweepTempFiles();
