#include "dialogs/OtherOptionsForm.h"
#include "dialogs/OptionNames.h"
#include "dialogs/PageTestSupport.h"
#include "services/DialogLanguage.h"

#include <QComboBox>
#include <QLabel>
#include <QSlider>
#include <QTest>

namespace {

class OtherOptionsFormTest : public PageTest
{
protected:
    void SetUp() override
    {
        env.state.DocumentFormat = 1;
        runtime.Show(page);
    }

    OtherOptionsForm& page = forms.OtherOptions();
};

TEST_F(OtherOptionsFormTest, TypeAndMethodAreNamedAndDecideWhichTextFeaturesCanChange)
{
    const QStringList features = {"CheckPreserve", "CheckSub", "CheckResize", "CheckHeader"};
    const QString all = features.join(u',');
    const QString noHeader = QStringLiteral("CheckPreserve,CheckSub,CheckResize");
    // Type and method loaded, as the page then holds them, the features that can change, and
    // whether the header box is ticked. A box disabled by one row must come back in the next;
    // loading never clears one.
    const std::tuple<qint16, qint16, qint16, qint16, QString, bool> rows[] = {
        {1, 1, 1, 1, all, false}, {0, 2, 2, 2, noHeader, false}, {2, 3, 2, 3, "", false},
        {3, 1, 3, 1, all, true},  {3, 9, 3, 2, noHeader, true},  {-3, 3, 2, 3, "", true}};
    for (const auto& [type, method, typeAfter, methodAfter, enabled, headerOn] : rows) {
        SCOPED_TRACE(testing::Message() << "type " << type << ", method " << method);
        env.state.DocumentType = type;
        env.state.ConversionMethod = method;
        env.state.DetectHeader = 0;
        page.LoadOptions();
        EXPECT_EQ(Get<QLabel>(page, "LabelDocumentType").text(),
                  DisplayedCaption(DocumentTypeName(typeAfter)));
        EXPECT_EQ(Get<QLabel>(page, "LabelConversionMethod").text(),
                  DisplayedCaption(ConversionMethodName(methodAfter)));
        EXPECT_EQ(QList<qint16>({env.state.DocumentType, env.state.ConversionMethod}),
                  QList<qint16>({typeAfter, methodAfter}));
        EXPECT_EQ(Among(page, features, &QWidget::isEnabled), enabled);
        EXPECT_EQ(Get(page, "CheckHeader").isChecked(), headerOn);
    }
}

TEST_F(OtherOptionsFormTest, EachBoxIsTickedByAFieldOfOneAndWrittenBackDisabledOrNot)
{
    const std::pair<const char*, qint16 RunState::*> boxes[] = {
        {"CheckPreserve", &RunState::MergeParagraph},
        {"CheckSub", &RunState::AdjustFontNames},
        {"CheckResize", &RunState::ShrinkFonts},
        {"CheckHeader", &RunState::DetectHeader},
        {"CheckWordArt", &RunState::WordArt}};
    const QStringList names = {"CheckPreserve", "CheckSub", "CheckResize", "CheckHeader",
                               "CheckWordArt"};
    // Flowing text disables the four text features; they are written all the same.
    env.state.ConversionMethod = 3;
    for (const auto& [name, field] : boxes) {
        for (const auto& [other, otherField] : boxes) {
            Get(page, other).setChecked(false);
            env.state.*otherField = 0;
        }
        env.state.*field = 5;
        page.LoadOptions();
        EXPECT_EQ(Among(page, names, &QAbstractButton::isChecked), QString()) << "only 1 ticks";
        env.state.*field = 1;
        page.LoadOptions();
        env.state.*field = 0;
        page.LoadOptions();
        EXPECT_EQ(Among(page, names, &QAbstractButton::isChecked), name) << "0 clears nothing";
        page.UpdateOptions();
        for (const auto& [other, otherField] : boxes)
            EXPECT_EQ(env.state.*otherField, other == name ? 1 : 0) << name << " " << other;
    }
}

TEST_F(OtherOptionsFormTest, QualityAppliesToJpegOnlyAndDoneSavesWhatThePageShows)
{
    const QStringList quality = {"SliderQuality", "LabelImageQuality", "LabelQuality",
                                 "LabelPercent"};
    env.state.ImageFormat = 1;
    env.state.JpegQuality = 45;
    page.LoadOptions();
    EXPECT_EQ(Get<QComboBox>(page, "ComboImage").currentIndex(), 1);
    EXPECT_EQ(Among(page, quality, &QWidget::isEnabled), QString());
    Get<QComboBox>(page, "ComboImage").setCurrentIndex(0);
    EXPECT_EQ(Among(page, quality, &QWidget::isEnabled), quality.join(u','));
    EXPECT_EQ(Get<QLabel>(page, "LabelQuality").text(), QStringLiteral("45"));
    Get<QSlider>(page, "SliderQuality").triggerAction(QAbstractSlider::SliderSingleStepAdd);
    EXPECT_EQ(Get<QLabel>(page, "LabelQuality").text(), QStringLiteral("50"));
    Get(page, "OptionExtRtf").click();
    EXPECT_EQ(
        QList<qint16>({env.state.ImageFormat, env.state.JpegQuality, env.state.DocumentFormat}),
        QList<qint16>({1, 45, 1}))
        << "only leaving the page writes";

    Get(page, "ButtonDone").click();
    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(StoredOption("ImageFormat"), QStringLiteral("0"));
    EXPECT_EQ(StoredOption("JpegQuality"), QStringLiteral("50"));
    EXPECT_EQ(env.store.values.value(SettingsNames::DocumentFormat).toInt(), 2);
}

TEST_F(OtherOptionsFormTest, OutputFormatFollowsTheFieldAndTheHostingWordProcessor)
{
    const QStringList formats = {"OptionExtDoc", "OptionExtRtf", "ImageRtf"};
    // The format and hosting loaded and the option then chosen, the picture clicked and the
    // option chosen after a click with its left button, and the format that loading and leaving
    // write. A hosted row's disabled controls must come back after it.
    const std::tuple<qint16, qint16, const char*, const char*, const char*, qint16, qint16> rows[] =
        {{1, 0, "OptionExtDoc", "ImageRtf", "OptionExtRtf", 1, 2},
         {5, 0, "OptionExtRtf", "ImageDoc", "OptionExtDoc", 2, 1},
         {2, -1, "OptionExtDoc", "ImageRtf", "OptionExtDoc", 2, 1},
         {1, 0, "OptionExtDoc", "ImageRtf", "OptionExtRtf", 1, 2}};
    for (const auto& [format, hosted, chosen, picture, clicked, afterLoad, afterLeaving] : rows) {
        SCOPED_TRACE(testing::Message() << "format " << format << ", hosted " << hosted);
        env.state.DocumentFormat = format;
        env.state.HostedByWord = hosted;
        page.LoadOptions();
        EXPECT_EQ(Among(page, formats.mid(0, 2), &QAbstractButton::isChecked), chosen);
        EXPECT_EQ(Among(page, formats, &QWidget::isEnabled),
                  hosted ? QStringLiteral("OptionExtDoc") : formats.join(u','));
        EXPECT_EQ(env.state.DocumentFormat, afterLoad);
        QTest::mouseClick(&Get<QLabel>(page, picture), Qt::RightButton);
        EXPECT_EQ(Among(page, formats.mid(0, 2), &QAbstractButton::isChecked), chosen);
        QTest::mouseClick(&Get<QLabel>(page, picture), Qt::LeftButton);
        EXPECT_EQ(Among(page, formats.mid(0, 2), &QAbstractButton::isChecked), clicked);
        EXPECT_EQ(env.state.DocumentFormat, afterLoad) << "only leaving the page writes";
        page.UpdateOptions();
        EXPECT_EQ(env.state.DocumentFormat, afterLeaving);
    }
}

TEST_F(OtherOptionsFormTest, OnlyAPleadingRefusesToClearTheHeaderAndSaysWhy)
{
    // Type and method; whether the box is still ticked after a click, and the messages shown.
    // Text boxes (2) disable the box: the click can't reach it.
    const std::tuple<qint16, qint16, bool, int> rows[] = {
        {3, 1, true, 1}, {1, 1, false, 0}, {3, 2, true, 0}};
    for (const auto& [type, method, ticked, messages] : rows) {
        env.state.DocumentType = type;
        env.state.ConversionMethod = method;
        page.LoadOptions();
        Get(page, "CheckHeader").setChecked(true);
        const MessageBoxWatch watch;
        Get(page, "CheckHeader").click();
        EXPECT_EQ(Get(page, "CheckHeader").isChecked(), ticked) << type << method;
        EXPECT_EQ(watch.Count(), messages) << type << method;
        page.UpdateOptions();
        EXPECT_EQ(env.state.DetectHeader, ticked ? 1 : 0);
    }
}

}  // namespace
