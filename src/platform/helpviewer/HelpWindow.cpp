#include "platform/helpviewer/HelpWindow.h"

#include <QAction>
#include <QTextBrowser>
#include <QToolBar>

HelpWindow::HelpWindow(QUrl contents, bool japanese) : m_contents(std::move(contents))
{
    setObjectName(QStringLiteral("HelpWindow"));
    const QString title = japanese ? QStringLiteral("PDF-Word 変換ツール ヘルプ")
                                   : QStringLiteral("PDF to Word Converter Help");
    setWindowTitle(title);
    resize(760, 640);

    m_browser = new QTextBrowser(this);
    m_browser->setObjectName(QStringLiteral("HelpBrowser"));
    // Links to the web leave the help for the user's browser; the pages' own links stay here.
    m_browser->setOpenLinks(true);
    m_browser->setOpenExternalLinks(true);
    setCentralWidget(m_browser);

    QToolBar* bar = addToolBar(title);
    bar->setObjectName(QStringLiteral("HelpToolBar"));
    bar->setMovable(false);
    QAction* back = bar->addAction(japanese ? QStringLiteral("戻る") : QStringLiteral("Back"));
    back->setObjectName(QStringLiteral("ActionBack"));
    back->setShortcut(QKeySequence::Back);
    QAction* forward =
        bar->addAction(japanese ? QStringLiteral("進む") : QStringLiteral("Forward"));
    forward->setObjectName(QStringLiteral("ActionForward"));
    forward->setShortcut(QKeySequence::Forward);
    QAction* home = bar->addAction(japanese ? QStringLiteral("目次") : QStringLiteral("Contents"));
    home->setObjectName(QStringLiteral("ActionContents"));

    back->setEnabled(false);
    forward->setEnabled(false);
    connect(back, &QAction::triggered, m_browser, &QTextBrowser::backward);
    connect(forward, &QAction::triggered, m_browser, &QTextBrowser::forward);
    connect(home, &QAction::triggered, this, [this] { ShowTopic(m_contents); });
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);
}

void HelpWindow::ShowTopic(const QUrl& page)
{
    m_browser->setSource(page);
}
