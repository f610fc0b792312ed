#include "dialogs/WelcomeForm.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/PageTestSupport.h"

#include <QComboBox>
#include <QLabel>
#include <QSignalSpy>

namespace {

class WelcomeFormTest : public PageTest
{
protected:
    void SetUp() override
    {
        env.state.JpegQuality = 85;
        env.state.PreviewThumb = 1;
        env.state.LaunchWord = 1;
    }

    WelcomeForm& Open(qint32 runMode)
    {
        env.state.RunMode = runMode;
        WelcomeForm& welcome = forms.Welcome();
        runtime.Show(welcome);
        return welcome;
    }
    // Runs `open`, which shows the page named `name` modally, and unloads the page once it is up.
    void Visit(const char* name, const std::function<void()>& open)
    {
        WhenModalAppears(QString::fromLatin1(name),
                         [this](QWidget& page) { runtime.Unload(static_cast<Form&>(page)); });
        open();
    }
};

TEST_F(WelcomeFormTest, SummaryNamesTheOptionsAndCorrectsForeignValues)
{
    // Method, type, image and output format, and the summary's texts for them.
    const std::pair<QList<qint16>, QStringList> rows[] = {
        {{1, 3, 1, 1},
         {Pick("Exact Placement using Tabs & spaces", "タブとスペースを使った配置"),
          Pick("Legal Pleading PDF", "法的書類のPDF"), "BMP", "N/A", ".DOC"}},
        {{7, 0, 5, 9},
         {Pick("Exact Placement using Text Boxes", "テキストボックスを使った配置"),
          Pick("Multi-Column PDF", "複数段の段組を含むPDF"), "JPEG", "85 %", ".RTF"}}};
    WelcomeForm& welcome = Open(RunModes::OptionsOnly);
    RunState& s = env.state;
    for (const auto& [values, texts] : rows) {
        s.ConversionMethod = values[0];
        s.DocumentType = values[1];
        s.ImageFormat = values[2];
        s.DocumentFormat = values[3];
        welcome.LoadOptions();
        QStringList shown;
        for (const char* label : {"LabelConversionMethod", "LabelDocumentType", "LabelImageFormat",
                                  "LabelImageQuality", "LabelOutputFormat"})
            shown.append(Get<QLabel>(welcome, label).text());
        EXPECT_EQ(shown, texts);
    }
    // The last row's values were foreign: the run now holds what the summary shows.
    EXPECT_EQ(QList<qint16>({s.ConversionMethod, s.DocumentType, s.ImageFormat, s.DocumentFormat}),
              QList<qint16>({2, 2, 0, 2}));
}

TEST_F(WelcomeFormTest, EachFaceShowsItsOwnControlsAndOnlyConvertRunsTheIntake)
{
    // The face; the controls shown, whether Cancel works, the command button's caption and the
    // page range chosen.
    const std::tuple<qint32, QString, bool, QString, int> rows[] = {
        {RunModes::OptionsOnly, "CheckPreview", false, Pick("&Done", "完了(&D)"), -1},
        {RunModes::Convert, "LabelNA,ComboPageRange,LabelPageRange", true,
         Pick("&Convert", "変換(&C)"), 0}};
    const QStringList optional = {"PictureThumb", "LabelNA", "CheckPreview", "ComboPageRange",
                                  "LabelPageRange"};
    for (const auto& [mode, shown, cancel, command, range] : rows) {
        WelcomeForm& welcome = Open(mode);
        EXPECT_EQ(Among(welcome, optional, &QWidget::isVisible), shown);
        EXPECT_EQ(Get(welcome, "ButtonCancel").isEnabled(), cancel);
        EXPECT_EQ(Get(welcome, "ButtonConvert").text(), command);
        EXPECT_EQ(Get<QComboBox>(welcome, "ComboPageRange").currentIndex(), range);
        EXPECT_EQ(flow.intakes, range + 1) << "the convert face runs the intake";
        runtime.Unload(welcome);
    }
}

TEST_F(WelcomeFormTest, IntakeRunsOnceEvenWhenAnActivationArrivesDuringIt)
{
    // A modal dialog owned by the main dialog closes while the intake is under way.
    flow.duringIntake = [this](Form& owner) {
        Visit("OtherOptionsForm", [&] { runtime.ShowModal(forms.OtherOptions(), &owner); });
    };
    Open(RunModes::Convert);
    EXPECT_EQ(flow.intakes, 1);
}

TEST_F(WelcomeFormTest, ChecksAreTickedFromTheFieldsButOnlyLeavingWritesThem)
{
    env.state.PreviewThumb = 0;
    WelcomeForm& welcome = Open(RunModes::OptionsOnly);
    auto& preview = Get(welcome, "CheckPreview");
    auto& open = Get(welcome, "CheckOpenAfterConversion");
    EXPECT_FALSE(preview.isChecked());
    EXPECT_TRUE(open.isChecked());

    // The next activation finds PreviewThumb 0 and leaves its box; LaunchWord 1 ticks the other.
    preview.setChecked(true);
    open.setChecked(false);
    QLabel& advanced = Get<QLabel>(welcome, "LabelAdvancedOption");
    Visit("OtherOptionsForm", [&] { QMetaObject::invokeMethod(&advanced, "clicked"); });
    EXPECT_TRUE(preview.isChecked());
    EXPECT_TRUE(open.isChecked());

    // Edit Options writes the dialog's checks first.
    open.setChecked(false);
    Visit("DocumentTypeForm", [&] { Get(welcome, "ButtonEditOptions").click(); });
    EXPECT_FALSE(open.isChecked());
    EXPECT_EQ(env.state.LaunchWord, 0);
    EXPECT_EQ(env.state.PreviewThumb, 1);
    EXPECT_EQ(runtime.LoadedForms().size(), 1) << "the pages are unloaded after the walk";
}

TEST_F(WelcomeFormTest, CancelSavesNothingWhileConvertAndDoneSaveAndEndTheRun)
{
    QSignalSpy ended(&runtime, &DialogRuntime::AllUnloaded);
    Get(Open(RunModes::Convert), "ButtonCancel").click();
    EXPECT_EQ(ended.count(), 1);
    EXPECT_TRUE(env.store.writes.isEmpty());

    // A cancelled save dialog leaves the dialog open; the run goes on hidden.
    flow.askResult = false;
    WelcomeForm& welcome = Open(RunModes::Convert);
    Get<QComboBox>(welcome, "ComboPageRange").setCurrentIndex(1);
    Get(welcome, "ButtonConvert").click();
    EXPECT_TRUE(runtime.IsLoaded(&welcome));
    EXPECT_EQ(env.state.UsingPageRange, 1);
    flow.askResult = true;
    Get(welcome, "ButtonConvert").click();
    EXPECT_EQ(flow.asks, 2);
    EXPECT_EQ(flow.conversions, QList<bool>{true});
    EXPECT_EQ(ended.count(), 2);

    // For a word processor, the dialog opens over its window and never asks.
    env.state.HostedByWord = -1;
    WelcomeForm& hosted = Open(RunModes::Convert);
    EXPECT_TRUE(env.processUtility.calls.contains(QStringLiteral("GetProcessID(soffice.bin,0)")));
    EXPECT_FALSE(Get(hosted, "CheckOpenAfterConversion").isEnabled());
    Get(hosted, "ButtonConvert").click();
    EXPECT_EQ(flow.asks, 2);
    EXPECT_EQ(flow.conversions, QList<bool>({true, true}));

    WelcomeForm& options = Open(RunModes::OptionsOnly);
    Get(options, "CheckPreview").setChecked(false);
    Get(options, "ButtonConvert").click();
    EXPECT_EQ(ended.count(), 4);
    EXPECT_EQ(env.store.values.value(SettingsNames::PreviewThumb).toInt(), 0);
    EXPECT_EQ(StoredOption("ConversionMethod"), QStringLiteral("2"));
    EXPECT_EQ(flow.conversions.size(), 2);
}

}  // namespace
