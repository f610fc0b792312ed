#include "dialogs/DocumentTypeForm.h"
#include "dialogs/OptionPictures.h"
#include "dialogs/PageTestSupport.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace {

const QStringList Options = {QStringLiteral("OptionSingle"), QStringLiteral("OptionMulti"),
                             QStringLiteral("OptionLegal")};
const QStringList Images = {QStringLiteral("ImageSingle"), QStringLiteral("ImageMulti"),
                            QStringLiteral("ImageLegal")};

class DocumentTypeFormTest : public PageTest
{
protected:
    DocumentTypeForm& Page() { return forms.DocumentType(); }

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
};

TEST_F(DocumentTypeFormTest, ControlsFollowTheDialogDefinition)
{
    struct Control
    {
        const char* name;
        const char* kind;
        const char* text;
    };
    const QList<Control> controls = {
        {"ButtonNext", "QPushButton", "PDF &Conversion Options >"},
        {"Picture1", "QLabel", ""},
        {"OptionLegal", "QRadioButton", "&Legal Pleading PDF"},
        {"OptionSingle", "QRadioButton", "&Single-Column PDF"},
        {"OptionMulti", "QRadioButton", "&Multi-Column PDF"},
        {"ImageMulti", "QLabel", ""},
        {"ImageSingle", "QLabel", ""},
        {"ImageLegal", "QLabel", ""},
        {"LabelOptionLegal", "QLabel", "Select this if your PDF is a legal pleading document."},
        {"LabelOptionMulti", "QLabel",
         "Select this if your PDF is complex and may contain multiple columns."},
        {"LabelOptionSingle", "QLabel",
         "Select this if your PDF is simple and contains no column at all."},
        {"LabelDocumentTypeText", "QLabel", "Choose a document type that best describe your PDF"},
        {"ButtonHelp", "QPushButton", "&Help"},
        {"ButtonDone", "QPushButton", "&Done"},
        {"FrameDocumentType", "QGroupBox", "PDF Document Type"},
    };

    DocumentTypeForm page(runtime, forms);  // not loaded: the definition as it stands
    QStringList order;
    for (QObject* child : page.children())
        if (child->isWidgetType())
            order.append(child->objectName());
    QStringList expected;
    for (const Control& control : controls) {
        expected.append(QString::fromLatin1(control.name));
        QWidget& widget = Child<QWidget>(page, QString::fromLatin1(control.name));
        EXPECT_TRUE(widget.inherits(control.kind)) << control.name;
        QString text;
        if (auto* button = qobject_cast<QAbstractButton*>(&widget))
            text = button->text();
        else if (auto* frame = qobject_cast<QGroupBox*>(&widget))
            text = frame->title();
        else if (auto* label = qobject_cast<QLabel*>(&widget))
            text = label->text();
        EXPECT_EQ(text, QString::fromUtf8(control.text)) << control.name;
    }
    EXPECT_EQ(order.join(u',').toStdString(), expected.join(u',').toStdString());
    EXPECT_EQ(page.windowTitle(), QStringLiteral("Convert PDF to Word"));
    EXPECT_EQ(page.font().family(), QStringLiteral("Tahoma"));
    EXPECT_DOUBLE_EQ(page.font().pointSizeF(), 8.25);
    EXPECT_EQ(page.minimumSize(), page.maximumSize());
    EXPECT_FALSE(Child<QLabel>(page, QStringLiteral("Picture1")).pixmap().isNull());

    // The three examples lie at one place.
    const QRect place = Child<QLabel>(page, QStringLiteral("ImageSingle")).geometry();
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("ImageMulti")).geometry(), place);
    EXPECT_EQ(Child<QLabel>(page, QStringLiteral("ImageLegal")).geometry(), place);
}

