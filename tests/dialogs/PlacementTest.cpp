// Where dialogs open: the centring arithmetic with its edge rules, the search for the parent's
// and the word processor's window through the process utility library, and the closing of the
// secondary dialogs.

#include "dialogs/Placement.h"
#include "platform/OfficeSuite.h"

#include "dialogs/DialogRuntime.h"
#include "dialogs/Form.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace {

// A dialog with nothing in it but a size, that notes when it is unloaded.
class PlainForm final : public Form
{
public:
    PlainForm(DialogRuntime& runtime, QString name = QString(), QStringList* unloaded = nullptr)
        : Form(runtime), m_name(std::move(name)), m_unloaded(unloaded)
    {
    }

    // Forms that this one unloads along with itself.
    QList<Form*> alsoUnload;

protected:
    void Form_Unload() override
    {
        if (m_unloaded)
            m_unloaded->append(m_name);
        for (Form* other : alsoUnload)
            Runtime().Unload(*other);
    }

private:
    QString m_name;
    QStringList* m_unloaded;
};

// One pixel in twips, the precision that a move of a real window keeps.
float PixelX(const Form& form)
{
    return form.ScaleXToTwips(1.0F);
}

float PixelY(const Form& form)
{
    return form.ScaleYToTwips(1.0F);
}

