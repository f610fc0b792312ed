// A message box: modal, titled with the program's name, showing its text as plain text, and
// closed by Escape as Cancel where there is one.

#include "services/MessageBoxes.h"
#include "support/ModalDriver.h"

#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(MessageBoxTest, ShowsAModalPlainTextBoxWithTheAskedIconAndButtons)
{
    for (const bool okCancel : {false, true}) {
        SeenMessage seen;
        QMessageBox::StandardButtons offered;
        bool modalPlainText = false;
        WhenModalAppears(QStringLiteral("MessageBox"), [&](QWidget& widget) {
            auto& box = static_cast<QMessageBox&>(widget);
            seen = {true, box.text(), box.windowTitle(), box.icon()};
            offered = box.standardButtons();
            modalPlainText = box.isModal() && box.textFormat() == Qt::PlainText;
            QTest::keyClick(&box, Qt::Key_Escape);
        });
        // Markup in a file name must show as it is.
        EXPECT_EQ(ShowMessage(nullptr, QStringLiteral("<b>a</b>.pdf"),
                              okCancel ? MessageIcon::Exclamation : MessageIcon::Information,
                              okCancel ? MessageButtons::OkCancel : MessageButtons::Ok),
                  okCancel ? MessageAnswer::Cancel : MessageAnswer::Ok);
        EXPECT_EQ(seen.text, QStringLiteral("<b>a</b>.pdf"));
        EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
        EXPECT_EQ(seen.icon, okCancel ? QMessageBox::Warning : QMessageBox::Information);
        EXPECT_EQ(offered, okCancel ? QMessageBox::Ok | QMessageBox::Cancel
                                    : QMessageBox::StandardButtons(QMessageBox::Ok));
        EXPECT_TRUE(modalPlainText);
    }
}

}  // namespace
