#include "LocaleSupport.h"

#include "platform/UserLanguage.h"
#include "services/DialogLanguage.h"

#include <QCheckBox>
#include <QDialog>
#include <QFont>
#include <QFontInfo>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSet>

#include <gtest/gtest.h>

namespace {

class LocalisationTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // As the program's start does: the font the Japanese dialogs name is mapped to one
        // this system has.
        QFont::insertSubstitutions(QStringLiteral("MS UI-Gothic"),
                                   {QStringLiteral("IPAGothic"), QStringLiteral("IPAPGothic")});
    }
};

TEST_F(LocalisationTest, UserLanguageFollowsTheLocaleOfTheRun)
{
    EXPECT_EQ(GetUserDefaultLangID(), RunsInJapanese() ? 1041 : 1033);
}

TEST_F(LocalisationTest, OnlyJapaneseHasAStringTable)
{
    struct Row
    {
        qint32 language;
        qint32 offset;
    };
    const Row rows[] = {{1041, 50000}, {1033, -1}, {2057, -1},         {1042, -1}, {2052, -1},
                        {0, -1},       {-1, -1},   {1041 + 65536, -1}, {1040, -1}};
    for (const Row& row : rows)
        EXPECT_EQ(LanguageOffset(row.language), row.offset) << row.language;
}

TEST_F(LocalisationTest, StringTableHoldsTheProgramsRowsAndThePlatformsOwn)
{
    QSet<qint32> found;
    for (qint32 row = 0; row < 200000; ++row) {
        if (LoadResString(row))
            found.insert(row);
    }
    EXPECT_EQ(found.size(), 106);

    const QList<QPair<qint32, qint32>> ranges = {
        {1601, 1618}, {1701, 1715}, {1801, 1815}, {1901, 1914}, {2001, 2006},
        {2101, 2102}, {2201, 2204}, {2301, 2301}, {5601, 5610}, {5901, 5901},
        {6001, 6003}, {6803, 6803}, {6805, 6811}, {6901, 6903}, {7001, 7006}};
    QSet<qint32> expected;
    for (const auto& [first, last] : ranges) {
        for (qint32 id = first; id <= last; ++id)
            expected.insert(id + 50000);
    }
    EXPECT_EQ(found, expected);
    EXPECT_FALSE(LoadResString(56804).has_value());
    // Rows are keyed with the offset: the bare id is no row.
    EXPECT_FALSE(LoadResString(1601).has_value());
}

