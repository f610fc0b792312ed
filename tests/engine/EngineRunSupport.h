#pragma once

// Running the built engine as the front end does, with the options in the test's private
// settings store, on PDFs the test writes.

#include "PdfFixtures.h"
#include "options/OptionValues.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <string>

namespace enginetest {

struct EngineResult
{
    int exitCode = -1;
    bool crashed = false;
    bool finished = false;
    qint64 milliseconds = 0;
    QByteArray out;
    QByteArray err;
};

// The options of a first start, changed by `edit`, stored where the engine reads them.
void StoreOptions(const std::function<void(OptionValues&)>& edit = {});

// Runs the engine of the build, or `program` when one is given.
EngineResult RunEngine(const QStringList& arguments, int timeoutMs = 60000,
                       const QString& program = {});

// A fixture by name from the standard set.
velmora::fixtures::Fixture StandardFixture(const std::string& name);
// The standard fixture `name` as "<dir>/<name>.pdf", written on first use.
QString WriteFixture(const QString& dir, const std::string& name);

// A PDF from its numbered objects' bodies ("<< /Type /Catalog ... >>"), with a correct
// cross-reference table; object 1 is the catalogue.
QByteArray RawPdf(const std::vector<QByteArray>& objects);

// A three-page PDF with text on each page, behind an incremental update whose cross-reference
// section names itself as the previous one: its pages are found only by a repair.
QByteArray SelfChainedPdf();

QByteArray ReadFile(const QString& path);
void WriteFile(const QString& path, const QByteArray& bytes);

}  // namespace enginetest
