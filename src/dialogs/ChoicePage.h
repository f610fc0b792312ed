#pragma once

// The two option pages that offer one choice of three: the document type and the conversion
// method. Each choice has an option button with a line of explanation below it and an example
// picture; the page has its frame, Help, the way on to the next page, and Done, which keeps the
// options and closes the walk.

#include "dialogs/Form.h"
#include "dialogs/OptionPage.h"
#include "dialogs/OptionPictures.h"

#include <QString>

#include <array>

class Forms;
class QGroupBox;
class QLabel;
class QPushButton;
class QRadioButton;

class ChoicePage : public Form, public OptionPage
{
    Q_OBJECT

protected:
    // One of the three choices, from the top.
    struct Choice final
    {
        const char* optionName;
        QString caption;
        const char* explanationName;
        QString explanation;
        const char* pictureName;
        OptionPicture picture;
    };
    // What differs between the pages' layouts, in twips.
    struct Layout final
    {
        float optionWidth;
        float explanationWidth;
        float pictureLeft;
    };

    ChoicePage(DialogRuntime& runtime, Forms& forms, const char* objectName);

    // Makes the controls; `addHeader` adds what the page shows above its choices, before the
    // frame that lies over everything.
    void Build(const std::array<Choice, 3>& choices, const Layout& layout,
               const QString& nextCaption, const char* frameName, const QString& frameTitle,
               const std::function<void()>& addHeader);

    // Selects a choice and shows its picture.
    void Select(int choice);
    // The selected choice, from the top.
    int Selected() const;
    void SetChoicesEnabled(bool enabled, int except);

    // The page that the button on leads to.
    virtual Form& NextPage() = 0;

    Forms& m_forms;
    std::array<QRadioButton*, 3> m_options{};
    std::array<QLabel*, 3> m_explanations{};
    std::array<QLabel*, 3> m_pictures{};
    QLabel* m_picture1 = nullptr;
    QGroupBox* m_frame = nullptr;
    QPushButton* m_buttonNext = nullptr;
    QPushButton* m_buttonHelp = nullptr;
    QPushButton* m_buttonDone = nullptr;

private:
    void ShowPictureOf(int choice);
    void ButtonNext_Click();
    void ButtonDone_Click();
    void ButtonHelp_Click();
};
