// The program as a user gets it: installed into a staging root and into a home folder, its
// engine and front end started from elsewhere, and the Debian package built from the tree.

#include "PdfFixtures.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <filesystem>
#include <memory>
#include <optional>

namespace {

const QString BuildDir = QStringLiteral(VELMORA_BUILD_DIR);
const QString AppId = QStringLiteral("com.velmora.Sandpiper");
const QString AppDir = QStringLiteral("lib/velmora-sandpiper/");

struct Finished
{
    bool ran = false;  // started, and ended by itself
    int code = -1;
    QByteArray out;
    QByteArray err;
    std::string Said() const { return (out + err).toStdString(); }
    bool Succeeded() const { return ran && code == 0; }
};

Finished RunTool(const QString& program, const QStringList& arguments,
                 const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(QDir::rootPath());
    process.start(program, arguments);
    Finished result;
    result.ran = process.waitForStarted(10000) && process.waitForFinished(180000) &&
                 process.exitStatus() == QProcess::NormalExit;
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(5000);
    }
    result.code = process.exitCode();
    result.out = process.readAllStandardOutput();
    result.err = process.readAllStandardError();
    return result;
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The test's installs rewrite the build folder's install records; a developer's own install
// must still be the one `uninstall` removes afterwards.
class InstallRecordsKeeper final : public ::testing::Environment
{
public:
    void SetUp() override
    {
        for (const QString& path : Paths())
            m_saved.append(QFile::exists(path) ? std::optional(ReadFile(path)) : std::nullopt);
    }

    void TearDown() override
    {
        for (qsizetype i = 0; i < m_saved.size(); ++i) {
            QFile file(Paths().at(i));
            file.remove();
            if (m_saved.at(i) && file.open(QIODevice::WriteOnly))
                file.write(*m_saved.at(i));
        }
    }

private:
    static QStringList Paths()
    {
        return {BuildDir + QStringLiteral("/install_manifest.txt"),
                BuildDir + QStringLiteral("/install_created_dirs.txt")};
    }

    QList<std::optional<QByteArray>> m_saved;
};

[[maybe_unused]] auto* const g_keeper =
    ::testing::AddGlobalTestEnvironment(new InstallRecordsKeeper);

Finished Install(const QString& prefix, const QString& destdir = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!destdir.isEmpty())
        environment.insert(QStringLiteral("DESTDIR"), destdir);
    return RunTool(QStringLiteral(VELMORA_CMAKE),
                   {QStringLiteral("--install"), BuildDir, QStringLiteral("--prefix"), prefix},
                   environment);
}

// An environment of the program's own: home, settings and temporary files under `dir`.
QProcessEnvironment PrivateEnvironment(const QString& dir)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QDir().mkpath(dir + QStringLiteral("/tmp"));
    environment.insert(QStringLiteral("HOME"), dir);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir + QStringLiteral("/config"));
    environment.insert(QStringLiteral("TMPDIR"), dir + QStringLiteral("/tmp"));
    environment.insert(QStringLiteral("LANG"), QStringLiteral("en_US.UTF-8"));
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("en_US.UTF-8"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return environment;
}

QString WriteProsePdf(const QString& dir)
{
    const QString path = dir + QStringLiteral("/report.pdf");
    for (const auto& fixture : velmora::fixtures::StandardFixtures()) {
        if (fixture.name == "prose")
            velmora::fixtures::WritePdf(path.toStdString(), fixture.pages);
    }
    return path;
}

// A private X server without a window manager, as a desktop session has one.
class PrivateDisplay final
{
public:
    PrivateDisplay()
    {
        // Xvfb picks a free display itself and writes its number once it accepts clients.
        m_server.start(QStringLiteral("Xvfb"),
                       {QStringLiteral("-displayfd"), QStringLiteral("1"),
                        QStringLiteral("-screen"), QStringLiteral("0"),
                        QStringLiteral("1280x1024x24"), QStringLiteral("-nolisten"),
                        QStringLiteral("tcp")});
        QByteArray number;
        QElapsedTimer clock;
        clock.start();
        while (!number.contains('\n') && clock.elapsed() < 15000 && m_server.waitForReadyRead(500))
            number += m_server.readAllStandardOutput();
        if (number.trimmed().isEmpty())
            return;
        m_name = u':' + QString::fromLatin1(number.trimmed());
        m_display = XOpenDisplay(m_name.toLatin1().constData());
    }

