// Walks through the option pages as a user does: each page move shows the next page modally
// from inside the last one's handler, and the returns unwind them in order.

#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/LinkLabel.h"
#include "dialogs/OtherOptionsForm.h"
#include "dialogs/PageTestSupport.h"
#include "dialogs/WelcomeForm.h"

#include <QTest>

namespace {

class PageWalkTest : public PageTest
{
protected:
    // When the page named `name` comes up, notes `name` and runs `step` on it.
    void Then(const char* name, std::function<void(QWidget&)> step)
    {
        WhenModalAppears(QString::fromLatin1(name), [this, name, step](QWidget& page) {
            steps.append(QString::fromLatin1(name));
            step(page);
        });
    }
    // Clicks the button or link `name` and notes when the click returns.
    void Click(QWidget& page, const char* name)
    {
        if (auto* link = page.findChild<LinkLabel*>(QString::fromLatin1(name)))
            QTest::mouseClick(link, Qt::LeftButton);
        else
            Get(page, name).click();
        steps.append(page.objectName() + " returned");
    }

    QStringList steps;
};

TEST_F(PageWalkTest, NestedPageMovesWriteEachPageAndAllReturnWithTheWalkedPagesLoadedButHidden)
{
    env.state.DocumentType = 2;
    env.state.ConversionMethod = 3;
    env.state.DocumentFormat = 2;
    WelcomeForm& welcome = forms.Welcome();
    DocumentTypeForm& type = forms.DocumentType();
    Then("DocumentTypeForm", [&](QWidget& page) {
        Get(page, "OptionLegal").click();
        Then("ConversionMethodForm", [&](QWidget& method) {
            EXPECT_FALSE(type.isVisible());
            // Leaving the first page wrote what the pleading forces.
            EXPECT_TRUE(Get(method, "OptionPreserve").isChecked());
            EXPECT_FALSE(Get(method, "OptionFlow").isEnabled());
            Then("OtherOptionsForm", [&](QWidget& advanced) {
                EXPECT_FALSE(method.isVisible());
                EXPECT_TRUE(Get(advanced, "CheckHeader").isChecked());
                Get(advanced, "OptionExtDoc").click();
                Then("ConversionMethodForm", [&](QWidget& again) {
                    EXPECT_EQ(&again, &method) << "the same instance is shown again";
                    EXPECT_EQ(env.state.DocumentFormat, 1) << "the link wrote the page first";
                    // The record changes meanwhile: the link writes this page over it, and the
                    // first page shows the type anew.
                    env.state.DocumentType = 2;
                    env.state.ConversionMethod = 3;
                    Then("DocumentTypeForm", [&](QWidget& first) {
                        EXPECT_EQ(env.state.ConversionMethod, 1) << "the link wrote the page";
                        EXPECT_TRUE(Get(first, "OptionMulti").isChecked());
                        EXPECT_TRUE(env.store.writes.isEmpty()) << "page moves save nothing";
                        Get(first, "OptionSingle").click();
                        Click(first, "ButtonDone");
                    });
                    Click(again, "LabelDocumentType");
                });
                Click(advanced, "LabelConversionMethod");
            });
            Click(method, "ButtonNext");
        });
        Click(page, "ButtonNext");
    });
    runtime.ShowModal(type, &welcome);

    EXPECT_EQ(steps,
              QStringList({"DocumentTypeForm", "ConversionMethodForm", "OtherOptionsForm",
                           "ConversionMethodForm", "DocumentTypeForm", "DocumentTypeForm returned",
                           "ConversionMethodForm returned", "OtherOptionsForm returned",
                           "ConversionMethodForm returned", "DocumentTypeForm returned"}));
    QStringList loaded;
    for (const Form* form : runtime.LoadedForms())
        loaded.append(form->objectName() + (form->isVisible() ? " shown" : ""));
    EXPECT_EQ(loaded, QStringList({"WelcomeForm", "ConversionMethodForm", "OtherOptionsForm"}));
    // Choosing single-column undid nothing that the pleading forced.
    for (const char* key : {"DocumentType", "DetectHeader", "ConversionMethod"})
        EXPECT_EQ(StoredOption(key), QStringLiteral("1")) << key;
    EXPECT_EQ(env.store.values.value(SettingsNames::DocumentFormat).toInt(), 1);
}

TEST_F(PageWalkTest, HelpButtonAndF1InEachDialogOpenItsOwnTopic)
{
    QStringList asked;
    runtime.SetHelpHandler([&asked](Form& form) { asked.append(form.HelpTopic()); });
    QStringList topics;
    for (Form* page : QList<Form*>{&forms.Welcome(), &forms.DocumentType(),
                                   &forms.ConversionMethod(), &forms.OtherOptions()}) {
        QTest::keyClick(page, Qt::Key_F1);
        Get(*page, "ButtonHelp").click();
        topics.append("::/options.htm#" + env.help.anchors.value(topics.size()));
    }
    EXPECT_EQ(asked, topics) << "F1 asks for the topic the Help button opens";
    EXPECT_EQ(env.help.anchors, QStringList({"convertPDF", "convertPDFType", "convertPDFConversion",
                                             "convertPDFAdvanced"}));
}

}  // namespace
