#include "engines/print/CupsQueue.h"
#include "engines/print/makers.h"
#include "print/PrintSystem.h"

#include <QFile>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cups/cups.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const Printer::Page kBlankPage = [](QPainter&) {};

/// What the print system holds of a job: "name=value" for each attribute.
QStringList attributesOfJob(int job)
{
    QStringList lines;
    http_t* http = httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
                                10'000, nullptr);
    ipp_t* request = ippNewRequest(IPP_OP_GET_JOB_ATTRIBUTES);
    const QByteArray uri = "ipp://localhost/jobs/" + QByteArray::number(job);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr, uri.constData());
    ipp_t* answer = cupsDoRequest(http, request, "/jobs/");
    for (ipp_attribute_t* each = ippFirstAttribute(answer); each; each = ippNextAttribute(answer)) {
        char value[256] = "";
        ippAttributeString(each, value, sizeof value);
        lines << QString("%1=%2").arg(QString::fromUtf8(ippGetName(each)), QString::fromUtf8(value));
    }
    ippDelete(answer);
    httpClose(http);
    return lines;
}

/// @returns the failure's sentence, or nothing after a success.
QString complaint(const QString& job = "Job", const Printer::Page& page = kBlankPage)
{
    const zib::Outcome<> printed = zib::makePrinter()->print(job, page);
    return printed ? QString() : printed.error().detail;
}

} // namespace

