#include "platform/HelpViewer.h"

#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

namespace {

// The desktop's standard opener shows the page in the user's browser. It is started directly,
// never through a shell, and not waited for.
class DesktopHelpViewer final : public HelpViewer
{
public:
    bool ShowPage(const QString& pageFile, const QString& anchor, QString& error) override
    {
        // The opener would start happily and then show nothing for a missing page.
        if (!QFileInfo(pageFile).isFile()) {
            error = QStringLiteral("the page does not exist");
            return false;
        }
        const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
        if (opener.isEmpty()) {
            error = QStringLiteral("xdg-open is not installed");
            return false;
        }
        QUrl url = QUrl::fromLocalFile(pageFile);
        if (!anchor.isEmpty())
            url.setFragment(anchor);
        if (!QProcess::startDetached(opener, {url.toString()})) {
            error = QStringLiteral("%1 could not be started").arg(opener);
            return false;
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<HelpViewer> CreateHelpViewer()
{
    return std::make_unique<DesktopHelpViewer>();
}