    ~PrivateDisplay()
    {
        if (m_display)
            XCloseDisplay(m_display);
        m_server.terminate();
        if (!m_server.waitForFinished(5000))
            m_server.kill();
        m_server.waitForFinished(5000);
    }

    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;

    bool IsOpen() const { return m_display != nullptr; }
    const QString& Name() const { return m_name; }

    // The shown top-level windows of process `pid`, with their titles.
    QList<std::pair<Window, QString>> ShownWindows(qint64 pid) const
    {
        QList<std::pair<Window, QString>> found;
        Window root = XDefaultRootWindow(m_display);
        Window parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        if (!XQueryTree(m_display, root, &root, &parent, &children, &count))
            return found;
        for (unsigned i = 0; i < count; ++i) {
            XWindowAttributes attributes;
            if (XGetWindowAttributes(m_display, children[i], &attributes) &&
                attributes.map_state == IsViewable && Cardinal(children[i], "_NET_WM_PID") == pid)
                found.append({children[i], Utf8Property(children[i], "_NET_WM_NAME")});
        }
        XFree(children);
        return found;
    }

    // Closes a window the way a window manager's close button does.
    void AskToClose(Window window) const
    {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(m_display, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] =
            static_cast<long>(XInternAtom(m_display, "WM_DELETE_WINDOW", False));
        event.xclient.data.l[1] = CurrentTime;
        XSendEvent(m_display, window, False, NoEventMask, &event);
        XSync(m_display, False);
    }

private:
    qint64 Cardinal(Window window, const char* name) const
    {
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long after = 0;
        unsigned char* data = nullptr;
        qint64 value = -1;
        if (XGetWindowProperty(m_display, window, XInternAtom(m_display, name, False), 0, 1, False,
                               XA_CARDINAL, &type, &format, &items, &after, &data) == Success &&
            data && items == 1)
            value = static_cast<qint64>(*reinterpret_cast<unsigned long*>(data));
        if (data)
            XFree(data);
        return value;
    }

    QString Utf8Property(Window window, const char* name) const
    {
        Atom type = 0;
        int format = 0;
        unsigned long items = 0;
        unsigned long after = 0;
        unsigned char* data = nullptr;
        QString value;
        if (XGetWindowProperty(m_display, window, XInternAtom(m_display, name, False), 0, 1024,
                               False, XInternAtom(m_display, "UTF8_STRING", False), &type, &format,
                               &items, &after, &data) == Success &&
            data)
            value = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<int>(items));
        if (data)
            XFree(data);
        return value;
    }

    QProcess m_server;
    QString m_name;
    Display* m_display = nullptr;
};

// Installed once for the suite: the /usr layout under a staging root.
class InstalledTree : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_stage = std::make_unique<QTemporaryDir>();
        s_install = Install(QStringLiteral("/usr"), s_stage->path());
    }

    static void TearDownTestSuite() { s_stage.reset(); }

    void SetUp() override { ASSERT_TRUE(s_install.Succeeded()) << s_install.Said(); }

    static QString Usr(const QString& path) { return s_stage->path() + "/usr/" + path; }

    static inline std::unique_ptr<QTemporaryDir> s_stage;
    static inline Finished s_install;
};

