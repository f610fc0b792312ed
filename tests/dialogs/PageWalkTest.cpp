#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/PageTestSupport.h"
#include "dialogs/WelcomeForm.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <cmath>

namespace {

class PageWalkTest : public PageTest
{
protected:
    void SetUp() override
    {
        env.state.DocumentType = 2;
        env.state.ConversionMethod = 3;
        env.state.DetectHeader = 0;
        env.state.JpegQuality = 80;
        env.state.DocumentFormat = 2;
    }

    static bool Checked(QWidget& page, const char* name)
    {
        return Child<QAbstractButton>(page, QString::fromLatin1(name)).isChecked();
    }
    static void Click(QWidget& page, const char* name)
    {
        Child<QAbstractButton>(page, QString::fromLatin1(name)).click();
    }
    static void ClickLink(QWidget& page, const char* name)
    {
        QTest::mouseClick(&Child<LinkLabel>(page, QString::fromLatin1(name)), Qt::LeftButton);
    }
    // A page led to from another one opens centred over it; the pages are of one width.
    static void ExpectPlacedOver(const Form& page, const Form& from)
    {
        // A window not yet shown has no frame yet, which may shift it by a few pixels.
        EXPECT_LE(std::abs(page.Left() - (from.Left() + (from.Width() - page.Width()) / 2)), 60.0F);
        EXPECT_LE(std::abs(page.Top() - (from.Top() + (from.Height() - page.Height()) / 2)), 60.0F);
    }
};

TEST_F(PageWalkTest, NestedPageMovesAllReturnAndLeaveTheWalkedPagesLoadedButHidden)
{
    WelcomeForm& welcome = forms.Welcome();
    DocumentTypeForm& documentType = forms.DocumentType();
    documentType.Move(1500, 1200);
    QStringList steps;

    WhenModalAppears(QStringLiteral("DocumentTypeForm"), [&](QWidget& page) {
        steps.append(QStringLiteral("type"));
        EXPECT_TRUE(Checked(page, "OptionMulti"));
        Click(page, "OptionLegal");

        WhenModalAppears(QStringLiteral("ConversionMethodForm"), [&](QWidget& methodPage) {
            steps.append(QStringLiteral("method"));
            EXPECT_FALSE(documentType.isVisible());
            EXPECT_TRUE(runtime.IsLoaded(&documentType));
            // Leaving the first page wrote what the pleading forces.
            EXPECT_EQ(env.state.DocumentType, 3);
            EXPECT_EQ(env.state.DetectHeader, 1);
            EXPECT_EQ(env.state.ConversionMethod, 1);
            EXPECT_TRUE(Checked(methodPage, "OptionPreserve"));
            EXPECT_FALSE(Child<QWidget>(methodPage, QStringLiteral("OptionFlow")).isEnabled());
            ExpectPlacedOver(static_cast<Form&>(methodPage), documentType);

            WhenModalAppears(QStringLiteral("OtherOptionsForm"), [&](QWidget& advancedPage) {
                steps.append(QStringLiteral("advanced"));
                EXPECT_FALSE(methodPage.isVisible());
                EXPECT_TRUE(Checked(advancedPage, "CheckHeader"));
                EXPECT_TRUE(Checked(advancedPage, "OptionExtRtf"));
                Click(advancedPage, "OptionExtDoc");
                // The main dialog changed the type meanwhile: the first page shows it anew.
                env.state.DocumentType = 2;

                WhenModalAppears(QStringLiteral("DocumentTypeForm"), [&](QWidget& again) {
                    steps.append(QStringLiteral("type again"));
                    EXPECT_EQ(&again, &documentType) << "the same instance is shown again";
                    EXPECT_FALSE(advancedPage.isVisible());
                    EXPECT_EQ(env.state.DocumentFormat, 1) << "the link wrote the page first";
                    EXPECT_TRUE(Checked(again, "OptionMulti"));
                    EXPECT_FALSE(Child<QLabel>(again, QStringLiteral("ImageMulti")).isHidden());
                    Click(again, "OptionSingle");
                    Click(again, "ButtonDone");
                    steps.append(QStringLiteral("done"));
                });
                ClickLink(advancedPage, "LabelDocumentType");
                steps.append(QStringLiteral("advanced returned"));
            });
            Click(methodPage, "ButtonNext");
            steps.append(QStringLiteral("method returned"));
        });
        Click(page, "ButtonNext");
        steps.append(QStringLiteral("type returned"));
    });

    runtime.ShowModal(documentType, &welcome);
    steps.append(QStringLiteral("walk returned"));

    EXPECT_EQ(steps,
              QStringList({"type", "method", "advanced", "type again", "done", "advanced returned",
                           "method returned", "type returned", "walk returned"}));
    EXPECT_FALSE(runtime.IsLoaded(&documentType));
    ConversionMethodForm& method = forms.ConversionMethod();
    OtherOptionsForm& advanced = forms.OtherOptions();
    for (Form* page : {static_cast<Form*>(&method), static_cast<Form*>(&advanced)}) {
        EXPECT_TRUE(runtime.IsLoaded(page)) << qPrintable(page->objectName());
        EXPECT_FALSE(page->isVisible()) << qPrintable(page->objectName());
    }

    // Choosing single-column undid nothing that the pleading forced.
    EXPECT_EQ(env.state.DocumentType, 1);
    EXPECT_EQ(env.state.DetectHeader, 1);
    EXPECT_EQ(env.state.ConversionMethod, 1);
    EXPECT_EQ(StoredOption(QStringLiteral("DocumentType")), QStringLiteral("1"));
    EXPECT_EQ(StoredOption(QStringLiteral("ConversionMethod")), QStringLiteral("1"));
    EXPECT_EQ(env.store.values.value(SettingsNames::DocumentFormat).toInt(), 1);
}

TEST_F(PageWalkTest, LinksBackWriteThePageAndNothingIsSavedOnTheWay)
{
    WelcomeForm& welcome = forms.Welcome();
    OtherOptionsForm& advanced = forms.OtherOptions();
    QStringList steps;

    WhenModalAppears(QStringLiteral("OtherOptionsForm"), [&](QWidget& page) {
        steps.append(QStringLiteral("advanced"));
        Click(page, "CheckWordArt");
        WhenModalAppears(QStringLiteral("ConversionMethodForm"), [&](QWidget& methodPage) {
            steps.append(QStringLiteral("method"));
            EXPECT_EQ(env.state.WordArt, 1);
            EXPECT_TRUE(Checked(methodPage, "OptionFlow"));
            Click(methodPage, "OptionExact");
            WhenModalAppears(QStringLiteral("DocumentTypeForm"), [&](QWidget& typePage) {
                steps.append(QStringLiteral("type"));
                EXPECT_EQ(env.state.ConversionMethod, 2);
                EXPECT_TRUE(env.store.writes.isEmpty()) << "page moves save nothing";
                // Leaving by the window frame writes nothing either.
                Click(typePage, "OptionLegal");
                typePage.close();
            });
            ClickLink(methodPage, "LabelDocumentType");
        });
        ClickLink(page, "LabelConversionMethod");
    });
    runtime.ShowModal(advanced, &welcome);

    EXPECT_EQ(steps, QStringList({"advanced", "method", "type"}));
    EXPECT_EQ(env.state.DocumentType, 2);
    EXPECT_EQ(env.state.DetectHeader, 0);
    EXPECT_EQ(env.state.ConversionMethod, 2);
    EXPECT_EQ(env.state.WordArt, 1);
    EXPECT_TRUE(env.store.writes.isEmpty());
    QStringList loaded;
    for (Form* form : runtime.LoadedForms()) {
        loaded.append(form->objectName());
        EXPECT_FALSE(form->isVisible()) << qPrintable(form->objectName());
    }
    EXPECT_EQ(loaded, QStringList({"WelcomeForm", "OtherOptionsForm", "ConversionMethodForm"}));
}

}  // namespace

namespace {

TEST_F(PageWalkTest, F1InEachDialogAsksForItsOwnTopic)
{
    QStringList asked;
    runtime.SetHelpHandler([&asked](Form& form) { asked.append(form.HelpTopic()); });
    const QList<Form*> pages = {&forms.Welcome(), &forms.DocumentType(), &forms.ConversionMethod(),
                                &forms.OtherOptions()};
    for (Form* page : pages)
        QTest::keyClick(page, Qt::Key_F1);
    EXPECT_EQ(asked, (QStringList{QStringLiteral("::/options.htm#convertPDF"),
                                  QStringLiteral("::/options.htm#convertPDFType"),
                                  QStringLiteral("::/options.htm#convertPDFConversion"),
                                  QStringLiteral("::/options.htm#convertPDFAdvanced")}));
}

}  // namespace
