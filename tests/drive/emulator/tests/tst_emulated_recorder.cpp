// The emulated recorder by itself: the rules of its commands, its faults, and the node in front of it.

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
constexpr int kMinuteFrames = 60 * 75;

QByteArray cueEntry(int control, int track, int index, int form, std::int32_t lba)
{
    const std::int32_t at = lba + 150;
    const int bytes[]{control << 4 | 1, track, index, form, 0, at / 75 / 60, at / 75 % 60, at % 75};
    QByteArray entry;
    for (const int byte : bytes) {
        entry.append(static_cast<char>(byte));
    }
    return entry;
}

/// One audio track from address 0 up to the lead-out at @p leadOut.
QByteArray oneTrack(std::int32_t leadOut, int control = 0)
{
    return cueEntry(control, 0, 0, 1, -150) + cueEntry(control, 1, 0, 0, -150) +
           cueEntry(control, 1, 1, 0, 0) + cueEntry(control, 0xAA, 1, 1, leadOut);
}

QByteArray frames(int count, char seed = 1)
{
    QByteArray bytes(count * kFrame, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>((i / 7 + i * seed) & 0xFF);
    }
    return bytes;
}

/// Writes @p data from address @p lba on in pieces of 25 frames. @returns the first answer that is not good.
QString writeAll(ScsiClient& client, std::int32_t lba, const QByteArray& data)
{
    for (qsizetype at = 0; at < data.size(); at += 25 * kFrame) {
        const QByteArray piece = data.mid(at, 25 * kFrame);
        const QString answer = client.writeFrames(lba + static_cast<std::int32_t>(at / kFrame), piece);
        if (answer != "good") {
            return answer;
        }
    }
    return "good";
}

int discStatus(ScsiClient& client)
{
    QByteArray reply;
    client.read({0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, reply, 34);
    return reply.size() > 2 ? reply[2] & 3 : -1;
}

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
    void capacity_isInTheAtip_data();
    void capacity_isInTheAtip();
    void cueSheet_longerThanTheDisc_isRefused();
    void cueSheet_withWrongLayout_isRefused_data();
    void cueSheet_withWrongLayout_isRefused();
    void sessionAtOnce_writesEveryFrame();
    void sessionAtOnce_outOfOrder_isRefused();
    void sessionAtOnce_interrupted_leavesUnreadableFrames();
    void trackAtOnce_leavesGapBetweenTracks();
    void trackAtOnce_shortTrack_isPadded();
    void trackAtOnce_pastTheEnd_isRefused();
    void simulation_leavesDiscBlank_data();
    void simulation_leavesDiscBlank();
    void abilities_whenMissing_areRefused_data();
    void abilities_whenMissing_areRefused();
    void blank_erasesOnlyRewritableDiscs();
    void closing_immediately_keepsTheDriveBusy();
    void recipe_makesMixedDisc();
    void fault_strikesAsCounted_data();
    void fault_strikesAsCounted();
    void fault_after_carriesTheCommandOut();
    void fault_atAddress_strikesOnlyThere();
    void fault_noise_isCuredByReading();
    void fault_jitter_shiftsSamples();
    void fault_delay_pastTheLimit_timesOut();
    void fault_gone_takesTheNodeAway();
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

void TestEmulatedRecorder::capacity_isInTheAtip_data()
{
    QTest::addColumn<int>("minutes");
    for (const int minutes : {74, 80, 90, 99}) {
        QTest::addRow("%d minutes", minutes) << minutes;
    }
}

void TestEmulatedRecorder::capacity_isInTheAtip()
{
    QFETCH(int, minutes);
    EmulatedRecorder recorder;
    recorder.set("disc-minutes", QString::number(minutes));
    ScsiClient client;
    QByteArray reply;
    QCOMPARE(client.read({0x43, 2, 4, 0, 0, 0, 0, 0, 28, 0}, reply, 28), "good");
    const QByteArray lastLeadOut = reply.mid(12, 3);
    QCOMPARE(lastLeadOut, QByteArray(1, static_cast<char>(minutes - 1)) + "\x3B\x4A");
    QCOMPARE(client.selectWriteParameters(0x02), "good");
    const std::int32_t capacity = minutes * kMinuteFrames - 150 - 1;
    QCOMPARE(client.sendCueSheet(oneTrack(capacity + 1)), "5/26/00");
    QCOMPARE(client.sendCueSheet(oneTrack(capacity)), "good");
}

void TestEmulatedRecorder::cueSheet_longerThanTheDisc_isRefused()
{
    EmulatedRecorder recorder;
    recorder.set("disc-frames", "1000");
    ScsiClient client;
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(oneTrack(850)), "5/26/00");
    QCOMPARE(client.writeFrames(-150, frames(1)), "5/2C/00");
    QCOMPARE(client.sendCueSheet(oneTrack(849)), "good");
}

