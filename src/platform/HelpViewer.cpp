#include "platform/HelpViewer.h"

#include "platform/ProcessLauncher.h"

#include <QFileInfo>

namespace {

const QString ViewerProgram = QStringLiteral("VelmoraHelp");

class ProgramHelpViewer final : public HelpViewer
{
public:
    ProgramHelpViewer(ProcessLauncher& launcher, const QString& applicationDir)
        : m_launcher(launcher), m_program(applicationDir + u'/' + ViewerProgram)
    {
    }

    Failure ShowPage(const QString& contentsFile, const QString& pageFile,
                     const QString& anchor) override
    {
        // The viewer would start and then show nothing for a missing page.
        if (!QFileInfo(pageFile).isFile())
            return Failure::NoSuchPage;
        int error = 0;
        // Nobody waits for the viewer: it is let go of at once and collected when it ends.
        const bool started =
            m_launcher.Start({m_program, {contentsFile, pageFile, anchor}, {}, false}, error) !=
            nullptr;
        return started ? Failure::None : Failure::ViewerDidNotStart;
    }

private:
    ProcessLauncher& m_launcher;
    QString m_program;
};

}  // namespace

std::unique_ptr<HelpViewer> CreateHelpViewer(ProcessLauncher& launcher,
                                             const QString& applicationDir)
{
    return std::make_unique<ProgramHelpViewer>(launcher, applicationDir);
}
