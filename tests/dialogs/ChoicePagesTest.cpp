// The document type and conversion method pages: what each shows of the run's options and
// what leaving it writes.

#include "dialogs/ConversionMethodForm.h"
#include "dialogs/DocumentTypeForm.h"
#include "dialogs/OptionNames.h"
#include "dialogs/OptionPictures.h"
#include "dialogs/PageTestSupport.h"
#include "services/DialogLanguage.h"

#include <QLabel>

namespace {

const QStringList Types = {"OptionSingle", "OptionMulti", "OptionLegal"};
const QStringList TypeImages = {"ImageSingle", "ImageMulti", "ImageLegal"};
const QStringList Methods = {"OptionPreserve", "OptionExact", "OptionFlow"};
const QStringList MethodImages = {"ImagePreserve", "ImageExact", "ImageFlow"};

class ChoicePagesTest : public PageTest
{
protected:
    // Only the chosen option is selected and only its example shown, drawn in the language of
    // the run; a page's examples follow each other in OptionPicture from `first` on.
    static void ExpectChosen(QWidget& page, const QStringList& options, const QStringList& images,
                             int choice, OptionPicture first)
    {
        EXPECT_EQ(Among(page, options, &QAbstractButton::isChecked), options[choice]);
        EXPECT_EQ(Among(page, images, &QWidget::isVisible), images[choice]);
        const auto picture = static_cast<OptionPicture>(static_cast<int>(first) + choice);
        const auto language = Japanese() ? PictureLanguage::Japanese : PictureLanguage::English;
        EXPECT_EQ(Get<QLabel>(page, qPrintable(images[choice])).pixmap().toImage(),
                  DrawOptionPicture(picture, language).toImage());
    }
};

TEST_F(ChoicePagesTest, TypePageShowsTheKnownTypeAndOnlyLeavingItForcesWhatAPleadingNeeds)
{
    // The type loaded, the choice shown for it, the option clicked then (none: the loaded type
    // stays), header and method before, and the type, header and method that leaving writes.
    const std::tuple<qint16, int, const char*, qint16, qint16, qint16, qint16, qint16> rows[] = {
        {3, 2, nullptr, 0, 2, 3, 1, 1},
        {7, 0, "OptionLegal", 0, 3, 3, 1, 1},
        {3, 2, "OptionSingle", 1, 1, 1, 1, 1},
        {0, 0, "OptionMulti", 0, 3, 2, 0, 3}};
    DocumentTypeForm& page = forms.DocumentType();
    // Never shown, nothing is selected: leaving the page gives single-column.
    page.UpdateOptions();
    EXPECT_EQ(env.state.DocumentType, 1);
    runtime.Show(page);
    const auto written = [this] {
        return QList<qint16>(
            {env.state.DocumentType, env.state.DetectHeader, env.state.ConversionMethod});
    };
    for (const auto& [loaded, shown, click, header, method, typeAfter, headerAfter, methodAfter] :
         rows) {
        SCOPED_TRACE(loaded);
        env.state.DocumentType = loaded;
        env.state.DetectHeader = header;
        env.state.ConversionMethod = method;
        page.LoadOptions();
        ExpectChosen(page, Types, TypeImages, shown, OptionPicture::SingleColumn);
        if (click) {
            Get(page, click).click();
            ExpectChosen(page, Types, TypeImages, Types.indexOf(click),
                         OptionPicture::SingleColumn);
        }
        EXPECT_EQ(written(), QList<qint16>({qint16(shown + 1), header, method}))
            << "only leaving the page writes";
        page.UpdateOptions();
        EXPECT_EQ(written(), QList<qint16>({typeAfter, headerAfter, methodAfter}));
    }
}

TEST_F(ChoicePagesTest, MethodPageShowsTheMethodAndTypeAndAPleadingFixesTheMethod)
{
    // Type and method loaded; the choice shown, the type then, whether the other methods can be
    // chosen; the option clicked and the method that leaving writes.
    const std::tuple<qint16, qint16, int, qint16, bool, const char*, qint16> rows[] = {
        {1, 1, 0, 1, true, "OptionFlow", 3},
        {3, 3, 0, 3, false, nullptr, 1},
        {1, 3, 2, 1, true, "OptionExact", 2},
        {2, 4, 1, 2, true, nullptr, 2},
        {9, 3, 2, 2, true, "OptionPreserve", 1}};
    ConversionMethodForm& page = forms.ConversionMethod();
    // Never shown, nothing is selected: that counts as text boxes.
    env.state.ConversionMethod = 3;
    page.UpdateOptions();
    EXPECT_EQ(env.state.ConversionMethod, 2);
    runtime.Show(page);
    const QStringList others = {"OptionExact", "LabelOptionExact", "OptionFlow", "LabelOptionFlow"};
    for (const auto& [type, method, shown, typeAfter, open, click, methodAfter] : rows) {
        SCOPED_TRACE(testing::Message() << "type " << type << ", method " << method);
        env.state.DocumentType = type;
        env.state.ConversionMethod = method;
        page.LoadOptions();
        ExpectChosen(page, Methods, MethodImages, shown, OptionPicture::TabsAndSpaces);
        EXPECT_EQ(env.state.DocumentType, typeAfter);
        EXPECT_EQ(env.state.ConversionMethod, shown + 1);
        EXPECT_EQ(Among(page, others, &QWidget::isEnabled), open ? others.join(u',') : QString());
        EXPECT_EQ(Get<QLabel>(page, "LabelDocumentType").text(),
                  DisplayedCaption(DocumentTypeName(typeAfter)));
        if (click)
            Get(page, click).click();
        EXPECT_EQ(env.state.ConversionMethod, shown + 1) << "only leaving the page writes";
        page.UpdateOptions();
        EXPECT_EQ(env.state.ConversionMethod, methodAfter);
    }
    // A click that was never confirmed is replaced by the next load.
    Get(page, "OptionFlow").click();
    page.LoadOptions();
    ExpectChosen(page, Methods, MethodImages, 0, OptionPicture::TabsAndSpaces);
}

}  // namespace
