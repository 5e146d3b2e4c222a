#include "engines/audio/convert/Ditherer.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "engines/audio/wav/WavWriter.h"
#include "fakes/OpenFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace zib;

namespace {

std::span<const qint16> spanOf(const QList<qint16>& samples)
{
    return {samples.constData(), static_cast<size_t>(samples.size())};
}

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

// As if nobody had written to it for an hour.
void age(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) ||
        !file.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFile::FileModificationTime))
        qFatal("Cannot age %s", qPrintable(path));
}

// Files of this process may not grow beyond so many bytes, as on a full disc.
class FullDisc
{
public:
    explicit FullDisc(rlim_t bytes)
    {
        m_before = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_limit);
        const rlimit tight{bytes, m_limit.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FullDisc()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_limit);
        std::signal(SIGXFSZ, m_before);
    }

private:
    rlimit m_limit{};
    void (*m_before)(int);
};

} // namespace

/// What is written, when it appears, and what is left when it cannot be.
class TestWavWriter : public QObject
{
    Q_OBJECT
private slots:
    void finish_writesAPlainHeaderAndTheSamples()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.wav");
        const QList<qint16> samples = kit::music16(1000, 2, 44100);
        WavWriter writer;
        QVERIFY(writer.create(path, 44100, 2));
        QVERIFY(writer.append(spanOf(samples.first(600))));
        QVERIFY(writer.append(spanOf(samples.sliced(600))));
        QVERIFY(writer.finish());
        QCOMPARE(kit::contentOf(path), kit::wav16(samples, 2, 44100));
        QCOMPARE(filesIn(folder.path()), QStringList{"a.wav"});
    }
    void target_beforeFinish_isUntouched()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.wav");
        kit::write(path, "what was there before");
        WavWriter writer;
        QVERIFY(writer.create(path, 44100, 2));
        QVERIFY(writer.append(spanOf(kit::music16(100'000, 2, 44100))));
        QCOMPARE(kit::contentOf(path), QByteArray("what was there before"));
        QVERIFY(writer.finish());
        QCOMPARE(QFile(path).size(), 44 + 400'000);
        QCOMPARE(filesIn(folder.path()), QStringList{"a.wav"});
    }
    void abandon_leavesNothing()
    {
        const QTemporaryDir folder;
        {
            WavWriter writer;
            QVERIFY(writer.create(folder.filePath("a.wav"), 44100, 2));
            QVERIFY(writer.append(spanOf(kit::music16(1000, 2, 44100))));
            writer.abandon();
            QVERIFY(filesIn(folder.path()).isEmpty());
            QVERIFY(!writer.append(spanOf(kit::music16(10, 2, 44100))));
            QVERIFY(!writer.finish());
            QVERIFY(writer.create(folder.filePath("b.wav"), 44100, 2));
        }
        QVERIFY(filesIn(folder.path()).isEmpty());
    }
    void end_inAFolderThatWasMoved_leavesNothing()
    {
        const QTemporaryDir place;
        for (const bool finishes : {false, true}) {
            const QString folder = place.filePath("Temp"), moved = place.filePath("Moved");
            QVERIFY(QDir().mkpath(folder));
            WavWriter writer;
            QVERIFY(writer.create(folder + "/a.wav", 44100, 2));
            QVERIFY(QDir().rename(folder, moved));
            if (finishes)
                QVERIFY(!writer.finish());
            writer.abandon();
            QVERIFY(filesIn(moved).isEmpty());
            QVERIFY(QDir(moved).removeRecursively());
        }
    }
    void create_whereAWriterWasKilled_clearsUpAfterIt()
    {
        const QTemporaryDir folder;
        const pid_t killed = ::fork();
        if (killed == 0) {
            WavWriter writer;
            writer.create(folder.filePath("a.wav"), 44100, 2);
            std::raise(SIGKILL);
        }
        QCOMPARE(::waitpid(killed, nullptr, 0), killed);
        QCOMPARE(filesIn(folder.path()).size(), 1);
        age(folder.filePath(filesIn(folder.path()).first()));
        kit::write(folder.filePath(".zib-notes.part"), "a stranger's");
        age(folder.filePath(".zib-notes.part"));
        WavWriter writer;
        QVERIFY(writer.create(folder.filePath("b.wav"), 44100, 2));
        QVERIFY(writer.finish());
        QCOMPARE(filesIn(folder.path()), (QStringList{".zib-notes.part", "b.wav"}));
    }
    void create_besideAWriterAtWork_leavesItsFile()
    {
        const QTemporaryDir folder;
        WavWriter slow;
        QVERIFY(slow.create(folder.filePath("a.wav"), 44100, 2));
        age(folder.filePath(filesIn(folder.path()).first()));
        WavWriter quick;
        QVERIFY(quick.create(folder.filePath("b.wav"), 44100, 2));
        QVERIFY(quick.finish());
        QVERIFY(slow.finish());
        QCOMPARE(filesIn(folder.path()), (QStringList{"a.wav", "b.wav"}));
    }
    void permissions_areThoseOfAnyNewFile()
    {
        const QTemporaryDir folder;
        const mode_t before = ::umask(027);
        WavWriter writer;
        const bool made = writer.create(folder.filePath("a.wav"), 44100, 2) && writer.finish();
        ::umask(before);
        QVERIFY(made);
        struct stat info = {};
        QCOMPARE(::stat(qPrintable(folder.filePath("a.wav")), &info), 0);
        QCOMPARE(info.st_mode & 0777, mode_t{0640});
    }
    void create_inImpossiblePlaces_isRefused()
    {
        const QTemporaryDir folder;
        QVERIFY(QDir(folder.path()).mkdir("a folder.wav"));
        QCOMPARE(::mkfifo(qPrintable(folder.filePath("pipe.wav")), 0600), 0);
        WavWriter writer;
        QVERIFY(!writer.create(folder.filePath("missing/a.wav"), 44100, 2));
        QVERIFY(!writer.create(folder.filePath("a folder.wav"), 44100, 2));
        QVERIFY(!writer.create(folder.filePath("pipe.wav"), 44100, 2));
        QVERIFY(!writer.create("/dev/null", 44100, 2));
        QVERIFY(!writer.create(QString(), 44100, 2));
        QVERIFY(!writer.create("/proc/a.wav", 44100, 2));
        QCOMPARE(filesIn(folder.path()).size(), 2);
    }
    void names_ofEveryKind_areWritten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("umlauts") << QString::fromUtf8("Größe.wav");
        QTest::newRow("kana") << QString::fromUtf8("カラオケ.wav");
        QTest::newRow("line break") << "two\nlines.wav";
        QTest::newRow("percent") << "100%s %1 %%.wav";
        QTest::newRow("backslash") << "a\\b.wav";
        QTest::newRow("no suffix") << "plain";
        QTest::newRow("255 bytes") << QString(251, 'x') + ".wav";
    }
    void names_ofEveryKind_areWritten()
    {
        QFETCH(QString, name);
        const QTemporaryDir folder;
        WavWriter writer;
        QVERIFY(writer.create(folder.filePath(name), 44100, 2));
        QVERIFY(writer.finish());
        QCOMPARE(filesIn(folder.path()), QStringList{name});
    }
    void append_onAFullDisc_failsAndLeavesNothing_data()
    {
        QTest::addColumn<int>("bytes");
        for (const int bytes : {0, 43, 44, 45, 4096, 200'000, 799'999})
            QTest::addRow("%d bytes fit", bytes) << bytes;
    }
    void append_onAFullDisc_failsAndLeavesNothing()
    {
        QFETCH(int, bytes);
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.wav");
        kit::write(folder.filePath("source.wav"), kit::wav16(kit::music16(200'000, 2, 44100), 2, 44100));
        kit::write(path, "before");
        int status = 0;
        {
            const FullDisc full(static_cast<rlim_t>(bytes));
            status = kit::convert(folder.filePath("source.wav"), path);
        }
        QVERIFY(status < 0);
        QCOMPARE(kit::contentOf(path), QByteArray("before"));
        QCOMPARE(filesIn(folder.path()), (QStringList{"a.wav", "source.wav"}));
    }
    void status_onAFullDisc_isNegativeAtCloseAtTheLatest_data()
    {
        QTest::addColumn<AudioBlock>("second");
        const QList<qint16> narrow = kit::music16(44100, 2, 44100);
        QTest::newRow("written as it is") << AudioBlock(narrow);
        QTest::newRow("rounded first") << AudioBlock(widened({narrow.constData(), size_t(narrow.size())}));
    }
    void status_onAFullDisc_isNegativeAtCloseAtTheLatest()
    {
        QFETCH(AudioBlock, second);
        const QTemporaryDir folder;
        const auto writer = makeAudioFile();
        writer->setOutputFormat(44100, 2, 16);
        {
            const FullDisc full(100'000);
            QCOMPARE(writer->create(folder.filePath("a.wav")), 0);
            writer->setInputFormat(44100, 2);
            for (int i = 0; i < 50; ++i) // goes on after the failure without harm and without waiting
                writer->writeBlock(second);
            writer->close();
        }
        QVERIFY(writer->status() < 0);
        QVERIFY(filesIn(folder.path()).isEmpty());
        QCOMPARE(writer->create(folder.filePath("b.wav")), 0);
        writer->close();
        QCOMPARE(writer->status(), 0);
    }
    void droppedInTheMiddle_leavesNothing()
    {
        const QTemporaryDir folder;
        const QList<qint16> narrow = kit::music16(44100, 2, 44100);
        const AudioBlock second(widened({narrow.constData(), size_t(narrow.size())}));
        for (const bool discarded : {true, false}) {
            const auto writer = makeAudioFile();
            QCOMPARE(writer->create(folder.filePath("a.wav")), 0);
            writer->setInputFormat(44100, 2);
            for (int i = 0; i < 20; ++i)
                writer->writeBlock(second);
            if (discarded)
                writer->discard();
        }
        QVERIFY(filesIn(folder.path()).isEmpty());
    }
    void append_beyondTheFormatsLimit_fails()
    {
        const QTemporaryDir folder;
        WavWriter writer(1000);
        QVERIFY(writer.create(folder.filePath("a.wav"), 44100, 2));
        QVERIFY(writer.append(spanOf(QList<qint16>(500))));
        QVERIFY(!writer.append(spanOf(QList<qint16>(1))));
        QVERIFY(!writer.finish());
        QVERIFY(filesIn(folder.path()).isEmpty());
    }
    void append_afterAFailure_failsWhateverItBrings()
    {
        const QTemporaryDir folder;
        WavWriter writer(1000);
        QVERIFY(writer.create(folder.filePath("a.wav"), 44100, 2));
        QVERIFY(!writer.append(spanOf(QList<qint16>(501))));
        QVERIFY(!writer.append(spanOf(QList<qint16>(2))));
        QVERIFY(!writer.append({}));
        QVERIFY(!writer.finish());
        QVERIFY(!writer.append(spanOf(QList<qint16>(2))));
    }
    void ends_ofEveryKind_closeTheFile()
    {
        const QTemporaryDir folder;
        const qsizetype before = openFiles();
        for (const char* end : {"finished", "abandoned", "failed", "dropped"}) {
            WavWriter writer(1000);
            QVERIFY(writer.create(folder.filePath("a.wav"), 44100, 2));
            QCOMPARE(openFiles(), before + 1);
            if (end == QByteArray("failed"))
                QVERIFY(!writer.append(spanOf(QList<qint16>(501))));
            if (end == QByteArray("abandoned"))
                writer.abandon();
            else if (end != QByteArray("dropped"))
                QCOMPARE(writer.finish(), end == QByteArray("finished"));
            if (end != QByteArray("dropped"))
                QCOMPARE(openFiles(), before);
        }
        QCOMPARE(openFiles(), before);
    }
    void kill_inTheMiddle_leavesNoFinalName()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.wav");
        const pid_t child = ::fork();
        if (child == 0) {
            WavWriter writer;
            const QList<qint16> samples(44100);
            if (writer.create(path, 44100, 2))
                while (writer.append(spanOf(samples)) && QFile(path).size() < (1 << 28))
                    ::usleep(1000);
            ::_exit(0);
        }
        QVERIFY(child > 0);
        QTRY_VERIFY_WITH_TIMEOUT(!filesIn(folder.path()).isEmpty(), 30'000);
        ::kill(child, SIGKILL);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(!QFile::exists(path));
    }
    void formats_thatCannotBe_areRefused_data()
    {
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("bits");
        QTest::newRow("no rate") << 0 << 2 << 16;
        QTest::newRow("negative rate") << -44100 << 2 << 16;
        QTest::newRow("no channel") << 44100 << 0 << 16;
        QTest::newRow("six channels") << 44100 << 6 << 16;
        QTest::newRow("24 bits") << 44100 << 2 << 24;
    }
    void formats_thatCannotBe_areRefused()
    {
        QFETCH(int, rateHz);
        QFETCH(int, channels);
        QFETCH(int, bits);
        const QTemporaryDir folder;
        const auto writer = makeAudioFile();
        writer->setOutputFormat(rateHz, channels, bits);
        QVERIFY(writer->create(folder.filePath("a.wav")) < 0);
        writer->setOutputFormat(44100, 2, 16);
        QCOMPARE(writer->create(folder.filePath("a.wav")), 0);
        writer->setInputFormat(rateHz, channels);
        writer->writeBlock(AudioBlock(QList<qint16>(20)));
        writer->close();
        QCOMPARE(writer->status() < 0, bits == 16);
        QCOMPARE(filesIn(folder.path()).isEmpty(), bits == 16);
    }
};

QTEST_GUILESS_MAIN(TestWavWriter)
#include "tst_wavwriter.moc"
