// Where dialogs open: centred over the dialog that leads to them, or on the window of the
// program that started us or of the word processor, with their left and top edges in view.

#include "dialogs/Placement.h"
#include "dialogs/DialogRuntime.h"
#include "platform/OfficeSuite.h"
#include "support/FakeServices.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>

namespace {

// A dialog of 400 x 300 pixels with nothing in it.
class PlainForm final : public Form
{
public:
    explicit PlainForm(DialogRuntime& runtime) : Form(runtime) { setFixedSize(400, 300); }
};

TEST(CenteredOver, CentresAndKeepsOnlyTheLeftAndTopEdgesInView)
{
    // The dialog and its parent, and where the dialog goes, on a screen 15360 twips high.
    const std::tuple<const char*, TwipsBox, TwipsBox, QPointF> rows[] = {
        {"smaller, in the middle", {9, 9, 3000, 2000}, {1000, 2000, 5000, 4000}, {2000, 3000}},
        {"same height, above it", {0, 0, 3000, 4000}, {1000, -500, 5000, 4000}, {2000, -500}},
        {"above the screen", {0, 0, 3000, 3000}, {0, 0, 5000, 2000}, {1000, 0}},
        {"below the screen", {0, 0, 3000, 2000}, {0, 13000, 5000, 3000}, {1000, 13360}},
        {"left of the screen", {0, 0, 5000, 2000}, {0, 1000, 3000, 2000}, {0, 1000}},
        {"same width, left of it", {0, 0, 3000, 1000}, {-2000, 1000, 3000, 2000}, {-2000, 1500}},
        {"right edge never tested", {0, 0, 5000, 2000}, {18000, 1000, 3000, 2000}, {17000, 1000}}};
    for (const auto& [what, dialog, parent, expected] : rows) {
        const TwipsBox placed = CenteredOver(dialog, parent, 15360);
        EXPECT_EQ(QRectF(placed.left, placed.top, placed.width, placed.height),
                  QRectF(expected, QSizeF(dialog.width, dialog.height)))
            << what;
    }
}

// The main dialog goes on the window of the program that started us, or of the word processor
// we work for, as the process utility library finds it in the program's directory, and on the
// desktop when there is none; only its left and top edges are kept in view.
TEST(PlaceNearParentOrWord, CentresOnTheWindowFoundOrElseOnTheDesktop)
{
    // The fakes' desktop is 1280 x 1024 pixels, the dialog 400 x 300.
    const QPoint onDesktop{440, 362};
    // Working for a word processor; its or the parent's window (0: none found), and where that
    // window lies (none: it has no place); where the dialog goes.
    const std::tuple<bool, qint64, std::optional<ScreenRect>, QPoint> rows[] = {
        {false, 555, ScreenRect{100, 200, 900, 800}, {300, 350}},
        {false, 0, ScreenRect{100, 200, 900, 800}, onDesktop},
        {false, 555, std::nullopt, onDesktop},
        {false, 555, ScreenRect{0, 0, 200, 100}, {0, 0}},
        {false, 555, ScreenRect{1100, 900, 1300, 1000}, {1000, 800}},
        {true, 555, ScreenRect{100, 200, 900, 800}, {300, 350}},
        {true, 0, ScreenRect{100, 200, 900, 800}, onDesktop},
        {true, 555, std::nullopt, onDesktop}};
    QTemporaryDir appDir;
    FakeEnvironment env;
    env.context.applicationDir = appDir.path();
    env.processUtility.parentId = 100;
    env.processUtility.wordProcessId = 321;
    env.processUtility.rewrittenHint = QStringLiteral("Report - Writer");
    DialogRuntime runtime;
    PlainForm dialog(runtime);
    const QString start = QDir::currentPath();
    for (const auto& [hosted, window, rect, expected] : rows) {
        env.processUtility.parentWindow = env.processUtility.wordWindow = window;
        env.processUtility.windows.clear();
        if (rect)
            env.processUtility.windows.insert(window, *rect);
        env.state.WordWindowHint = QStringLiteral("Report");
        (hosted ? PlaceNearWord : PlaceNearParent)(dialog, env.context);
        EXPECT_EQ(QPoint(qRound(dialog.Left() / dialog.ScaleXToTwips(1)),
                         qRound(dialog.Top() / dialog.ScaleYToTwips(1))),
                  expected)
            << hosted << " " << window;
        EXPECT_EQ(env.state.WordWindowHint, hosted ? "Report - Writer" : "Report");
        EXPECT_EQ(QDir::currentPath(), start);
    }
    EXPECT_TRUE(env.processUtility.calls.contains("GetParentProcessID(4242)"));
    EXPECT_TRUE(env.processUtility.calls.contains(
        QStringLiteral("GetProcessID(%1,0)").arg(OfficeProcessName)));
    EXPECT_TRUE(env.processUtility.calls.contains("GetProcessHwndEx(321,Report)"));
    for (const QString& directory : env.processUtility.workingDirectories)
        EXPECT_EQ(directory, QDir(appDir.path()).canonicalPath());
}

}  // namespace
