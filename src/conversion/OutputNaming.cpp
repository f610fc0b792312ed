#include "conversion/OutputNaming.h"

#include "run/CommandLine.h"
#include "run/RunState.h"

#include <limits>
#include <optional>

namespace {

// ".doc" for format 1, ".rtf" otherwise; a foreign format becomes 2.
QString OutputExtension(RunState& state)
{
    if (state.DocumentFormat == 1)
        return QStringLiteral(".doc");
    state.DocumentFormat = 2;
    return QStringLiteral(".rtf");
}

}  // namespace

namespace {

// The path without its extension; empty when the dot lies beyond what the naming can count.
std::optional<QString> WithoutExtension(QString path)
{
    if (HasExtension(path, QStringLiteral("."))) {
        const qsizetype dot = path.lastIndexOf(u'.');
        // The dot's one-based position is a 16-bit number: a longer path ends the naming.
        if (dot + 1 > std::numeric_limits<qint16>::max())
            return std::nullopt;
        path.truncate(dot);
    }
    return path;
}

}  // namespace

void DeriveOutputPath(RunState& state)
{
    const QString base = state.OutputPath.isEmpty() ? state.SourcePath : state.OutputPath;
    const std::optional<QString> stem = WithoutExtension(base);
    if (!stem)
        return;  // the target stays as it was
    state.OutputPath = *stem + OutputExtension(state);
}

QString WithFormatExtension(const QString& path, qint16 documentFormat)
{
    const std::optional<QString> stem = WithoutExtension(path);
    if (!stem)
        return path;
    return *stem + (documentFormat == 1 ? QStringLiteral(".doc") : QStringLiteral(".rtf"));
}
