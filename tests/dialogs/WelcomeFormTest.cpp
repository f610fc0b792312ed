#include "dialogs/WelcomeForm.h"
#include "dialogs/ConversionController.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "dialogs/OtherOptionsForm.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

bool Japanese()
{
    return qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
}

QString Pick(const char* english, const char* japanese)
{
    return QString::fromUtf8(Japanese() ? japanese : english);
}

// Records what the main dialog asks of the conversion side.
struct FakeController final : ConversionController
{
    bool PrepareSource(Form&) override
    {
        ++prepares;
        return prepareResult;
    }
    IntakeOutcome RunIntake(Form& welcome, const QString&) override
    {
        ++intakes;
        if (duringIntake)
            duringIntake(welcome);
        return intakeOutcome;
    }
    std::optional<QString> ChoosePageRange(Form&) override
    {
        ++rangeDialogs;
        return chosenRange;
    }
    bool AskOutputFile(Form&) override
    {
        ++asks;
        return askResult;
    }
    void RunConversion(Form& welcome) override
    {
        conversionsWhileHidden.append(!welcome.isVisible());
    }

    bool prepareResult = true;
    bool askResult = true;
    IntakeOutcome intakeOutcome{true, QString()};
    std::optional<QString> chosenRange;
    int prepares = 0;
    int intakes = 0;
    int asks = 0;
    int rangeDialogs = 0;
    QList<bool> conversionsWhileHidden;
    std::function<void(Form&)> duringIntake;
};

class WelcomeFormTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        env.state.RunMode = 2;
        env.state.ConversionMethod = 2;
        env.state.DocumentType = 2;
        env.state.JpegQuality = 85;
        env.state.DocumentFormat = 1;
        env.state.PreviewThumb = 1;
        env.state.LaunchWord = 1;
    }
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    WelcomeForm& Open()
    {
        WelcomeForm& welcome = forms.Welcome();
        runtime.Show(welcome);
        return welcome;
    }

    template <class T> T& Control(WelcomeForm& welcome, const char* name)
    {
        return Child<T>(welcome, QString::fromLatin1(name));
    }

    FakeEnvironment env;
    FakeController flow;
    DialogRuntime runtime;
    Forms forms{runtime, env.context, flow};
};

struct SummaryRow
{
    qint16 method, type, image, format;
    const char* methodText;
    const char* methodTextJa;
    const char* typeText;
    const char* typeTextJa;
    const char* imageText;
    const char* qualityText;
    const char* formatText;
    qint16 methodAfter, typeAfter, imageAfter, formatAfter;
};

class SummaryTest : public WelcomeFormTest, public ::testing::WithParamInterface<SummaryRow>
{
};

TEST_P(SummaryTest, ShowsTheOptionsAndCorrectsForeignValues)
{
    const SummaryRow& row = GetParam();
    env.state.ConversionMethod = row.method;
    env.state.DocumentType = row.type;
    env.state.ImageFormat = row.image;
    env.state.DocumentFormat = row.format;
    WelcomeForm& welcome = Open();

    EXPECT_EQ(Control<QLabel>(welcome, "LabelConversionMethod").text(),
              Pick(row.methodText, row.methodTextJa));
    EXPECT_EQ(Control<QLabel>(welcome, "LabelDocumentType").text(),
              Pick(row.typeText, row.typeTextJa));
    EXPECT_EQ(Control<QLabel>(welcome, "LabelImageFormat").text(),
              QString::fromUtf8(row.imageText));
    EXPECT_EQ(Control<QLabel>(welcome, "LabelImageQuality").text(),
              QString::fromUtf8(row.qualityText));
    EXPECT_EQ(Control<QLabel>(welcome, "LabelOutputFormat").text(),
              QString::fromUtf8(row.formatText));
    EXPECT_EQ(env.state.ConversionMethod, row.methodAfter);
    EXPECT_EQ(env.state.DocumentType, row.typeAfter);
    EXPECT_EQ(env.state.ImageFormat, row.imageAfter);
    EXPECT_EQ(env.state.DocumentFormat, row.formatAfter);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SummaryTest,
    ::testing::Values(
        SummaryRow{1, 1, 0, 1, "Exact Placement using Tabs & spaces", "タブとスペースを使った配置",
                   "Single-Column PDF", "段組が1段のみのPDF", "JPEG", "85 %", ".DOC", 1, 1, 0, 1},
        SummaryRow{2, 2, 1, 2, "Exact Placement using Text Boxes", "テキストボックスを使った配置",
                   "Multi-Column PDF", "複数段の段組を含むPDF", "BMP", "N/A", ".RTF", 2, 2, 1, 2},
        SummaryRow{3, 3, 0, 2, "Flow the text and graphics", "単純なレイアウトに変換",
                   "Legal Pleading PDF", "法的書類のPDF", "JPEG", "85 %", ".RTF", 3, 3, 0, 2},
        SummaryRow{7, 0, 5, 9, "Exact Placement using Text Boxes", "テキストボックスを使った配置",
                   "Multi-Column PDF", "複数段の段組を含むPDF", "JPEG", "85 %", ".RTF", 2, 2, 0, 2},
        SummaryRow{-1, 4, -3, 0, "Exact Placement using Text Boxes", "テキストボックスを使った配置",
                   "Multi-Column PDF", "複数段の段組を含むPDF", "JPEG", "85 %", ".RTF", 2, 2, 0,
                   2}));

