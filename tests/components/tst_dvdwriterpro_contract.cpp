#include "engines/burn/WavMaker.h"
#include "engines/burn/makers.h"
#include "fakes/FakeDVDWriterPro.h"

#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <functional>
#include <memory>

using namespace zib;

namespace {

/// A writer and all it says.
struct Listened
{
    explicit Listened(std::unique_ptr<DVDWriterPro> made) : writer(std::move(made))
    {
        const auto* w = writer.get();
        const auto say = [this](const char* text) { return [this, text] { said << text; }; };
        QObject::connect(w, &DVDWriterPro::PreparingToWrite, w, say("preparing"));
        QObject::connect(w, &DVDWriterPro::ClosingDisc, w, say("closing disc"));
        QObject::connect(w, &DVDWriterPro::WriteCompleted, w, say("completed"));
        QObject::connect(w, &DVDWriterPro::WriteCancelled, w, say("cancelled"));
        QObject::connect(w, &DVDWriterPro::WriteError, w, say("error"));
        QObject::connect(w, &DVDWriterPro::ReadingTrack, w,
                         [this](const QString& name, qint32 sectors, qint32 track) {
                             said << QString("reading %1 %2 %3").arg(track).arg(sectors).arg(name);
                         });
        QObject::connect(w, &DVDWriterPro::WritingProgress, w,
                         [this](qint32 track, qint32 done, qint32 size) {
                             positions << std::tuple(track, done, size);
                             wrongThread = wrongThread || QThread::currentThread() != writer->thread();
                         });
    }
    bool ended() const
    {
        return said.contains("completed") || said.contains("cancelled") || said.contains("error");
    }

    std::unique_ptr<DVDWriterPro> writer;
    QStringList said;
    QList<std::tuple<qint32, qint32, qint32>> positions;
    bool wrongThread = false;
};

using Make = std::function<std::unique_ptr<DVDWriterPro>(const QString& folder)>;

std::unique_ptr<DVDWriterPro> makeFake(const QString& folder)
{
    auto fake = std::make_unique<FakeDVDWriterPro>();
    fake->plays = true;
    fake->refused = QStringList{folder + "/text.wav"};
    return fake;
}

std::unique_ptr<DVDWriterPro> makeEngine(const QString& folder)
{
    return makeDiscWriter(folder + "/Images");
}

} // namespace
Q_DECLARE_METATYPE(Make)

/// What every disc writer does, the fake of the window tests and the real one on its image recorder alike.
class TestDvdWriterProContract : public QObject
{
    Q_OBJECT
private slots:
    void numbers_ofDiscStatesAndErrors_areThoseOfTheComponent()
    {
        QCOMPARE((QList<int>{DVDWriterPro::kUnusableDisc, DVDWriterPro::kDriveError,
                             DVDWriterPro::kAppendableDisc, DVDWriterPro::kNoDisc, DVDWriterPro::kBlankDisc}),
                 (QList<int>{0, 3, 253, 254, 255}));
    }
    void drives_always_haveNamesAndAbilities_data() { makers(); }
    void drives_always_haveNamesAndAbilities();
    void selectDrive_outOfRange_isRefused_data() { makers(); }
    void selectDrive_outOfRange_isRefused();
    void addAudioTrack_ofWhatIsNoTrack_isRefused_data() { makers(); }
    void addAudioTrack_ofWhatIsNoTrack_isRefused();
    void start_withoutDriveOrTracks_saysNothing_data() { makers(); }
    void start_withoutDriveOrTracks_saysNothing();
    void write_ofTwoTracks_tellsEverythingOnce_data() { makers(); }
    void write_ofTwoTracks_tellsEverythingOnce();
    void write_twice_works_data() { makers(); }
    void write_twice_works();
    void cancel_afterStart_givesExactlyOneEnd_data() { makers(); }
    void cancel_afterStart_givesExactlyOneEnd();
    void destroy_whileBusy_isSilentAndBounded_data() { makers(); }
    void destroy_whileBusy_isSilentAndBounded();

private:
    void makers();
    std::unique_ptr<Listened> made(bool ready);
    QString track(int number);

    QTemporaryDir m_folder;
};

void TestDvdWriterProContract::makers()
{
    QTest::addColumn<Make>("make");
    QTest::newRow("fake") << Make(&makeFake);
    QTest::newRow("engine") << Make(&makeEngine);
}

QString TestDvdWriterProContract::track(int number)
{
    return put(m_folder.filePath(QString("%1.wav").arg(number)), cdWav(sound(300 * 588, number)));
}

/// The row's writer; ready with its last drive, the one that every machine has, and two tracks.
std::unique_ptr<Listened> TestDvdWriterProContract::made(bool ready)
{
    const Make make = *static_cast<const Make*>(QTest::qData("make", qMetaTypeId<Make>()));
    auto listened = std::make_unique<Listened>(make(m_folder.path()));
    listened->writer->initializeDrives(false);
    if (ready) {
        listened->writer->selectDrive(listened->writer->driveCount() - 1);
        listened->writer->addAudioTrack(track(1));
        listened->writer->addAudioTrack(track(2));
    }
    return listened;
}

