// The store's two operations over an in-memory store: what is read, what is made anew, what is
// written back, and that no failure of the store ever stops a run.

#include "options/SettingsStore.h"
#include "support/FakeServices.h"

#include <gtest/gtest.h>

namespace {

const QString Document = StoreNames::OptionsDocument;
const QString Switches[] = {SettingsNames::PreviewThumb, SettingsNames::DocumentFormat,
                            SettingsNames::LaunchWord};

QString StoredDocument()
{
    OptionValues values;
    values.JpegQuality = 40;
    values.PasswordLen = 7;
    values.PasswordSeparator = 44;
    values.Passwords = QStringLiteral("secret");
    return BuildOptionsDocument(values);
}

TEST(LoadSettings, ReadsWhatItCanAndMakesAnewWhatIsMissingOrNoSixteenBitNumber)
{
    enum Store { Working, Hosted, NoReads, NoReadsOrWrites };
    struct Row
    {
        Store store;
        QVariant stored[3];  // PreviewThumb, DocumentFormat, LaunchWord; invalid: missing
        qint16 expected[3];
        int made;  // how many values are written, from the document on
    };
    const Row rows[] = {
        {Working, {0, 2, -1}, {0, 2, -1}, 0},
        {Working, {"0", " 2 ", "-32768"}, {0, 2, -32768}, 0},
        {Working, {70000, "70000", QStringList{"1", "2"}}, {1, 1, 1}, 3},
        {Working, {1.5, {}, 0}, {1, 1, 0}, 2},
        {Working, {1, -5, 1}, {1, -5, 1}, 0},  // an out-of-range format is left to the dialog
        {Hosted, {0, 2, 0}, {0, 1, 0}, 0},     // .DOC for this run, the user's choice untouched
        {NoReads, {0, 2, 0}, {1, 1, 1}, 4},
        {NoReadsOrWrites, {0, 2, 0}, {1, 1, 1}, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.store << " " << row.expected[0]);
        FakeStore store;
        store.values.insert(Document, StoredDocument());
        for (int i = 0; i < 3; ++i) {
            if (row.stored[i].isValid())
                store.values.insert(Switches[i], row.stored[i]);
        }
        store.failReads = row.store >= NoReads;
        store.failWrites = row.store >= NoReadsOrWrites;
        RunState state;
        state.HostedByWord = row.store == Hosted ? -1 : 0;
        LoadSettings(state, store.Factory());

        EXPECT_EQ(QList<qint16>({state.PreviewThumb, state.DocumentFormat, state.LaunchWord}),
                  QList<qint16>(std::begin(row.expected), std::end(row.expected)));
        EXPECT_EQ(store.writes.size(), row.made);
        for (const QString& name : store.writes)
            EXPECT_EQ(store.values.value(name),
                      name == Document ? QVariant(QString()) : QVariant(1));
        EXPECT_EQ(state.JpegQuality, row.store >= NoReads ? 85 : 40);
    }
    // Without a way to the store at all a run still gets the values of a first start.
    FakeStore none;
    none.unavailable = true;
    for (const SettingsShellFactory& factory : {none.Factory(), SettingsShellFactory()}) {
        RunState state;
        LoadSettings(state, factory);
        SaveOptions(state, factory, false);
        EXPECT_EQ(state.ConversionMethod, 2);
        EXPECT_EQ(state.OptionsDocument, BuildOptionsDocument(state));
    }
}

// Each save writes the document and the switches. Only a password that was just accepted is
// newer than the stored one: other saves take the stored password fields back, each one that
// can be read.
TEST(SaveOptions, WritesTheDocumentWithTheStoredPasswordUnlessTheRunsIsNewer)
{
    struct Row
    {
        QString document;  // empty: nothing stored
        bool keepRunPasswords, failReads, hosted;
        qint16 len, separator;
        QString passwords;
    };
    const Row rows[] = {
        {StoredDocument(), true, false, false, 5, 1, "run"},
        {StoredDocument(), true, false, true, 5, 1, "run"},
        {StoredDocument(), false, false, false, 7, 44, "secret"},
        // Each field that can't be read keeps the run's.
        {R"(<a name = "PasswordLen" value = "70000" /><a name = "PasswordSeparator" value = "x" />)"
         R"(<a name = "Passwords" value = "no closing quote)",
         false, false, false, 5, 1, "run"},
        {QString(), false, false, false, 0, 0, ""},
        {StoredDocument(), false, true, false, 0, 0, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.document.toStdString());
        FakeStore store;
        if (!row.document.isEmpty())
            store.values.insert(Document, row.document);
        store.failReads = row.failReads;
        RunState state;
        state.HostedByWord = row.hosted ? -1 : 0;
        state.PasswordLen = 5;
        state.PasswordSeparator = 1;
        state.Passwords = QStringLiteral("run");
        state.DocumentFormat = 2;
        state.LaunchWord = -1;
        SaveOptions(state, store.Factory(), row.keepRunPasswords);

        EXPECT_EQ(QList<qint16>({state.PasswordLen, state.PasswordSeparator}),
                  QList<qint16>({row.len, row.separator}));
        EXPECT_EQ(state.Passwords, row.passwords);
        EXPECT_EQ(state.OptionsDocument, BuildOptionsDocument(state));
        EXPECT_EQ(store.values.value(Document), QVariant(state.OptionsDocument));
        const QStringList written{Document, Switches[0], Switches[1], Switches[2]};
        EXPECT_EQ(store.writes, row.hosted ? written.mid(0, 2) + written.mid(3) : written);
        EXPECT_EQ(store.values.value(Switches[2]), QVariant(-1));
    }
}

}  // namespace