/// The default printer, and every way in which it can refuse.
class TestCupsPrinter : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_system = std::make_unique<PrintSystem>(m_extra);
        if (!m_system->problem().isEmpty())
            QSKIP(qPrintable(m_system->problem()));
    }
    void cleanup()
    {
        m_system.reset();
        m_extra.clear();
    }
    void print_onTheDefaultQueue_takesTheJobUnderItsName()
    {
        const QString file = m_system->addFileQueue("one");
        const QString other = m_system->addFileQueue("two");
        m_system->setDefault("one");
        QCOMPARE(complaint("Zib CD Burner"), QString());
        QVERIFY(m_system->waitForJobs());
        QVERIFY(QFile(file).exists());
        QVERIFY(!QFile(other).exists());
        QFile pdf(file);
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        QVERIFY(pdf.readAll().startsWith("%PDF-"));
        QVERIFY(m_system->ask("lpstat", {"-W", "completed", "-o"}).contains("one-1"));
        QVERIFY(m_system->ask("lpq", {"-P", "one", "-a"}).contains("no entries"));
    }
    void print_withoutADefaultQueue_saysSo()
    {
        QVERIFY(complaint().startsWith("There is no default printer."));
    }
    void print_onAStoppedQueue_saysWhy()
    {
        m_system->addFileQueue("one");
        m_system->setDefault("one");
        QVERIFY(m_system->run("cupsdisable", {"-r", "Out of yellow ink", "one"}));
        QCOMPARE(complaint(), QString("The printer \"one\" is stopped: Out of yellow ink."));
        QVERIFY(m_system->run("cupsenable", {"one"}));
        QCOMPARE(complaint(), QString());
    }
    void print_onAQueueThatRejects_saysWhy()
    {
        m_system->addFileQueue("one");
        m_system->setDefault("one");
        QVERIFY(m_system->run("cupsreject", {"one"}));
        const QString words = complaint();
        QVERIFY2(words.startsWith("The printer \"one\" did not take the job: ") &&
                     words.contains("accepting"),
                 qPrintable(words));
    }
    void print_forAnAccountThatMayNot_saysWhy()
    {
        m_system->addFileQueue("one", {"-u", "allow:nobody-at-all"});
        m_system->setDefault("one");
        const QString words = complaint();
        QVERIFY2(words.startsWith("The printer \"one\" did not take the job: "), qPrintable(words));
    }
    void print_ofAJobTooLargeForTheSpool_saysWhyAndKeepsNothing()
    {
        m_system.reset();
        m_system = std::make_unique<PrintSystem>("LimitRequestBody 100000");
        m_system->addFileQueue("one");
        m_system->setDefault("one");
        const QString words = complaint("Large", [](QPainter& painter) {
            QImage noise(600, 600, QImage::Format_RGB32);
            QRandomGenerator random(1);
            random.fillRange(reinterpret_cast<quint32*>(noise.bits()), noise.sizeInBytes() / 4);
            painter.setRenderHint(QPainter::LosslessImageRendering);
            painter.drawImage(QRectF(0, 0, 6000, 6000), noise);
        });
        QVERIFY2(words.startsWith("The printer \"one\" did not take the job: "), qPrintable(words));
        QVERIFY(m_system->waitForJobs());
    }
    void print_withoutAPrintSystem_saysSo()
    {
        m_system.reset();
        PrintSystem::useServer("/nowhere/cups.sock");
        const QString words = complaint();
        QVERIFY2(words.startsWith("The printing system does not answer: "), qPrintable(words));
        QVERIFY2(!words.contains(strerror(EBADF)) && !words.contains(": ."), qPrintable(words));
    }
    void print_whenTheSystemHangs_givesUpWhileWindowsPaint()
    {
        const QTemporaryDir folder;
        const QByteArray path = folder.filePath("silent.sock").toLocal8Bit();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        const int silent = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        QCOMPARE(bind(silent, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        QCOMPARE(listen(silent, 5), 0); // Connections are taken and never answered.
        PrintSystem::useServer(path);
        int ticks = 0;
        QTimer painting;
        connect(&painting, &QTimer::timeout, this, [&] { ++ticks; });
        painting.start(20);
        const QString words = complaint();
        QVERIFY2(words.startsWith("The printing system does not answer: "), qPrintable(words));
        QVERIFY(ticks > 5);
        close(silent);
    }
    void print_withSavedOptions_keepsThoseThatMoveNothing()
    {
        const QString file = m_system->addFileQueue("one");
        m_system->setDefault("one");
        for (const char* saved : {"number-up-default=4", "page-ranges-default=2", "fit-to-page-default=true",
                                  "orientation-requested-default=4", "copies-default=3", "media-default=a5"})
            QVERIFY(m_system->run("lpadmin", {"-p", "one", "-o", saved}));
        QVERIFY(m_system->run("cupsdisable", {"one"}));
        const auto queue = zib::CupsQueue::openDefault();
        QVERIFY(queue);
        QVERIFY(queue.value()->send("Job", "%PDF-1.4\n"));
        const QStringList attributes = attributesOfJob(1);
        const QString all = attributes.join('\n');
        for (const char* wanted : {"number-up=1", "page-ranges=1-1", "print-scaling=none", "copies=3",
                                   "orientation-requested=portrait"})
            QVERIFY2(attributes.contains(wanted), qPrintable(all));
    }
    void paper_ofAQueueWithADriver_isItsDefault()
    {
        m_system->addFileQueue("one");
        m_system->setDefault("one");
        if (!m_system->run("lpadmin", {"-p", "one", "-P", "/usr/share/ppd/cups-pdf/CUPS-PDF_noopt.ppd"}))
            QSKIP("the description of Debian's PDF printer is not installed");
        QVERIFY(m_system->run("lpadmin", {"-p", "one", "-o", "PageSize=A5"}));
        const auto queue = zib::CupsQueue::openDefault();
        QVERIFY(queue);
        const zib::Paper paper = queue.value()->paper();
        QVERIFY(qAbs(paper.size.width() - 148) < 1 && qAbs(paper.size.height() - 210) < 1);
        QCOMPARE(paper.margins, QMarginsF());
    }
    void paper_ofAPrinterWithMargins_hasThem()
    {
        m_system->addFileQueue("one");
        if (!m_system->run("lpadmin", {"-p", "one", "-m", "drv:///sample.drv/generic.ppd"}))
            QSKIP("the generic printer driver is not installed");
        QVERIFY(m_system->run("lpadmin", {"-p", "one", "-o", "PageSize=A4"}));
        m_system->setDefault("one");
        const auto queue = zib::CupsQueue::openDefault();
        QVERIFY(queue);
        const zib::Paper paper = queue.value()->paper();
        QVERIFY(qAbs(paper.size.width() - 210) < 0.2 && qAbs(paper.size.height() - 297) < 0.2);
        QCOMPARE(paper.margins, QMarginsF(4.23, 4.23, 4.23, 4.23));
    }
    void paper_ofAQueueWithoutADriver_isTheUsualOne()
    {
        m_system->addFileQueue("one");
        m_system->setDefault("one");
        const auto queue = zib::CupsQueue::openDefault();
        QVERIFY(queue);
        QVERIFY(queue.value()->paper().size.width() >= 200);
        QVERIFY(queue.value()->paper().margins.left() < 20);
    }

private:
    QString m_extra;
    std::unique_ptr<PrintSystem> m_system;
};

QTEST_MAIN(TestCupsPrinter)
#include "tst_CupsPrinter.moc"