TEST_F(InstalledTree, PutsEveryPieceInItsPlace)
{
    for (const QString& program :
         QStringList{AppDir + "marvash", AppDir + "VelmoraConverter", AppDir + "VelmoraHelp"})
        EXPECT_TRUE(QFileInfo(Usr(program)).isExecutable()) << program.toStdString();
    for (const QString& file :
         QStringList{AppDir + "libquonvexa.so", AppDir + "liblomerdoc.so",
                     AppDir + "libvelmora-ocr.so", AppDir + "Sandpiper/Vorek/use.htm",
                     "share/icons/hicolor/scalable/apps/" + AppId + ".svg",
                     "share/doc/velmora-sandpiper/copyright",
                     "share/doc/velmora-sandpiper/changelog.Debian.gz"})
        EXPECT_TRUE(QFileInfo(Usr(file)).isFile()) << file.toStdString();

    // Relative, so the tree works wherever it is unpacked.
    const auto link = std::filesystem::path(Usr(QStringLiteral("bin/marvash")).toStdString());
    ASSERT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(std::filesystem::read_symlink(link).is_relative());
    EXPECT_EQ(QFileInfo(Usr(QStringLiteral("bin/marvash"))).canonicalFilePath(),
              QFileInfo(Usr(AppDir + "marvash")).canonicalFilePath());

    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString png =
            QStringLiteral("share/icons/hicolor/%1x%1/apps/%2.png").arg(size).arg(AppId);
        EXPECT_EQ(QImage(Usr(png)).size(), QSize(size, size)) << png.toStdString();
    }

    const std::vector<std::pair<QString, QStringList>> pages = {
        {QStringLiteral("marvash"),
         {"NAME", "SYNOPSIS", "EXIT STATUS", "OPTIONS DOCUMENT", "ENVIRONMENT", "FILES"}},
        {QStringLiteral("VelmoraConverter"),
         {"NAME", "SYNOPSIS", "SWITCHES", "EXIT STATUS", "OPTIONS DOCUMENT", "ENVIRONMENT"}},
    };
    for (const auto& [page, sections] : pages) {
        const Finished roff =
            RunTool(QStringLiteral("gzip"),
                    {QStringLiteral("-dc"), Usr("share/man/man1/" + page + ".1.gz")});
        ASSERT_TRUE(roff.Succeeded()) << page.toStdString();
        EXPECT_TRUE(roff.out.contains(".TH \"" + page.toUtf8() + "\" \"1\"")) << page.toStdString();
        for (const QString& section : sections)
            EXPECT_TRUE(roff.out.contains(".SH " + section.toUtf8()))
                << page.toStdString() << " lacks " << section.toStdString();
    }
}

TEST_F(InstalledTree, DesktopFilesPassTheirValidatorsAndOpenPdfs)
{
    const QString entry = Usr("share/applications/" + AppId + ".desktop");
    const QString metainfo = Usr("share/metainfo/" + AppId + ".metainfo.xml");
    const Finished desktop = RunTool(QStringLiteral("desktop-file-validate"), {entry});
    EXPECT_TRUE(desktop.Succeeded() && desktop.out.isEmpty()) << desktop.Said();
    const Finished appstream =
        RunTool(QStringLiteral("appstreamcli"),
                {QStringLiteral("validate"), QStringLiteral("--no-net"), metainfo});
    EXPECT_TRUE(appstream.Succeeded()) << appstream.Said();

    struct Expected
    {
        QString file;
        QStringList lines;
    };
    const std::vector<Expected> rows = {
        {entry,
         {"Exec=marvash /c %f", "Exec=marvash /o", "MimeType=application/pdf;",
          "Categories=Office;", "Icon=" + AppId,
          "Name[ja]=", "Comment[ja]=", "Keywords=", "Actions="}},
        {Usr("share/kio/servicemenus/" + AppId + ".desktop"),
         {"MimeType=application/pdf;", "Exec=marvash /c %f", "Name=Convert to Word"}},
        {metainfo,
         {"<id>" + AppId + "</id>", "<launchable type=\"desktop-id\">" + AppId + ".desktop",
          "<content_rating", "<screenshot type=\"default\">", "<release version="}},
    };
    for (const Expected& row : rows) {
        const QString text = QString::fromUtf8(ReadFile(row.file));
        for (const QString& line : row.lines)
            EXPECT_TRUE(text.contains(line))
                << row.file.toStdString() << " lacks " << line.toStdString();
    }
}