void TestEmulatedRecorder::cueSheet_withWrongLayout_isRefused_data()
{
    QTest::addColumn<QByteArray>("sheet");
    const QByteArray leadIn = cueEntry(0, 0, 0, 1, -150);
    const QByteArray pause = cueEntry(0, 1, 0, 0, -150);
    const QByteArray start = cueEntry(0, 1, 1, 0, 0);
    const QByteArray leadOut = cueEntry(0, 0xAA, 1, 1, 600);
    QTest::newRow("no lead-in") << pause + start + leadOut;
    QTest::newRow("no lead-out") << leadIn + pause + start;
    QTest::newRow("no pause") << leadIn + start + leadOut;
    QTest::newRow("pause too short") << leadIn + pause + cueEntry(0, 1, 1, 0, -10) + leadOut;
    QTest::newRow("track too short") << leadIn + pause + start + cueEntry(0, 0xAA, 1, 1, 299);
    QTest::newRow("track skipped") << leadIn + pause + start + cueEntry(0, 3, 1, 0, 300) + leadOut;
    QTest::newRow("going back") << leadIn + pause + start + cueEntry(0, 2, 1, 0, -5) + leadOut;
    QTest::newRow("after the lead-out") << leadIn + pause + start + leadOut + cueEntry(0, 2, 1, 0, 900);
    QTest::newRow("control changes inside") << leadIn + pause + cueEntry(1, 1, 1, 0, 0) + leadOut;
}

void TestEmulatedRecorder::cueSheet_withWrongLayout_isRefused()
{
    QFETCH(QByteArray, sheet);
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(sheet), "5/26/00");
    QCOMPARE(client.sendCueSheet(oneTrack(600)), "good");
}

void TestEmulatedRecorder::sessionAtOnce_writesEveryFrame()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(oneTrack(600, 3)), "good");
    const QByteArray data = frames(750);
    QCOMPARE(writeAll(client, -150, data), "good");
    QCOMPARE(discStatus(client), 2);
    const auto content = recorder.content().value();
    QVERIFY(content.finalized);
    QCOMPARE(content.leadOut, 600);
    QCOMPARE(content.tracks.size(), 1);
    QCOMPARE(content.tracks[0].control, 3);
    QCOMPARE(recorder.frames(-150, 750), data);
    QByteArray read;
    QCOMPARE(client.readFrames(590, 10, read), "good");
    QCOMPARE(read, data.mid(740 * kFrame));
    QCOMPARE(client.readFrames(591, 10, read), "5/21/00");
}

void TestEmulatedRecorder::sessionAtOnce_outOfOrder_isRefused()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x02);
    client.sendCueSheet(oneTrack(600));
    QCOMPARE(client.writeFrames(0, frames(1)), "5/21/02");
    QCOMPARE(client.writeFrames(-150, frames(25)), "good");
    QCOMPARE(client.writeFrames(-150, frames(25)), "5/21/02");
    QCOMPARE(client.writeFrames(-125, frames(25)), "good");
}

