#include "options/SettingsStore.h"
#include "options/OptionsDocument.h"
#include "run/RunState.h"
#include "support/FakeServices.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

const QString Document = StoreNames::OptionsDocument;
const QString PreviewThumb = SettingsNames::PreviewThumb;
const QString DocumentFormat = SettingsNames::DocumentFormat;
const QString LaunchWord = SettingsNames::LaunchWord;

// A stored document with a password and values that differ from every default.
QString StoredDocument()
{
    RunState s;
    s.AdjustFontNames = 0;
    s.ConversionMethod = 3;
    s.DocumentType = 1;
    s.JpegQuality = 40;
    s.PasswordLen = 7;
    s.PasswordSeparator = 44;
    s.Passwords = QStringLiteral("secret");
    return BuildOptionsDocument(s);
}

// The values a run gets from a store that is empty or can't be used.
void ExpectDefaults(const RunState& state)
{
    EXPECT_EQ(state.PreviewThumb, 1);
    EXPECT_EQ(state.DocumentFormat, 1);
    EXPECT_EQ(state.LaunchWord, 1);
    EXPECT_EQ(state.OptionsDocument, QString());
    EXPECT_EQ(state.ConversionMethod, 2);
    EXPECT_EQ(state.DocumentType, 2);
    EXPECT_EQ(state.JpegQuality, 85);
    EXPECT_EQ(state.ZoomDpi, 96);
    EXPECT_EQ(state.Passwords, QString());
}

TEST(LoadSettings, FirstStartCreatesAllFourValues)
{
    FakeStore store;
    RunState state;
    LoadSettings(state, store.Factory());

    EXPECT_EQ(store.shellsMade, 1);
    EXPECT_EQ(store.writes, QStringList({Document, PreviewThumb, DocumentFormat, LaunchWord}));
    EXPECT_EQ(store.values.value(Document), QVariant(QString()));
    for (const QString& name : {PreviewThumb, DocumentFormat, LaunchWord})
        EXPECT_EQ(store.values.value(name), QVariant(1)) << name.toStdString();
    ExpectDefaults(state);
}

struct SwitchRow
{
    const char* name;
    qint16 hostedByWord;
    std::optional<QVariant> stored[3];  // PreviewThumb, DocumentFormat, LaunchWord; none: missing
    qint16 expected[3];
    QStringList expectedWrites;
};

TEST(LoadSettings, ReadsTheSwitchesAndRewritesOnlyWhatIsMissingOrUnreadable)
{
    const std::optional<QVariant> none;
    const QVariant zero(0), one(1), two(2);
    const QStringList all = {PreviewThumb, DocumentFormat, LaunchWord};
    const QStringList firstTwo = {PreviewThumb, DocumentFormat};
    const SwitchRow rows[] = {
        {"stored numbers", 0, {zero, two, zero}, {0, 2, 0}, {}},
        {"numbers as text", 0, {QVariant("0"), QVariant(" 2 "), QVariant("-1")}, {0, 2, -1}, {}},
        {"LaunchWord \"abc\" becomes 1", 0, {one, one, QVariant("abc")}, {1, 1, 1}, {LaunchWord}},
        {"past 16 bits", 0, {QVariant(70000), QVariant("70000"), QVariant(-32769)}, {1, 1, 1}, all},
        {"16-bit limits",
         0,
         {QVariant(32767), QVariant(-32768), QVariant("32767")},
         {32767, -32768, 32767},
         {}},
        {"another kind",
         0,
         {QVariant(QStringList{"a", "b"}), QVariant(1.5), one},
         {1, 1, 1},
         firstTwo},
        {"missing switches are made", 0, {none, none, zero}, {1, 1, 0}, firstTwo},
        {"out-of-range DocumentFormat is left", 0, {one, QVariant(-5), one}, {1, -5, 1}, {}},
        {"hosted: DocumentFormat neither read nor written", -1, {one, two, one}, {1, 1, 1}, {}},
        {"hosted: a missing DocumentFormat is not made", -1, {zero, none, zero}, {0, 1, 0}, {}},
    };
    for (const SwitchRow& row : rows) {
        SCOPED_TRACE(row.name);
        FakeStore store;
        store.values.insert(Document, QString());
        const QString names[] = {PreviewThumb, DocumentFormat, LaunchWord};
        for (int i = 0; i < 3; ++i)
            if (row.stored[i])
                store.values.insert(names[i], *row.stored[i]);

        RunState state;
        state.HostedByWord = row.hostedByWord;
        state.DocumentFormat = 2;
        LoadSettings(state, store.Factory());

        EXPECT_EQ(state.PreviewThumb, row.expected[0]);
        EXPECT_EQ(state.DocumentFormat, row.expected[1]);
        EXPECT_EQ(state.LaunchWord, row.expected[2]);
        EXPECT_EQ(store.writes, row.expectedWrites);
        for (const QString& name : row.expectedWrites)
            EXPECT_EQ(store.values.value(name), one) << name.toStdString();
        if (row.hostedByWord != 0) {
            EXPECT_EQ(store.values.value(DocumentFormat), row.stored[1].value_or(QVariant()));
        }
    }
}

