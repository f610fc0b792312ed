#pragma once

// A label that acts as a link: dark blue, underlined, clickable, with the hand cursor while
// the mouse is pressed, moved or released over it.

#include <QLabel>

class LinkLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit LinkLabel(QWidget* parent = nullptr);

signals:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void ShowHandCursor();
    bool m_pressed = false;
};
