#include "burn/frmPrepare.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "fakes/FakeSeams.h"
#include "fakes/Heartbeat.h"
#include "tools/HangingPlace.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace zib;

namespace {

constexpr int kPatienceMs = 20'000;
constexpr qint64 kFrozenMs = 2000; // no machine is so busy: the window waits
constexpr int kLookMs = 150;       // how long the window is watched while the place hangs

/// The preparing window on the real audio engine, with sources in a folder that can hang.
struct Bench
{
    Bench()
    {
        setApplicationFolder(folder.filePath("app"));
        QDir().mkpath(place());
        desk.components.makeFile = makeAudioFile;
        desk.components.makeInformation = makeAudioInformation;
    }
    ~Bench()
    {
        hangingplace::letGo();
        window.reset();
    }

    QString place() const { return folder.filePath("hangs/"); }
    QString temp(const QString& name) const { return folder.filePath("app/Temp/" + name); }
    void add(const QString& name, const QByteArray& content)
    {
        kit::write(place() + name, content);
        CompilationRow row;
        row.fileName = name;
        row.location = place();
        rows << row;
    }
    void open()
    {
        window = std::make_unique<frmPrepare>(desk.services, rows);
        window->show();
    }
    bool ends() const
    {
        return QTest::qWaitFor([this] { return !window->isVisible(); }, kPatienceMs);
    }

    QTemporaryDir folder;
    FakeDesk desk;
    QList<CompilationRow> rows;
    std::unique_ptr<frmPrepare> window;
};

/// Looks at the window once its place hangs, tries to close it, and lets the place go.
struct Visit
{
    explicit Visit(Bench& visited) : bench(visited)
    {
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] { look(); });
        timer.start(5);
    }
    void look()
    {
        if (!since.isValid() && hangingplace::waiting() > 0) {
            since.start();
            QTest::keyClick(bench.window.get(), Qt::Key_Escape);
            bench.window->close();
        } else if (since.isValid() && !isOver && since.hasExpired(kLookMs)) {
            isOver = true;
            stayed = bench.window->isVisible();
            freezeMs = heart.longestMs();
            hangingplace::letGo();
        }
    }

    Bench& bench;
    Heartbeat heart;
    QTimer timer;
    QElapsedTimer since;
    qint64 freezeMs = 0;
    bool isOver = false;
    bool stayed = false;
};

QByteArray song(int seconds)
{
    return kit::contentOf(
        kit::lameFile(QString("prepare-%1").arg(seconds), seconds * 44100LL, 2, 44100, {"-b", "128", "-t"}));
}

QByteArray cdWav()
{
    return kit::wav16(kit::music16(5 * 44100, 2, 44100), 2, 44100);
}

} // namespace

/// The preparation of files in slow places, and of damaged ones.
class TestPreparePlaces : public QObject
{
    Q_OBJECT
    qint64 m_longest = 0;

private slots:
    void init() { hangingplace::letGo(); }
    void cleanupTestCase()
    {
        Heartbeat idle;
        QTest::qWait(kLookMs);
        qInfo("longest freeze over all: %lld ms (goal 100 ms; this machine alone, doing nothing: %lld ms)",
              m_longest, idle.longestMs());
    }

    void source_thatHangs_isWaitedForWithoutAFreeze_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<int>("count");
        QTest::newRow("looking") << "open" << 1;
        QTest::newRow("reading the head") << "pread" << 1;
        QTest::newRow("noting what is taken as it is") << "stat" << 1;
        QTest::newRow("opening") << "open" << 3;
        QTest::newRow("reading on") << "pread" << 30;
    }
    void source_thatHangs_isWaitedForWithoutAFreeze()
    {
        QFETCH(QString, function);
        QFETCH(int, count);
        Bench bench;
        bench.add("asis.wav", cdWav());
        bench.add("song.mp3", song(40));
        hangingplace::forgetMainThread();
        hangingplace::hangAt(qPrintable(function), count);
        bench.open();
        Visit visit(bench);
        QVERIFY(bench.ends());
        QVERIFY(visit.isOver);
        m_longest = qMax(m_longest, visit.freezeMs);
        qInfo("longest freeze %lld ms", visit.freezeMs);
        QVERIFY(visit.freezeMs < kFrozenMs);
        QVERIFY(visit.stayed);
        QCOMPARE(QString::fromStdString(hangingplace::onMainThread()), QString());
        QCOMPARE(bench.window->trackFiles(),
                 (QStringList{bench.place() + "asis.wav", bench.temp("song.wav")}));
        QVERIFY(QFileInfo(bench.temp("song.wav")).size() > 40 * 44100 * 4);
        QCOMPARE(bench.desk.messages.shown, QStringList());
    }
    void sources_thatAreDamaged_areNamedAndPreparedAllTheSame()
    {
        Bench bench;
        QByteArray holed = song(40);
        const auto middle = holed.size() / 2;
        holed.replace(middle, 50'000, QByteArray(50'000, '\0')); // 3.1 seconds at 128 kbit/s
        bench.add("holed.mp3", holed);
        bench.add("whole.mp3", song(5));
        bench.add("short.wav", cdWav().chopped(44100 * 4));
        bench.add("slow and short.wav", kit::wav16(kit::music16(2 * 8000, 1, 8000), 1, 8000).chopped(8000));
        bench.open();
        QVERIFY(bench.ends());
        QCOMPARE(bench.desk.messages.shown.size(), 1);
        QStringList lines = bench.desk.messages.shown[0].split('\n').mid(1);
        QCOMPARE(lines.size(), 3);
        QVERIFY2(lines[0].startsWith("holed.mp3: from 0:20 on, 3.") && lines[0].endsWith(" seconds lost"),
                 qPrintable(lines[0]));
        QCOMPARE(lines[1], QString("short.wav: from 0:04 on, 1.0 seconds lost"));
        QCOMPARE(lines[2], QString("slow and short.wav: from 0:01 on, 0.5 seconds lost"));
        QCOMPARE(bench.window->trackFiles(),
                 (QStringList{bench.temp("holed.wav"), bench.temp("whole.wav"), bench.place() + "short.wav",
                              bench.temp("slow and short.wav")}));
        for (const QString& track : bench.window->trackFiles())
            QVERIFY2(QFileInfo(track).size() > 44, qPrintable(track));
    }
};

QTEST_MAIN(TestPreparePlaces)
#include "tst_prepareplaces.moc"