void TestDvdWriterProContract::drives_always_haveNamesAndAbilities()
{
    const auto desk = made(false);
    QVERIFY(desk->writer->driveCount() >= 1);
    for (int drive = 0; drive < desk->writer->driveCount(); ++drive) {
        QVERIFY(!desk->writer->driveText1(drive).isEmpty());
        QVERIFY(!desk->writer->driveText2(drive).isEmpty());
        QVERIFY(!desk->writer->driveText3(drive).isEmpty());
    }
    const int last = desk->writer->driveCount() - 1;
    QVERIFY(desk->writer->canWriteCdR(last) && desk->writer->canWriteAudio(last));
    QVERIFY(desk->writer->selectDrive(last));
    QCOMPARE(desk->writer->discStatus(), DVDWriterPro::kBlankDisc);
    QVERIFY(!desk->writer->discHoldsData());
}

void TestDvdWriterProContract::selectDrive_outOfRange_isRefused()
{
    const auto desk = made(false);
    QVERIFY(!desk->writer->selectDrive(-1));
    QVERIFY(!desk->writer->selectDrive(desk->writer->driveCount()));
}

void TestDvdWriterProContract::addAudioTrack_ofWhatIsNoTrack_isRefused()
{
    const auto desk = made(false);
    QVERIFY(!desk->writer->addAudioTrack(m_folder.filePath("missing.wav")));
    QVERIFY(!desk->writer->addAudioTrack(put(m_folder.filePath("text.wav"), "no sound")));
    QVERIFY(!desk->writer->addAudioTrack(m_folder.path()));
    QCOMPARE(desk->writer->trackCount(), 0);
    QVERIFY(desk->writer->addAudioTrack(track(1)));
    QCOMPARE(desk->writer->trackCount(), 1);
}

void TestDvdWriterProContract::start_withoutDriveOrTracks_saysNothing()
{
    const auto noDrive = made(false);
    noDrive->writer->addAudioTrack(track(1));
    QVERIFY(!noDrive->writer->start());
    const auto noTracks = made(false);
    noTracks->writer->selectDrive(0);
    QVERIFY(!noTracks->writer->start());
    QTest::qWait(150);
    QCOMPARE(noDrive->said + noTracks->said, QStringList());
}

void TestDvdWriterProContract::write_ofTwoTracks_tellsEverythingOnce()
{
    const auto desk = made(true);
    desk->writer->setTestWrite(true);
    QVERIFY(desk->writer->testWrite());
    QVERIFY(desk->writer->start());
    QVERIFY(desk->said.isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(desk->ended(), 60'000);
    QTest::qWait(150);
    QCOMPARE(desk->said, (QStringList{"preparing", "reading 1 300 1.wav", "reading 2 300 2.wav",
                                      "closing disc", "completed"}));
    QVERIFY(std::is_sorted(desk->positions.begin(), desk->positions.end()));
    QVERIFY(desk->positions.contains(std::tuple(1, 705'600, 705'600)));
    QCOMPARE(desk->positions.last(), std::tuple(2, 705'600, 705'600));
    QVERIFY(!desk->wrongThread);
}

void TestDvdWriterProContract::write_twice_works()
{
    const auto desk = made(true);
    for (int n = 0; n < 2; ++n) {
        desk->said.clear();
        QVERIFY(desk->writer->start());
        QVERIFY(!desk->writer->start());
        QTRY_VERIFY_WITH_TIMEOUT(desk->ended(), 60'000);
        QCOMPARE(desk->said.last(), QString("completed"));
        desk->writer->finish(false);
    }
}

void TestDvdWriterProContract::cancel_afterStart_givesExactlyOneEnd()
{
    const auto desk = made(true);
    QVERIFY(desk->writer->start());
    desk->writer->cancel();
    desk->writer->cancel();
    QTRY_VERIFY_WITH_TIMEOUT(desk->ended(), 60'000);
    QTest::qWait(150);
    QCOMPARE(desk->said.count("cancelled"), 1);
    QCOMPARE(desk->said.count("completed") + desk->said.count("error"), 0);
    desk->said.clear();
    QVERIFY(desk->writer->start());
    QTRY_VERIFY_WITH_TIMEOUT(desk->ended(), 60'000);
    QCOMPARE(desk->said.last(), QString("completed"));
}

void TestDvdWriterProContract::destroy_whileBusy_isSilentAndBounded()
{
    const auto desk = made(true);
    QVERIFY(desk->writer->start());
    desk->writer.reset();
    QTest::qWait(150);
    QCOMPARE(desk->said, QStringList());
}

QTEST_GUILESS_MAIN(TestDvdWriterProContract)
#include "tst_dvdwriterpro_contract.moc"
