#include "engines/burn/Recorder.h"

#include <QTest>

using namespace zib;

/// What all recorders share: the job, and the errors with their codes and sentences.
class TestRecorder : public QObject
{
    Q_OBJECT
private slots:
    void job_asItBegins_asksForNothing()
    {
        const BurnJob job;
        QVERIFY(!job.simulate && !job.bufferProtection && !job.verify);
        QVERIFY(job.closeSession && job.closeDisc);
        QCOMPARE(job.speed, 0);
        QCOMPARE(job.writeMode, 0);
        QVERIFY(!job.isCancelled());
        QCOMPARE(job.totalLength().frames(), 0);
    }
    void job_ofTracks_countsThemWithTheirPregaps()
    {
        BurnJob job;
        job.tracks << BurnTrack{{}, {}, 0, 0, CdTime::fromFrames(300)}
                   << BurnTrack{{}, {}, 0, 0, CdTime::fromFrames(1000)};
        QCOMPARE(job.totalLength().frames(), 300 + 1000 + 2 * 150);
    }
    void failure_ofEachKind_hasItsCodeAndSentence_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("sentence");
        const auto row = [](const char* name, Failure::Kind kind, int code, const char* sentence) {
            QTest::newRow(name) << static_cast<int>(kind) << code << sentence;
        };
        using Kind = Failure::Kind;
        row("unreadable file", Kind::UnreadableFile, 1,
            "The file \"it\" cannot be read any more or has changed since it was added. Prepare the list "
            "again.");
        row("no file", Kind::NotFound, 1, "The file \"it\" is no longer there. Prepare the list again.");
        row("full", Kind::WriteFailed, 2,
            "\"it\" could not be written. Make room on that drive, or see to the rights of the folder, and "
            "write "
            "again.");
        row("gone", Kind::DeviceGone, 4,
            "\"it\" does not answer any more. Connect it again, close this window and open it again.");
        row("no rights", Kind::NoPermission, 5,
            "You may not use \"it\". Ask for the rights to it (for a drive: membership in the group cdrom) "
            "and "
            "write again.");
        row("busy", Kind::Busy, 6, "Another program is using \"it\". Close that program and write again.");
        row("empty", Kind::NoMedium, 7, "There is no disc in \"it\". Insert an empty disc and write again.");
        row("wrong disc", Kind::WrongMedium, 7,
            "The disc in \"it\" cannot be written. Insert an empty disc and write again.");
        row("too small", Kind::MediumTooSmall, 7,
            "The tracks do not fit on the disc in \"it\". Take tracks off the list and write again.");
        row("not what was written", Kind::DeviceError, 8,
            "Read back, \"it\" does not show the tracks that were written. Do not use this disc; write again "
            "on "
            "another one.");
        row("cannot", Kind::Unsupported, 10,
            "\"it\" cannot do this. Choose another drive, or change the options for writing.");
        row("any other", Kind::BadValue, 10, "it");
    }
    void failure_ofEachKind_hasItsCodeAndSentence()
    {
        QFETCH(int, kind);
        QFETCH(int, code);
        QFETCH(QString, sentence);
        const BurnError error = BurnError::from({static_cast<Failure::Kind>(kind), "it"});
        QCOMPARE(error, (BurnError{.error = code, .description = sentence}));
    }
    void cancel_isNoError()
    {
        QCOMPARE(BurnError::from({Failure::Kind::Cancelled, "it"}), BurnError::byUser());
        QCOMPARE(BurnError::byUser(), BurnError{.cancelled = true});
    }
    void sense_isTheDrivesOwnError()
    {
        QCOMPARE(BurnError::withSense(1015, "[3 11 05]"),
                 (BurnError{.error = DVDWriterPro::kDriveError, .sense = 1015, .senseData = "[3 11 05]"}));
    }
};

QTEST_GUILESS_MAIN(TestRecorder)
#include "tst_recorder.moc"