TEST_F(DocumentTypeFormTest, LoadOptionsSelectsTheTypeAndShowsOnlyItsPicture)
{
    struct Row
    {
        qint16 documentType;
        QString option;
        QString image;
        qint16 documentTypeAfter;
    };
    // One page through all rows: each row starts from the previous row's selection.
    const QList<Row> rows = {
        {2, "OptionMulti", "ImageMulti", 2},    {3, "OptionLegal", "ImageLegal", 3},
        {1, "OptionSingle", "ImageSingle", 1},  {3, "OptionLegal", "ImageLegal", 3},
        {7, "OptionSingle", "ImageSingle", 1},  {2, "OptionMulti", "ImageMulti", 2},
        {0, "OptionSingle", "ImageSingle", 1},  {3, "OptionLegal", "ImageLegal", 3},
        {-1, "OptionSingle", "ImageSingle", 1},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        env.state.DetectHeader = 0;
        env.state.ConversionMethod = 3;
        Page().LoadOptions();
        EXPECT_EQ(CheckedOption(), row.option) << "DocumentType " << row.documentType;
        EXPECT_EQ(ShownImage(), row.image) << "DocumentType " << row.documentType;
        EXPECT_EQ(env.state.DocumentType, row.documentTypeAfter);
        // Showing a pleading forces nothing; only leaving the page does.
        EXPECT_EQ(env.state.DetectHeader, 0);
        EXPECT_EQ(env.state.ConversionMethod, 3);
    }
}

TEST_F(DocumentTypeFormTest, ClickingAnOptionShowsItsPictureAndChangesNoField)
{
    env.state.DocumentType = 1;
    env.state.ConversionMethod = 3;
    Page().LoadOptions();
    for (int i : {2, 1, 0, 2}) {
        Child<QRadioButton>(Page(), Options[i]).click();
        EXPECT_EQ(ShownImage(), Images[i]);
        EXPECT_EQ(env.state.DocumentType, 1);
        EXPECT_EQ(env.state.ConversionMethod, 3);
    }
}

TEST_F(DocumentTypeFormTest, UpdateOptionsWritesTheTypeAndWhatAPleadingForces)
{
    struct Row
    {
        qint16 documentType;  // loaded first
        QString click;        // then chosen by the user
        qint16 detectHeader;  // before
        qint16 conversionMethod;
        qint16 documentTypeAfter;
        qint16 detectHeaderAfter;
        qint16 conversionMethodAfter;
    };
    const QList<Row> rows = {
        {1, "OptionMulti", 0, 3, 2, 0, 3},
        {2, "OptionSingle", 0, 2, 1, 0, 2},
        {1, "OptionLegal", 0, 3, 3, 1, 1},
        {2, "OptionLegal", 1, 2, 3, 1, 1},
        {3, "OptionSingle", 1, 1, 1, 1, 1},
        {3, "OptionMulti", 0, 3, 2, 0, 3},
        {3, "", 0, 2, 3, 1, 1},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        Page().LoadOptions();
        if (!row.click.isEmpty())
            Child<QRadioButton>(Page(), row.click).click();
        env.state.DetectHeader = row.detectHeader;
        env.state.ConversionMethod = row.conversionMethod;
        EXPECT_TRUE(Page().UpdateOptions());
        EXPECT_EQ(env.state.DocumentType, row.documentTypeAfter) << qPrintable(row.click);
        EXPECT_EQ(env.state.DetectHeader, row.detectHeaderAfter) << qPrintable(row.click);
        EXPECT_EQ(env.state.ConversionMethod, row.conversionMethodAfter) << qPrintable(row.click);
    }
}

TEST_F(DocumentTypeFormTest, UpdateOptionsWithNoOptionSelectedGivesSingleColumn)
{
    env.state.DocumentType = 3;
    env.state.ConversionMethod = 2;
    // The page is loaded but was never activated, so nothing is selected yet.
    EXPECT_EQ(CheckedOption(), QString());
    EXPECT_TRUE(Page().UpdateOptions());
    EXPECT_EQ(env.state.DocumentType, 1);
    EXPECT_EQ(env.state.ConversionMethod, 2);
}

