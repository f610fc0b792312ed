#include "conversion/OutputNaming.h"

#include "run/CommandLine.h"
#include "run/RunState.h"

#include <limits>

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

void DeriveOutputPath(RunState& state)
{
    QString base = state.OutputPath.isEmpty() ? state.SourcePath : state.OutputPath;
    if (HasExtension(base, QStringLiteral("."))) {
        const qsizetype dot = base.lastIndexOf(u'.');
        // The dot's one-based position is a 16-bit number: a longer path ends the naming and
        // leaves the target as it was.
        if (dot + 1 > std::numeric_limits<qint16>::max())
            return;
        base.truncate(dot);
    }
    state.OutputPath = base + OutputExtension(state);
}
