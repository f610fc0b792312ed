#include "services/MessageBoxes.h"

#include <QMessageBox>

namespace {

QMessageBox::Icon boxIcon(MessageIcon icon)
{
    switch (icon) {
    case MessageIcon::Critical:
        return QMessageBox::Critical;
    case MessageIcon::Exclamation:
        return QMessageBox::Warning;
    case MessageIcon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

}  // namespace

MessageAnswer ShowMessage(QWidget* owner, const QString& text, MessageIcon icon,
                          MessageButtons buttons)
{
    QMessageBox box(owner);
    box.setObjectName(QStringLiteral("MessageBox"));
    box.setWindowTitle(ApplicationTitle);
    // File names and page ranges go into messages; none of them may be read as markup.
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setIcon(boxIcon(icon));
    box.setWindowModality(Qt::ApplicationModal);
    if (buttons == MessageButtons::OkCancel) {
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        box.setEscapeButton(QMessageBox::Cancel);
    } else {
        box.setStandardButtons(QMessageBox::Ok);
        box.setEscapeButton(QMessageBox::Ok);
    }
    box.setDefaultButton(QMessageBox::Ok);
    box.exec();
    if (buttons == MessageButtons::Ok)
        return MessageAnswer::Ok;
    return box.clickedButton() == box.button(QMessageBox::Ok) ? MessageAnswer::Ok
                                                              : MessageAnswer::Cancel;
}
