#include "support/ModalDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

namespace {

void poll(const QString& objectName, std::function<void(QWidget&)> answer,
          std::shared_ptr<QElapsedTimer> clock, int timeoutMs)
{
    QWidget* modal = QApplication::activeModalWidget();
    if (modal && modal->objectName() == objectName && modal->isVisible()) {
        answer(*modal);
        return;
    }
    if (clock->elapsed() > timeoutMs) {
        ADD_FAILURE() << "no modal widget named " << objectName.toStdString() << " appeared";
        return;
    }
    QTimer::singleShot(10, [=] { poll(objectName, answer, clock, timeoutMs); });
}

}  // namespace

void WhenModalAppears(const QString& objectName, std::function<void(QWidget&)> answer,
                      int timeoutMs)
{
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    QTimer::singleShot(0, [=] { poll(objectName, answer, clock, timeoutMs); });
}

void AnswerNextMessageBox(QMessageBox::StandardButton button, SeenMessage* seen, int timeoutMs)
{
    WhenModalAppears(
        QStringLiteral("MessageBox"),
        [button, seen](QWidget& widget) {
            auto* box = qobject_cast<QMessageBox*>(&widget);
            ASSERT_NE(box, nullptr);
            if (seen) {
                seen->shown = true;
                seen->text = box->text();
                seen->title = box->windowTitle();
                seen->icon = box->icon();
            }
            QAbstractButton* target = box->button(button);
            ASSERT_NE(target, nullptr) << "the message box has no such button";
            target->click();
        },
        timeoutMs);
}

void ProcessPendingEvents()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
}