TEST(CenteredOver, CentresAndKeepsOnlyTheLeftAndTopEdgesInView)
{
    struct Row
    {
        const char* what;
        TwipsBox dialog;
        TwipsBox parent;
        float left;
        float top;
    };
    constexpr float Screen = 15360;
    const std::vector<Row> rows = {
        {"smaller dialog in the middle", {9, 9, 3000, 2000}, {1000, 2000, 5000, 4000}, 2000, 3000},
        {"same size takes the parent's place",
         {0, 0, 5000, 4000},
         {700, 900, 5000, 4000},
         700,
         900},
        {"same height above the screen stays there",
         {0, 0, 3000, 4000},
         {1000, -500, 5000, 4000},
         2000,
         -500},
        {"same height below the screen stays there",
         {0, 0, 3000, 4000},
         {1000, 14000, 5000, 4000},
         2000,
         14000},
        {"taller dialog over a parent at the top", {0, 0, 3000, 3000}, {0, 0, 5000, 2000}, 1000, 0},
        {"shorter dialog over a parent below the screen",
         {0, 0, 3000, 2000},
         {0, 13000, 5000, 3000},
         1000,
         Screen - 2000},
        {"dialog taller than the screen sticks to the top",
         {0, 0, 3000, 16000},
         {0, 0, 5000, 3000},
         1000,
         0},
        {"wider dialog at the left edge", {0, 0, 5000, 2000}, {0, 1000, 3000, 2000}, 0, 1000},
        {"same width left of the screen stays there",
         {0, 0, 3000, 1000},
         {-2000, 1000, 3000, 2000},
         -2000,
         1500},
        {"right edge is never tested", {0, 0, 5000, 2000}, {18000, 1000, 3000, 2000}, 17000, 1000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const TwipsBox placed = CenteredOver(row.dialog, row.parent, Screen);
        EXPECT_FLOAT_EQ(placed.left, row.left);
        EXPECT_FLOAT_EQ(placed.top, row.top);
        EXPECT_FLOAT_EQ(placed.width, row.dialog.width);
        EXPECT_FLOAT_EQ(placed.height, row.dialog.height);
    }
}

TEST(CenterDialogOver, MovesTheDialogOverItsParent)
{
    DialogRuntime runtime;
    PlainForm parent(runtime);
    PlainForm dialog(runtime);
    parent.setFixedSize(600, 400);
    parent.move(300, 200);
    dialog.setFixedSize(200, 100);
    dialog.move(0, 0);

    CenterDialogOver(dialog, parent);
    EXPECT_NEAR(dialog.Left(), dialog.ScaleXToTwips(500), PixelX(dialog));
    EXPECT_NEAR(dialog.Top(), dialog.ScaleYToTwips(350), PixelY(dialog));

    // A taller dialog over a parent at the top of the screen comes down to the top edge.
    PlainForm tall(runtime);
    tall.setFixedSize(200, 600);
    parent.move(300, 0);
    CenterDialogOver(tall, parent);
    EXPECT_NEAR(tall.Left(), tall.ScaleXToTwips(500), PixelX(tall));
    EXPECT_NEAR(tall.Top(), 0.0F, PixelY(tall));
}

// Passes every call on to the fake and notes the working directory at the time of the call.
class DirectorySpy final : public ProcessUtilityLibrary
{
public:
    explicit DirectorySpy(FakeProcessUtility& fake) : m_fake(fake) {}

    qint32 GetParentProcessID(qint32 processId) override
    {
        Note();
        return m_fake.GetParentProcessID(processId);
    }
    qint64 GetProcessHwnd(qint32 processId) override
    {
        Note();
        return m_fake.GetProcessHwnd(processId);
    }
    qint32 GetProcessID(const QString& programName, qint32 index) override
    {
        Note();
        return m_fake.GetProcessID(programName, index);
    }
    qint64 GetProcessHwndEx(qint32 processId, QString& hint) override
    {
        Note();
        return m_fake.GetProcessHwndEx(processId, hint);
    }
    bool GetWindowRect(qint64 window, ScreenRect& rect) override
    {
        Note();
        return m_fake.GetWindowRect(window, rect);
    }
    qint32 GetProcessCount(const QString& programName) override
    {
        Note();
        return m_fake.GetProcessCount(programName);
    }
    qint32 QuitProcess(qint32 processId) override
    {
        Note();
        return m_fake.QuitProcess(processId);
    }
    qint32 KillProcess(qint32 processId) override
    {
        Note();
        return m_fake.KillProcess(processId);
    }
    qint32 GetFileVersion(const QString& path) override
    {
        Note();
        return m_fake.GetFileVersion(path);
    }

    QStringList directories;

private:
    void Note() { directories.append(QDir::currentPath()); }

    FakeProcessUtility& m_fake;
};

// The fakes, with the working directory of every library call noted, and a 400 x 300 pixel
// dialog to place.
struct PlacementBench
{
    PlacementBench()
    {
        dialog.setFixedSize(400, 300);
        dialog.move(5, 5);
    }

    // The dialog's position in pixels, to the pixel.
    QPoint Position() const
    {
        return {qRound(dialog.Left() / PixelX(dialog)), qRound(dialog.Top() / PixelY(dialog))};
    }

    FakeEnvironment env;
    QTemporaryDir appDir;
    DirectorySpy spy{env.processUtility};
    AppContext context{
        env.state,    env.store.Factory(), env.help,        spy,      env.geometry, appDir.path(),
        env.launcher, env.opener,          env.officeSuite, env.clock};
    DialogRuntime runtime;
    PlainForm dialog{runtime};
};

// The desktop of the fakes is 1280 x 1024: a 400 x 300 dialog centred on it.
const QPoint DesktopCentre{440, 362};

TEST(PlaceNearParent, CentresOnTheStartingProcesssWindowOrElseOnTheDesktop)
{
    struct Row
    {
        const char* what;
        qint32 ownId;
        qint32 parentId;
        qint64 parentWindow;
        std::optional<ScreenRect> windowRect;
        QPoint expected;
        QStringList calls;
    };
    const std::vector<Row> rows = {
        {
            "parent's window",
            4242,
            100,
            555,
            ScreenRect{100, 200, 900, 800},
            {300, 350},
            {"GetParentProcessID(4242)", "GetProcessHwnd(100)", "GetWindowRect(555)"},
        },
        {"no own id", 0, 100, 555, ScreenRect{100, 200, 900, 800}, DesktopCentre, {}},
        {"no parent",
         4242,
         0,
         555,
         ScreenRect{100, 200, 900, 800},
         DesktopCentre,
         {"GetParentProcessID(4242)"}},
        {"parent without a window",
         4242,
         100,
         0,
         std::nullopt,
         DesktopCentre,
         {"GetParentProcessID(4242)", "GetProcessHwnd(100)"}},
        {"window without a rectangle",
         4242,
         100,
         555,
         std::nullopt,
         DesktopCentre,
         {"GetParentProcessID(4242)", "GetProcessHwnd(100)", "GetWindowRect(555)"}},
        {"small window in the top left corner",
         4242,
         100,
         555,
         ScreenRect{0, 0, 200, 100},
         {0, 0},
         {"GetParentProcessID(4242)", "GetProcessHwnd(100)", "GetWindowRect(555)"}},
        {"right and bottom edges are never tested",
         4242,
         100,
         555,
         ScreenRect{1100, 900, 1300, 1000},
         {1000, 800},
         {"GetParentProcessID(4242)", "GetProcessHwnd(100)", "GetWindowRect(555)"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        PlacementBench bench;
        bench.env.geometry.processId = row.ownId;
        bench.env.processUtility.parentId = row.parentId;
        bench.env.processUtility.parentWindow = row.parentWindow;
        if (row.windowRect)
            bench.env.processUtility.windows.insert(555, *row.windowRect);
        const QString before = QDir::currentPath();

        PlaceNearParent(bench.dialog, bench.context);
        EXPECT_EQ(bench.Position(), row.expected);
        EXPECT_EQ(bench.env.processUtility.calls, row.calls);
        for (const QString& directory : bench.spy.directories)
            EXPECT_EQ(directory, QDir(bench.appDir.path()).canonicalPath());
        EXPECT_EQ(QDir::currentPath(), before);
    }
}

TEST(PlaceNearWord, CentresOnTheWordProcessorsWindowAndKeepsTheRewrittenHint)
{
    struct Row
    {
        const char* what;
        qint32 wordId;
        qint64 wordWindow;
        QString rewrittenHint;
        QPoint expected;
        QString hintAfter;
        QStringList calls;
    };
    const QString find = QStringLiteral("GetProcessID(%1,0)").arg(OfficeProcessName);
    const std::vector<Row> rows = {
        {"word processor's window",
         321,
         777,
         QString(),
         {300, 350},
         "Report",
         {find, "GetProcessHwndEx(321,Report)", "GetWindowRect(777)"}},
        {"hint rewritten by the library",
         321,
         777,
         "Report.odt - Writer",
         {300, 350},
         "Report.odt - Writer",
         {find, "GetProcessHwndEx(321,Report)", "GetWindowRect(777)"}},
        {"no word processor running", 0, 777, "unused", DesktopCentre, "Report", {find}},
        {"no window fits the hint",
         321,
         0,
         "Report - rewritten",
         DesktopCentre,
         "Report - rewritten",
         {find, "GetProcessHwndEx(321,Report)"}},
        {"window without a rectangle",
         321,
         778,
         QString(),
         DesktopCentre,
         "Report",
         {find, "GetProcessHwndEx(321,Report)", "GetWindowRect(778)"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        PlacementBench bench;
        bench.env.state.WordWindowHint = QStringLiteral("Report");
        bench.env.processUtility.wordProcessId = row.wordId;
        bench.env.processUtility.wordWindow = row.wordWindow;
        bench.env.processUtility.rewrittenHint = row.rewrittenHint;
        bench.env.processUtility.windows.insert(777, ScreenRect{100, 200, 900, 800});
        const QString before = QDir::currentPath();

        PlaceNearWord(bench.dialog, bench.context);
        EXPECT_EQ(bench.Position(), row.expected);
        EXPECT_EQ(bench.env.state.WordWindowHint, row.hintAfter);
        EXPECT_EQ(bench.env.processUtility.calls, row.calls);
        ASSERT_FALSE(bench.spy.directories.isEmpty());
        for (const QString& directory : bench.spy.directories)
            EXPECT_EQ(directory, QDir(bench.appDir.path()).canonicalPath());
        EXPECT_EQ(QDir::currentPath(), before);
    }
}

TEST(UnloadOtherDialogs, UnloadsFromTheLastDownToTheSecondButNeverTheMainDialog)
{
    struct Row
    {
        const char* what;
        QStringList loaded;    // in load order; "main" is the main dialog
        QString cascadeFrom;   // a dialog that unloads all the others but the first along
        QStringList unloaded;  // in order
        QStringList left;
    };
    const std::vector<Row> rows = {
        {"only the main dialog", {"main"}, {}, {}, {"main"}},
        {"pages after the main dialog", {"main", "a", "b", "c"}, {}, {"c", "b", "a"}, {"main"}},
        {"first entry is never visited", {"first", "main", "a"}, {}, {"a"}, {"first", "main"}},
        {"main dialog in the middle", {"a", "b", "main", "c"}, {}, {"c", "b"}, {"a", "main"}},
        {"an unload that takes others along",
         {"main", "a", "b", "c"},
         "c",
         {"c", "b", "a"},
         {"main"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        DialogRuntime runtime;
        QStringList unloaded;
        std::vector<QPointer<PlainForm>> formSlots(static_cast<std::size_t>(row.loaded.size()));
        const Form* welcome = nullptr;
        PlainForm* cascade = nullptr;
        for (qsizetype i = 0; i < row.loaded.size(); ++i) {
            const QString& name = row.loaded.at(i);
            PlainForm& form =
                runtime.Instance(formSlots[static_cast<std::size_t>(i)], name, &unloaded);
            if (name == QStringLiteral("main"))
                welcome = &form;
            if (name == row.cascadeFrom)
                cascade = &form;
        }
        if (cascade) {
            for (Form* form : runtime.LoadedForms()) {
                if (form != cascade && form != runtime.LoadedForms().first())
                    cascade->alsoUnload.append(form);
            }
            std::reverse(cascade->alsoUnload.begin(), cascade->alsoUnload.end());
        }

        UnloadOtherDialogs(runtime, welcome);
        EXPECT_EQ(unloaded, row.unloaded);
        QStringList left;
        for (qsizetype i = 0; i < row.loaded.size(); ++i) {
            if (runtime.IsLoaded(formSlots[static_cast<std::size_t>(i)].data()))
                left.append(row.loaded.at(i));
        }
        EXPECT_EQ(left, row.left);
        ProcessPendingEvents();
    }
}

}  // namespace
