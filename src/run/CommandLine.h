#pragma once

// The program's own reading of its command line: a tokeniser with its particular quoting
// rules, the three switches, and the extension test that output naming shares.

#include <QString>
#include <QStringList>
#include <QtGlobal>

struct RunState;

// Appends the tokens of the raw command text to `tokens`. A quote counts only at the start of
// a token, a closing quote ends it, and only the blank (32) separates.
void SplitCommandLine(const QString& commandText, QStringList& tokens);

// Fills RunMode, HostedByWord, WordWindowHint, SourcePath and OutputPath from the raw text.
void ParseCommandLine(const QString& commandText, RunState& state);
// The same from the text's tokens.
void ParseCommandTokens(QStringList tokens, RunState& state);

// -1 when `path` ends in `extension` (case ignored); with "." whether the last path component
// holds a dot at all. 0 otherwise.
qint16 HasExtension(const QString& path, const QString& extension);

// POSIX hands the program an argument vector: join it into the raw text again so that each
// argument is one token, quoting those that are empty or hold a blank.
QString RebuildCommandText(const QStringList& arguments);

// The tokens the program reads from its argument vector: those of the rebuilt text, so the
// tokeniser's limits hold as they always did. A Linux file name may hold a quote, which the
// text has no escape for; arguments holding one are taken as they are.
QStringList CommandTokens(const QStringList& arguments);