void TestEmulatedRecorder::sessionAtOnce_interrupted_leavesUnreadableFrames()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x02);
    client.sendCueSheet(oneTrack(600));
    QCOMPARE(writeAll(client, -150, frames(350)), "good");
    client.write({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    QCOMPARE(discStatus(client), 1);
    QByteArray read;
    QCOMPARE(client.readFrames(199, 1, read), "good");
    QCOMPARE(client.readFrames(200, 1, read), "3/11/05");
    QCOMPARE(client.write({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0}), "good");
    QCOMPARE(discStatus(client), 2);
}

void TestEmulatedRecorder::trackAtOnce_leavesGapBetweenTracks()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x01);
    QCOMPARE(writeAll(client, 0, frames(400)), "good");
    QCOMPARE(client.write({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "good");
    QCOMPARE(client.writeFrames(400, frames(1)), "5/21/02");
    QCOMPARE(writeAll(client, 552, frames(300)), "good");
    QCOMPARE(client.write({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0}), "5/72/03");
    QCOMPARE(client.write({0x5B, 0, 1, 0, 0, 2, 0, 0, 0, 0}), "good");
    QCOMPARE(client.write({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0}), "good");
    QCOMPARE(discStatus(client), 2);
    const auto content = recorder.content().value();
    QCOMPARE(content.tracks.size(), 2);
    QCOMPARE(content.tracks[1].start, 552);
    QCOMPARE(content.leadOut, 854);
}

void TestEmulatedRecorder::trackAtOnce_shortTrack_isPadded()
{
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x01, 0xC0);
    client.writeFrames(0, frames(10));
    client.write({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    client.write({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0});
    QCOMPARE(discStatus(client), 1); // appendable: the page says that sessions may follow
    QCOMPARE(recorder.content()->tracks[0].end, 300);
    QCOMPARE(client.writeFrames(302 + 11250 + 150, frames(1)), "good");
}

void TestEmulatedRecorder::trackAtOnce_pastTheEnd_isRefused()
{
    EmulatedRecorder recorder;
    recorder.set("disc-frames", "700");
    ScsiClient client;
    client.selectWriteParameters(0x01);
    QCOMPARE(writeAll(client, 0, frames(549)), "good");
    QCOMPARE(client.writeFrames(549, frames(1)), "5/63/00");
}

void TestEmulatedRecorder::simulation_leavesDiscBlank_data()
{
    QTest::addColumn<int>("writeType");
    QTest::newRow("session at once") << 2;
    QTest::newRow("track at once") << 1;
}

void TestEmulatedRecorder::simulation_leavesDiscBlank()
{
    QFETCH(int, writeType);
    const EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.selectWriteParameters(0x10 | writeType), "good");
    if (writeType == 2) {
        QCOMPARE(client.sendCueSheet(oneTrack(600)), "good");
    }
    QCOMPARE(writeAll(client, writeType == 2 ? -150 : 0, frames(writeType == 2 ? 750 : 600)), "good");
    client.write({0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    if (writeType == 1) {
        QCOMPARE(client.writeFrames(752, frames(25)), "good"); // the next track follows as on a real write
        client.write({0x5B, 0, 2, 0, 0, 0, 0, 0, 0, 0});
    }
    QCOMPARE(discStatus(client), 0);
    QVERIFY(recorder.content()->blank);
    QCOMPARE(recorder.frames(-150, 900), QByteArray(900 * kFrame, '\0'));
}

void TestEmulatedRecorder::abilities_whenMissing_areRefused_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("page");
    QTest::newRow("session at once") << "sao" << 0x02;
    QTest::newRow("track at once") << "tao" << 0x01;
    QTest::newRow("simulation") << "simulation" << 0x12;
    QTest::newRow("buffer protection") << "buffer-protection" << 0x42;
}

void TestEmulatedRecorder::abilities_whenMissing_areRefused()
{
    QFETCH(QString, key);
    QFETCH(int, page);
    EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.selectWriteParameters(page), "good");
    recorder.set(key, "no");
    QCOMPARE(client.selectWriteParameters(page), "5/26/00");
}

void TestEmulatedRecorder::blank_erasesOnlyRewritableDiscs()
{
    EmulatedRecorder recorder;
    recorder.set("disc-kind", "cd-rw");
    recorder.insert("full", {"audio 400", "close"});
    ScsiClient client;
    client.ready();
    QCOMPARE(discStatus(client), 2);
    QCOMPARE(client.write({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "good");
    QCOMPARE(discStatus(client), 0);
    QVERIFY(recorder.content()->blank);
    recorder.set("disc-kind", "cd-r");
    recorder.insert("once", {"audio 400", "close"});
    client.ready();
    QCOMPARE(client.write({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), "5/30/05");
}

void TestEmulatedRecorder::closing_immediately_keepsTheDriveBusy()
{
    EmulatedRecorder recorder;
    recorder.set("closing-ms", "4000");
    ScsiClient client;
    client.selectWriteParameters(0x02);
    client.sendCueSheet(oneTrack(300));
    QCOMPARE(writeAll(client, -150, frames(450)), "good");
    QCOMPARE(client.write({0x35, 2, 0, 0, 0, 0, 0, 0, 0, 0}), "good");
    QCOMPARE(client.ready(), "2/04/08");
    QTRY_COMPARE_WITH_TIMEOUT(client.ready(), QString("good"), 30000);
}

void TestEmulatedRecorder::recipe_makesMixedDisc()
{
    EmulatedRecorder recorder;
    recorder.insert("mixed", {"mcn 1234567890123", "data 400", "audio 500 copy preemphasis isrc=ABCDE1234567",
                              "audio 300 pregap=150", "close"});
    const ScsiClient client;
    ScsiClient{}.ready();
    cdrom_tochdr header{};
    QCOMPARE(::ioctl(client.descriptor(), CDROMREADTOCHDR, &header), 0);
    QCOMPARE(header.cdth_trk1, 3);
    cdrom_tocentry entry{};
    entry.cdte_track = 3;
    entry.cdte_format = CDROM_LBA;
    QCOMPARE(::ioctl(client.descriptor(), CDROMREADTOCENTRY, &entry), 0);
    QCOMPARE(entry.cdte_addr.lba, 400 + 500 + 150);
    QCOMPARE(::ioctl(client.descriptor(), CDROM_DISC_STATUS, 0), CDS_MIXED);
    const auto content = recorder.content().value();
    QCOMPARE(content.tracks[1].control, 3);
    QCOMPARE(content.tracks[1].isrc, "ABCDE1234567");
    QCOMPARE(content.catalogNumber, "1234567890123");
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

void TestEmulatedRecorder::fault_delay_pastTheLimit_timesOut()
{
    EmulatedRecorder recorder;
    recorder.addFault("PREVENT_ALLOW delay=forever");
    ScsiClient client;
    QCOMPARE(client.write({0x1E, 0, 0, 0, 1, 0}, {}, 100), "host3");
    QVERIFY(recorder.doorLocked());
    QCOMPARE(client.write({0x1E, 0, 0, 0, 0, 0}), "good");
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
    client.writeFrames(7, frames(1));
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
