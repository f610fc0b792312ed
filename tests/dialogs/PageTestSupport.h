#pragma once

// What the option page tests share: a complete set of fakes, the dialog runtime and the forms
// registry with a conversion side that does nothing, and a watch for unexpected message boxes.

#include "dialogs/ConversionController.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "dialogs/OptionPictures.h"
#include "options/OptionsDocument.h"
#include "platform/SettingsShell.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QMessageBox>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>

// Readable failure messages for Qt's texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& texts, std::ostream* out)
{
    *out << '[' << texts.join(QStringLiteral(", ")).toStdString() << ']';
}

// The conversion side as far as the option pages need it: nothing.
struct IdleController final : ConversionController
{
    bool PrepareSource(Form&) override { return true; }
    IntakeOutcome RunIntake(Form&, const QString&) override { return {true, QString()}; }
    std::optional<QString> ChoosePageRange(Form&) override { return std::nullopt; }
    bool AskOutputFile(Form&) override { return false; }
    void RunConversion(Form&) override {}
};

inline bool TestingJapanese()
{
    const char* locale = std::getenv("VELMORA_TEST_LOCALE");
    return locale && QString::fromLatin1(locale) == QStringLiteral("ja");
}

// One text in the language the test program runs in.
inline QString InTestLanguage(const QString& english, const QString& japanese)
{
    return TestingJapanese() ? japanese : english;
}

// The names among `names` whose widgets pass `test`, comma-separated.
template <class Widget = QWidget, class Test>
QString NamesWhere(QWidget& page, const QStringList& names, Test test)
{
    QStringList passed;
    for (const QString& name : names)
        if (test(Child<Widget>(page, name)))
            passed.append(name);
    return passed.join(u',');
}
inline QString CheckedAmong(QWidget& page, const QStringList& names)
{
    return NamesWhere<QAbstractButton>(page, names,
                                       [](QAbstractButton& b) { return b.isChecked(); });
}
inline QString ShownAmong(QWidget& page, const QStringList& names)
{
    return NamesWhere(page, names, [](QWidget& w) { return !w.isHidden(); });
}
inline QString EnabledAmong(QWidget& page, const QStringList& names)
{
    return NamesWhere(page, names, [](QWidget& w) { return w.isEnabled(); });
}

// What a control shows as its text: a button's text, a frame's title or a label's text.
inline QString TextOf(QWidget& page, const char* name)
{
    QWidget& widget = Child<QWidget>(page, QString::fromLatin1(name));
    if (auto* button = qobject_cast<QAbstractButton*>(&widget))
        return button->text();
    if (auto* frame = qobject_cast<QGroupBox*>(&widget))
        return frame->title();
    if (auto* label = qobject_cast<QLabel*>(&widget))
        return label->text();
    return {};
}

struct TranslatedText
{
    const char* name;
    QString english;
    QString japanese;
};
inline void ExpectTexts(QWidget& page, const QList<TranslatedText>& rows)
{
    for (const TranslatedText& row : rows)
        EXPECT_EQ(TextOf(page, row.name), InTestLanguage(row.english, row.japanese)) << row.name;
}

// The page's child widgets are exactly `controls` ("Name:Class ..."), in creation order.
inline void ExpectControls(QWidget& page, const char* controls)
{
    QStringList order;
    for (QObject* child : page.children())
        if (child->isWidgetType())
            order.append(child->objectName());
    QStringList expected;
    for (const QString& control : QString::fromLatin1(controls).split(u' ', Qt::SkipEmptyParts)) {
        const QString name = control.section(u':', 0, 0);
        expected.append(name);
        EXPECT_TRUE(Child<QWidget>(page, name).inherits(qPrintable(control.section(u':', 1))))
            << qPrintable(control);
    }
    EXPECT_EQ(order.join(u',').toStdString(), expected.join(u',').toStdString());
}

// The example pictures are drawn in the language the test runs in.
inline void ExpectPictures(QWidget& page, const QList<std::pair<QString, OptionPicture>>& pictures)
{
    const PictureLanguage language =
        TestingJapanese() ? PictureLanguage::Japanese : PictureLanguage::English;
    for (const auto& [name, picture] : pictures)
        EXPECT_EQ(Child<QLabel>(page, name).pixmap().toImage(),
                  DrawOptionPicture(picture, language).toImage())
            << qPrintable(name);
}

class PageTest : public ::testing::Test
{
protected:
    void TearDown() override { ProcessPendingEvents(); }

    // A stored option value as the store now holds it, or empty when it was never written.
    QString StoredOption(const QString& key)
    {
        const QString document = env.store.values.value(StoreNames::OptionsDocument).toString();
        if (document.isEmpty())
            return {};
        return ReadOptionValue(document, key, QString()).value_or(QString());
    }

    FakeEnvironment env;
    IdleController flow;
    DialogRuntime runtime;
    Forms forms{runtime, env.context, flow};
};
