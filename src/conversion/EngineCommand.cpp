#include "conversion/EngineCommand.h"

#include "run/CommandLine.h"
#include "run/RunState.h"

QString EngineProgram(const QString& applicationDir)
{
    return applicationDir + QStringLiteral("/VelmoraConverter");
}

QString ConversionArguments(const RunState& state)
{
    return u'"' + state.SourcePath + QStringLiteral("\" \"") + state.OutputPath +
           QStringLiteral("\" -C");
}

QString PreviewArguments(const RunState& state)
{
    return u'"' + state.SourcePath + QStringLiteral("\" \"") + state.PreviewPath +
           QStringLiteral(".rtf\" -C -P -H");
}

QStringList ConversionArgumentList(const RunState& state)
{
    return {state.SourcePath, state.OutputPath, QStringLiteral("-C")};
}

QStringList PreviewArgumentList(const RunState& state)
{
    return {state.SourcePath, state.PreviewPath + QStringLiteral(".rtf"), QStringLiteral("-C"),
            QStringLiteral("-P"), QStringLiteral("-H")};
}

std::optional<QStringList> ExactEngineArguments(const QString& parameters,
                                                const QStringList& intended)
{
    QStringList split;
    SplitCommandLine(parameters, split);
    if (split == intended)
        return std::nullopt;
    return intended;
}
