#include "dialogs/OtherOptionsForm.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/PageTestSupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTest>

namespace {

const QStringList TextFeatureBoxes = {QStringLiteral("CheckPreserve"), QStringLiteral("CheckSub"),
                                      QStringLiteral("CheckResize"), QStringLiteral("CheckHeader")};
const QStringList QualityControls = {
    QStringLiteral("SliderQuality"), QStringLiteral("LabelImageQuality"),
    QStringLiteral("LabelQuality"), QStringLiteral("LabelPercent")};

class OtherOptionsFormTest : public PageTest
{
protected:
    void SetUp() override
    {
        env.state.DocumentType = 1;
        env.state.ConversionMethod = 1;
        env.state.JpegQuality = 80;
        env.state.DocumentFormat = 1;
    }

    OtherOptionsForm& Page() { return forms.OtherOptions(); }
    template <class T = QWidget> T& Control(const QString& name) { return Child<T>(Page(), name); }
    QCheckBox& Box(const QString& name) { return Control<QCheckBox>(name); }

    QString Enabled(const QStringList& names) { return EnabledAmong(Page(), names); }
};

TEST_F(OtherOptionsFormTest, ControlsFollowTheDialogDefinition)
{
    OtherOptionsForm page(runtime, forms);
    ExpectControls(
        page,
        "Picture1:QLabel OptionExtRtf:QRadioButton OptionExtDoc:QRadioButton "
        "ComboImage:QComboBox CheckWordArt:QCheckBox CheckHeader:QCheckBox CheckSub:QCheckBox "
        "CheckResize:QCheckBox CheckPreserve:QCheckBox SliderQuality:QSlider LabelQuality:QLabel "
        "LabelPercent:QLabel LabelImageFormat:QLabel LabelQualityBox:QLabel "
        "LabelOutputFormat:QLabel ImageDoc:QLabel ImageRtf:QLabel LabelImageQuality:QLabel "
        "LabelDocumentTypeText:QLabel LabelDocumentType:LinkLabel "
        "LabelConversionMethodText:QLabel LabelConversionMethod:LinkLabel ButtonDone:QPushButton "
        "ButtonHelp:QPushButton FrameAdvancedOptions:QGroupBox");

    auto& slider = Child<QSlider>(page, QStringLiteral("SliderQuality"));
    EXPECT_EQ(slider.orientation(), Qt::Horizontal);
    EXPECT_EQ(slider.minimum(), 10);
    EXPECT_EQ(slider.maximum(), 100);
    EXPECT_EQ(slider.tickInterval(), 10);
    EXPECT_EQ(slider.singleStep(), 5);
    EXPECT_EQ(slider.pageStep(), 10);
    auto& combo = Child<QComboBox>(page, QStringLiteral("ComboImage"));
    EXPECT_FALSE(combo.isEditable());
    ASSERT_EQ(combo.count(), 2);
    EXPECT_EQ(combo.itemText(0), QStringLiteral("JPEG"));
    EXPECT_EQ(combo.itemText(1), QStringLiteral("BMP"));
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("LabelConversionMethod")).text(),
              QStringLiteral("..."));
    EXPECT_FALSE(Child<QLabel>(page, QStringLiteral("ImageDoc")).pixmap().isNull());
    EXPECT_FALSE(Child<QLabel>(page, QStringLiteral("ImageRtf")).pixmap().isNull());
    EXPECT_EQ(page.windowTitle(), QStringLiteral("Convert PDF to Word"));
}