TEST_F(WelcomeFormTest, OptionsOnlyFaceEditsTheStoredOptions)
{
    WelcomeForm& welcome = Open();
    EXPECT_EQ(flow.prepares, 0);
    EXPECT_EQ(flow.intakes, 0);
    EXPECT_FALSE(Control<QLabel>(welcome, "PictureThumb").isVisible());
    EXPECT_FALSE(Control<QLabel>(welcome, "LabelNA").isVisible());
    EXPECT_TRUE(Control<QCheckBox>(welcome, "CheckPreview").isVisible());
    EXPECT_FALSE(Control<QComboBox>(welcome, "ComboPageRange").isVisible());
    EXPECT_FALSE(Control<QLabel>(welcome, "LabelPageRange").isVisible());
    EXPECT_FALSE(Control<QPushButton>(welcome, "ButtonCancel").isEnabled());
    EXPECT_EQ(Control<QPushButton>(welcome, "ButtonConvert").text(), Pick("&Done", "完了(&D)"));
    EXPECT_EQ(welcome.windowTitle(), Pick("Convert PDF to Word", "PDFをWordに変換"));
    EXPECT_EQ(flow.rangeDialogs, 0);
}

TEST_F(WelcomeFormTest, ConvertFaceShowsThePreviewAreaAndSelectsAllPagesOnce)
{
    env.state.RunMode = 1;
    WelcomeForm& welcome = Open();
    EXPECT_EQ(flow.prepares, 1);
    EXPECT_EQ(flow.intakes, 1);
    EXPECT_FALSE(Control<QCheckBox>(welcome, "CheckPreview").isVisible());
    EXPECT_TRUE(Control<QComboBox>(welcome, "ComboPageRange").isVisible());
    EXPECT_EQ(Control<QComboBox>(welcome, "ComboPageRange").currentIndex(), 0);
    EXPECT_EQ(Control<QComboBox>(welcome, "ComboPageRange").itemText(1),
              Pick("Specify", "範囲指定"));
    EXPECT_EQ(flow.rangeDialogs, 0);
    EXPECT_TRUE(Control<QPushButton>(welcome, "ButtonCancel").isEnabled());
    EXPECT_EQ(Control<QPushButton>(welcome, "ButtonConvert").text(), Pick("&Convert", "変換(&C)"));
}

TEST_F(WelcomeFormTest, BackingOutOfThePdfLeavesTheSummaryUnfilled)
{
    env.state.RunMode = 1;
    flow.prepareResult = false;
    WelcomeForm& welcome = Open();
    EXPECT_EQ(Control<QLabel>(welcome, "LabelDocumentType").text(), QStringLiteral("..."));
    EXPECT_EQ(Control<QComboBox>(welcome, "ComboPageRange").currentIndex(), -1);
}

TEST_F(WelcomeFormTest, IntakeRunsOnceEvenWhenAnActivationArrivesDuringIt)
{
    env.state.RunMode = 1;
    flow.duringIntake = [this](Form& welcome) {
        // A modal dialog owned by the main dialog closes while the intake is under way.
        WhenModalAppears(QStringLiteral("OtherOptionsForm"), [](QWidget& page) {
            Child<QPushButton>(page, QStringLiteral("ButtonDone")).click();
        });
        runtime.ShowModal(forms.OtherOptions(), &welcome);
    };
    Open();
    EXPECT_EQ(flow.intakes, 1);
    EXPECT_EQ(flow.prepares, 2);
}

TEST_F(WelcomeFormTest, ChecksAreTickedFromTheFieldsButNeverUnticked)
{
    env.state.PreviewThumb = 0;
    env.state.LaunchWord = 0;
    WelcomeForm& welcome = Open();
    auto& previewCheck = Control<QCheckBox>(welcome, "CheckPreview");
    EXPECT_FALSE(previewCheck.isChecked());
    EXPECT_FALSE(Control<QCheckBox>(welcome, "CheckOpenAfterConversion").isChecked());

    // The user ticks the box; the next activation finds the field still 0 and leaves it ticked.
    previewCheck.setChecked(true);
    WhenModalAppears(QStringLiteral("OtherOptionsForm"),
                     [this](QWidget& page) { runtime.Unload(static_cast<Form&>(page)); });
    runtime.ShowModal(forms.OtherOptions(), &welcome);
    EXPECT_TRUE(previewCheck.isChecked());
    EXPECT_EQ(env.state.PreviewThumb, 0);
}

