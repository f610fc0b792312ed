#pragma once

// What the option page tests share: a complete set of fakes, the dialog runtime and the forms
// registry with a conversion side that does nothing, and a watch for unexpected message boxes.

#include "dialogs/ConvertFlow.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "options/OptionsDocument.h"
#include "platform/SettingsShell.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAbstractButton>
#include <QApplication>
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
struct IdleConvertFlow final : ConvertFlow
{
    bool PrepareSource(WelcomeForm&) override { return true; }
    void RunIntake(WelcomeForm&, const QString&) override {}
    void PageRangeChosen(WelcomeForm&) override {}
    bool AskOutputFile(WelcomeForm&) override { return false; }
    void RunConversion(WelcomeForm&) override {}
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

class PageTest : public ::testing::Test
{
protected:
    void TearDown() override { ProcessPendingEvents(); }

    // A stored option value as the store now holds it, or empty when it was never written.
    QString StoredOption(const QString& key)
    {
        const QString document = env.store.values.value(SettingsNames::OptionsDocument).toString();
        if (document.isEmpty())
            return {};
        return ReadOptionValue(document, key, QString()).value_or(QString());
    }

    FakeEnvironment env;
    IdleConvertFlow flow;
    DialogRuntime runtime;
    Forms forms{runtime, env.context, flow};
};