TEST_F(OtherOptionsFormTest, LinkLabelsShowTypeAndMethodAndUnknownValuesBecomeTwo)
{
    const QString single = InTestLanguage("Single-Column PDF", "段組が1段のみのPDF");
    const QString multi = InTestLanguage("Multi-Column PDF", "複数段の段組を含むPDF");
    const QString legal = InTestLanguage("Legal Pleading PDF", "法的書類のPDF");
    const QString tabs =
        InTestLanguage("Exact Placement using Tabs & spaces", "タブとスペースを使った配置");
    const QString boxes =
        InTestLanguage("Exact Placement using Text Boxes", "テキストボックスを使った配置");
    const QString flowing = InTestLanguage("Flow the text and graphics", "単純なレイアウトに変換");
    struct Row
    {
        qint16 documentType;
        qint16 conversionMethod;
        QString typeText;
        QString methodText;
        qint16 documentTypeAfter;
        qint16 conversionMethodAfter;
    };
    const QList<Row> rows = {
        {1, 1, single, tabs, 1, 1}, {2, 2, multi, boxes, 2, 2}, {3, 3, legal, flowing, 3, 3},
        {0, 0, multi, boxes, 2, 2}, {-3, 1, multi, tabs, 2, 1}, {3, 9, legal, boxes, 3, 2},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.ConversionMethod = row.conversionMethod;
        Page().LoadOptions();
        EXPECT_EQ(Control<QLabel>(QStringLiteral("LabelDocumentType")).text(), row.typeText);
        EXPECT_EQ(Control<QLabel>(QStringLiteral("LabelConversionMethod")).text(), row.methodText);
        EXPECT_EQ(env.state.DocumentType, row.documentTypeAfter);
        EXPECT_EQ(env.state.ConversionMethod, row.conversionMethodAfter);
    }
}

TEST_F(OtherOptionsFormTest, MethodAndTypeDecideWhichTextFeaturesCanChange)
{
    struct Row
    {
        qint16 documentType;
        qint16 conversionMethod;
        QString enabled;
        bool headerOn;
    };
    const QString all = TextFeatureBoxes.join(u',');
    const QString allButHeader = QStringLiteral("CheckPreserve,CheckSub,CheckResize");
    // One page through all rows: a box disabled by one row must come back in the next.
    const QList<Row> rows = {
        {1, 1, all, false}, {1, 2, allButHeader, false}, {2, 3, "", false}, {3, 1, all, true},
        {3, 3, "", true},   {1, 7, allButHeader, true},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.ConversionMethod = row.conversionMethod;
        env.state.DetectHeader = 0;
        Page().LoadOptions();
        const std::string context = "type " + std::to_string(row.documentType) + ", method " +
                                    std::to_string(row.conversionMethod);
        EXPECT_EQ(Enabled(TextFeatureBoxes), row.enabled) << context;
        EXPECT_EQ(Box(QStringLiteral("CheckHeader")).isChecked(), row.headerOn) << context;
    }
}

TEST_F(OtherOptionsFormTest, LoadingTurnsBoxesOnButNeverOff)
{
    const QList<std::pair<QString, qint16 RunState::*>> boxes = {
        {QStringLiteral("CheckPreserve"), &RunState::MergeParagraph},
        {QStringLiteral("CheckSub"), &RunState::AdjustFontNames},
        {QStringLiteral("CheckResize"), &RunState::ShrinkFonts},
        {QStringLiteral("CheckHeader"), &RunState::DetectHeader},
        {QStringLiteral("CheckWordArt"), &RunState::WordArt},
    };
    struct Row
    {
        bool before;
        qint16 field;
        bool after;
    };
    const QList<Row> rows = {
        {false, 1, true}, {true, 0, true}, {false, 0, false}, {false, -1, false}, {true, 5, true}};
    for (const auto& [name, field] : boxes) {
        for (const Row& row : rows) {
            Box(name).setChecked(row.before);
            env.state.*field = row.field;
            Page().LoadOptions();
            EXPECT_EQ(Box(name).isChecked(), row.after)
                << qPrintable(name) << " before " << row.before << " field " << row.field;
            EXPECT_EQ(env.state.*field, row.field) << "loading writes no box field";
        }
    }
}

