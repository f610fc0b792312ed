// The window manager's close request sent to the two dialogs that wait for the engine, while it
// runs: the progress dialog can't be cancelled and stays, the preview counts it as Skip. Runs
// on a real X server, where the request arrives as it does from a desktop.

#include "TestPaths.h"

#include "conversion/ThumbnailForm.h"
#include "conversion/WaitForm.h"
#include "dialogs/DialogRuntime.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"
#include "support/WindowManagerClose.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Runs `step` every 50 ms until it returns true.
void Every50ms(std::function<bool()> step)
{
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, step] {
        if (step())
            timer->deleteLater();
    });
    timer->start(50);
}

class CloseRequestTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QFile::copy(QStringLiteral(VELMORA_STAND_IN_ENGINE),
                                appDir.filePath(QStringLiteral("VelmoraConverter"))));
        QFile mode(appDir.filePath(QStringLiteral("standin.mode")));
        ASSERT_TRUE(mode.open(QIODevice::WriteOnly) && mode.write("hold"));
        env.context.applicationDir = appDir.path();
        env.state.RunMode = 1;
        env.state.DocumentFormat = 2;
        env.state.SourcePath = work.filePath(QStringLiteral("in.pdf"));
        env.state.OutputPath = work.filePath(QStringLiteral("out.rtf"));
        env.state.PreviewPath = work.filePath(QStringLiteral("~SVpreview.tmp"));
        runtime.Show(runtime.Instance(owner));
    }
    void TearDown() override
    {
        Release();
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    bool EngineStarted() const
    {
        return QFile::exists(appDir.filePath(QStringLiteral("standin.args")));
    }
    void Release()
    {
        QFile(appDir.filePath(QStringLiteral("standin.release"))).open(QIODevice::WriteOnly);
    }

    QTemporaryDir appDir, work;
    FakeEnvironment env;
    DialogRuntime runtime;
    QPointer<Form> owner;
};

TEST_F(CloseRequestTest, ProgressDialogIgnoresCloseRequestsAndTheRunEndsNormally)
{
    env.state.LaunchWord = 0;
    QPointer<WaitForm> wait;
    runtime.Instance(wait, env.context);
    int sent = 0;
    bool stayedThroughout = true;
    Every50ms([&] {
        if (!EngineStarted())
            return false;
        if (!wait || !runtime.IsLoaded(wait) || !wait->isVisible()) {
            stayedThroughout = false;
            Release();
            return true;
        }
        if (sent < 5) {
            EXPECT_TRUE(SendWindowManagerClose(*wait));
            ++sent;
            return false;
        }
        Release();
        return true;
    });
    SeenMessage finished;
    AnswerNextMessageBox(QMessageBox::Ok, &finished, 20000);
    wait->Begin(*owner);

    EXPECT_EQ(sent, 5);
    EXPECT_TRUE(stayedThroughout);
    ASSERT_TRUE(wait);
    EXPECT_TRUE(runtime.IsLoaded(wait)) << "the caller unloads the dialog after the run";
    EXPECT_TRUE(finished.shown) << "the run went on to its end";
    EXPECT_TRUE(QFile::exists(env.state.OutputPath));
}

TEST_F(CloseRequestTest, PreviewTakesACloseRequestAsSkipAndLeavesTheEngineRunning)
{
    QPointer<ThumbnailForm> thumbnail;
    runtime.Instance(thumbnail, env.context);
    Every50ms([&] {
        if (!EngineStarted() || !thumbnail || !thumbnail->isVisible())
            return false;
        EXPECT_TRUE(SendWindowManagerClose(*thumbnail));
        return true;
    });
    runtime.ShowModal(*thumbnail, owner);

    EXPECT_TRUE(thumbnail.isNull() || !runtime.IsLoaded(thumbnail));
    EXPECT_FALSE(QFile::exists(env.state.PreviewPath + QStringLiteral("_1.bmp")))
        << "the dialog closed before the engine wrote its picture";
}

}  // namespace
