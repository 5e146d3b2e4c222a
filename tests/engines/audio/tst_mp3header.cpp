#include "engines/audio/mp3/Mp3Header.h"

#include <QByteArray>
#include <QTest>

#include <array>

using namespace zib;

namespace {

constexpr int kMpeg1 = 3;
constexpr int kMpeg2 = 2;
constexpr int kMpeg25 = 0;

struct Kind
{
    int version;
    bool mono;
};
constexpr std::array<Kind, 4> kKinds{{{kMpeg1, false}, {kMpeg1, true}, {kMpeg2, false}, {kMpeg2, true}}};

const uchar* bytesOf(const QByteArray& content)
{
    return reinterpret_cast<const uchar*>(content.constData());
}

/// The four bytes of a layer III header.
QByteArray headerBytes(int version, int bitrate, int rate, int flags = 0, int mode = 0)
{
    const int second = 0xE0 | version << 3 | 1 << 1 | 1; // no check sum
    return {
        std::array{char(0xFF), char(second), char(bitrate << 4 | rate << 2 | flags), char(mode << 6)}.data(),
        4};
}

Mp3Header headerOf(const Kind& kind, int bitrate = 9, int rate = 0)
{
    return Mp3Header::parse(bytesOf(headerBytes(kind.version, bitrate, rate, 0, kind.mono ? 3 : 0))).value();
}

QByteArray bigEndian(quint32 number)
{
    return {std::array{char(number >> 24), char(number >> 16), char(number >> 8), char(number)}.data(), 4};
}

/// A header and side information of which the values of one granule are given, all others nought.
QByteArray frameWith(const Kind& kind, int mainDataBegin, int granule, int dataBits, int bigValues,
                     bool switched, int blockType)
{
    QByteArray frame = headerBytes(kind.version, 9, 0, 0, kind.mono ? 3 : 0) + QByteArray(40, '\0');
    int at = 32;
    const auto put = [&](int value, int bits) {
        for (int bit = bits - 1; bit >= 0; --bit, ++at)
            if (value >> bit & 1)
                frame[at / 8] = static_cast<char>(frame[at / 8] | 0x80 >> at % 8);
    };
    const bool low = kind.version != kMpeg1;
    put(mainDataBegin, low ? 8 : 9);
    at += low ? (kind.mono ? 1 : 2) : (kind.mono ? 9 : 11);
    at += granule * (low ? 63 : 59);
    put(dataBits, 12);
    put(bigValues, 9);
    at += low ? 17 : 12; // gain and scale factors
    put(switched ? 1 : 0, 1);
    put(blockType, 2);
    return frame;
}

} // namespace
Q_DECLARE_METATYPE(Kind)

