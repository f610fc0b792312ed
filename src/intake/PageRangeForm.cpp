#include "intake/PageRangeForm.h"

#include "dialogs/DialogRuntime.h"
#include "services/DialogLanguage.h"
#include "services/MessageBoxes.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

PageRangeForm::PageRangeForm(DialogRuntime& runtime, PageRange current, qint32 pageCount,
                             std::optional<Choice>& choice)
    : Form(runtime), m_current(current), m_pageCount(pageCount), m_choice(choice)
{
    setObjectName(QStringLiteral("PageRangeForm"));
    setWindowTitle(QStringLiteral("Convert PDF to Word"));
    SetFixedClientSizeTwips(5805, 1935);

    m_frameSpecifyPageRange = new QGroupBox(QStringLiteral("Specify Page Range"), this);
    m_frameSpecifyPageRange->setObjectName(QStringLiteral("FrameSpecifyPageRange"));
    PlaceTwips(*m_frameSpecifyPageRange, 120, 60, 5565, 1215);

    m_picture1 = new QWidget(this);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    PlaceTwips(*m_picture1, 240, 360, 5325, 795);

    m_labelPageRange = new QLabel(QStringLiteral("Page Range:"), m_picture1);
    m_labelPageRange->setObjectName(QStringLiteral("LabelPageRange"));
    PlaceTwips(*m_labelPageRange, 0, 240, 1200, 255);

    m_textPageFrom = new QLineEdit(QStringLiteral("1"), m_picture1);
    m_textPageFrom->setObjectName(QStringLiteral("TextPageFrom"));
    PlaceTwips(*m_textPageFrom, 1200, 180, 735, 315);

    m_label1 = new QLabel(QStringLiteral("-"), m_picture1);
    m_label1->setObjectName(QStringLiteral("Label1"));
    m_label1->setAlignment(Qt::AlignCenter);
    PlaceTwips(*m_label1, 1935, 240, 240, 255);

    m_textPageTo = new QLineEdit(QStringLiteral("1"), m_picture1);
    m_textPageTo->setObjectName(QStringLiteral("TextPageTo"));
    PlaceTwips(*m_textPageTo, 2175, 180, 735, 315);

    m_labelPageCount = new QLabel(QStringLiteral("of ### pages"), m_picture1);
    m_labelPageCount->setObjectName(QStringLiteral("LabelPageCount"));
    PlaceTwips(*m_labelPageCount, 3030, 240, 2295, 255);

    m_buttonOK = new QPushButton(QStringLiteral("OK"), this);
    m_buttonOK->setObjectName(QStringLiteral("ButtonOK"));
    m_buttonOK->setDefault(true);
    PlaceTwips(*m_buttonOK, 3120, 1440, 1215, 375);

    m_buttonCancel = new QPushButton(QStringLiteral("Cancel"), this);
    m_buttonCancel->setObjectName(QStringLiteral("ButtonCancel"));
    m_buttonCancel->setAutoDefault(false);
    PlaceTwips(*m_buttonCancel, 4470, 1440, 1215, 375);
    SetCancelButton(m_buttonCancel);

    connect(m_buttonOK, &QPushButton::clicked, this, Handler(&PageRangeForm::ButtonOK_Click));
    connect(m_buttonCancel, &QPushButton::clicked, this,
            Handler(&PageRangeForm::ButtonCancel_Click));
}

void PageRangeForm::Form_Load()
{
    ApplyDialogLanguage(*this, {{{2001}, CaptionOf(this)},
                                {{2002}, CaptionOf(m_frameSpecifyPageRange)},
                                {{2003}, CaptionOf(m_labelPageRange)},
                                {{2004}, CaptionOf(m_labelPageCount)},
                                {{2005}, CaptionOf(m_buttonOK)},
                                {{2006}, CaptionOf(m_buttonCancel)}});
}

void PageRangeForm::Form_Activate()
{
    m_textPageFrom->setText(QString::number(m_current.from + 1));
    m_textPageTo->setText(QString::number(m_current.to + 1));
    m_labelPageCount->setText(PageCountText(m_pageCount));
    m_choice.reset();
}

void PageRangeForm::ButtonOK_Click()
{
    const std::optional<PageRange> range =
        ParsePageRange(m_textPageFrom->text(), m_textPageTo->text(), m_pageCount);
    if (!range) {
        ShowMessage(this, LocalText(6001, QStringLiteral("Invalid page range")),
                    MessageIcon::Critical);
        return;
    }
    m_choice = Choice{*range, m_textPageFrom->text(), m_textPageTo->text()};
    Runtime().Hide(*this);
}

void PageRangeForm::ButtonCancel_Click()
{
    Runtime().Hide(*this);
}

std::optional<PageRangeForm::Choice> PageRangeForm::Ask(DialogRuntime& runtime, Form& owner,
                                                        PageRange current, qint32 pageCount)
{
    std::optional<Choice> choice;
    QPointer<PageRangeForm> form;
    runtime.Instance(form, current, pageCount, choice);
    runtime.ShowModal(*form, &owner);
    // A dialog closed by its window frame is gone, and with it any choice.
    if (!form || !runtime.IsLoaded(form))
        return std::nullopt;
    runtime.Unload(*form);
    return choice;
}
