// The emulated recorder by itself: the node in front of it, the disc in it, its faults and its journal.

#include "EmulatedRecorder.h"
#include "ScsiClient.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <linux/cdrom.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <atomic>
#include <thread>

using zib::EmulatedRecorder;
using zib::ScsiClient;

namespace {

constexpr int kFrame = 2352;

} // namespace

class TestEmulatedRecorder : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void node_isABlockDevice();
    void node_whenMissing_isNotThere();
    void open_exclusiveTwice_isBusy();
    void open_answersAsConfigured_data();
    void open_answersAsConfigured();
    void emptyDrive_hasNoMedium();
    void disc_whenExchanged_raisesAttentionOnce();
    void door_whenLocked_refusesEject();
    void command_withAControlByte_isRefused();
    void fault_strikesAsCounted_data();
    void fault_strikesAsCounted();
    void fault_after_carriesTheCommandOut();
    void fault_atAddress_strikesOnlyThere();
    void fault_noise_isCuredByReading();
    void fault_noise_isToldByErrorPointers();
    void fault_jitter_shiftsSamples();
    void fault_missing_movesAllBehindTheFrame();
    void fault_swapped_readsEachTrackAsTheOther();
    void fault_delay_pastTheLimit_timesOut();
    void fault_ignored_saysGoodAndDoesNothing();
    void fault_flip_liesAboutOnePageOnly();
    void fault_patchAndShort_changeTheReply();
    void fault_reset_forgetsModesAndLock();
    void fault_reset_after_isToldByTheNextCommand();
    void fault_status_comesWithoutSense();
    void sense_isPutAsConfigured_data();
    void sense_isPutAsConfigured();
    void blockDescriptor_standsBeforeThePage();
    void fault_gone_takesTheNodeAway();
    void fault_gone_unlocksTheDoor();
    void fault_pull_takesTheDiscOut();
    void journal_tellsEveryCommand();
    void threads_mayShareTheDrive();
    void node_whileACommandHangs_answersAtOnce();
    void secondDrive_hasItsOwnDisc();
};

void TestEmulatedRecorder::initTestCase()
{
    const EmulatedRecorder recorder;
    QVERIFY2(recorder.isPreloaded(), "the preload library is not in front of this test");
}

void TestEmulatedRecorder::node_isABlockDevice()
{
    const EmulatedRecorder recorder;
    struct stat byPath
    {
    };
    QCOMPARE(::stat("/dev/sr0", &byPath), 0);
    QVERIFY(S_ISBLK(byPath.st_mode));
    const ScsiClient client;
    struct stat byDescriptor
    {
    };
    QCOMPARE(::fstat(client.descriptor(), &byDescriptor), 0);
    QVERIFY(S_ISBLK(byDescriptor.st_mode));
    QCOMPARE(major(byDescriptor.st_rdev), 11U);
    QCOMPARE(byDescriptor.st_rdev, byPath.st_rdev);
    QVERIFY(QFileInfo::exists("/dev/sr0"));
    QVERIFY(!QFileInfo::exists("/dev/sr7"));
}

void TestEmulatedRecorder::node_whenMissing_isNotThere()
{
    EmulatedRecorder recorder;
    recorder.set("open", "missing");
    QVERIFY(!QFileInfo::exists("/dev/sr0"));
    QCOMPARE(ScsiClient{}.error(), ENOENT);
}

void TestEmulatedRecorder::open_exclusiveTwice_isBusy()
{
    const EmulatedRecorder recorder;
    {
        const ScsiClient holder{O_RDWR | O_NONBLOCK | O_EXCL};
        QVERIFY(holder.isOpen());
        QCOMPARE(ScsiClient{O_RDWR | O_NONBLOCK | O_EXCL}.error(), EBUSY);
        QVERIFY(ScsiClient{}.isOpen());
    }
    QVERIFY(ScsiClient{O_RDWR | O_NONBLOCK | O_EXCL}.isOpen());
}

