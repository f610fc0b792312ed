#include "dialogs/ConversionMethodForm.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/PageTestSupport.h"

#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

namespace {

const QStringList Options = {QStringLiteral("OptionPreserve"), QStringLiteral("OptionExact"),
                             QStringLiteral("OptionFlow")};
const QStringList Images = {QStringLiteral("ImagePreserve"), QStringLiteral("ImageExact"),
                            QStringLiteral("ImageFlow")};
// What a pleading disables.
const QStringList Restricted = {QStringLiteral("OptionExact"), QStringLiteral("LabelOptionExact"),
                                QStringLiteral("OptionFlow"), QStringLiteral("LabelOptionFlow")};

QString DocumentTypeText(qint16 documentType)
{
    switch (documentType) {
    case 1:
        return InTestLanguage(QStringLiteral("Single-Column PDF"),
                              QStringLiteral("段組が1段のみのPDF"));
    case 3:
        return InTestLanguage(QStringLiteral("Legal Pleading PDF"),
                              QStringLiteral("法的書類のPDF"));
    default:
        return InTestLanguage(QStringLiteral("Multi-Column PDF"),
                              QStringLiteral("複数段の段組を含むPDF"));
    }
}

class ConversionMethodFormTest : public PageTest
{
protected:
    ConversionMethodForm& Page() { return forms.ConversionMethod(); }
    QString ImageOf(const QString& option) { return Images[Options.indexOf(option)]; }
};

TEST_F(ConversionMethodFormTest, LoadOptionsShowsMethodAndTypeAndAppliesThePleadingRule)
{
    struct Row
    {
        qint16 documentType;
        qint16 conversionMethod;
        QString option;
        qint16 documentTypeAfter;
        qint16 conversionMethodAfter;
        QString enabled;
    };
    const QString all = Restricted.join(u',');
    // One page through all rows, so that each row also leaves the previous one's state behind.
    const QList<Row> rows = {
        {1, 1, "OptionPreserve", 1, 1, all}, {2, 2, "OptionExact", 2, 2, all},
        {3, 3, "OptionPreserve", 3, 1, ""},  {1, 3, "OptionFlow", 1, 3, all},
        {2, 4, "OptionExact", 2, 2, all},    {3, 2, "OptionPreserve", 3, 1, ""},
        {9, 3, "OptionFlow", 2, 3, all},     {0, 1, "OptionPreserve", 2, 1, all},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.ConversionMethod = row.conversionMethod;
        Page().LoadOptions();
        const std::string context = "type " + std::to_string(row.documentType) + ", method " +
                                    std::to_string(row.conversionMethod);
        EXPECT_EQ(CheckedAmong(Page(), Options), row.option) << context;
        EXPECT_EQ(ShownAmong(Page(), Images), ImageOf(row.option)) << context;
        EXPECT_EQ(env.state.DocumentType, row.documentTypeAfter) << context;
        EXPECT_EQ(env.state.ConversionMethod, row.conversionMethodAfter) << context;
        EXPECT_EQ(EnabledAmong(Page(), Restricted), row.enabled) << context;
        EXPECT_EQ(Child<QLabel>(Page(), QStringLiteral("LabelDocumentType")).text(),
                  DocumentTypeText(row.documentTypeAfter))
            << context;
    }
}

TEST_F(ConversionMethodFormTest, UpdateOptionsWritesTheSelectedMethod)
{
    env.state.DocumentType = 1;
    // Loaded but never activated: no method is selected, which counts as text boxes.
    env.state.ConversionMethod = 3;
    Page().UpdateOptions();
    EXPECT_EQ(env.state.ConversionMethod, 2);

    Page().LoadOptions();
    const QList<std::pair<QString, qint16>> rows = {
        {"OptionFlow", 3}, {"OptionPreserve", 1}, {"OptionExact", 2}};
    for (const auto& [option, method] : rows) {
        env.state.ConversionMethod = 0;
        Child<QRadioButton>(Page(), option).click();
        EXPECT_EQ(ShownAmong(Page(), Images), ImageOf(option));
        EXPECT_EQ(env.state.ConversionMethod, 0) << "a click alone writes nothing";
        Page().UpdateOptions();
        EXPECT_EQ(env.state.ConversionMethod, method) << qPrintable(option);
        EXPECT_EQ(env.state.DocumentType, 1);
    }
}

TEST_F(ConversionMethodFormTest, EachLoadReplacesAMethodClickedButNotConfirmed)
{
    env.state.DocumentType = 2;
    env.state.ConversionMethod = 2;
    Page().LoadOptions();
    Child<QRadioButton>(Page(), QStringLiteral("OptionFlow")).click();
    Page().LoadOptions();
    EXPECT_EQ(CheckedAmong(Page(), Options), QStringLiteral("OptionExact"));
    EXPECT_EQ(ShownAmong(Page(), Images), QStringLiteral("ImageExact"));
}

TEST_F(ConversionMethodFormTest, DoneSavesAndUnloadsAndHelpShowsTheMethodTopic)
{
    env.state.DocumentType = 1;
    env.state.ConversionMethod = 1;
    ConversionMethodForm& page = Page();
    page.LoadOptions();
    Child<QRadioButton>(page, QStringLiteral("OptionFlow")).click();

    Child<QPushButton>(page, QStringLiteral("ButtonHelp")).click();
    EXPECT_EQ(env.help.anchors, QStringList{QStringLiteral("convertPDFConversion")});
    EXPECT_EQ(env.state.ConversionMethod, 1);
    EXPECT_TRUE(env.store.writes.isEmpty());

    Child<QPushButton>(page, QStringLiteral("ButtonDone")).click();
    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(env.state.ConversionMethod, 3);
    EXPECT_EQ(StoredOption(QStringLiteral("ConversionMethod")), QStringLiteral("3"));
}

TEST_F(ConversionMethodFormTest, LoadSetsTextsAndPicturesOfTheUsersLanguage)
{
    ConversionMethodForm& page = Page();
    ExpectTexts(page,
                {
                    {"OptionExact", "Exact Placement using Text &Boxes",
                     "テキストボックスを使った配置(&B)"},
                    {"OptionPreserve", "Exact Placement using &Tabs and Spaces",
                     "タブとスペースを使った配置(&T)"},
                    {"OptionFlow", "&Flow the text and graphics", "単純なレイアウトに変換(&F)"},
                    {"ButtonNext", "&Advanced Options >", "高度なオプションへ(&A) →"},
                    {"LabelDocumentTypeText", "Document Type:", "文書の種類:"},
                    {"FrameConversionOptions", "PDF Conversion Options", "PDF変換オプション"},
                });
    ExpectPictures(page, {{QStringLiteral("ImageExact"), OptionPicture::TextBoxes},
                          {QStringLiteral("ImagePreserve"), OptionPicture::TabsAndSpaces},
                          {QStringLiteral("ImageFlow"), OptionPicture::FlowingText}});
}

TEST(LinkLabelTest, LooksLikeALink)
{
    LinkLabel label;
    EXPECT_EQ(label.palette().color(QPalette::WindowText), QColor(0, 0, 128));
    EXPECT_TRUE(label.font().underline());
    EXPECT_EQ(label.font().family(), QStringLiteral("Tahoma"));
    EXPECT_DOUBLE_EQ(label.font().pointSizeF(), 8.25);
}

TEST(LinkLabelTest, ALeftClickInsideClicksAndTheMouseShowsTheHand)
{
    QWidget window;
    auto* label = new LinkLabel(&window);
    label->setText(QStringLiteral("Multi-Column PDF"));
    label->setGeometry(10, 10, 150, 20);
    window.show();
    QSignalSpy clicks(label, &LinkLabel::clicked);

    struct Row
    {
        Qt::MouseButton button;
        QPoint release;
        int clicksAfter;
    };
    const QList<Row> rows = {
        {Qt::LeftButton, QPoint(5, 5), 1},
        {Qt::RightButton, QPoint(5, 5), 1},
        {Qt::LeftButton, QPoint(400, 5), 1},  // released outside: no click
        {Qt::LeftButton, QPoint(140, 15), 2},
    };
    for (const Row& row : rows) {
        const auto expectHand = [label] {
            EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
            label->unsetCursor();
        };
        label->unsetCursor();
        QTest::mousePress(label, row.button, {}, QPoint(5, 5));
        expectHand();
        QTest::mouseMove(label, QPoint(20, 6));
        expectHand();
        QTest::mouseRelease(label, row.button, {}, row.release);
        expectHand();
        EXPECT_EQ(clicks.count(), row.clicksAfter);
    }
}

}  // namespace
