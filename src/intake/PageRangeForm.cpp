#include "intake/PageRangeForm.h"

#include "dialogs/DialogRuntime.h"
#include "intake/PageRangeRules.h"
#include "run/RunState.h"
#include "services/DialogLanguage.h"
#include "services/MessageBoxes.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

PageRangeForm::PageRangeForm(DialogRuntime& runtime, RunState& state)
    : Form(runtime), m_state(state)
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

QString PageRangeForm::FromText() const
{
    return m_textPageFrom->text();
}

QString PageRangeForm::ToText() const
{
    return m_textPageTo->text();
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
    m_textPageFrom->setText(QString::number(m_state.PageFrom + 1));
    m_textPageTo->setText(QString::number(m_state.PageTo + 1));
    m_labelPageCount->setText(PageCountText(m_state.PageCount));
    Accepted = 0;
}

void PageRangeForm::ButtonOK_Click()
{
    const std::optional<PageRange> range =
        ParsePageRange(m_textPageFrom->text(), m_textPageTo->text(), m_state.PageCount);
    if (!range) {
        ShowMessage(this, LocalText(6001, QStringLiteral("Invalid page range")),
                    MessageIcon::Critical);
        return;
    }
    m_state.PageFrom = range->from;
    m_state.PageTo = range->to;
    Runtime().Hide(*this);
    Accepted = 1;
}

void PageRangeForm::ButtonCancel_Click()
{
    Runtime().Hide(*this);
}