TEST_F(OtherOptionsFormTest, UpdateOptionsCopiesEveryControlDisabledOrNot)
{
    struct Row
    {
        qint16 conversionMethod;  // 3 disables the four text feature boxes
        bool preserve, sub, resize, header, wordArt;
        int imageEntry;
        int quality;
    };
    const QList<Row> rows = {
        {1, true, false, true, false, true, 0, 35},
        {3, false, true, false, true, false, 1, 100},
        {2, true, true, true, true, true, 1, 10},
    };
    for (const Row& row : rows) {
        env.state.ConversionMethod = row.conversionMethod;
        Page().LoadOptions();
        // Boxes as earlier visits may have left them; a disabled box keeps its state.
        const QList<std::pair<QString, bool>> states = {{"CheckPreserve", row.preserve},
                                                        {"CheckSub", row.sub},
                                                        {"CheckResize", row.resize},
                                                        {"CheckHeader", row.header},
                                                        {"CheckWordArt", row.wordArt}};
        for (const auto& [name, on] : states)
            Box(name).setChecked(on);
        Control<QComboBox>(QStringLiteral("ComboImage")).setCurrentIndex(row.imageEntry);
        Control<QSlider>(QStringLiteral("SliderQuality")).setValue(row.quality);

        Page().UpdateOptions();
        EXPECT_EQ(env.state.MergeParagraph, row.preserve ? 1 : 0);
        EXPECT_EQ(env.state.AdjustFontNames, row.sub ? 1 : 0);
        EXPECT_EQ(env.state.ShrinkFonts, row.resize ? 1 : 0);
        EXPECT_EQ(env.state.DetectHeader, row.header ? 1 : 0);
        EXPECT_EQ(env.state.WordArt, row.wordArt ? 1 : 0);
        EXPECT_EQ(env.state.ImageFormat, row.imageEntry);
        EXPECT_EQ(env.state.JpegQuality, row.quality);
        EXPECT_EQ(env.state.ConversionMethod, row.conversionMethod);
    }
}

TEST_F(OtherOptionsFormTest, BitmapImagesGreyTheQualityControls)
{
    struct Row
    {
        qint16 imageFormat;
        int entry;
        bool qualityEnabled;
    };
    const QList<Row> rows = {{1, 1, false}, {0, 0, true}, {1, 1, false}, {5, 0, true}};
    for (const Row& row : rows) {
        env.state.ImageFormat = row.imageFormat;
        Page().LoadOptions();
        EXPECT_EQ(Control<QComboBox>(QStringLiteral("ComboImage")).currentIndex(), row.entry);
        EXPECT_EQ(Enabled(QualityControls), row.qualityEnabled ? QualityControls.join(u',') : "")
            << "ImageFormat " << row.imageFormat;
        EXPECT_EQ(env.state.ImageFormat, row.imageFormat) << "loading corrects no image format";
    }

    // The user picks BMP: the quality greys at once, and the quality kept for JPEG is saved.
    env.state.ImageFormat = 0;
    env.state.JpegQuality = 45;
    Page().LoadOptions();
    auto& combo = Control<QComboBox>(QStringLiteral("ComboImage"));
    combo.setCurrentIndex(1);
    EXPECT_EQ(Enabled(QualityControls), QString());
    EXPECT_EQ(env.state.ImageFormat, 0);
    Control<QPushButton>(QStringLiteral("ButtonDone")).click();
    EXPECT_EQ(env.state.ImageFormat, 1);
    EXPECT_EQ(env.state.JpegQuality, 45);
    EXPECT_EQ(StoredOption(QStringLiteral("ImageFormat")), QStringLiteral("1"));
    EXPECT_EQ(StoredOption(QStringLiteral("JpegQuality")), QStringLiteral("45"));
}

TEST_F(OtherOptionsFormTest, TheQualityLabelFollowsTheSliderAtOnce)
{
    for (const qint16 quality : {10, 100, 70}) {
        env.state.JpegQuality = quality;
        Page().LoadOptions();
        EXPECT_EQ(Control<QSlider>(QStringLiteral("SliderQuality")).value(), quality);
        EXPECT_EQ(Control<QLabel>(QStringLiteral("LabelQuality")).text(), QString::number(quality));
    }

    auto& slider = Control<QSlider>(QStringLiteral("SliderQuality"));
    const QList<std::pair<QAbstractSlider::SliderAction, int>> moves = {
        {QAbstractSlider::SliderSingleStepAdd, 75},
        {QAbstractSlider::SliderPageStepAdd, 85},
        {QAbstractSlider::SliderToMinimum, 10}};
    for (const auto& [action, value] : moves) {
        slider.triggerAction(action);
        EXPECT_EQ(Control<QLabel>(QStringLiteral("LabelQuality")).text(), QString::number(value));
        EXPECT_EQ(env.state.JpegQuality, 70) << "only leaving the page writes the quality";
    }
    Page().UpdateOptions();
    EXPECT_EQ(env.state.JpegQuality, 10);
}

