#pragma once

// Drives real modal dialogs and message boxes from a test: the answer is arranged before the
// call that blocks, and runs from a timer once the modal widget is up.

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

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

// Closes every message box that comes up while it lives with OK and keeps its text, so that a
// test can tell that none was shown without blocking when one is.
class MessageBoxWatch final
{
public:
    MessageBoxWatch();
    int Count() const { return static_cast<int>(m_texts.size()); }
    const QStringList& Texts() const { return m_texts; }

private:
    QTimer m_timer;
    QStringList m_texts;
};
