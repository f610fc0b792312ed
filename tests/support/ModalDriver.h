#pragma once

// Drives real modal dialogs and message boxes from a test: the answer is arranged before the
// call that blocks, and runs from a timer once the modal widget is up.

#include <QMessageBox>
#include <QString>
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
void AnswerNextMessageBox(QMessageBox::StandardButton button, SeenMessage* seen = nullptr);

// Lets queued events (deferred deletes among them) run.
void ProcessPendingEvents();

// Finds a child by object name and type, failing the test when it is missing.
template <class T>
T& Child(QWidget& parent, const QString& name)
{
    T* found = parent.findChild<T*>(name);
    if (!found)
        qFatal("no child %s", qPrintable(name));
    return *found;
}