TEST_F(InstalledTree, EngineConvertsAPdfStartedFromAnotherFolder)
{
    QTemporaryDir work;
    const QString pdf = WriteProsePdf(work.path());
    const QString rtf = work.filePath(QStringLiteral("report.rtf"));
    const Finished run = RunTool(Usr(AppDir + "VelmoraConverter"),
                                 {pdf, rtf, QStringLiteral("-C"), QStringLiteral("-H")},
                                 PrivateEnvironment(work.filePath(QStringLiteral("home"))));
    ASSERT_TRUE(run.Succeeded()) << run.Said();
    const QByteArray document = ReadFile(rtf);
    EXPECT_TRUE(document.startsWith("{\\rtf1"));
    EXPECT_TRUE(document.contains("Quarterly report on rivers"));
}

// Started through bin/marvash from the root folder: the main dialog must come up with no
// message box beside it (a library or the engine not found beside the real program shows
// one), and close as a window manager closes it.
TEST_F(InstalledTree, FrontEndShowsItsMainDialogThroughTheLink)
{
    QTemporaryDir work;
    const QString pdf = WriteProsePdf(work.path());
    PrivateDisplay display;
    ASSERT_TRUE(display.IsOpen()) << "Xvfb did not start";

    for (const QStringList& arguments : {QStringList{"/o"}, QStringList{"/c", pdf}}) {
        SCOPED_TRACE(arguments.join(u' ').toStdString());
        QProcessEnvironment environment = PrivateEnvironment(work.filePath(QStringLiteral("home")));
        environment.insert(QStringLiteral("DISPLAY"), display.Name());
        QProcess program;
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(QDir::rootPath());
        program.start(Usr(QStringLiteral("bin/marvash")), arguments);
        ASSERT_TRUE(program.waitForStarted(10000));

        std::optional<Window> main;
        QStringList titles;
        QElapsedTimer clock;
        clock.start();
        qint64 shownAt = -1;
        // Watched a little longer once the dialog is up: the intake's message would come then.
        while (clock.elapsed() < 30000 && (shownAt < 0 || clock.elapsed() - shownAt < 2000)) {
            titles.clear();
            for (const auto& [window, title] : display.ShownWindows(program.processId())) {
                titles.append(title);
                if (title == QStringLiteral("Convert PDF to Word") && !main) {
                    main = window;
                    shownAt = clock.elapsed();
                }
            }
            QThread::msleep(100);
        }
        EXPECT_EQ(titles.join(QStringLiteral(" | ")).toStdString(), "Convert PDF to Word");
        if (main)
            display.AskToClose(*main);
        EXPECT_TRUE(program.waitForFinished(15000));
        if (program.state() != QProcess::NotRunning) {
            program.kill();
            program.waitForFinished(5000);
        }
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    }
}

