#include <QApplication>
#include <QDir>

#include <gtest/gtest.h>

#include <cstdlib>

// One QApplication for the whole test program, since the dialogs and QSettings need one.
int main(int argc, char** argv)
{
    // The temporary folder the test was given must exist before anything makes files in it.
    if (const char* tmp = std::getenv("TMPDIR"))
        QDir().mkpath(QString::fromLocal8Bit(tmp));
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
