#include "CommandLine.h"

#include "RunState.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr QChar Blank = u' ';
constexpr QChar Quote = u'"';
constexpr qsizetype MaxPosition = std::numeric_limits<qint16>::max();

QString withoutLeadingBlanks(const QString& text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i) == Blank)
        ++i;
    return text.mid(i);
}

bool isPathSeparator(QChar c)
{
    // Paths here may come from either world: a backslash as the program always knew it, or
    // the slash of the platform it now runs on.
    return c == u'\\' || c == u'/';
}

}  // namespace

void SplitCommandLine(const QString& commandText, QStringList& tokens)
{
    QString rest = withoutLeadingBlanks(commandText);
    while (!rest.isEmpty()) {
        QString token;
        if (rest.at(0) == Quote) {
            const qsizetype close = rest.indexOf(Quote, 1);
            if (close >= 0) {
                // The closing quote's one-based position is a 16-bit number: a token whose
                // closing quote lies further out ends the split, as an overflow would.
                if (close + 1 > MaxPosition)
                    return;
                token = rest.mid(1, close - 1);
                rest = withoutLeadingBlanks(rest.mid(close + 1));
            } else {
                token = rest.mid(1);
                rest.clear();
            }
        } else {
            const qsizetype blank = rest.indexOf(Blank);
            if (blank >= 0) {
                token = rest.left(blank);
                rest = withoutLeadingBlanks(rest.mid(blank + 1));
            } else {
                token = rest;
                rest.clear();
            }
        }
        tokens.append(token);
    }
}

void ParseCommandLine(const QString& commandText, RunState& state)
{
    QStringList tokens;
    SplitCommandLine(commandText, tokens);
    ParseCommandTokens(std::move(tokens), state);
}

void ParseCommandTokens(QStringList tokens, RunState& state)
{
    state.RunMode = RunModes::NoWork;
    state.HostedByWord = 0;
    state.WordWindowHint.clear();

    if (!tokens.isEmpty() && tokens.first().contains(QStringLiteral("marvash.exe")))
        tokens.removeFirst();
    if (tokens.isEmpty())
        return;

    const QString& command = tokens.at(0);
    if (command == QStringLiteral("/o")) {
        state.RunMode = RunModes::OptionsOnly;
    } else if (command == QStringLiteral("/c")) {
        state.RunMode = RunModes::Convert;
        if (tokens.size() < 2)
            return;
        if (HasExtension(tokens.at(1), QStringLiteral(".pdf")))
            state.SourcePath = tokens.at(1);
        if (tokens.size() < 3)
            return;
        state.OutputPath = tokens.at(2);
    } else if (command == QStringLiteral("/m")) {
        state.RunMode = RunModes::Convert;
        state.HostedByWord = -1;
        if (tokens.size() >= 2)
            state.SourcePath = tokens.at(1);
        if (tokens.size() >= 3)
            state.OutputPath = tokens.at(2);
        if (tokens.size() >= 4)
            state.WordWindowHint = tokens.at(3);
    }
}

qint16 HasExtension(const QString& path, const QString& extension)
{
    if (path.isEmpty())
        return 0;
    const QString lowerPath = path.toLower();
    const QString lowerExtension = extension.toLower();
    const qsizetype hit = lowerPath.lastIndexOf(lowerExtension);
    if (hit < 0 || lowerExtension.isEmpty())
        return 0;
    if (extension == QStringLiteral(".")) {
        qsizetype lastSeparator = -1;
        for (qsizetype i = path.size() - 1; i >= 0; --i) {
            if (isPathSeparator(path.at(i))) {
                lastSeparator = i;
                break;
            }
        }
        return hit > lastSeparator ? -1 : 0;
    }
    return hit == lowerPath.size() - lowerExtension.size() ? -1 : 0;
}

QString RebuildCommandText(const QStringList& arguments)
{
    QStringList parts;
    parts.reserve(arguments.size());
    for (const QString& argument : arguments) {
        if (argument.isEmpty() || argument.contains(Blank))
            parts.append(Quote + argument + Quote);
        else
            parts.append(argument);
    }
    return parts.join(Blank);
}

QStringList CommandTokens(const QStringList& arguments)
{
    const bool quoted =
        std::any_of(arguments.begin(), arguments.end(),
                    [](const QString& argument) { return argument.contains(Quote); });
    if (quoted)
        return arguments;
    QStringList tokens;
    SplitCommandLine(RebuildCommandText(arguments), tokens);
    return tokens;
}
