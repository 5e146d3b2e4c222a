#include "print/PrintSystem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTest>

#include <cups/cups.h>

#include <sys/prctl.h>

#include <csignal>

namespace {

constexpr int kPatienceMs = 60'000;
const QString kServerPrograms = "/usr/lib/cups";

/// Daemons and administration commands live where an ordinary account does not look.
QString program(const QString& name)
{
    const QString found = QStandardPaths::findExecutable(name);
    return found.isEmpty() ? QStandardPaths::findExecutable(name, {"/usr/sbin", "/sbin"}) : found;
}

} // namespace

PrintSystem::PrintSystem(const QString& extra)
{
    m_problem = start(extra);
}

PrintSystem::~PrintSystem()
{
    if (m_server.state() == QProcess::NotRunning)
        return;
    m_server.terminate();
    if (!m_server.waitForFinished(kPatienceMs))
        m_server.kill();
}

void PrintSystem::useServer(const QString& socket)
{
    qputenv("CUPS_SERVER", socket.toLocal8Bit());
    cupsSetServer(socket.toLocal8Bit().constData());
}

QString PrintSystem::start(const QString& extra)
{
    const QString server = program("cupsd");
    if (server.isEmpty())
        return "cupsd is not installed";
    const QString socket = m_folder.filePath("cups.sock");
    QFile::setPermissions(m_folder.path(), QFile::Permissions(0x7755)); // The filters' account looks inside.
    for (const char* name : {"conf", "cache", "state", "spool", "spool/tmp", "log"})
        QDir(m_folder.path()).mkpath(name);
    makeServerPrograms();
    writeFile("conf/cups-files.conf", QString("ServerRoot %1/conf\nCacheDir %1/cache\nStateDir %1/state\n"
                                              "RequestRoot %1/spool\nTempDir %1/spool/tmp\nServerBin %1/bin\n"
                                              "AccessLog %1/log/access\nErrorLog %1/log/error\n"
                                              "PageLog %1/log/page\n")
                                          .arg(m_folder.path()));
    writeFile("conf/cupsd.conf", configuration(extra));
    useServer(socket);
    qunsetenv("PRINTER");
    qunsetenv("LPDEST");
    m_server.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); }); // Even when the test crashes.
    m_server.start(server, {"-f", "-c", m_folder.filePath("conf/cupsd.conf"), "-s",
                            m_folder.filePath("conf/cups-files.conf")});
    if (!m_server.waitForStarted(kPatienceMs))
        return "cupsd does not start: " + m_server.errorString();
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < kPatienceMs; QTest::qWait(20)) {
        if (run("lpstat", {"-r"}) && ask("lpstat", {"-r"}).contains("is running"))
            return {};
        if (m_server.state() == QProcess::NotRunning)
            break;
    }
    return "cupsd does not answer: " + QString::fromLocal8Bit(m_server.readAllStandardError());
}

/// The server's own programs, and one more printer driver that stores what it is sent in a file.
void PrintSystem::makeServerPrograms() const
{
    QDir(m_folder.path()).mkpath("bin/backend");
    for (const QFileInfo& part : QDir(kServerPrograms).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        QFile::link(part.filePath(), m_folder.filePath("bin/" + part.fileName()));
    QFile::link(kServerPrograms + "/backend/cups-pdf", m_folder.filePath("bin/backend/cups-pdf"));
    addDriver("keep", "cat ${6:--} > \"${DEVICE_URI#keep:}\"\n");
}

void PrintSystem::addDriver(const QString& name, const QString& script) const
{
    writeFile("bin/backend/" + name, "#!/bin/sh\n[ $# -eq 0 ] && exit 0\n" + script);
    QFile::setPermissions(m_folder.filePath("bin/backend/" + name), QFile::Permissions(0x7700));
}

QString PrintSystem::configuration(const QString& extra) const
{
    return QString("LogLevel info\nListen %1\nBrowsing Off\nDefaultAuthType None\n"
                   "<Location />\nOrder allow,deny\nAllow all\n</Location>\n"
                   "<Policy default>\n<Limit All>\nOrder deny,allow\n</Limit>\n</Policy>\n%2\n")
        .arg(m_folder.filePath("cups.sock"), extra);
}

bool PrintSystem::writeFile(const QString& name, const QString& text) const
{
    QFile file(m_folder.filePath(name));
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0;
}

QString PrintSystem::addFileQueue(const QString& name, const QStringList& options)
{
    const QString file = m_folder.filePath(name + ".pdf");
    run("lpadmin", QStringList{"-p", name, "-v", "keep:" + file, "-m", "raw"} + options + QStringList{"-E"});
    return file;
}

QString PrintSystem::addCrookedQueue(const QString& name, const Miss& miss, double paperHeightMm)
{
    constexpr double kPointsPerMm = 72 / 25.4;
    // PostScript counts from the lower edge of the paper.
    const double up = (paperHeightMm * (1 - miss.scaleDown) - miss.downMm) * kPointsPerMm;
    addDriver(name, QString("file=\"${DEVICE_URI#%1:}\"\ncat ${6:--} > \"$file.sent\"\n"
                            "gs -q -dNOPAUSE -dBATCH -sDEVICE=pdfwrite -dAutoRotatePages=/None -o \"$file\" "
                            "-c '<</BeginPage {pop %2 %3 translate %4 %5 scale}>> setpagedevice' "
                            "-f \"$file.sent\" >&2\n")
                        .arg(name)
                        .arg(miss.acrossMm * kPointsPerMm)
                        .arg(up)
                        .arg(miss.scaleAcross)
                        .arg(miss.scaleDown));
    const QString file = m_folder.filePath(name + ".pdf");
    run("lpadmin", {"-p", name, "-v", name + ":" + file, "-m", "raw", "-E"});
    return file;
}

bool PrintSystem::addPdfQueue(const QString& name)
{
    return run("lpadmin",
               {"-p", name, "-v", "cups-pdf:/", "-P", "/usr/share/ppd/cups-pdf/CUPS-PDF_noopt.ppd", "-E"});
}

bool PrintSystem::run(const QString& command, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program(command), arguments);
    process.waitForFinished(kPatienceMs);
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

QString PrintSystem::ask(const QString& command, const QStringList& arguments)
{
    QProcess process;
    process.start(program(command), arguments);
    process.waitForFinished(kPatienceMs);
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool PrintSystem::waitForJobs()
{
    QElapsedTimer clock;
    for (clock.start(); clock.elapsed() < kPatienceMs; QTest::qWait(50))
        if (ask("lpstat", {"-W", "not-completed", "-o"}).trimmed().isEmpty())
            return true;
    return false;
}