/// MPEG layer III headers, as ISO/IEC 11172-3 and 13818-3 have them, and information frames.
class TestMp3Header : public QObject
{
    Q_OBJECT
private slots:
    void bitrates_areThoseOfTheStandard()
    {
        constexpr std::array kFull{0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
        constexpr std::array kLow{0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
        for (int i = 0; i < 15; ++i) {
            const auto index = static_cast<size_t>(i);
            QCOMPARE(headerOf({kMpeg1, false}, i).bitrateKbps, kFull.at(index));
            QCOMPARE(headerOf({kMpeg2, false}, i).bitrateKbps, kLow.at(index));
            QCOMPARE(headerOf({kMpeg25, false}, i).bitrateKbps, kLow.at(index));
        }
        QVERIFY(!Mp3Header::parse(bytesOf(headerBytes(kMpeg1, 15, 0))));
    }
    void rates_areThoseOfTheStandard()
    {
        constexpr std::array kRates{44100, 48000, 32000};
        for (int i = 0; i < 3; ++i) {
            const int rate = kRates.at(static_cast<size_t>(i));
            QCOMPARE(headerOf({kMpeg1, false}, 9, i).rateHz, rate);
            QCOMPARE(headerOf({kMpeg2, false}, 9, i).rateHz, rate / 2);
            QCOMPARE(headerOf({kMpeg25, false}, 9, i).rateHz, rate / 4);
        }
        QVERIFY(!Mp3Header::parse(bytesOf(headerBytes(kMpeg1, 9, 3))));
        QVERIFY(!Mp3Header::parse(bytesOf(headerBytes(1, 9, 0)))); // a version that does not exist
    }
    void sizes_followFromTheHeader_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<int>("frame");
        QTest::addColumn<int>("sideInfo");
        QTest::addColumn<int>("samples");
        QTest::newRow("full, stereo") << Kind{kMpeg1, false} << 417 << 32 << 1152;
        QTest::newRow("full, mono") << Kind{kMpeg1, true} << 417 << 17 << 1152;
        QTest::newRow("low, stereo") << Kind{kMpeg2, false} << 261 << 17 << 576;
        QTest::newRow("low, mono") << Kind{kMpeg2, true} << 261 << 9 << 576;
    }
    void sizes_followFromTheHeader()
    {
        QFETCH(Kind, kind);
        Mp3Header header = headerOf(kind);
        QCOMPARE(header.channels(), kind.mono ? 1 : 2);
        QTEST(header.frameBytes(1000), "frame");
        QTEST(header.sideInfoBytes(), "sideInfo");
        QTEST(header.samples(), "samples");
        QCOMPARE(header.sideInfoOffset(), 4);
        header.isProtected = header.padding = true;
        QTEST(header.frameBytes(1000) - 1, "frame");
        QCOMPARE(header.sideInfoOffset(), 6);
        header.bitrateKbps = 0;
        QCOMPARE(header.frameBytes(1000), 1001);
    }
    void flags_areReadFromTheirBits()
    {
        QByteArray bytes = headerBytes(kMpeg1, 9, 0);
        QVERIFY(!Mp3Header::parse(bytesOf(bytes))->isProtected);
        QVERIFY(!Mp3Header::parse(bytesOf(bytes))->padding);
        bytes[1] = static_cast<char>(bytes[1] & ~1);
        bytes[2] = static_cast<char>(bytes[2] | 2);
        QVERIFY(Mp3Header::parse(bytesOf(bytes))->isProtected);
        QVERIFY(Mp3Header::parse(bytesOf(bytes))->padding);
    }
    void sideInformation_atItsLimits_isToldFromNonsense()
    {
        constexpr int kBegin = 5;
        constexpr int kOwn = 100; // bytes behind the side information
        constexpr int kRoom = 8 * (kBegin + kOwn);
        for (const Kind& kind : kKinds) {
            const Mp3Header header = headerOf(kind);
            const int size = header.sideInfoOffset() + header.sideInfoBytes() + kOwn;
            const auto plausible = [&](int granule, int bits, int bigValues, bool switched, int blockType) {
                return isPlausible(
                    header, bytesOf(frameWith(kind, kBegin, granule, bits, bigValues, switched, blockType)),
                    size);
            };
            for (int granule = 0; granule < (header.lowRate ? 1 : 2) * header.channels(); ++granule) {
                QVERIFY(plausible(granule, kRoom, 288, false, 0));
                QVERIFY(!plausible(granule, kRoom + 1, 0, false, 0));
                QVERIFY(!plausible(granule, 0, 289, false, 0));
                QVERIFY(!plausible(granule, 0, 0, true, 0));
                QVERIFY(plausible(granule, 0, 0, true, 1));
            }
            const QByteArray silent = frameWith(kind, 0, 0, 0, 0, false, 0);
            QVERIFY(isPlausible(header, bytesOf(silent), size - kOwn));
            QVERIFY(!isPlausible(header, bytesOf(silent), size - kOwn - 1));
            QCOMPARE(mainDataBegin(header, bytesOf(frameWith(kind, 201, 0, 0, 0, false, 0))), 201);
        }
    }
    /// Each of the four fields before the encoder's tag may be missing.
    void informationFrame_ofAnyFields_tellsWhatItHas()
    {
        const QByteArray tag = QByteArray("LAME3.100").leftJustified(21, '\0') + "\x24\x03\x99";
        for (const Kind& kind : kKinds) {
            const Mp3Header header = headerOf(kind);
            for (quint32 fields = 0; fields < 16; ++fields) {
                const QByteArray content =
                    "Xing" + bigEndian(fields) + ((fields & 1) ? bigEndian(7777) : "") +
                    ((fields & 2) ? bigEndian(888888) : "") + QByteArray((fields & 4) ? 100 : 0, '\x55') +
                    ((fields & 8) ? bigEndian(78) : "") + tag;
                for (const int checkSum : {0, 2}) {
                    const QByteArray frame =
                        QByteArray(4 + header.sideInfoBytes() + checkSum, '\0') + content;
                    const auto info = Mp3InfoFrame::parse(header, {bytesOf(frame), size_t(frame.size())});
                    QVERIFY(info);
                    QCOMPARE(info->frames, (fields & 1) ? 7777 : -1);
                    QCOMPARE(info->bytes, (fields & 2) ? 888888 : -1);
                    QCOMPARE(info->delay, 0x240);
                    QCOMPARE(info->padding, 0x399);
                }
            }
        }
    }
    void informationFrame_cutShort_tellsWhatIsLeft()
    {
        const Mp3Header header = headerOf({kMpeg1, false});
        const QByteArray whole = QByteArray(4 + 32, '\0') + "Info" + bigEndian(3) + bigEndian(7777) +
                                 bigEndian(888888) + QByteArray("LAME").leftJustified(21, '\0') +
                                 "\x24\x03\x99";
        const auto parsed = [&](qsizetype size) {
            return Mp3InfoFrame::parse(header, {bytesOf(whole), static_cast<size_t>(size)});
        };
        QVERIFY(!parsed(36 + 7));
        QCOMPARE(parsed(36 + 8)->frames, -1);
        QCOMPARE(parsed(36 + 11)->frames, -1);
        QCOMPARE(parsed(36 + 12)->frames, 7777);
        QCOMPARE(parsed(36 + 15)->bytes, -1);
        QCOMPARE(parsed(36 + 16)->bytes, 888888);
        QCOMPARE(parsed(whole.size() - 1)->delay, -1);
        QCOMPARE(parsed(whole.size())->delay, 0x240);
    }
    void vbriFrame_tellsFramesAndBytes()
    {
        const Mp3Header header = headerOf({kMpeg1, false});
        const QByteArray whole =
            QByteArray(36, '\0') + "VBRI" + QByteArray(6, '\0') + bigEndian(888888) + bigEndian(7777);
        const auto info = Mp3InfoFrame::parse(header, {bytesOf(whole), size_t(whole.size())});
        QVERIFY(info);
        QCOMPARE(info->bytes, 888888);
        QCOMPARE(info->frames, 7777);
        QVERIFY(!Mp3InfoFrame::parse(header, {bytesOf(whole), size_t(whole.size()) - 1}));
    }
};

QTEST_APPLESS_MAIN(TestMp3Header)
#include "tst_mp3header.moc"