TEST_F(WelcomeFormTest, AdvancedOptionsReticksTheOpenCheckButEditOptionsKeepsTheChoice)
{
    WelcomeForm& welcome = Open();
    auto& openCheck = Control<QCheckBox>(welcome, "CheckOpenAfterConversion");
    ASSERT_TRUE(openCheck.isChecked());

    openCheck.setChecked(false);
    WhenModalAppears(QStringLiteral("OtherOptionsForm"),
                     [this](QWidget& page) { runtime.Unload(static_cast<Form&>(page)); });
    QMetaObject::invokeMethod(&Control<QLabel>(welcome, "LabelAdvancedOption"), "clicked");
    EXPECT_TRUE(openCheck.isChecked()) << "LaunchWord still held 1";

    openCheck.setChecked(false);
    WhenModalAppears(QStringLiteral("DocumentTypeForm"),
                     [this](QWidget& page) { runtime.Unload(static_cast<Form&>(page)); });
    Control<QPushButton>(welcome, "ButtonEditOptions").click();
    EXPECT_FALSE(openCheck.isChecked());
    EXPECT_EQ(env.state.LaunchWord, 0);
    EXPECT_EQ(runtime.LoadedForms().size(), 1) << "the pages are unloaded after the walk";
}

TEST_F(WelcomeFormTest, DoneSavesTheOptionsAndEndsTheRun)
{
    QSignalSpy ended(&runtime, &DialogRuntime::AllUnloaded);
    WelcomeForm& welcome = Open();
    Control<QCheckBox>(welcome, "CheckPreview").setChecked(false);
    Control<QPushButton>(welcome, "ButtonConvert").click();

    EXPECT_EQ(ended.count(), 1);
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_EQ(env.state.PreviewThumb, 0);
    EXPECT_EQ(env.store.values.value(QStringLiteral("RTF/PreviewThumb")).toInt(), 0);
    EXPECT_TRUE(env.store.values.value(QStringLiteral("VOREK - RTF"))
                    .toString()
                    .startsWith(QStringLiteral("<?XML")));
    EXPECT_TRUE(flow.conversionsWhileHidden.isEmpty());
}

TEST_F(WelcomeFormTest, CancelEndsTheRunWithoutSaving)
{
    env.state.RunMode = 1;
    WelcomeForm& welcome = Open();
    Control<QPushButton>(welcome, "ButtonCancel").click();
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
    EXPECT_TRUE(env.store.writes.isEmpty());
}

TEST_F(WelcomeFormTest, ConvertAsksForTheTargetUnlessHosted)
{
    env.state.RunMode = 1;
    flow.askResult = false;
    WelcomeForm& welcome = Open();
    Control<QComboBox>(welcome, "ComboPageRange").setCurrentIndex(1);
    Control<QPushButton>(welcome, "ButtonConvert").click();
    EXPECT_EQ(flow.asks, 1);
    EXPECT_TRUE(flow.conversionsWhileHidden.isEmpty());
    EXPECT_TRUE(runtime.IsLoaded(&welcome)) << "a cancelled save dialog leaves the dialog open";
    EXPECT_EQ(env.state.UsingPageRange, 1);

    flow.askResult = true;
    Control<QPushButton>(welcome, "ButtonConvert").click();
    EXPECT_EQ(flow.asks, 2);
    EXPECT_EQ(flow.conversionsWhileHidden, QList<bool>{true});
    EXPECT_TRUE(runtime.LoadedForms().isEmpty());
}

TEST_F(WelcomeFormTest, HostedRunIsPlacedOnTheWordProcessorAndNeverAsks)
{
    env.state.RunMode = 1;
    env.state.HostedByWord = -1;
    env.state.WordWindowHint = QStringLiteral("Document1");
    WelcomeForm& welcome = Open();
    EXPECT_TRUE(env.processUtility.calls.contains(QStringLiteral("GetProcessID(soffice.bin,0)")));
    EXPECT_FALSE(Control<QCheckBox>(welcome, "CheckOpenAfterConversion").isEnabled());
    Control<QPushButton>(welcome, "ButtonConvert").click();
    EXPECT_EQ(flow.asks, 0);
    EXPECT_EQ(flow.conversionsWhileHidden, QList<bool>{true});
}

TEST_F(WelcomeFormTest, HelpOpensTheMainTopic)
{
    WelcomeForm& welcome = Open();
    Control<QPushButton>(welcome, "ButtonHelp").click();
    ASSERT_EQ(env.help.anchors.size(), 1);
    EXPECT_EQ(env.help.anchors.first(), QStringLiteral("convertPDF"));
    EXPECT_TRUE(env.help.pages.first().endsWith(QStringLiteral("options.htm")));
}

TEST_F(WelcomeFormTest, UnloadSweepsTheTemporaryFiles)
{
    const QString leftOver = QDir::temp().filePath(QStringLiteral("~SVdead.tmp_1.bmp"));
    QFile file(leftOver);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    WelcomeForm& welcome = Open();
    runtime.Unload(welcome);
    EXPECT_FALSE(QFile::exists(leftOver));
}

}  // namespace