void TestEmulatedRecorder::open_answersAsConfigured_data()
{
    QTest::addColumn<QString>("access");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("error");
    QTest::newRow("denied") << "denied" << O_RDONLY << EACCES;
    QTest::newRow("read only, writing") << "read-only" << O_RDWR << EACCES;
    QTest::newRow("read only, reading") << "read-only" << O_RDONLY << 0;
    QTest::newRow("busy, exclusive") << "busy" << (O_RDWR | O_EXCL) << EBUSY;
    QTest::newRow("busy, shared") << "busy" << O_RDWR << 0;
}

void TestEmulatedRecorder::open_answersAsConfigured()
{
    QFETCH(QString, access);
    QFETCH(int, flags);
    EmulatedRecorder recorder;
    recorder.set("open", access);
    QTEST(ScsiClient{flags | O_NONBLOCK}.error(), "error");
}

void TestEmulatedRecorder::emptyDrive_hasNoMedium()
{
    EmulatedRecorder recorder;
    recorder.removeDisc();
    ScsiClient client;
    QCOMPARE(client.ready(), "2/3A/00");
    QCOMPARE(::ioctl(client.descriptor(), CDROM_DRIVE_STATUS, 0), CDS_NO_DISC);
    QCOMPARE(ScsiClient{O_RDONLY}.error(), ENOMEDIUM); // only a non-blocking opening does without a disc
    QByteArray reply;
    QCOMPARE(client.read({0x12, 0, 0, 0, 36, 0}, reply, 36), "good");
    QCOMPARE(reply.mid(8, 3), "ZIB");
}

void TestEmulatedRecorder::disc_whenExchanged_raisesAttentionOnce()
{
    EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.ready(), "good");
    recorder.removeDisc();
    QCOMPARE(client.ready(), "2/3A/00");
    recorder.insert("other");
    QCOMPARE(client.ready(), "6/28/00");
    QCOMPARE(client.ready(), "good");
    QCOMPARE(::ioctl(client.descriptor(), CDROM_MEDIA_CHANGED, 0), 1);
    QCOMPARE(::ioctl(client.descriptor(), CDROM_MEDIA_CHANGED, 0), 0);
}

void TestEmulatedRecorder::door_whenLocked_refusesEject()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "good");
    QVERIFY(recorder.doorLocked());
    QCOMPARE(client.write({0x1B, 0, 0, 0, 2, 0}), "5/53/02");
    QCOMPARE(client.write({0x1E, 0, 0, 0, 0, 0}), "good");
    QVERIFY(!recorder.doorLocked());
    QCOMPARE(client.write({0x1B, 0, 0, 0, 2, 0}), "good");
    QCOMPARE(client.ready(), "2/3A/02");
    QCOMPARE(client.write({0x1B, 0, 0, 0, 3, 0}), "good");
    QCOMPARE(client.ready(), "good");
}

void TestEmulatedRecorder::command_withAControlByte_isRefused()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 1}), "5/24/00");
    QVERIFY(!recorder.doorLocked());
    QCOMPARE(client.write({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 1}), "5/24/00");
    QCOMPARE(client.write({0xBB, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 1}), "5/24/00");
    QCOMPARE(client.write({0xBB, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0}), "good");
}

void TestEmulatedRecorder::fault_strikesAsCounted_data()
{
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QStringList>("answers");
    QTest::newRow("first") << "TEST_UNIT_READY sense=2/04/01"
                           << QStringList{"2/04/01", "good", "good", "good"};
    QTest::newRow("second") << "00 nth=2 sense=4/44/00" << QStringList{"good", "4/44/00", "good", "good"};
    QTest::newRow("twice") << "MEDIA times=2 sense=2/04/01"
                           << QStringList{"2/04/01", "2/04/01", "good", "good"};
    QTest::newRow("for good") << "ANY nth=3 times=forever sense=2/04/01"
                              << QStringList{"good", "good", "2/04/01", "2/04/01"};
    QTest::newRow("transport") << "ANY transport" << QStringList{"host7", "good", "good", "good"};
    QTest::newRow("transport, by its code") << "ANY host=7" << QStringList{"host7", "good", "good", "good"};
    QTest::newRow("timed out at once")
        << "ANY times=2 host=3" << QStringList{"host3", "host3", "good", "good"};
    QTest::newRow("EIO") << "ANY nth=2 errno=EIO" << QStringList{"good", "errno5", "good", "good"};
    QTest::newRow("ENODEV once") << "ANY errno=ENODEV" << QStringList{"errno19", "good", "good", "good"};
    QTest::newRow("another command") << "WRITE_10 sense=3/0C/00"
                                     << QStringList{"good", "good", "good", "good"};
}

