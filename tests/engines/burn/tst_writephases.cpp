#include "engines/burn/drive/WritePhases.h"
#include "engines/burn/WriteEvents.h"

#include <QTest>

using namespace zib;

namespace {

BurnJob jobOf(int tracks)
{
    BurnJob job;
    for (int i = 0; i < tracks; ++i)
        job.tracks << BurnTrack{.path = "a.wav", .name = "a.wav", .length = CdTime::fromFrames(400)};
    return job;
}

/// What was told, phase by phase; positions are left out.
struct Listener final : BurnObserver
{
    void readingTrack(int track) override { told << QString("reading %1").arg(track); }
    void progress(int track, qint64 done, qint64 size) override
    {
        positions << QString("%1: %2 of %3").arg(track).arg(done).arg(size);
    }
    void closingTrack(int track) override { told << QString("closing %1").arg(track); }
    void closingDisc() override { told << "closing disc"; }
    void readingBack() override { told << "reading back"; }

    QStringList told;
    QStringList positions;
};

LibraryView at(int track, int sector)
{
    return {.begun = track, .atTrack = true, .track = track, .sector = sector, .sectors = 400};
}

/// The kinds of all events so far.
QStringList kinds(WriteEvents& events)
{
    QStringList names;
    while (const auto event = events.take())
        names << QString("%1/%2").arg(int(event->kind)).arg(event->track);
    return names;
}

} // namespace

/// The sequence of phases, as the library shows its work and as recorders tell it.
class TestWritePhases : public QObject
{
    Q_OBJECT
private slots:
    void progress_isToldInBytesOfItsTrack();
    void session_isClosingBehindTheLastSector();
    void tracks_areClosedOneByOne_andNothingFallsBack();
    void tracks_thatPassBetweenTwoLooks_areToldAll();
    void session_thatIsGivenUp_isNotClosed();
    void reporter_dropsWhatComesAfterALaterPhase();
};

/// The library says that it closes also when it has failed before the last track.
void TestWritePhases::session_thatIsGivenUp_isNotClosed()
{
    const BurnJob job = jobOf(2);
    Listener heard;
    WritePhases phases(job, false, heard);
    phases.see(at(1, 400));
    phases.see({.begun = 1, .closingSession = true});
    QCOMPARE(phases.phase(), WritePhases::Phase::ClosingTrack);
    QCOMPARE(heard.told, (QStringList{"reading 1", "closing 1"}));
    phases.see({.begun = 2, .closingSession = true});
    QCOMPARE(phases.phase(), WritePhases::Phase::ClosingDisc);
}

void TestWritePhases::progress_isToldInBytesOfItsTrack()
{
    const BurnJob job = jobOf(2);
    Listener heard;
    WritePhases phases(job, true, heard);
    phases.see({.begun = 0, .sector = 5, .sectors = 400}); // not at a track yet
    QCOMPARE(heard.positions, QStringList());
    phases.see(at(1, -1));
    phases.see(at(1, 10));
    phases.see(at(2, 401));
    QCOMPARE(heard.positions, (QStringList{"1: 0 of 940800", "1: 23520 of 940800", "2: 940800 of 940800"}));
}

void TestWritePhases::session_isClosingBehindTheLastSector()
{
    const BurnJob job = jobOf(2);
    Listener heard;
    WritePhases phases(job, true, heard);
    phases.see(at(1, 10));
    phases.see(at(1, 400));
    QVERIFY(!phases.handedOver());
    phases.see(at(2, 399));
    QVERIFY(!phases.handedOver());
    phases.see(at(2, 400));
    QVERIFY(phases.handedOver());
    QCOMPARE(phases.phase(), WritePhases::Phase::ClosingDisc);
    phases.see(at(2, 400));
    phases.see({.atTrack = true, .track = 1});
    phases.readBack();
    QCOMPARE(heard.told, (QStringList{"reading 1", "reading 2", "closing disc", "reading back"}));
}

void TestWritePhases::tracks_areClosedOneByOne_andNothingFallsBack()
{
    const BurnJob job = jobOf(2);
    Listener heard;
    WritePhases phases(job, false, heard);
    phases.see(at(1, 400));
    phases.see(at(1, 400));
    phases.see(at(2, 5));
    phases.see(at(1, 400));
    phases.see(at(2, 400));
    QVERIFY(phases.handedOver());
    phases.see({.closingSession = true, .track = 2});
    phases.see(at(2, 400));
    phases.readBack();
    QCOMPARE(heard.told, (QStringList{"reading 1", "closing 1", "reading 2", "closing 2", "closing disc",
                                      "reading back"}));
}

void TestWritePhases::tracks_thatPassBetweenTwoLooks_areToldAll()
{
    const BurnJob job = jobOf(3);
    Listener heard;
    WritePhases phases(job, true, heard);
    phases.see(at(2, 7));
    phases.wroteAll();
    QCOMPARE(heard.told, (QStringList{"reading 1", "reading 2", "reading 3", "closing disc"}));
}

void TestWritePhases::reporter_dropsWhatComesAfterALaterPhase()
{
    const BurnJob job = jobOf(2);
    WriteEvents events;
    WriteReporter reporter(job, events);
    reporter.readingTrack(1);
    reporter.closingTrack(1);
    reporter.progress(1, 5, 10);
    reporter.readingTrack(1);
    reporter.readingTrack(2);
    reporter.closingDisc();
    const QStringList before = kinds(events);
    QCOMPARE(before.filter(QString("%1/").arg(int(WriteEvent::Kind::Reading))).size(), 2);
    reporter.progress(2, 5, 10);
    reporter.readingTrack(2);
    reporter.closingTrack(2);
    reporter.closingDisc();
    QCOMPARE(kinds(events), QStringList());
    reporter.readingBack();
    reporter.closingDisc();
    QCOMPARE(kinds(events), QStringList{QString("%1/0").arg(int(WriteEvent::Kind::Waiting))});
}

QTEST_GUILESS_MAIN(TestWritePhases)
#include "tst_writephases.moc"
