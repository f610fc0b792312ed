#include "EngineRunSupport.h"

#include "TestPaths.h"
#include "options/OptionsDocument.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>

#include <gtest/gtest.h>

namespace enginetest {

void StoreOptions(const std::function<void(OptionValues&)>& edit)
{
    OptionValues values = FirstStartValues();
    if (edit)
        edit(values);
    QSettings store(QSettings::NativeFormat, QSettings::UserScope, StoreNames::Organisation,
                    StoreNames::Application);
    store.setValue(StoreNames::OptionsDocument, BuildOptionsDocument(values));
    store.sync();
    ASSERT_EQ(store.status(), QSettings::NoError);
}

EngineResult RunEngine(const QStringList& arguments, int timeoutMs, const QString& program)
{
    EngineResult result;
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(program.isEmpty() ? QStringLiteral(VELMORA_APP_DIR "/VelmoraConverter") : program,
                  arguments);
    result.finished = process.waitForStarted(10000) && process.waitForFinished(timeoutMs);
    if (!result.finished) {
        process.kill();
        process.waitForFinished(5000);
    }
    result.milliseconds = timer.elapsed();
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

velmora::fixtures::Fixture StandardFixture(const std::string& name)
{
    for (auto& fixture : velmora::fixtures::StandardFixtures()) {
        if (fixture.name == name)
            return fixture;
    }
    ADD_FAILURE() << "no fixture " << name;
    return {};
}

QString WriteFixture(const QString& dir, const std::string& name)
{
    const QString file = dir + u'/' + QString::fromStdString(name) + ".pdf";
    if (!QFileInfo::exists(file)) {
        const auto plan = StandardFixture(name);
        velmora::fixtures::WritePdf(file.toStdString(), plan.pages, plan.password);
    }
    return file;
}

QByteArray RawPdf(const std::vector<QByteArray>& objects)
{
    QByteArray pdf = "%PDF-1.7\n";
    std::vector<qsizetype> offsets;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        offsets.push_back(pdf.size());
        pdf += QByteArray::number(static_cast<qulonglong>(i + 1)) + " 0 obj\n" + objects[i] +
               "\nendobj\n";
    }
    const qsizetype xref = pdf.size();
    pdf += "xref\n0 " + QByteArray::number(static_cast<qulonglong>(objects.size() + 1)) +
           "\n0000000000 65535 f \n";
    for (qsizetype offset : offsets)
        pdf += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    pdf += "trailer\n<< /Size " + QByteArray::number(static_cast<qulonglong>(objects.size() + 1)) +
           " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(xref) + "\n%%EOF\n";
    return pdf;
}

QByteArray SelfChainedPdf()
{
    const QByteArray page = "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 6 0 R "
                            "/Resources << /Font << /F1 7 0 R >> >> >>";
    const QByteArray text = "BT /F1 12 Tf 20 150 Td (Repaired page) Tj ET";
    QByteArray pdf = RawPdf(
        {"<< /Type /Catalog /Pages 2 0 R >>",
         "<< /Type /Pages /Kids [3 0 R 4 0 R 5 0 R] /Count 3 >>", page, page, page,
         "<< /Length " + QByteArray::number(text.size()) + " >>\nstream\n" + text + "\nendstream",
         "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"});
    const QByteArray object = QByteArray::number(pdf.size()).rightJustified(10, '0');
    pdf += "8 0 obj\n<< /Producer (update) >>\nendobj\n";
    const QByteArray xref = QByteArray::number(pdf.size());
    pdf += "xref\n0 1\n0000000000 65535 f \n8 1\n" + object + " 00000 n \ntrailer\n<< /Size 9 " +
           "/Root 1 0 R /Info 8 0 R /Prev " + xref + " >>\nstartxref\n" + xref + "\n%%EOF\n";
    return pdf;
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(bytes), bytes.size());
}

}  // namespace enginetest
