#include "dialogs/LinkLabel.h"

#include <QMouseEvent>

LinkLabel::LinkLabel(QWidget* parent) : QLabel(parent)
{
    QFont linkFont(QStringLiteral("Tahoma"));
    linkFont.setPointSizeF(8.25);
    linkFont.setUnderline(true);
    setFont(linkFont);
    QPalette linkPalette = palette();
    linkPalette.setColor(QPalette::WindowText, QColor(0, 0, 128));
    setPalette(linkPalette);
    setMouseTracking(true);
}

// Set anew at every press, move and release, so the hand shows whatever cursor another
// control left behind.
void LinkLabel::ShowHandCursor()
{
    setCursor(Qt::PointingHandCursor);
}

void LinkLabel::mousePressEvent(QMouseEvent* event)
{
    ShowHandCursor();
    m_pressed = event->button() == Qt::LeftButton;
    QLabel::mousePressEvent(event);
}

void LinkLabel::mouseMoveEvent(QMouseEvent* event)
{
    ShowHandCursor();
    QLabel::mouseMoveEvent(event);
}

void LinkLabel::mouseReleaseEvent(QMouseEvent* event)
{
    ShowHandCursor();
    const bool click = m_pressed && event->button() == Qt::LeftButton &&
                       rect().contains(event->position().toPoint());
    m_pressed = false;
    QLabel::mouseReleaseEvent(event);
    if (click)
        emit clicked();
}
