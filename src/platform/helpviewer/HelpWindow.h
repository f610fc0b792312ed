#pragma once

// The help viewer's window: the shipped help pages in a text browser, with back, forward and a
// link to the contents page. It stands where a compiled help viewer would: a program of its own
// that the converter starts and never waits for.

#include <QMainWindow>
#include <QUrl>

class QTextBrowser;

class HelpWindow final : public QMainWindow
{
    Q_OBJECT

public:
    // `contents` is the help's start page; the window's texts follow the user's language.
    HelpWindow(QUrl contents, bool japanese);

    // Shows a page, scrolled to the anchor its URL carries.
    void ShowTopic(const QUrl& page);

    QTextBrowser& Browser() const { return *m_browser; }

private:
    QUrl m_contents;
    QTextBrowser* m_browser = nullptr;
};