TEST_F(OtherOptionsFormTest, OutputFormatFollowsTheFieldAndTheHostingWordProcessor)
{
    struct Row
    {
        qint16 documentFormat;
        qint16 hostedByWord;
        QString option;
        bool rtfEnabled;
        qint16 formatAfterLoad;
        qint16 formatAfterUpdate;
    };
    // One page through all rows: a hosted row's disabled controls must come back after it.
    const QList<Row> rows = {
        {1, 0, "OptionExtDoc", true, 1, 1}, {2, 0, "OptionExtRtf", true, 2, 2},
        {5, 0, "OptionExtRtf", true, 2, 2}, {2, -1, "OptionExtDoc", false, 2, 1},
        {0, 0, "OptionExtRtf", true, 2, 2}, {-2, -1, "OptionExtDoc", false, 2, 1},
    };
    const QStringList formats = {QStringLiteral("OptionExtDoc"), QStringLiteral("OptionExtRtf")};
    for (const Row& row : rows) {
        env.state.DocumentFormat = row.documentFormat;
        env.state.HostedByWord = row.hostedByWord;
        Page().LoadOptions();
        const std::string context = "format " + std::to_string(row.documentFormat) + ", hosted " +
                                    std::to_string(row.hostedByWord);
        EXPECT_EQ(CheckedAmong(Page(), formats), row.option) << context;
        EXPECT_EQ(Control(QStringLiteral("OptionExtRtf")).isEnabled(), row.rtfEnabled) << context;
        EXPECT_EQ(Control(QStringLiteral("ImageRtf")).isEnabled(), row.rtfEnabled) << context;
        EXPECT_TRUE(Control(QStringLiteral("OptionExtDoc")).isEnabled()) << context;
        EXPECT_EQ(env.state.DocumentFormat, row.formatAfterLoad) << context;
        Page().UpdateOptions();
        EXPECT_EQ(env.state.DocumentFormat, row.formatAfterUpdate) << context;
    }
}

TEST_F(OtherOptionsFormTest, ClickingAFilePictureSelectsAndFocusesItsFormat)
{
    OtherOptionsForm& page = Page();
    page.show();
    page.LoadOptions();
    auto& imageDoc = Control<QLabel>(QStringLiteral("ImageDoc"));
    auto& imageRtf = Control<QLabel>(QStringLiteral("ImageRtf"));
    auto& optionDoc = Control<QRadioButton>(QStringLiteral("OptionExtDoc"));
    auto& optionRtf = Control<QRadioButton>(QStringLiteral("OptionExtRtf"));

    QTest::mouseClick(&imageRtf, Qt::LeftButton);
    EXPECT_TRUE(optionRtf.isChecked());
    EXPECT_EQ(page.focusWidget(), &optionRtf);
    QTest::mouseClick(&imageDoc, Qt::RightButton);
    EXPECT_TRUE(optionRtf.isChecked()) << "only the left button clicks";
    QTest::mouseClick(&imageDoc, Qt::LeftButton);
    EXPECT_TRUE(optionDoc.isChecked());
    EXPECT_EQ(page.focusWidget(), &optionDoc);
    EXPECT_EQ(env.state.DocumentFormat, 1) << "a click alone writes nothing";

    env.state.HostedByWord = -1;
    page.LoadOptions();
    QTest::mouseClick(&imageRtf, Qt::LeftButton);
    EXPECT_TRUE(optionDoc.isChecked()) << "the disabled picture does not answer";
    page.hide();
}

