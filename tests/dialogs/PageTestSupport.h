#pragma once

// What the dialog tests share: a complete set of fakes, the dialog runtime and the forms
// registry with a scripted conversion side, and readers of the dialogs' controls.

#include "dialogs/ConversionController.h"
#include "dialogs/DialogRuntime.h"
#include "dialogs/Forms.h"
#include "options/OptionsDocument.h"
#include "support/FakeServices.h"
#include "support/ModalDriver.h"

#include <QAbstractButton>

#include <gtest/gtest.h>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

// The conversion side: answers as scripted and records what the dialogs ask of it.
struct ScriptedController final : ConversionController
{
    bool PrepareSource(Form&) override { return true; }
    IntakeOutcome RunIntake(Form& welcome, const QString&) override
    {
        ++intakes;
        if (duringIntake)
            duringIntake(welcome);
        return {true, QString()};
    }
    std::optional<QString> ChoosePageRange(Form&) override { return std::nullopt; }
    bool AskOutputFile(Form&) override
    {
        ++asks;
        return askResult;
    }
    void RunConversion(Form& welcome) override { conversions.append(welcome.isHidden()); }

    bool askResult = true;
    int intakes = 0, asks = 0;
    QList<bool> conversions;  // for each, whether the main dialog was hidden
    std::function<void(Form&)> duringIntake;
};

class PageTest : public ::testing::Test
{
protected:
    void TearDown() override
    {
        for (Form* form : runtime.LoadedForms())
            form->hide();
        ProcessPendingEvents();
    }

    static bool Japanese() { return qEnvironmentVariable("VELMORA_TEST_LOCALE") == "ja"; }
    static QString Pick(const char* english, const char* japanese)
    {
        return QString::fromUtf8(Japanese() ? japanese : english);
    }
    // The control `name` of `dialog`, a button unless told.
    template <class T = QAbstractButton> static T& Get(QWidget& dialog, const char* name)
    {
        return Child<T>(dialog, QString::fromLatin1(name));
    }
    // The names among `names` whose controls pass `test`, comma-separated.
    template <class W>
    static QString Among(QWidget& dialog, const QStringList& names, bool (W::*test)() const)
    {
        QStringList passed;
        for (const QString& name : names)
            if ((Child<W>(dialog, name).*test)())
                passed.append(name);
        return passed.join(u',');
    }
    // An option value as the store now holds it, empty when it was never written.
    QString StoredOption(const QString& key) const
    {
        const QString document = env.store.values.value(StoreNames::OptionsDocument).toString();
        return ReadOptionValue(document, key, QString()).value_or(QString());
    }

    FakeEnvironment env;
    ScriptedController flow;
    DialogRuntime runtime;
    Forms forms{runtime, env.context, flow};
};