TEST_F(LocalisationTest, StringTableRowsHoldTheJapaneseTexts)
{
    struct Row
    {
        qint32 row;
        const char* text;
    };
    const Row rows[] = {
        {51616, "ｵﾌﾟｼｮﾝ編集(&E)..."},
        {51618, "変換後、Wordファイルを開く"},
        {51714, "PDF変換オプションへ(&C) →"},
        {51812,
         "段組が1段の編集しやすい単純なレイアウトに変換したい場合はこのオプションを選択してくだ"
         "さい。"},
        {51910, "Wordアート検知(&A)"},
        {52004, "(計###ページ)"},
        {52102, "スキップ"},
        {52202, "このファイルは保護されています。パスワードを入力してください"},
        {52301, "変換中..."},
        {55601, "PDFファイル (*.pdf)|*.pdf"},
        {55606, "Word 文書 (*.doc)|*.doc"},
        {55607, "リッチテキスト形式 (*.rtf)|*.rtf"},
        {55901, "文書種類で「法的弁書」を指定している場合は、この機能をオフにできません。"},
        {56810, "ファイルを印刷するために必要なホスト アプリケーションを呼び出せませんでした。"},
        {56903, "変換終了しました。"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(LoadResString(row.row).value_or(QStringLiteral("<missing>")),
                  QString::fromUtf8(row.text))
            << row.row;
}

TEST_F(LocalisationTest, LocalTextGivesTheFallbackInEnglishAndTheTableInJapanese)
{
    struct Row
    {
        qint32 id;
        const char* fallback;
        const char* japanese;
    };
    const Row rows[] = {
        {1704, "Multi-Column PDF", "複数段の段組を含むPDF"},
        {1807, "Exact Placement using Tabs && spaces", "タブとスペースを使った配置"},
        {1613, "Specify", "範囲指定"},
        {5602, "&Done", "完了(&D)"},
        {6002, "", "計"},
        {6003, " pages total", "ページ"},
        {6803, " is not found!", "が見つかりません。"},
        // Called, but without a row: Japanese gets the empty text, not the fallback.
        {6804, "Access to ", ""},
        {9999, "no such text", ""},
    };
    for (const Row& row : rows) {
        const QString expected = QString::fromUtf8(RunsInJapanese() ? row.japanese : row.fallback);
        EXPECT_EQ(LocalText(row.id, QString::fromUtf8(row.fallback)), expected) << row.id;
    }
}

struct SampleDialog final
{
    SampleDialog()
    {
        dialog.setWindowTitle(QStringLiteral("Convert PDF to Word"));
        dialog.setFont(QFont(QStringLiteral("Tahoma"), 8));
        QFont bold = dialog.font();
        bold.setBold(true);
        label->setFont(bold);
        QFont underlined = dialog.font();
        underlined.setUnderline(true);
        link->setFont(underlined);
    }

    QDialog dialog;
    QLabel* label = new QLabel(QStringLiteral("Document Type:"), &dialog);
    QLabel* link = new QLabel(QStringLiteral("..."), &dialog);
    QPushButton* button = new QPushButton(QStringLiteral("&Help"), &dialog);
    QGroupBox* frame = new QGroupBox(QStringLiteral("Options"), &dialog);
    QCheckBox* nested = new QCheckBox(QStringLiteral("Preserve &Paragraph"), frame);
    QRadioButton* option = new QRadioButton(QStringLiteral("&Multi-Column PDF"), frame);
};

TEST_F(LocalisationTest, JapaneseFontGoesOnEveryControlKeepingWeightAndUnderline)
{
    SampleDialog sample;
    const QFont dialogFont = sample.dialog.font();
    // The font's name as this locale's font database spells it.
    const QString ipaGothic = QFontInfo(QFont(QStringLiteral("IPAGothic"))).family();
    ApplyDialogFont(sample.dialog, 1041);

    const QList<QWidget*> controls = {sample.label, sample.link,   sample.button,
                                      sample.frame, sample.nested, sample.option};
    for (QWidget* control : controls) {
        EXPECT_EQ(control->font().family(), QStringLiteral("MS UI-Gothic"))
            << control->metaObject()->className();
        EXPECT_DOUBLE_EQ(control->font().pointSizeF(), 9.0);
        // The name the dialogs use has to reach a real Japanese font.
        EXPECT_EQ(QFontInfo(control->font()).family(), ipaGothic);
    }
    EXPECT_TRUE(sample.label->font().bold());
    EXPECT_FALSE(sample.label->font().underline());
    EXPECT_TRUE(sample.link->font().underline());
    EXPECT_FALSE(sample.link->font().bold());
    EXPECT_FALSE(sample.button->font().bold());
    EXPECT_EQ(sample.dialog.font(), dialogFont);
}

TEST_F(LocalisationTest, OtherLanguagesLeaveTheFontsAlone)
{
    for (const qint32 language : {1033, 2057, 1042, 0}) {
        SampleDialog sample;
        const QFont before = sample.label->font();
        const QFont buttonBefore = sample.button->font();
        ApplyDialogFont(sample.dialog, language);
        EXPECT_EQ(sample.label->font(), before) << language;
        EXPECT_EQ(sample.button->font(), buttonBefore) << language;
    }
}

TEST_F(LocalisationTest, LoadStepSetsTheJapaneseTextsAndKeepsEnglishForMissingRows)
{
    SampleDialog sample;
    const QList<DialogText> texts = {
        {{1601}, [&](const QString& t) { SetControlText(sample.dialog, t); }},
        {{1605}, [&](const QString& t) { SetControlText(*sample.label, t); }},
        {{1614}, [&](const QString& t) { SetControlText(*sample.button, t); }},
        {{1604}, [&](const QString& t) { SetControlText(*sample.frame, t); }},
        {{1905}, [&](const QString& t) { SetControlText(*sample.nested, t); }},
        {{1704, 1705}, [&](const QString& t) { SetControlText(*sample.option, t); }},
        // One missing row spoils the pair: the control keeps its English caption whole.
        {{6804, 1705}, [&](const QString& t) { SetControlText(*sample.link, t); }},
    };
    const bool applied = ApplyDialogLanguage(sample.dialog, texts);

    if (!RunsInJapanese()) {
        EXPECT_FALSE(applied);
        EXPECT_EQ(sample.dialog.windowTitle(), QStringLiteral("Convert PDF to Word"));
        EXPECT_EQ(sample.label->text(), QStringLiteral("Document Type:"));
        EXPECT_EQ(sample.button->text(), QStringLiteral("&Help"));
        EXPECT_EQ(sample.option->text(), QStringLiteral("&Multi-Column PDF"));
        EXPECT_EQ(sample.button->font().family(), QStringLiteral("Tahoma"));
        return;
    }
    EXPECT_TRUE(applied);
    EXPECT_EQ(sample.dialog.windowTitle(), QStringLiteral("PDFをWordに変換"));
    EXPECT_EQ(sample.label->text(), QStringLiteral("文書の種類:"));
    EXPECT_EQ(sample.button->text(), QStringLiteral("ヘルプ(&H)"));
    EXPECT_EQ(sample.frame->title(), QStringLiteral("オプション"));
    EXPECT_EQ(sample.nested->text(), QStringLiteral("段落情報を保持する(&P)"));
    EXPECT_EQ(sample.option->text(), QStringLiteral("複数段の段組を含むPDF(&M)"));
    EXPECT_EQ(sample.link->text(), QStringLiteral("..."));
    EXPECT_EQ(sample.button->font().family(), QStringLiteral("MS UI-Gothic"));
}

TEST_F(LocalisationTest, LabelsShowCaptionsAsAWindowsLabelWould)
{
    struct Row
    {
        const char* caption;
        const char* shown;
    };
    const Row rows[] = {
        {"Exact Placement using Tabs && spaces", "Exact Placement using Tabs & spaces"},
        {"&Help", "Help"},
        {"ヘルプ(&H)", "ヘルプ(H)"},
        {"&&&x", "&x"},
        {"trailing &", "trailing "},
        {"plain", "plain"},
        {"", ""},
    };
    for (const Row& row : rows) {
        const QString caption = QString::fromUtf8(row.caption);
        QLabel label;
        SetControlText(label, caption);
        EXPECT_EQ(label.text(), QString::fromUtf8(row.shown)) << row.caption;
        EXPECT_EQ(DisplayedCaption(caption), QString::fromUtf8(row.shown)) << row.caption;

        // Controls that read access keys themselves get the caption unchanged.
        QPushButton button;
        SetControlText(button, caption);
        EXPECT_EQ(button.text(), caption);
        QLabel buddied;
        QLineEdit edit;
        buddied.setBuddy(&edit);
        SetControlText(buddied, caption);
        EXPECT_EQ(buddied.text(), caption);
    }
}

}  // namespace
