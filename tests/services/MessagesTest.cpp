#include "LocaleSupport.h"

#include "services/MessageBoxes.h"
#include "services/ShellLaunching.h"
#include "support/ModalDriver.h"

#include <QPushButton>

#include <gtest/gtest.h>

namespace {

TEST(MessageBoxTest, ShowsAModalPlainTextBoxWithTheAskedIconAndButtons)
{
    struct Row
    {
        MessageIcon icon;
        QMessageBox::Icon shown;
        MessageButtons buttons;
        QMessageBox::StandardButton click;
        MessageAnswer answer;
    };
    const Row rows[] = {
        {MessageIcon::Critical, QMessageBox::Critical, MessageButtons::Ok, QMessageBox::Ok,
         MessageAnswer::Ok},
        {MessageIcon::Exclamation, QMessageBox::Warning, MessageButtons::OkCancel, QMessageBox::Ok,
         MessageAnswer::Ok},
        {MessageIcon::Information, QMessageBox::Information, MessageButtons::OkCancel,
         QMessageBox::Cancel, MessageAnswer::Cancel},
    };
    // Markup in a file name must show as it is.
    const QString text = QStringLiteral("<b>a & b</b>.pdf");
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.shown));
        SeenMessage seen;
        QMessageBox::StandardButtons offered;
        Qt::WindowModality modality = Qt::NonModal;
        Qt::TextFormat format = Qt::AutoText;
        WhenModalAppears(QStringLiteral("MessageBox"), [&](QWidget& widget) {
            auto& box = static_cast<QMessageBox&>(widget);
            seen = {true, box.text(), box.windowTitle(), box.icon()};
            offered = box.standardButtons();
            modality = box.windowModality();
            format = box.textFormat();
            box.button(row.click)->click();
        });
        EXPECT_EQ(ShowMessage(nullptr, text, row.icon, row.buttons), row.answer);
        EXPECT_EQ(seen.text, text);
        EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
        EXPECT_EQ(seen.icon, row.shown);
        EXPECT_EQ(offered, row.buttons == MessageButtons::Ok
                               ? QMessageBox::StandardButtons(QMessageBox::Ok)
                               : QMessageBox::Ok | QMessageBox::Cancel);
        EXPECT_EQ(modality, Qt::ApplicationModal);
        EXPECT_EQ(format, Qt::PlainText);
    }
}

TEST(MessageBoxTest, ClosingAnOkCancelBoxByEscapeAnswersCancel)
{
    WhenModalAppears(QStringLiteral("MessageBox"),
                     [](QWidget& widget) { static_cast<QMessageBox&>(widget).reject(); });
    EXPECT_EQ(ShowMessage(nullptr, QStringLiteral("Sure?"), MessageIcon::Exclamation,
                          MessageButtons::OkCancel),
              MessageAnswer::Cancel);
}

struct FailureRow
{
    quint32 code;
    const char* verb;
    const char* english;
    const char* japanese;
};

// The file name each message is built around; it is never translated.
const QString File = QStringLiteral("/home/user/My Report.doc");

QString expectedFor(const FailureRow& row)
{
    return QString::fromUtf8(RunsInJapanese() ? row.japanese : row.english)
        .replace(QStringLiteral("<file>"), File);
}

TEST(ShellFailureTest, EachCodeAndVerbShowsItsMessage)
{
    const char* const noPrintApp = "There is no application associated with the given file name "
                                   "extension for printing!\n\nPlease open the file manually and "
                                   "print from there.";
    const char* const noPrintAppJa =
        "このファイル拡張子に関連付けられている印刷用アプリケーションがあ"
        "りません。\n\nこのファイルをご使用のアプリケーションで開いて、"
        "そこから印刷してください。";
    const char* const noApp =
        "There is no application associated with the given file name extension!";
    const char* const noAppJa =
        "このファイル拡張子に関連付けられているアプリケーションがありません。";
    const char* const memory = "There was not enough memory to complete the operation!";
    const char* const memoryJa = "この操作を完了するために必要なメモリが足りません。";
    const FailureRow rows[] = {
        {0, "open", memory, memoryJa},
        {8, "print", memory, memoryJa},
        {2, "open", "<file> is not found!", "<file>が見つかりません。"},
        {3, "printto", "<file> is not found!", "<file>が見つかりません。"},
        // The Japanese table has no row for the words before the file name.
        {5, "open", "Access to <file> is denied!", "<file>へのアクセスが禁止されています。"},
        {31, "print", noPrintApp, noPrintAppJa},
        {31, "printto", noPrintApp, noPrintAppJa},
        {31, "open", noApp, noAppJa},
        {31, "PRINT", noApp, noAppJa},
        {31, "", noApp, noAppJa},
        {1, "open", "Unable to call the host application for opening (1)",
         "ファイルを開くために必要なホスト アプリケーションを呼び出せませんでした。 (1)"},
        {4, "print", "Unable to call the host application for printing (4)",
         "ファイルを印刷するために必要なホスト アプリケーションを呼び出せませんでした。 (4)"},
        {30, "Print", "Unable to call the host application for opening (30)",
         "ファイルを開くために必要なホスト アプリケーションを呼び出せませんでした。 (30)"},
        {42, "printto", "Unable to call the host application for printing (42)",
         "ファイルを印刷するために必要なホスト アプリケーションを呼び出せませんでした。 (42)"},
        {4294967295u, "open", "Unable to call the host application for opening (4294967295)",
         "ファイルを開くために必要なホスト アプリケーションを呼び出せませんでした。 (4294967295)"},
    };
    for (const FailureRow& row : rows) {
        SeenMessage seen;
        AnswerNextMessageBox(QMessageBox::Ok, &seen);
        ReportShellFailure(row.code, QString::fromUtf8(row.verb), File);
        ASSERT_TRUE(seen.shown) << row.code << " " << row.verb;
        EXPECT_EQ(seen.text, expectedFor(row)) << row.code << " " << row.verb;
        EXPECT_EQ(seen.icon, QMessageBox::Critical);
        EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
    }
}

}  // namespace
