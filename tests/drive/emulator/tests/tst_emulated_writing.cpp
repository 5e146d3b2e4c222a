// The emulated recorder by itself: what it writes, and what it refuses to write.

#include "EmulatedRecorder.h"
#include "ScsiClient.h"

#include <QTest>

#include <linux/cdrom.h>

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

class TestEmulatedWriting : public QObject
{
    Q_OBJECT
private slots:
    void capacity_isInTheAtip_data();
    void capacity_isInTheAtip();
    void cueSheet_longerThanTheDisc_isRefused();
    void cueSheet_withWrongLayout_isRefused_data();
    void cueSheet_withWrongLayout_isRefused();
    void sessionAtOnce_writesEveryFrame();
    void sessionAtOnce_outOfOrder_isRefused();
    void sessionAtOnce_interrupted_leavesUnreadableFrames();
    void testBit_isTakenAsConfigured_data();
    void testBit_isTakenAsConfigured();
    void discEnd_followsTheDisc();
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
};

void TestEmulatedWriting::capacity_isInTheAtip_data()
{
    QTest::addColumn<int>("minutes");
    for (const int minutes : {74, 80, 90, 99}) {
        QTest::addRow("%d minutes", minutes) << minutes;
    }
}

void TestEmulatedWriting::capacity_isInTheAtip()
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

void TestEmulatedWriting::cueSheet_longerThanTheDisc_isRefused()
{
    EmulatedRecorder recorder;
    recorder.set("disc-frames", "1000");
    ScsiClient client;
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(oneTrack(850)), "5/26/00");
    QCOMPARE(client.writeFrames(-150, frames(1)), "5/2C/00");
    QCOMPARE(client.sendCueSheet(oneTrack(849)), "good");
}

void TestEmulatedWriting::cueSheet_withWrongLayout_isRefused_data()
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

void TestEmulatedWriting::cueSheet_withWrongLayout_isRefused()
{
    QFETCH(QByteArray, sheet);
    const EmulatedRecorder recorder;
    ScsiClient client;
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(sheet), "5/26/00");
    QCOMPARE(client.sendCueSheet(oneTrack(600)), "good");
}

void TestEmulatedWriting::sessionAtOnce_writesEveryFrame()
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

void TestEmulatedWriting::sessionAtOnce_outOfOrder_isRefused()
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

void TestEmulatedWriting::sessionAtOnce_interrupted_leavesUnreadableFrames()
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

void TestEmulatedWriting::trackAtOnce_leavesGapBetweenTracks()
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

void TestEmulatedWriting::trackAtOnce_shortTrack_isPadded()
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

void TestEmulatedWriting::trackAtOnce_pastTheEnd_isRefused()
{
    EmulatedRecorder recorder;
    recorder.set("disc-frames", "700");
    ScsiClient client;
    client.selectWriteParameters(0x01);
    QCOMPARE(writeAll(client, 0, frames(549)), "good");
    QCOMPARE(client.writeFrames(549, frames(1)), "5/63/00");
}

void TestEmulatedWriting::simulation_leavesDiscBlank_data()
{
    QTest::addColumn<int>("writeType");
    QTest::newRow("session at once") << 2;
    QTest::newRow("track at once") << 1;
}

void TestEmulatedWriting::simulation_leavesDiscBlank()
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

void TestEmulatedWriting::abilities_whenMissing_areRefused_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("page");
    QTest::newRow("session at once") << "sao" << 0x02;
    QTest::newRow("track at once") << "tao" << 0x01;
    QTest::newRow("simulation") << "simulation" << 0x12;
    QTest::newRow("buffer protection") << "buffer-protection" << 0x42;
}

void TestEmulatedWriting::abilities_whenMissing_areRefused()
{
    QFETCH(QString, key);
    QFETCH(int, page);
    EmulatedRecorder recorder;
    ScsiClient client;
    QCOMPARE(client.selectWriteParameters(page), "good");
    recorder.set(key, "no");
    QCOMPARE(client.selectWriteParameters(page), "5/26/00");
}

void TestEmulatedWriting::blank_erasesOnlyRewritableDiscs()
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

void TestEmulatedWriting::closing_immediately_keepsTheDriveBusy()
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

void TestEmulatedWriting::recipe_makesMixedDisc()
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

void TestEmulatedWriting::testBit_isTakenAsConfigured_data()
{
    QTest::addColumn<QString>("testBit");
    QTest::addColumn<int>("shown");
    QTest::addColumn<int>("end");
    QTest::newRow("kept") << "kept" << 0x12 << int(EmulatedRecorder::DiscEnd::Blank);
    QTest::newRow("dropped") << "dropped" << 0x02 << int(EmulatedRecorder::DiscEnd::Finished);
    QTest::newRow("ignored") << "ignored" << 0x12 << int(EmulatedRecorder::DiscEnd::Finished);
}

void TestEmulatedWriting::testBit_isTakenAsConfigured()
{
    QFETCH(QString, testBit);
    EmulatedRecorder recorder;
    recorder.set("test-bit", testBit);
    ScsiClient client;
    client.ready();
    QCOMPARE(client.selectWriteParameters(0x12), "good");
    QByteArray page;
    QCOMPARE(client.read({0x5A, 8, 0x05, 0, 0, 0, 0, 0, 60, 0}, page, 60), "good");
    QTEST(int(page[10]), "shown");
    QCOMPARE(client.sendCueSheet(oneTrack(300)), "good");
    QCOMPARE(writeAll(client, -150, frames(450)), "good");
    QTEST(int(recorder.discEnd()), "end");
}

void TestEmulatedWriting::discEnd_followsTheDisc()
{
    using enum EmulatedRecorder::DiscEnd;
    EmulatedRecorder recorder;
    QVERIFY(recorder.discEnd() == Blank);
    ScsiClient client;
    client.ready();
    client.selectWriteParameters(0x02);
    QCOMPARE(client.sendCueSheet(oneTrack(300)), "good");
    QVERIFY(recorder.discEnd() == Blank);
    QCOMPARE(writeAll(client, -150, frames(25)), "good");
    QVERIFY(recorder.discEnd() == Begun);
    QCOMPARE(writeAll(client, -125, frames(425)), "good");
    QVERIFY(recorder.discEnd() == Finished);
    recorder.removeDisc();
    QVERIFY(recorder.discEnd() == None);
}

QTEST_GUILESS_MAIN(TestEmulatedWriting)
#include "tst_emulated_writing.moc"