void TestEmulatedRecorder::fault_strikesAsCounted()
{
    QFETCH(QString, rule);
    EmulatedRecorder recorder;
    recorder.addFault(rule);
    ScsiClient client;
    QStringList answers;
    for (int i = 0; i < 4; ++i) {
        answers.append(client.ready());
    }
    QTEST(answers, "answers");
}

void TestEmulatedRecorder::fault_after_carriesTheCommandOut()
{
    EmulatedRecorder recorder;
    recorder.addFault("PREVENT_ALLOW after sense=4/44/00");
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "4/44/00");
    QVERIFY(recorder.doorLocked());
}

void TestEmulatedRecorder::fault_atAddress_strikesOnlyThere()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD lba=500-510 times=forever sense=3/11/05");
    ScsiClient client;
    client.ready();
    QByteArray read;
    QCOMPARE(client.readFrames(475, 25, read), "good");
    QCOMPARE(client.readFrames(476, 25, read), "3/11/05");
    QCOMPARE(client.readFrames(510, 25, read), "3/11/05");
    QCOMPARE(client.readFrames(511, 25, read), "good");
}

void TestEmulatedRecorder::fault_noise_isCuredByReading()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD lba=500 noise");
    ScsiClient client;
    client.ready();
    QByteArray noisy;
    QByteArray clean;
    QCOMPARE(client.readFrames(499, 3, noisy), "good");
    QCOMPARE(client.readFrames(499, 3, clean), "good");
    QCOMPARE(clean, recorder.frames(499, 3));
    QCOMPARE(noisy.first(kFrame), clean.first(kFrame));
    QVERIFY(noisy.mid(kFrame, kFrame) != clean.mid(kFrame, kFrame));
    QCOMPARE(noisy.mid(2 * kFrame), clean.mid(2 * kFrame));
}

void TestEmulatedRecorder::fault_noise_isToldByErrorPointers()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD lba=500 noise");
    ScsiClient client;
    client.ready();
    QByteArray read;
    QCOMPARE(client.read({0xBE, 0, 0, 0, 0x01, 0xF4, 0, 0, 1, 0xFA, 0, 0}, read, kFrame + 294), "good");
    const QByteArray clean = recorder.frames(500, 1);
    for (int i = 0; i < kFrame; ++i) {
        const bool told = (static_cast<unsigned char>(read[kFrame + i / 8]) >> (7 - i % 8) & 1) != 0;
        QCOMPARE(told, read[i] != clean[i]);
    }
    QCOMPARE(client.read({0xBE, 0, 0, 0, 0x01, 0xF4, 0, 0, 1, 0xFA, 0, 0}, read, kFrame + 294), "good");
    QCOMPARE(read, clean + QByteArray(294, '\0'));
}

void TestEmulatedRecorder::fault_jitter_shiftsSamples()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD jitter=-7");
    ScsiClient client;
    client.ready();
    QByteArray read;
    QCOMPARE(client.readFrames(200, 2, read), "good");
    const QByteArray around = recorder.frames(199, 3);
    QCOMPARE(read, around.mid(kFrame - 28, 2 * kFrame));
}

