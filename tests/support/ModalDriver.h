#pragma once

// Drives real modal dialogs and message boxes from a test: the answer is arranged before the
// call that blocks, and runs from a timer once the modal widget is up.

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

// When a modal widget named `objectName` is the active modal widget, runs `answer` on it.
// Gives up, failing the test, after `timeoutMs`.
void WhenModalAppears(const QString& objectName, std::function<void(QWidget&)> answer,
                      int timeoutMs = 5000);

// Answers the next message box by clicking `button`; records its text and icon.
struct SeenMessage final
{
    bool shown = false;
    QString text;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
};
void AnswerNextMessageBox(QMessageBox::StandardButton button, SeenMessage* seen = nullptr,
                          int timeoutMs = 5000);

// Lets queued events (deferred deletes among them) run.
void ProcessPendingEvents();

// Finds a child by object name and type, failing the test when it is missing.
template <class T> T& Child(QWidget& parent, const QString& name)
{
    T* found = parent.findChild<T*>(name);
    if (!found)
        qFatal("no child %s", qPrintable(name));
    return *found;
}

// Counts every message box that comes up while it lives, and closes it with OK, so that a
// test can tell that none was shown without blocking when one is.
class MessageBoxWatch final
{
public:
    MessageBoxWatch()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box || !box->isVisible())
                return;
            ++m_count;
            m_texts.append(box->text());
            if (QAbstractButton* ok = box->button(QMessageBox::Ok))
                ok->click();
            else
                box->reject();
        });
        m_timer.start(10);
    }

    int Count() const { return m_count; }
    const QStringList& Texts() const { return m_texts; }

private:
    QTimer m_timer;
    int m_count = 0;
    QStringList m_texts;
};