// Under a prefix of the user's own, with a blank in it: the entries name the program by its
// full path, Dolphin's action is executable, and the uninstall target takes away all the
// install made and nothing that was there before.
TEST(HomeInstall, NamesTheProgramByItsPathAndUninstallsCleanly)
{
    QTemporaryDir home;
    const QString prefix = home.filePath(QStringLiteral("my home/.local"));
    const QString before = prefix + QStringLiteral("/share/applications/other.desktop");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(before).path()));
    QFile(before).open(QIODevice::WriteOnly);

    const Finished install = Install(prefix);
    ASSERT_TRUE(install.Succeeded()) << install.Said();
    const QString exec = "Exec=\"" + prefix + "/bin/marvash\" /c %f";
    const QString entry = prefix + "/share/applications/" + AppId + ".desktop";
    const QString action = prefix + "/share/kio/servicemenus/" + AppId + ".desktop";
    EXPECT_TRUE(QString::fromUtf8(ReadFile(entry)).contains(exec));
    EXPECT_TRUE(QString::fromUtf8(ReadFile(action)).contains(exec));
    EXPECT_TRUE(QFileInfo(action).isExecutable());
    const Finished valid = RunTool(QStringLiteral("desktop-file-validate"), {entry});
    EXPECT_TRUE(valid.Succeeded()) << valid.Said();

    const Finished uninstall = RunTool(QStringLiteral(VELMORA_CMAKE),
                                       {QStringLiteral("--build"), BuildDir,
                                        QStringLiteral("--target"), QStringLiteral("uninstall")});
    ASSERT_TRUE(uninstall.Succeeded()) << uninstall.Said();
    QStringList left;
    const std::filesystem::path root(home.path().toStdString());
    for (const auto& item : std::filesystem::recursive_directory_iterator(root))
        left.append(QString::fromStdString(std::filesystem::relative(item.path(), root).string()));
    left.sort();
    EXPECT_EQ(left.join(u'\n').toStdString(),
              "my home\nmy home/.local\nmy home/.local/share\nmy home/.local/share/applications\n"
              "my home/.local/share/applications/other.desktop");
}

TEST(DebianPackage, DeclaresItsDependenciesAndPassesLintian)
{
    QTemporaryDir out;
    const Finished cpack = RunTool(QStringLiteral(VELMORA_CPACK),
                                   {QStringLiteral("--config"), BuildDir + "/CPackConfig.cmake",
                                    QStringLiteral("-B"), out.path()});
    ASSERT_TRUE(cpack.Succeeded()) << cpack.Said();
    const QStringList built = QDir(out.path()).entryList({QStringLiteral("*.deb")});
    ASSERT_EQ(built.size(), 1);
    const QString deb = out.filePath(built.first());
    EXPECT_TRUE(
        built.first().startsWith(QStringLiteral("velmora-sandpiper_" VELMORA_DEB_VERSION "_")));

    struct Field
    {
        const char* name;
        QRegularExpression value;
    };
    const std::vector<Field> fields = {
        {"Package", QRegularExpression("^velmora-sandpiper$")},
        {"Version",
         QRegularExpression("^" + QRegularExpression::escape(VELMORA_DEB_VERSION) + "$")},
        {"Depends", QRegularExpression("(^|, )xdg-utils(,|$)")},
        {"Depends", QRegularExpression("(^|, )fonts-ipafont-gothic(,|$)")},
        // From the libraries the programs link: found by shlibdeps, not written by hand.
        {"Depends", QRegularExpression("(^|, )libqt6widgets6 \\(>= [^)]+\\)")},
        {"Depends", QRegularExpression("(^|, )libc6 \\(>= [^)]+\\)")},
        {"Depends", QRegularExpression("(^|, )tesseract-ocr-eng(,|$)")},
        {"Recommends", QRegularExpression("^libreoffice-writer-nogui \\| libreoffice-writer(,|$)")},
        {"Maintainer", QRegularExpression("^.+ <.+@.+>$")},
        {"Section", QRegularExpression("^\\S+$")},
    };
    for (const Field& field : fields) {
        const Finished value =
            RunTool(QStringLiteral("dpkg-deb"), {QStringLiteral("-f"), deb, field.name});
        ASSERT_TRUE(value.Succeeded()) << value.Said();
        EXPECT_TRUE(field.value.match(QString::fromUtf8(value.out.trimmed())).hasMatch())
            << field.name << ": " << value.out.toStdString();
    }
    const Finished control = RunTool(QStringLiteral("dpkg-deb"), {QStringLiteral("--info"), deb});
    EXPECT_TRUE(control.out.contains(" md5sums")) << control.Said();

    // Lintian fails on errors only; its warnings are known and accepted.
    const Finished lintian = RunTool(QStringLiteral("lintian"),
                                     {QStringLiteral("--fail-on"), QStringLiteral("error"), deb});
    EXPECT_TRUE(lintian.Succeeded()) << lintian.Said();
}

}  // namespace