TEST(LoadSettings, AFailingStoreGivesTheDefaultsAndNoError)
{
    enum class Failure { Reads, ReadsAndWrites, NoShell, EmptyFactory };
    for (const Failure failure :
         {Failure::Reads, Failure::ReadsAndWrites, Failure::NoShell, Failure::EmptyFactory}) {
        SCOPED_TRACE(static_cast<int>(failure));
        FakeStore store;
        store.values.insert(Document, StoredDocument());
        store.values.insert(PreviewThumb, 0);
        store.values.insert(DocumentFormat, 2);
        store.values.insert(LaunchWord, 0);
        store.failReads = true;
        store.failWrites = failure != Failure::Reads;
        store.unavailable = failure == Failure::NoShell;

        RunState state;
        state.PreviewThumb = 0;
        state.DocumentFormat = 2;
        state.LaunchWord = 0;
        LoadSettings(state,
                     failure == Failure::EmptyFactory ? SettingsShellFactory() : store.Factory());

        ExpectDefaults(state);
        if (failure == Failure::Reads) {
            EXPECT_EQ(store.writes,
                      QStringList({Document, PreviewThumb, DocumentFormat, LaunchWord}));
        } else {
            EXPECT_EQ(store.values.value(Document), StoredDocument());
        }
    }
}

TEST(SaveOptions, WritesTheDocumentAndTheSwitchesInOrder)
{
    for (const qint16 hosted : {qint16{0}, qint16{-1}}) {
        SCOPED_TRACE(hosted);
        FakeStore store;
        store.values.insert(DocumentFormat, 1);
        RunState state;
        state.HostedByWord = hosted;
        state.ConversionMethod = 3;
        state.PreviewThumb = 0;
        state.DocumentFormat = 2;
        state.LaunchWord = -1;
        state.Passwords = QStringLiteral("run");
        SaveOptions(state, store.Factory(), true);

        EXPECT_EQ(store.shellsMade, 1);
        QStringList expectedWrites{Document, PreviewThumb, DocumentFormat, LaunchWord};
        if (hosted != 0)
            expectedWrites.removeAll(DocumentFormat);
        EXPECT_EQ(store.writes, expectedWrites);
        EXPECT_EQ(store.values.value(Document), QVariant(BuildOptionsDocument(state)));
        EXPECT_EQ(state.OptionsDocument, BuildOptionsDocument(state));
        EXPECT_TRUE(
            state.OptionsDocument.contains(QStringLiteral("\"Passwords\" value = \"run\"")));
        EXPECT_EQ(store.values.value(PreviewThumb), QVariant(0));
        EXPECT_EQ(store.values.value(DocumentFormat), QVariant(hosted != 0 ? 1 : 2));
        EXPECT_EQ(store.values.value(LaunchWord), QVariant(-1));
    }
}

struct PasswordRow
{
    const char* name;
    std::optional<QString> stored;  // the stored document, or none
    bool failReads;
    qint16 expectedLen;
    qint16 expectedSeparator;
    QString expectedPasswords;
};

