#include "dialogs/ConversionMethodForm.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OptionPictures.h"
#include "dialogs/PageTestSupport.h"

#include <QGroupBox>
#include <QLabel>
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

    QString CheckedOption()
    {
        QString checked;
        for (const QString& name : Options)
            if (Child<QRadioButton>(Page(), name).isChecked())
                checked += name;
        return checked;
    }
    QString ShownImage()
    {
        QString shown;
        for (const QString& name : Images)
            if (!Child<QLabel>(Page(), name).isHidden())
                shown += name;
        return shown;
    }
    QString EnabledRestricted()
    {
        QStringList enabled;
        for (const QString& name : Restricted)
            if (Child<QWidget>(Page(), name).isEnabled())
                enabled.append(name);
        return enabled.join(u',');
    }
};

TEST_F(ConversionMethodFormTest, ControlsFollowTheDialogDefinition)
{
    const QList<std::pair<const char*, const char*>> controls = {
        {"ButtonNext", "QPushButton"},      {"Picture1", "QLabel"},
        {"OptionPreserve", "QRadioButton"}, {"OptionExact", "QRadioButton"},
        {"OptionFlow", "QRadioButton"},     {"ImageExact", "QLabel"},
        {"ImagePreserve", "QLabel"},        {"ImageFlow", "QLabel"},
        {"LabelOptionPreserve", "QLabel"},  {"LabelOptionExact", "QLabel"},
        {"LabelOptionFlow", "QLabel"},      {"LabelDocumentTypeText", "QLabel"},
        {"LabelDocumentType", "LinkLabel"}, {"ButtonDone", "QPushButton"},
        {"ButtonHelp", "QPushButton"},      {"FrameConversionOptions", "QGroupBox"},
    };
    ConversionMethodForm page(runtime, forms);
    QStringList order;
    for (QObject* child : page.children())
        if (child->isWidgetType())
            order.append(child->objectName());
    QStringList expected;
    for (const auto& [name, kind] : controls) {
        expected.append(QString::fromLatin1(name));
        EXPECT_TRUE(Child<QWidget>(page, QString::fromLatin1(name)).inherits(kind)) << name;
    }
    EXPECT_EQ(order.join(u',').toStdString(), expected.join(u',').toStdString());

    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("LabelDocumentType")).text(),
              QStringLiteral("..."));
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("LabelOptionFlow")).text(),
              QStringLiteral("Select this to continuously flow the text and graphics for maximum "
                             "editability.  The original layout will be discarded."));
    EXPECT_EQ(Child<QRadioButton>(page, QStringLiteral("OptionPreserve")).text(),
              QStringLiteral("Exact Placement using &Tabs and Spaces"));
    EXPECT_EQ(Child<QPushButton>(page, QStringLiteral("ButtonNext")).text(),
              QStringLiteral("&Advanced Options >"));
    EXPECT_EQ(page.minimumSize(), page.maximumSize());
    const QRect place = Child<QLabel>(page, QStringLiteral("ImageExact")).geometry();
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("ImagePreserve")).geometry(), place);
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("ImageFlow")).geometry(), place);
}

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
        {1, 3, "OptionFlow", 1, 3, all},     {3, 3, "OptionPreserve", 3, 1, ""},
        {1, 3, "OptionFlow", 1, 3, all},     {2, 4, "OptionExact", 2, 2, all},
        {3, 2, "OptionPreserve", 3, 1, ""},  {2, 0, "OptionExact", 2, 2, all},
        {9, 3, "OptionFlow", 2, 3, all},     {3, 7, "OptionPreserve", 3, 1, ""},
        {0, 1, "OptionPreserve", 2, 1, all},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.ConversionMethod = row.conversionMethod;
        Page().LoadOptions();
        const std::string context = "type " + std::to_string(row.documentType) + ", method " +
                                    std::to_string(row.conversionMethod);
        EXPECT_EQ(CheckedOption(), row.option) << context;
        EXPECT_EQ(ShownImage(), Images[Options.indexOf(row.option)]) << context;
        EXPECT_EQ(env.state.DocumentType, row.documentTypeAfter) << context;
        EXPECT_EQ(env.state.ConversionMethod, row.conversionMethodAfter) << context;
        EXPECT_EQ(EnabledRestricted(), row.enabled) << context;
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
    EXPECT_TRUE(Page().UpdateOptions());
    EXPECT_EQ(env.state.ConversionMethod, 2);

    Page().LoadOptions();
    const QList<std::pair<QString, qint16>> rows = {
        {"OptionFlow", 3}, {"OptionPreserve", 1}, {"OptionExact", 2}, {"OptionFlow", 3}};
    for (const auto& [option, method] : rows) {
        env.state.ConversionMethod = 0;
        Child<QRadioButton>(Page(), option).click();
        EXPECT_EQ(ShownImage(), Images[Options.indexOf(option)]);
        EXPECT_EQ(env.state.ConversionMethod, 0) << "a click alone writes nothing";
        EXPECT_TRUE(Page().UpdateOptions());
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
    EXPECT_EQ(CheckedOption(), QStringLiteral("OptionExact"));
    EXPECT_EQ(ShownImage(), QStringLiteral("ImageExact"));
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
    const QList<std::tuple<const char*, QString, QString>> rows = {
        {"OptionExact", "Exact Placement using Text &Boxes", "テキストボックスを使った配置(&B)"},
        {"OptionPreserve", "Exact Placement using &Tabs and Spaces",
         "タブとスペースを使った配置(&T)"},
        {"OptionFlow", "&Flow the text and graphics", "単純なレイアウトに変換(&F)"},
        {"ButtonNext", "&Advanced Options >", "高度なオプションへ(&A) →"},
    };
    for (const auto& [name, english, japanese] : rows)
        EXPECT_EQ(Child<QAbstractButton>(page, QString::fromLatin1(name)).text(),
                  InTestLanguage(english, japanese))
            << name;
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("LabelDocumentTypeText")).text(),
              InTestLanguage(QStringLiteral("Document Type:"), QStringLiteral("文書の種類:")));
    EXPECT_EQ(Child<QGroupBox>(page, QStringLiteral("FrameConversionOptions")).title(),
              InTestLanguage(QStringLiteral("PDF Conversion Options"),
                             QStringLiteral("PDF変換オプション")));

    const QList<std::pair<QString, OptionPicture>> pictures = {
        {QStringLiteral("ImageExact"), OptionPicture::TextBoxes},
        {QStringLiteral("ImagePreserve"), OptionPicture::TabsAndSpaces},
        {QStringLiteral("ImageFlow"), OptionPicture::FlowingText},
    };
    const PictureLanguage language =
        TestingJapanese() ? PictureLanguage::Japanese : PictureLanguage::English;
    for (const auto& [name, picture] : pictures)
        EXPECT_EQ(Child<QLabel>(page, name).pixmap().toImage(),
                  DrawOptionPicture(picture, language).toImage())
            << qPrintable(name);
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
        label->unsetCursor();
        QTest::mousePress(label, row.button, {}, QPoint(5, 5));
        EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
        label->unsetCursor();
        QTest::mouseMove(label, QPoint(20, 6));
        EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
        label->unsetCursor();
        QTest::mouseRelease(label, row.button, {}, row.release);
        EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
        EXPECT_EQ(clicks.count(), row.clicksAfter);
    }
}

}  // namespace
