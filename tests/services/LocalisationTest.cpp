// The user's language: the platform's own texts in Japanese, and captions shown as a Windows
// label would.

#include "services/DialogLanguage.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

const bool Japanese = qEnvironmentVariable("LANG").startsWith(QStringLiteral("ja"));

// The texts this platform adds to the program's own have a Japanese row each, with as many
// places for what the code fills in as the English.
TEST(Localisation, PlatformTextsHaveAJapaneseRowWithTheSamePlaceholders)
{
    const std::pair<qint32, int> rows[] = {
        {PlatformTexts::PasswordWithQuote, 0}, {PlatformTexts::HelpPageFailed, 2},
        {PlatformTexts::SavedAsRichText, 1},   {PlatformTexts::PdfLibraryMissing, 1},
        {PlatformTexts::HelpPageMissing, 0},   {PlatformTexts::HelpViewerFailed, 0},
    };
    for (const auto& [id, places] : rows) {
        const QString japanese = LoadResString(50000 + id).value_or(QString());
        EXPECT_TRUE(japanese.contains(QRegularExpression(QStringLiteral("[\\x{3040}-\\x{30FF}]"))))
            << id;
        QStringList found;
        for (const auto& match : QRegularExpression(QStringLiteral("%\\d")).globalMatch(japanese))
            found.append(match.captured());
        found.sort();
        EXPECT_EQ(found.join(QString()), QStringLiteral("%1%2").left(2 * places)) << id;
        EXPECT_EQ(LocalText(id, QStringLiteral("x")), Japanese ? japanese : QStringLiteral("x"));
    }
}

TEST(Localisation, LabelsShowCaptionsAsAWindowsLabelWould)
{
    const std::pair<const char*, const char*> rows[] = {
        {"Exact Placement using Tabs && spaces", "Exact Placement using Tabs & spaces"},
        {"ヘルプ(&H)", "ヘルプ(H)"},
        {"&&&x", "&x"},
    };
    for (const auto& [caption, displayed] : rows) {
        const QString text = QString::fromUtf8(caption);
        QLabel label, buddied;
        QLineEdit edit;
        QPushButton button;
        buddied.setBuddy(&edit);
        for (QWidget* control : std::initializer_list<QWidget*>{&label, &buddied, &button})
            SetControlText(*control, text);
        // Controls that read access keys themselves get the caption unchanged.
        EXPECT_EQ(QStringList({label.text(), buddied.text(), button.text()}),
                  QStringList({QString::fromUtf8(displayed), text, text}));
    }
}

}  // namespace