void TestEmulatedRecorder::fault_missing_movesAllBehindTheFrame()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD times=forever missing=500");
    ScsiClient client;
    client.ready();
    QByteArray read;
    QCOMPARE(client.readFrames(498, 4, read), "good");
    QCOMPARE(read, recorder.frames(498, 2) + recorder.frames(501, 2));
    QCOMPARE(client.readFrames(900, 2, read), "good");
    QCOMPARE(read, recorder.frames(901, 2));
}

void TestEmulatedRecorder::fault_swapped_readsEachTrackAsTheOther()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 300", "audio 300", "audio 300", "close"});
    recorder.addFault("READ_CD times=forever swapped=1/3");
    ScsiClient client;
    client.ready();
    const auto tracks = recorder.content()->tracks;
    QByteArray read;
    QCOMPARE(client.readFrames(tracks[0].start + 7, 2, read), "good");
    QCOMPARE(read, recorder.frames(tracks[2].start + 7, 2));
    QCOMPARE(client.readFrames(tracks[1].start, 2, read), "good");
    QCOMPARE(read, recorder.frames(tracks[1].start, 2));
    QCOMPARE(client.readFrames(tracks[2].end - 2, 2, read), "good");
    QCOMPARE(read, recorder.frames(tracks[0].end - 2, 2));
}

void TestEmulatedRecorder::fault_delay_pastTheLimit_timesOut()
{
    EmulatedRecorder recorder;
    recorder.addFault("PREVENT_ALLOW delay=forever");
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}, {}, 100), "host3");
    QVERIFY(recorder.doorLocked());
    QCOMPARE(client.write({0x1E, 0, 0, 0, 0, 0}), "good");
}

void TestEmulatedRecorder::fault_ignored_saysGoodAndDoesNothing()
{
    EmulatedRecorder recorder;
    recorder.addFault("PREVENT_ALLOW ignored");
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "good");
    QVERIFY(!recorder.doorLocked());
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "good");
    QVERIFY(recorder.doorLocked());
}

void TestEmulatedRecorder::fault_flip_liesAboutOnePageOnly()
{
    EmulatedRecorder recorder;
    recorder.addFault("MODE_SENSE_10 page=05 flip=10/10");
    recorder.addFault("MODE_SELECT_10 page=01 sense=5/26/00");
    ScsiClient client;
    QCOMPARE(client.selectWriteParameters(0x12), "good");
    QByteArray reply;
    QCOMPARE(client.read({0x5A, 8, 0x2A, 0, 0, 0, 0, 0, 60, 0}, reply, 60), "good");
    QCOMPARE(client.read({0x5A, 8, 0x05, 0, 0, 0, 0, 0, 60, 0}, reply, 60), "good");
    QCOMPARE(int(reply[10]), 0x02);
    QCOMPARE(client.read({0x5A, 8, 0x05, 0, 0, 0, 0, 0, 60, 0}, reply, 60), "good");
    QCOMPARE(int(reply[10]), 0x12);
    QCOMPARE(recorder.count("MODE_SELECT_10", "5/26/00"), 0);
}

