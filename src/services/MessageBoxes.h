#pragma once

// Every message the program shows goes through here: a real modal message box with the
// application title and no caption of its own.

#include <QString>

class QWidget;

inline const QString ApplicationTitle = QStringLiteral("PDF to Word Converter");

enum class MessageIcon { Critical, Exclamation, Information };
enum class MessageButtons { Ok, OkCancel };
enum class MessageAnswer { Ok, Cancel };

// Blocks until the user answers. The box carries the object name "MessageBox".
MessageAnswer ShowMessage(QWidget* owner, const QString& text, MessageIcon icon,
                          MessageButtons buttons = MessageButtons::Ok);
