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
// that belongs to this user, in name order, and every such folder with all it holds (links are
// removed, never followed), unless a running copy of the program still works in it. The first
// file that can't be deleted ends the sweep silently; the rest wait for a later run.
void SweepTempFiles();

// A private folder "~SV<random>.dir" in the temporary folder for one job's files, marked as in
// use for as long as this object lives, and removed with all it holds when it goes. A run that
// is killed leaves it behind for the next run's sweep.
class TempFolder final
{
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    bool IsValid() const { return !m_path.isEmpty(); }
    QString Path() const { return m_path; }

private:
    QString m_path;
    int m_lock = -1;
};