TEST(SaveOptions, WithoutKeepingTheRunsPasswordsTakesTheStoredOnes)
{
    const auto storedWith = [](const char* len, const char* separator, const QString& passwords) {
        return QStringLiteral("<x>\r\n  <numeric name = \"PasswordLen\" value = \"%1\" />\r\n"
                              "  <numeric name = \"PasswordSeparator\" value = \"%2\" />\r\n"
                              "  <string name = \"Passwords\" value = \"%3\" />\r\n</x>")
            .arg(QLatin1String(len), QLatin1String(separator), passwords);
    };
    const PasswordRow rows[] = {
        {"stored password is written back", StoredDocument(), false, 7, 44,
         QStringLiteral("secret")},
        {"stored empty password reads as \"0\"", storedWith("0", "0", ""), false, 0, 0,
         QStringLiteral("0")},
        {"non-ASCII stored password", storedWith("3", "44", QStringLiteral(u"日本語")), false, 3,
         44, QStringLiteral(u"日本語")},
        {"an unconvertible number keeps only that field", storedWith("abc", "44", "pw"), false, 5,
         44, QStringLiteral("pw")},
        {"all three unconvertible or unreadable keep the fields",
         storedWith("70000", "x", "pw")
             .replace(QStringLiteral("\"Passwords\" value = \"pw\""),
                      QStringLiteral("\"Passwords\" value = \"pw")),
         false, 5, 1, QStringLiteral("run")},
        {"no stored document gives the defaults", std::nullopt, false, 0, 0, QString()},
        {"unreadable store gives the defaults", StoredDocument(), true, 0, 0, QString()},
    };
    for (const PasswordRow& row : rows) {
        SCOPED_TRACE(row.name);
        FakeStore store;
        if (row.stored)
            store.values.insert(Document, *row.stored);
        store.failReads = row.failReads;
        RunState state;
        state.PasswordLen = 5;
        state.PasswordSeparator = 1;
        state.Passwords = QStringLiteral("run");
        SaveOptions(state, store.Factory(), false);

        EXPECT_EQ(state.PasswordLen, row.expectedLen);
        EXPECT_EQ(state.PasswordSeparator, row.expectedSeparator);
        EXPECT_EQ(state.Passwords, row.expectedPasswords);
        EXPECT_EQ(store.values.value(Document), QVariant(BuildOptionsDocument(state)));
    }
}

TEST(SaveOptions, AnAcceptedPasswordOutlastsTheRun)
{
    const QString passwords[] = {QStringLiteral("p"), QStringLiteral(u"日本語のパスワード"),
                                 QStringLiteral("a&b<c>d e"), QStringLiteral("with\"quote")};
    for (const QString& password : passwords) {
        SCOPED_TRACE(password.toStdString());
        FakeStore store;
        RunState state;
        LoadSettings(state, store.Factory());
        state.Passwords = password;
        state.PasswordLen = static_cast<qint16>(password.size() + 1);
        state.PasswordSeparator = 44;
        SaveOptions(state, store.Factory(), true);
        // A later save without the run's passwords (the intake clears them before its first
        // attempt) keeps the accepted one, and still saves the other values.
        state.Passwords.clear();
        state.JpegQuality = 70;
        SaveOptions(state, store.Factory(), false);

        RunState next;
        LoadSettings(next, store.Factory());
        // The reader ends a value at its first quote.
        EXPECT_EQ(next.Passwords, password.section(u'"', 0, 0));
        EXPECT_EQ(next.PasswordLen, password.size() + 1);
        EXPECT_EQ(next.PasswordSeparator, 44);
        EXPECT_EQ(next.JpegQuality, 70);
    }
}

TEST(SaveOptions, TwoSavesWithoutAPasswordWriteEmptyThenZero)
{
    FakeStore store;
    RunState state;
    LoadSettings(state, store.Factory());
    SaveOptions(state, store.Factory(), false);
    EXPECT_TRUE(store.values.value(Document).toString().contains(
        QStringLiteral("<string name = \"Passwords\" value = \"\" />")));
    SaveOptions(state, store.Factory(), false);
    EXPECT_TRUE(store.values.value(Document).toString().contains(
        QStringLiteral("<string name = \"Passwords\" value = \"0\" />")));
    EXPECT_TRUE(store.values.value(Document).toString().contains(
        QStringLiteral("<numeric name = \"PasswordLen\" value = \"0\" />")));
    EXPECT_EQ(state.PasswordLen, 0);
    EXPECT_EQ(store.shellsMade, 3);
}

TEST(SaveOptions, AFailingStoreStillUpdatesTheRunsDocument)
{
    enum class Failure { Writes, NoShell, EmptyFactory };
    for (const Failure failure : {Failure::Writes, Failure::NoShell, Failure::EmptyFactory}) {
        SCOPED_TRACE(static_cast<int>(failure));
        FakeStore store;
        store.values.insert(Document, StoredDocument());
        store.failWrites = true;
        store.unavailable = failure == Failure::NoShell;
        RunState state;
        state.JpegQuality = 55;
        state.Passwords = QStringLiteral("run");
        SaveOptions(state,
                    failure == Failure::EmptyFactory ? SettingsShellFactory() : store.Factory(),
                    false);

        EXPECT_EQ(state.OptionsDocument, BuildOptionsDocument(state));
        EXPECT_TRUE(
            state.OptionsDocument.contains(QStringLiteral("\"JpegQuality\" value = \"55\"")));
        EXPECT_EQ(store.values.value(Document), StoredDocument());
        // Only a shell that could read gives back the stored password.
        EXPECT_EQ(state.Passwords,
                  failure == Failure::Writes ? QStringLiteral("secret") : QString());
    }
}

}  // namespace