void TestEmulatedRecorder::fault_patchAndShort_changeTheReply()
{
    EmulatedRecorder recorder;
    recorder.addFault("READ_DISC_INFORMATION patch=2/0AFF");
    recorder.addFault("READ_DISC_INFORMATION nth=2 short=4");
    ScsiClient client;
    QByteArray reply;
    QCOMPARE(client.read({0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, reply, 34), "good");
    QCOMPARE(reply.mid(2, 2), QByteArray("\x0A\xFF"));
    QCOMPARE(client.read({0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, reply, 34), "good");
    QCOMPARE(reply.size(), 4);
}

void TestEmulatedRecorder::fault_reset_forgetsModesAndLock()
{
    EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "good");
    QCOMPARE(client.selectWriteParameters(0x12), "good");
    recorder.addFault("TEST_UNIT_READY reset");
    QCOMPARE(client.ready(), "6/29/00");
    QVERIFY(!recorder.doorLocked());
    QByteArray reply;
    QCOMPARE(client.read({0x5A, 8, 0x05, 0, 0, 0, 0, 0, 60, 0}, reply, 60), "good");
    QCOMPARE(int(reply[10]), 0x01);
    QCOMPARE(client.ready(), "good");
}

void TestEmulatedRecorder::fault_reset_after_isToldByTheNextCommand()
{
    EmulatedRecorder recorder;
    ScsiClient client;
    recorder.addFault("MODE_SELECT_10 after reset");
    QCOMPARE(client.selectWriteParameters(0x12), "good");
    QCOMPARE(client.ready(), "6/29/00");
    QCOMPARE(client.ready(), "good");
}

void TestEmulatedRecorder::fault_status_comesWithoutSense()
{
    EmulatedRecorder recorder;
    recorder.addFault("TEST_UNIT_READY status=08");
    ScsiClient client;
    client.ready();
    QCOMPARE(recorder.count("TEST_UNIT_READY", "status8"), 1);
}

void TestEmulatedRecorder::sense_isPutAsConfigured_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("fixed") << "fixed"
                           << "sense=3/0C/00" << QByteArray::fromHex("700003");
    QTest::newRow("fixed, deferred") << "fixed"
                                     << "sense=3/0C/00 deferred" << QByteArray::fromHex("710003");
    QTest::newRow("descriptor") << "descriptor"
                                << "sense=3/0C/02" << QByteArray::fromHex("72030C02");
    QTest::newRow("descriptor, deferred") << "descriptor"
                                          << "sense=3/0C/02 deferred" << QByteArray::fromHex("73030C02");
    QTest::newRow("none") << "none"
                          << "sense=3/0C/00" << QByteArray(4, '\0');
}

void TestEmulatedRecorder::sense_isPutAsConfigured()
{
    QFETCH(QString, format);
    QFETCH(QString, rule);
    QFETCH(QByteArray, bytes);
    EmulatedRecorder recorder;
    recorder.set("sense-format", format);
    recorder.addFault("TEST_UNIT_READY " + rule);
    const ScsiClient client;
    std::array<unsigned char, 6> cdb{};
    std::array<unsigned char, 32> sense{};
    sg_io_hdr_t header{};
    header.interface_id = 'S';
    header.dxfer_direction = SG_DXFER_NONE;
    header.cmd_len = cdb.size();
    header.cmdp = cdb.data();
    header.mx_sb_len = sense.size();
    header.sbp = sense.data();
    header.timeout = 5000;
    QCOMPARE(::ioctl(client.descriptor(), SG_IO, &header), 0);
    QCOMPARE(int(header.status), 2);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(sense.data()), bytes.size()), bytes);
}

void TestEmulatedRecorder::blockDescriptor_standsBeforeThePage()
{
    EmulatedRecorder recorder;
    recorder.set("block-descriptor", "yes");
    ScsiClient client;
    QByteArray reply;
    QCOMPARE(client.read({0x5A, 8, 0x05, 0, 0, 0, 0, 0, 68, 0}, reply, 68), "good");
    QCOMPARE(int(reply[7]), 8);
    QCOMPARE(int(reply[16]), 0x05);
}

void TestEmulatedRecorder::fault_gone_unlocksTheDoor()
{
    EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}), "good");
    QVERIFY(recorder.doorLocked());
    recorder.addFault("TEST_UNIT_READY gone");
    QCOMPARE(client.ready(), "errno19");
    QVERIFY(!recorder.doorLocked());
}

void TestEmulatedRecorder::fault_gone_takesTheNodeAway()
{
    EmulatedRecorder recorder;
    ScsiClient client;
    recorder.addFault("TEST_UNIT_READY nth=2 gone");
    QCOMPARE(client.ready(), "good");
    QCOMPARE(client.ready(), "errno19");
    QByteArray reply;
    QCOMPARE(client.read({0x12, 0, 0, 0, 36, 0}, reply, 36), "errno19");
    QVERIFY(!QFileInfo::exists("/dev/sr0"));
    recorder.clearFaults();
    QVERIFY(QFileInfo::exists("/dev/sr0"));
    QCOMPARE(client.ready(), "good");
}

