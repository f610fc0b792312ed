#include "conversion/WordDetection.h"

#include "core/AppContext.h"
#include "platform/ApplicationPath.h"
#include "platform/OfficeSuite.h"
#include "platform/ProcessUtilityLibrary.h"

namespace {

constexpr qint32 MajorOffset = 9;
constexpr qint32 LargestMajor = 0x7FFF;

}  // namespace

qint32 WordScaleVersion(qint32 officeVersion)
{
    if (officeVersion <= 0)
        return 0;
    const qint32 major = qMin((officeVersion >> 16) + MajorOffset, LargestMajor);
    return (major << 16) | (officeVersion & 0xFFFF);
}

qint32 GetWordVersion(AppContext& context)
{
    const WorkingDirectoryGuard guard(context.applicationDir);
    qint32 result = 0;
    OfficeSuite& suite = context.officeSuite;
    const QString program = suite.FindProgram();
    if (!program.isEmpty())
        result = WordScaleVersion(context.processUtility.GetFileVersion(program));
    return result;
}