TEST_F(OtherOptionsFormTest, ClearingTheHeaderOfAPleadingIsRefusedWithAMessage)
{
    env.state.DocumentType = 3;
    env.state.ConversionMethod = 1;
    Page().LoadOptions();
    auto& header = Box(QStringLiteral("CheckHeader"));
    ASSERT_TRUE(header.isChecked());
    ASSERT_TRUE(header.isEnabled());

    SeenMessage seen;
    AnswerNextMessageBox(QMessageBox::Ok, &seen);
    header.click();
    EXPECT_TRUE(seen.shown);
    EXPECT_EQ(seen.text,
              InTestLanguage(QStringLiteral("This feature cannot be turned off while the "
                                            "\"Legal Pleading PDF\" document type is selected"),
                             QStringLiteral("文書種類で「法的弁書」を指定している場合は、"
                                            "この機能をオフにできません。")));
    EXPECT_EQ(seen.title, QStringLiteral("PDF to Word Converter"));
    EXPECT_EQ(seen.icon, QMessageBox::Information);
    EXPECT_TRUE(header.isChecked());
    Page().UpdateOptions();
    EXPECT_EQ(env.state.DetectHeader, 1);
}

TEST_F(OtherOptionsFormTest, TheHeaderOfOtherTypesClearsWithoutAMessage)
{
    struct Row
    {
        qint16 documentType;
        qint16 conversionMethod;
        bool headerAfterClick;
    };
    const QList<Row> rows = {
        {1, 1, false},
        {2, 1, false},
        {3, 2, true},  // disabled: the click cannot reach it
        {2, 3, true},
    };
    MessageBoxWatch watch;
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.ConversionMethod = row.conversionMethod;
        env.state.DetectHeader = 1;
        Page().LoadOptions();
        auto& header = Box(QStringLiteral("CheckHeader"));
        header.setChecked(true);
        header.click();
        QTest::qWait(30);
        EXPECT_EQ(header.isChecked(), row.headerAfterClick) << "type " << row.documentType;
    }
    EXPECT_EQ(watch.Count(), 0) << qPrintable(watch.Texts().join(u'\n'));
}

TEST_F(OtherOptionsFormTest, DoneSavesAndUnloadsAndHelpShowsTheAdvancedTopic)
{
    env.state.DocumentFormat = 1;
    OtherOptionsForm& page = Page();
    page.LoadOptions();
    Control<QRadioButton>(QStringLiteral("OptionExtRtf")).click();
    Box(QStringLiteral("CheckWordArt")).setChecked(true);

    Control<QPushButton>(QStringLiteral("ButtonHelp")).click();
    EXPECT_EQ(env.help.anchors, QStringList{QStringLiteral("convertPDFAdvanced")});
    EXPECT_TRUE(env.store.writes.isEmpty());
    EXPECT_EQ(env.state.DocumentFormat, 1);

    Control<QPushButton>(QStringLiteral("ButtonDone")).click();
    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(env.state.DocumentFormat, 2);
    EXPECT_EQ(env.store.values.value(SettingsNames::DocumentFormat).toInt(), 2);
    EXPECT_EQ(StoredOption(QStringLiteral("WordArt")), QStringLiteral("1"));
}

TEST_F(OtherOptionsFormTest, LoadSetsTheTextsOfTheUsersLanguage)
{
    ExpectTexts(
        Page(),
        {
            {"CheckPreserve", "Preserve &Paragraph", "段落情報を保持する(&P)"},
            {"CheckResize", "&Resize Font to Fit Paragraph", "フォントサイズの自動調節(&R)"},
            {"CheckSub", "&Substitute Font Type", "フォントの代替(&S)"},
            {"CheckHeader", "&Include Header and Footer", "ヘッダーとフッターを変換(&I)"},
            {"CheckWordArt", "Detect Word &Art", "Wordアート検知(&A)"},
            {"ButtonDone", "&Done", "完了(&D)"},
            {"OptionExtRtf", ".RTF", ".RTF"},
            {"OptionExtDoc", ".DOC", ".DOC"},
            {"LabelImageQuality", "Image Quality:", "画質:"},
            {"LabelConversionMethodText", "Conversion Option:", "変換オプション:"},
            {"LabelQuality", "###", "###"},
            {"LabelPercent", "%", "%"},
            {"FrameAdvancedOptions", "Advanced Options", "高度なオプション"},
        });
}

}  // namespace
