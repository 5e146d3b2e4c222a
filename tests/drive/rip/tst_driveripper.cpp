#include "EmulatedRecorder.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/makers.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

using namespace zib;

namespace {

/// The ripper of the program on an emulated drive.
struct DriveBench : RipBench
{
    DriveBench() : RipBench(makeRipper("/nowhere")) {}

    /// Puts in a disc with sounds of these lengths.
    void insert(const QString& name, const QList<int>& frames, const QStringList& more = {"close"})
    {
        QStringList recipe;
        for (const int length : frames) {
            const QString raw = QString("%1-%2.raw").arg(name).arg(recipe.size());
            QFile file(recorder.folder() + '/' + raw);
            QVERIFY(file.open(QIODevice::WriteOnly));
            sounds << discSound(length, int(recipe.size()) + 1);
            file.write(sounds.last());
            recipe << "audio " + raw;
        }
        recorder.insert(name, recipe + more);
    }
    bool take() { return takeDisc(EmulatedRecorder::device()); }

    EmulatedRecorder recorder;
    QList<QByteArray> sounds;
};

} // namespace

/// The ripper on libcdio, over the emulated recorder.
class TestDriveRipper : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        const DriveBench bench;
        QVERIFY2(bench.recorder.isPreloaded(), "the emulated recorder is not under this process");
    }

    void disc_whenRipped_isBitExact()
    {
        DriveBench bench;
        bench.insert("album", {700, 300, 450});
        QVERIFY(bench.take());
        QCOMPARE(bench.ripper->trackCount(), 3);
        QCOMPARE(bench.ripper->maxReadSpeed(), 48);
        QCOMPARE(bench.rip({1, 2, 3}), QString("finished"));
        QCOMPARE(bench.ripper->unreadTracks(), QStringList());
        const auto content = bench.recorder.content();
        for (int track = 1; track <= 3; ++track) {
            const qint32 start = bench.ripper->trackStart(track);
            QCOMPARE(start, content->tracks[track - 1].start);
            QVERIFY2(wavSamples(bench.target(track)) ==
                         bench.recorder.frames(start, bench.ripper->trackLength(track)),
                     qPrintable(QString::number(track)));
        }
        QVERIFY(!bench.recorder.doorLocked());
    }
};

QTEST_GUILESS_MAIN(TestDriveRipper)
#include "tst_driveripper.moc"