TEST_F(DocumentTypeFormTest, DoneSavesTheOptionsAndUnloadsThePage)
{
    env.state.DocumentType = 1;
    env.state.ConversionMethod = 3;
    env.state.DetectHeader = 0;
    env.state.DocumentFormat = 2;
    DocumentTypeForm& page = Page();
    page.LoadOptions();
    Child<QRadioButton>(page, QStringLiteral("OptionLegal")).click();
    Child<QPushButton>(page, QStringLiteral("ButtonDone")).click();

    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(env.state.DocumentType, 3);
    EXPECT_EQ(StoredOption(QStringLiteral("DocumentType")), QStringLiteral("3"));
    EXPECT_EQ(StoredOption(QStringLiteral("DetectHeader")), QStringLiteral("1"));
    EXPECT_EQ(StoredOption(QStringLiteral("ConversionMethod")), QStringLiteral("1"));
    EXPECT_EQ(env.store.values.value(SettingsNames::DocumentFormat).toInt(), 2);
}

TEST_F(DocumentTypeFormTest, ClosingByTheWindowFrameUnloadsWithoutWritingTheChoice)
{
    env.state.DocumentType = 2;
    DocumentTypeForm& page = Page();
    page.LoadOptions();
    Child<QRadioButton>(page, QStringLiteral("OptionLegal")).click();
    page.close();
    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(env.state.DocumentType, 2);
    EXPECT_EQ(env.state.DetectHeader, 0);
    EXPECT_TRUE(env.store.writes.isEmpty());
}

TEST_F(DocumentTypeFormTest, HelpOpensTheDocumentTypeTopicAndChangesNothing)
{
    env.state.DocumentType = 1;
    Page().LoadOptions();
    Child<QRadioButton>(Page(), QStringLiteral("OptionLegal")).click();
    Child<QPushButton>(Page(), QStringLiteral("ButtonHelp")).click();
    ASSERT_EQ(env.help.anchors, QStringList{QStringLiteral("convertPDFType")});
    EXPECT_TRUE(env.help.pages.first().endsWith(QStringLiteral("/options.htm")));
    EXPECT_EQ(env.state.DocumentType, 1);
    EXPECT_EQ(env.state.DetectHeader, 0);
    EXPECT_TRUE(runtime.IsLoaded(&Page()));
}

TEST_F(DocumentTypeFormTest, LoadSetsTextsAndPicturesOfTheUsersLanguage)
{
    DocumentTypeForm& page = Page();
    struct Row
    {
        const char* name;
        QString english;
        QString japanese;
    };
    const QList<Row> rows = {
        {"OptionMulti", "&Multi-Column PDF", "複数段の段組を含むPDF(&M)"},
        {"OptionSingle", "&Single-Column PDF", "段組が1段のみのPDF(&S)"},
        {"OptionLegal", "&Legal Pleading PDF", "法的書類のPDF(&L)"},
        {"ButtonNext", "PDF &Conversion Options >", "PDF変換オプションへ(&C) →"},
        {"ButtonDone", "&Done", "完了(&D)"},
        {"ButtonHelp", "&Help", "ヘルプ(&H)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Child<QAbstractButton>(page, QString::fromLatin1(row.name)).text(),
                  InTestLanguage(row.english, row.japanese))
            << row.name;
    EXPECT_EQ(
        Child<QLabel>(page, QStringLiteral("LabelOptionLegal")).text(),
        InTestLanguage(QStringLiteral("Select this if your PDF is a legal pleading document."),
                       QStringLiteral("米国形式の法廷で使用する文書のみに対応しています。")));
    EXPECT_EQ(Child<QGroupBox>(page, QStringLiteral("FrameDocumentType")).title(),
              InTestLanguage(QStringLiteral("PDF Document Type"), QStringLiteral("PDF文書の種類")));
    EXPECT_EQ(page.windowTitle(), InTestLanguage(QStringLiteral("Convert PDF to Word"),
                                                 QStringLiteral("PDFをWordに変換")));

    const QList<std::pair<QString, OptionPicture>> pictures = {
        {QStringLiteral("ImageSingle"), OptionPicture::SingleColumn},
        {QStringLiteral("ImageMulti"), OptionPicture::MultiColumn},
        {QStringLiteral("ImageLegal"), OptionPicture::Pleading},
    };
    const PictureLanguage language =
        TestingJapanese() ? PictureLanguage::Japanese : PictureLanguage::English;
    for (const auto& [name, picture] : pictures)
        EXPECT_EQ(Child<QLabel>(page, name).pixmap().toImage(),
                  DrawOptionPicture(picture, language).toImage())
            << qPrintable(name);
}

}  // namespace
