#include "conversion/EngineCommand.h"

#include "run/RunState.h"

QString EngineProgram(const QString& applicationDir)
{
    return applicationDir + QStringLiteral("/VelmoraConverter");
}

QString ConversionArguments(const RunState& state)
{
    return u'"' + state.SourcePath + QStringLiteral("\" \"") + state.OutputPath + QStringLiteral("\" -C");
}

QString PreviewArguments(const RunState& state)
{
    return u'"' + state.SourcePath + QStringLiteral("\" \"") + state.PreviewPath +
           QStringLiteral(".rtf\" -C -P -H");
}
