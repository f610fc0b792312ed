// Plays the conversion engine in the tests that need a real process. Copied into a test's
// application directory as VelmoraConverter, it records its arguments beside itself and does
// what the file "standin.mode" there says: "write" (the default) writes the target, or for a
// preview run (-P) a picture of page 1 ("write W H" sets its size); "sleep" waits two seconds
// first; "hold" waits until a file "standin.release" appears beside it (a minute at most; it
// gives up when its folder goes).

#include <QColor>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QThread>

int main(int argc, char** argv)
{
    const QDir dir = QFileInfo(QFile::decodeName(argv[0])).dir();
    QStringList arguments;
    QFile record(dir.filePath(QStringLiteral("standin.args")));
    if (!record.open(QIODevice::Append))
        return 1;
    for (int i = 1; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
        record.write(argv[i] + QByteArray("\n"));
    }
    record.write("--\n");
    record.close();
    QFile modeFile(dir.filePath(QStringLiteral("standin.mode")));
    const QList<QByteArray> mode = modeFile.open(QIODevice::ReadOnly)
                                       ? modeFile.readAll().simplified().split(' ')
                                       : QList<QByteArray>();
    const QByteArray kind = mode.value(0).isEmpty() ? QByteArray("write") : mode.value(0);
    if (arguments.size() < 2)
        return 2;
    if (kind == "sleep")
        QThread::sleep(2);
    for (int waited = 0;
         kind == "hold" && waited < 60000 && !dir.exists(QStringLiteral("standin.release"));
         waited += 20) {
        if (!dir.exists(QStringLiteral("standin.mode")))
            return 1;
        QThread::msleep(20);
    }
    const QString target = arguments.at(1);
    if (arguments.mid(2).contains(QStringLiteral("-P"))) {
        const int width = mode.value(1).toInt() > 0 ? mode.value(1).toInt() : 60;
        const int height = mode.value(2).toInt() > 0 ? mode.value(2).toInt() : 80;
        // A grey page with a dark line across its middle.
        QImage page(width, height, QImage::Format_RGB888);
        page.fill(QColor(0xF0, 0xF0, 0xF0));
        for (int x = 0; x < width; ++x)
            page.setPixelColor(x, height / 2, QColor(0x20, 0x20, 0x20));
        const QString stem = target.size() > 4 ? target.chopped(4) : target;
        return page.save(stem + QStringLiteral("_1.bmp"), "BMP") ? 0 : 1;
    }
    // A real engine takes longer than one tick of the clock that stamps files.
    QThread::msleep(30);
    QFile out(target);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 1;
    return out.write("{\\rtf1\\ansi stand-in}") > 0 ? 0 : 1;
}
