#include "conversion/EngineCommand.h"

#include "run/RunState.h"

QString EngineProgram(const QString& applicationDir)
{
    return applicationDir + QStringLiteral("/VelmoraConverter");
}

QStringList ConversionArguments(const RunState& state)
{
    return {state.SourcePath, state.OutputPath, QStringLiteral("-C")};
}

QStringList PreviewArguments(const RunState& state)
{
    return {state.SourcePath, state.PreviewPath + QStringLiteral(".rtf"), QStringLiteral("-C"),
            QStringLiteral("-P"), QStringLiteral("-H")};
}
