#include "dialogs/DocumentTypeForm.h"
#include "dialogs/PageTestSupport.h"

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
    QString ImageOf(const QString& option) { return Images[Options.indexOf(option)]; }
};

TEST_F(DocumentTypeFormTest, LoadOptionsSelectsTheTypeAndShowsOnlyItsPicture)
{
    // One page through all rows: each row starts from the previous row's selection.
    const QList<std::pair<qint16, QString>> rows = {
        {2, "OptionMulti"},  {3, "OptionLegal"}, {7, "OptionSingle"}, {3, "OptionLegal"},
        {1, "OptionSingle"}, {2, "OptionMulti"}, {0, "OptionSingle"},
    };
    for (const auto& [documentType, option] : rows) {
        env.state.DocumentType = documentType;
        env.state.DetectHeader = 0;
        env.state.ConversionMethod = 3;
        Page().LoadOptions();
        EXPECT_EQ(CheckedAmong(Page(), Options), option) << "DocumentType " << documentType;
        EXPECT_EQ(ShownAmong(Page(), Images), ImageOf(option)) << "DocumentType " << documentType;
        EXPECT_EQ(env.state.DocumentType, Options.indexOf(option) + 1);
        // Showing a pleading forces nothing; only leaving the page does.
        EXPECT_EQ(env.state.DetectHeader, 0);
        EXPECT_EQ(env.state.ConversionMethod, 3);
    }
}

TEST_F(DocumentTypeFormTest, UpdateOptionsWritesTheClickedTypeAndWhatAPleadingForces)
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
        {1, "OptionMulti", 0, 3, 2, 0, 3}, {2, "OptionSingle", 0, 2, 1, 0, 2},
        {1, "OptionLegal", 0, 3, 3, 1, 1}, {3, "OptionSingle", 1, 1, 1, 1, 1},
        {3, "OptionMulti", 0, 3, 2, 0, 3}, {3, "", 0, 2, 3, 1, 1},
    };
    for (const Row& row : rows) {
        env.state.DocumentType = row.documentType;
        Page().LoadOptions();
        env.state.DetectHeader = row.detectHeader;
        env.state.ConversionMethod = row.conversionMethod;
        if (!row.click.isEmpty()) {
            Child<QRadioButton>(Page(), row.click).click();
            EXPECT_EQ(ShownAmong(Page(), Images), ImageOf(row.click));
            EXPECT_EQ(env.state.DocumentType, row.documentType) << "a click alone writes nothing";
        }
        Page().UpdateOptions();
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
    EXPECT_EQ(CheckedAmong(Page(), Options), QString());
    Page().UpdateOptions();
    EXPECT_EQ(env.state.DocumentType, 1);
    EXPECT_EQ(env.state.ConversionMethod, 2);
}

TEST_F(DocumentTypeFormTest, DoneSavesTheOptionsAndUnloadsThePage)
{
    env.state.DocumentType = 1;
    env.state.ConversionMethod = 3;
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

TEST_F(DocumentTypeFormTest, HelpAndClosingByTheWindowFrameWriteNothing)
{
    env.state.DocumentType = 2;
    DocumentTypeForm& page = Page();
    page.LoadOptions();
    Child<QRadioButton>(page, QStringLiteral("OptionLegal")).click();
    Child<QPushButton>(page, QStringLiteral("ButtonHelp")).click();
    ASSERT_EQ(env.help.anchors, QStringList{QStringLiteral("convertPDFType")});
    EXPECT_TRUE(env.help.pages.first().endsWith(QStringLiteral("/options.htm")));
    EXPECT_TRUE(runtime.IsLoaded(&page));

    page.close();
    EXPECT_FALSE(runtime.IsLoaded(&page));
    EXPECT_EQ(env.state.DocumentType, 2);
    EXPECT_EQ(env.state.DetectHeader, 0);
    EXPECT_TRUE(env.store.writes.isEmpty());
}

TEST_F(DocumentTypeFormTest, LoadSetsTextsAndPicturesOfTheUsersLanguage)
{
    DocumentTypeForm& page = Page();
    ExpectTexts(page,
                {
                    {"OptionMulti", "&Multi-Column PDF", "複数段の段組を含むPDF(&M)"},
                    {"OptionSingle", "&Single-Column PDF", "段組が1段のみのPDF(&S)"},
                    {"OptionLegal", "&Legal Pleading PDF", "法的書類のPDF(&L)"},
                    {"ButtonNext", "PDF &Conversion Options >", "PDF変換オプションへ(&C) →"},
                    {"ButtonDone", "&Done", "完了(&D)"},
                    {"ButtonHelp", "&Help", "ヘルプ(&H)"},
                    {"LabelOptionLegal", "Select this if your PDF is a legal pleading document.",
                     "米国形式の法廷で使用する文書のみに対応しています。"},
                    {"FrameDocumentType", "PDF Document Type", "PDF文書の種類"},
                });
    EXPECT_EQ(page.windowTitle(), InTestLanguage(QStringLiteral("Convert PDF to Word"),
                                                 QStringLiteral("PDFをWordに変換")));
    ExpectPictures(page, {{QStringLiteral("ImageSingle"), OptionPicture::SingleColumn},
                          {QStringLiteral("ImageMulti"), OptionPicture::MultiColumn},
                          {QStringLiteral("ImageLegal"), OptionPicture::Pleading}});
}

}  // namespace
