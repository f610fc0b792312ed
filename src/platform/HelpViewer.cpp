#include "platform/HelpViewer.h"

#include "platform/Shell.h"

#include <QFileInfo>

namespace {

const QString ViewerProgram = QStringLiteral("VelmoraHelp");

class ProgramHelpViewer final : public HelpViewer
{
public:
    explicit ProgramHelpViewer(QString applicationDir)
        : m_program(applicationDir + u'/' + ViewerProgram)
    {
    }

    Failure ShowPage(const QString& contentsFile, const QString& pageFile,
                     const QString& anchor) override
    {
        // The viewer would start and then show nothing for a missing page.
        if (!QFileInfo(pageFile).isFile())
            return Failure::NoSuchPage;
        ShellExecuteInfo info;
        info.verb = QStringLiteral("open");
        info.file = m_program;
        info.exactArguments = QStringList{contentsFile, pageFile, anchor};
        if (!ShellExecuteEx(info))
            return Failure::ViewerDidNotStart;
        // Nobody waits for the viewer; it is collected when it ends.
        CloseHandle(info.process);
        return Failure::None;
    }

private:
    QString m_program;
};

}  // namespace

std::unique_ptr<HelpViewer> CreateHelpViewer(const QString& applicationDir)
{
    return std::make_unique<ProgramHelpViewer>(applicationDir);
}
