#include "support/ModalDriver.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <memory>

namespace {

void Poll(const QString& objectName, std::function<void(QWidget&)> answer,
          std::shared_ptr<QElapsedTimer> clock, int timeoutMs)
{
    QWidget* modal = QApplication::activeModalWidget();
    if (modal && modal->objectName() == objectName && modal->isVisible())
        answer(*modal);
    else if (clock->elapsed() > timeoutMs)
        ADD_FAILURE() << "no modal widget named " << objectName.toStdString() << " appeared";
    else
        QTimer::singleShot(10, [=] { Poll(objectName, answer, clock, timeoutMs); });
}

}  // namespace

void WhenModalAppears(const QString& objectName, std::function<void(QWidget&)> answer,
                      int timeoutMs)
{
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    QTimer::singleShot(0, [=] { Poll(objectName, answer, clock, timeoutMs); });
}

void AnswerNextMessageBox(QMessageBox::StandardButton button, SeenMessage* seen, int timeoutMs)
{
    WhenModalAppears(
        QStringLiteral("MessageBox"),
        [button, seen](QWidget& widget) {
            auto& box = static_cast<QMessageBox&>(widget);
            if (seen)
                *seen = {true, box.text(), box.windowTitle(), box.icon()};
            QAbstractButton* target = box.button(button);
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

MessageBoxWatch::MessageBoxWatch()
{
    QObject::connect(&m_timer, &QTimer::timeout, [this] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        m_texts.append(box->text());
        if (QAbstractButton* ok = box->button(QMessageBox::Ok))
            ok->click();
        else
            box->reject();
    });
    m_timer.start(10);
}