void TestEmulatedRecorder::fault_pull_takesTheDiscOut()
{
    EmulatedRecorder recorder;
    recorder.insert("album", {"audio 1000", "close"});
    recorder.addFault("READ_CD nth=2 pull");
    ScsiClient client;
    client.ready();
    QByteArray read;
    QCOMPARE(client.readFrames(0, 10, read), "good");
    QCOMPARE(client.readFrames(10, 10, read), "2/3A/00");
    QCOMPARE(client.ready(), "2/3A/00");
    recorder.clearFaults();
    QCOMPARE(client.ready(), "6/28/00");
    QCOMPARE(client.readFrames(10, 10, read), "good");
}

void TestEmulatedRecorder::journal_tellsEveryCommand()
{
    const EmulatedRecorder recorder;
    ScsiClient client{O_RDWR | O_NONBLOCK | O_EXCL};
    client.ready();
    client.writeFrames(7, QByteArray(kFrame, '\0'));
    const QStringList lines = recorder.journal();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0], "1 sr0 OPEN how=exclusive answer=good door=unlocked");
    QCOMPARE(lines[1], "2 sr0 TEST_UNIT_READY cdb=000000000000 answer=good door=unlocked");
    QCOMPARE(lines[2], "3 sr0 WRITE_10 cdb=2A000000000700000100 lba=7 count=1 answer=5/21/02 door=unlocked");
    QCOMPARE(recorder.count("WRITE_10", "5/21/02"), 1);
}

void TestEmulatedRecorder::threads_mayShareTheDrive()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    const auto ask = [&client] {
        for (int i = 0; i < 200; ++i) {
            client.ready();
        }
    };
    std::thread other{ask};
    ask();
    other.join();
    QCOMPARE(recorder.count("TEST_UNIT_READY", "good"), 400);
}

void TestEmulatedRecorder::node_whileACommandHangs_answersAtOnce()
{
    EmulatedRecorder recorder;
    recorder.addFault("TEST_UNIT_READY delay=forever");
    ScsiClient client;
    std::atomic<bool> hangs{true};
    std::thread hanging{[&] {
        client.write({0x00, 0, 0, 0, 0, 0}, {}, 55000);
        hangs = false;
    }};
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists("/dev/sr0"), 10000);
    const ScsiClient second;
    const bool stillHanging = hangs;
    recorder.set("open", "missing");
    const bool there = QFileInfo::exists("/dev/sr0");
    recorder.clearFaults(); // sets the command free as soon as somebody looks
    QFileInfo::exists("/dev/sr0");
    hanging.join();
    QVERIFY(stillHanging);
    QVERIFY(second.isOpen());
    QVERIFY(!there);
}

void TestEmulatedRecorder::secondDrive_hasItsOwnDisc()
{
    EmulatedRecorder recorder;
    recorder.set("vendor", "ONE");
    QFile file{recorder.folder() + "/drive.conf"};
    QVERIFY(file.open(QIODevice::Append));
    file.write("[sr1]\nvendor = TWO\ndisc = none\n");
    file.close();
    const int second = ::open("/dev/sr1", O_RDWR | O_NONBLOCK);
    QVERIFY(second >= 0);
    QCOMPARE(::ioctl(second, CDROM_DRIVE_STATUS, 0), CDS_NO_DISC);
    ScsiClient first;
    QCOMPARE(::ioctl(first.descriptor(), CDROM_DRIVE_STATUS, 0), CDS_DISC_OK);
    struct stat info
    {
    };
    QCOMPARE(::fstat(second, &info), 0);
    QCOMPARE(minor(info.st_rdev), 1U);
    ::close(second);
}

QTEST_GUILESS_MAIN(TestEmulatedRecorder)
#include "tst_emulated_recorder.moc"
