#include "engines/audio/AudioKit.h"
#include "engines/audio/convert/SpeakerMix.h"
#include "engines/audio/makers.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace zib;

namespace {

template <typename Number>
QByteArray packed(const QList<Number>& values)
{
    return {reinterpret_cast<const char*>(values.constData()), values.size() * qsizetype{sizeof(Number)}};
}

QByteArray integers(const QList<float>& samples, int bytes)
{
    QByteArray out;
    for (const float sample : samples) {
        const auto value = static_cast<qint64>(std::lrint(double{sample} * std::pow(2.0, 8 * bytes - 1)));
        for (int i = 0; i < bytes; ++i)
            out += static_cast<char>((bytes == 1 ? value + 128 : value) >> (8 * i));
    }
    return out;
}

QByteArray little32(quint32 value)
{
    return {reinterpret_cast<const char*>(&value), 4};
}

QByteArray little64(quint64 value)
{
    return {reinterpret_cast<const char*>(&value), 8};
}

} // namespace

/// WAV files of every coding and every bad habit.
class TestWavReader : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString made(const QByteArray& content)
    {
        const QString path = m_folder.filePath("made.wav");
        kit::write(path, content);
        return path;
    }
    // Length by the inspector, which must agree with what is really read; -1 when they do not.
    qint64 lengthOf(const QByteArray& content)
    {
        const QString path = made(content);
        const auto reader = makeAudioFile();
        if (reader->open(path) < 0)
            return 0;
        const qint64 length = reader->length();
        const auto information = makeAudioInformation();
        const bool agrees =
            information->open(path) && information->durationMs() == length * 1000 / reader->formatRate() &&
            kit::readWide(*reader).size() == length * reader->formatChannels() && reader->status() == 0;
        return agrees ? length : -1;
    }

private slots:
    void samples_ofEveryCoding_comeExact_data()
    {
        QTest::addColumn<int>("tag");
        QTest::addColumn<int>("bytes");
        QTest::addColumn<int>("channels");
        for (const int channels : {1, 2}) {
            QTest::addRow("8 bit, %d", channels) << 1 << 1 << channels;
            QTest::addRow("16 bit, %d", channels) << 1 << 2 << channels;
            QTest::addRow("24 bit, %d", channels) << 1 << 3 << channels;
            QTest::addRow("32 bit, %d", channels) << 1 << 4 << channels;
            QTest::addRow("float, %d", channels) << 3 << 4 << channels;
            QTest::addRow("double, %d", channels) << 3 << 8 << channels;
        }
    }
    void samples_ofEveryCoding_comeExact()
    {
        QFETCH(int, tag);
        QFETCH(int, bytes);
        QFETCH(int, channels);
        QList<float> samples = kit::music(50'001, channels, 44100);
        const double steps = std::pow(2.0, std::min(8 * bytes - 1, 23));
        for (float& sample : samples) // values that the coding can hold
            sample = static_cast<float>(std::rint(double{sample} * steps) / steps);
        QByteArray data = integers(samples, bytes);
        if (tag == 3 && bytes == 4)
            data = packed(samples);
        else if (tag == 3)
            data = packed(QList<double>(samples.cbegin(), samples.cend()));
        for (const bool isExtensible : {false, true}) {
            const QByteArray format = isExtensible
                                          ? kit::extensibleFormat(tag, channels, 44100, 8 * bytes, bytes, 3)
                                          : kit::format(tag, channels, 44100, 8 * bytes);
            const QString path = made(kit::riff(kit::chunk("fmt ", format) + kit::chunk("data", data)));
            const auto reader = makeAudioFile();
            QCOMPARE(reader->open(path), 0);
            QCOMPARE(reader->length(), qint64{50'001});
            QCOMPARE(kit::readWide(*reader, 7'000), samples);
        }
    }
    void samples_inWiderContainers_useTheirUpperBits()
    {
        const QList<qint32> stored{0x12345600, -0x12345600, 0x7FFFFF00};
        const QByteArray format = kit::extensibleFormat(1, 1, 48000, 24, 4, 4);
        const QString path = made(kit::riff(kit::chunk("fmt ", format) + kit::chunk("data", packed(stored))));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(kit::readWide(*reader),
                 (QList<float>{0x123456 / 8388608.0F, -0x123456 / 8388608.0F, 0x7FFFFF / 8388608.0F}));
        const auto information = makeAudioInformation();
        QVERIFY(information->open(path));
        QVERIFY(information->isPcm());
    }
    void lawCodings_areThoseOfAnotherDecoder_data()
    {
        QTest::addColumn<int>("tag");
        QTest::newRow("A-law") << 6;
        QTest::newRow("mu-law") << 7;
    }
    void lawCodings_areThoseOfAnotherDecoder()
    {
        QFETCH(int, tag);
        QByteArray codes;
        for (int code = 0; code < 256; ++code)
            codes += static_cast<char>(code);
        const QString path =
            made(kit::riff(kit::chunk("fmt ", kit::format(tag, 1, 8000, 8)) + kit::chunk("data", codes)));
        const QString other = m_folder.filePath("other.raw");
        QVERIFY(kit::run("ffmpeg", {"-y", "-i", path, "-f", "s16le", other}));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(kit::bytes16(kit::readNarrow(*reader)), kit::contentOf(other));
        const auto information = makeAudioInformation();
        QVERIFY(information->open(path));
        QVERIFY(!information->isPcm());
        QCOMPARE(information->bitsPerSample(), 8);
    }
    void floats_thatAreNoNumbers_areSilence()
    {
        const QList<float> odd{std::nanf(""), std::numeric_limits<float>::infinity(), 0.25F};
        const QString path = made(
            kit::riff(kit::chunk("fmt ", kit::format(3, 1, 44100, 32)) + kit::chunk("data", packed(odd))));
        const auto reader = makeAudioFile();
        reader->open(path);
        QCOMPARE(kit::readWide(*reader), (QList<float>{0, 0, 0.25F}));
    }
    void length_ofBadHabits_isWhatTheFileHolds_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<qint64>("length");
        const QByteArray format = kit::chunk("fmt ", kit::format(1, 2, 44100, 16));
        const QByteArray samples = kit::bytes16(kit::music16(1000, 2, 44100));
        const QByteArray data = kit::chunk("data", samples);
        const auto lying = [&](quint32 size) { return "data" + little32(size) + samples; };
        QTest::newRow("plain") << kit::riff(format + data) << 1000LL;
        QTest::newRow("cut in the middle of a sample") << kit::riff(format + data).chopped(1) << 999LL;
        QTest::newRow("cut in half") << kit::riff(format + data).chopped(2002) << 499LL;
        QTest::newRow("size 0, never finished") << kit::riff(format + lying(0)) << 1000LL;
        QTest::newRow("size all ones, a stream") << kit::riff(format + lying(0xFFFFFFFF)) << 1000LL;
        QTest::newRow("size too large") << kit::riff(format + lying(1'000'000)) << 1000LL;
        QTest::newRow("size ends inside a sample") << kit::riff(format + lying(403)) << 100LL;
        QTest::newRow("no data, more chunks")
            << kit::riff(format + kit::chunk("data", {}) + kit::chunk("LIST", "INFO")) << 0LL;
        QTest::newRow("chunks before and behind")
            << kit::riff(kit::chunk("JUNK", QByteArray(28, '\0')) + format +
                         kit::chunk("fact", little32(1000)) + data + kit::chunk("LIST", "INFO"))
            << 1000LL;
        QTest::newRow("odd chunk with padding")
            << kit::riff(format + kit::chunk("odd ", "abc") + data) << 1000LL;
        QTest::newRow("odd chunk without padding")
            << kit::riff(format + "odd " + little32(3) + "abc" + data) << 1000LL;
        QTest::newRow("data before the format") << kit::riff(data + format) << 1000LL;
        QTest::newRow("two data chunks, the first counts") << kit::riff(format + data + data) << 1000LL;
        QTest::newRow("a RIFF size of 0") << "RIFF" + little32(0) + "WAVE" + format + data << 1000LL;
        QTest::newRow("a long format")
            << kit::riff(kit::chunk("fmt ", kit::format(1, 2, 44100, 16) + QByteArray(2, '\0')) + data)
            << 1000LL;
        QTest::newRow("a wrong block size")
            << kit::riff(
                   kit::chunk("fmt ", kit::format(1, 2, 44100, 16, 2).replace(12, 2, QByteArray("\1\0", 2))) +
                   data)
            << 1000LL;
        QTest::newRow("RF64") << "RF64" + little32(0xFFFFFFFF) + "WAVE" +
                                     kit::chunk("ds64",
                                                little64(0) + little64(4000) + little64(1000) + little32(0)) +
                                     format + lying(0xFFFFFFFF) + kit::chunk("LIST", "INFO")
                              << 1000LL;
        QTest::newRow("RF64 that lies")
            << "RF64" + little32(0xFFFFFFFF) + "WAVE" +
                   kit::chunk("ds64", little64(0) + little64(1ULL << 62) + little64(0)) + format +
                   lying(0xFFFFFFFF)
            << 1000LL;
        QTest::newRow("no channels") << kit::riff(kit::chunk("fmt ", kit::format(1, 0, 44100, 16)) + data)
                                     << 0LL;
        QTest::newRow("no rate") << kit::riff(kit::chunk("fmt ", kit::format(1, 2, 0, 16)) + data) << 0LL;
        QTest::newRow("no bits") << kit::riff(kit::chunk("fmt ", kit::format(1, 2, 44100, 0, 9)) + data)
                                 << 0LL;
        QTest::newRow("an unknown coding")
            << kit::riff(kit::chunk("fmt ", kit::format(0x1234, 2, 44100, 16)) + data) << 0LL;
        QTest::newRow("no format") << kit::riff(data) << 0LL;
        QTest::newRow("only a header") << kit::riff(format) << 0LL;
    }
    void length_ofBadHabits_isWhatTheFileHolds()
    {
        QFETCH(QByteArray, content);
        QTEST(lengthOf(content), "length");
    }
    void length_beyond4GiB_isExact()
    {
        const QString path = m_folder.filePath("huge.wav");
        const qint64 bytes = 5LL * 1024 * 1024 * 1024;
        kit::write(path, "RF64" + little32(0xFFFFFFFF) + "WAVE" +
                             kit::chunk("ds64", little64(0) + little64(static_cast<quint64>(bytes)) +
                                                    little64(0) + little32(0)) +
                             kit::chunk("fmt ", kit::format(1, 2, 44100, 16)) + "data" +
                             little32(0xFFFFFFFF));
        if (!QFile::resize(path, QFile(path).size() + bytes))
            QSKIP("this file system holds no file of 5 GiB");
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(reader->length(), bytes / 4);
        QCOMPARE(reader->seek(bytes / 4 - 10), bytes / 4 - 10);
        QCOMPARE(kit::readNarrow(*reader), QList<qint16>(20));
        QFile::remove(path);
    }
    void rf64_ofAnotherProgram_isRead()
    {
        const QString path = made(kit::wav16(kit::music16(5000, 2, 48000), 2, 48000));
        const QString other = m_folder.filePath("other.wav");
        QVERIFY(kit::run("ffmpeg", {"-y", "-i", path, "-rf64", "always", "-c:a", "pcm_s16le", other}));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(other), 0);
        QCOMPARE(kit::readNarrow(*reader), kit::music16(5000, 2, 48000));
    }
    void packedCodings_areThoseOfAnotherDecoder_data()
    {
        QTest::addColumn<QString>("codec");
        QTest::addColumn<int>("channels");
        QTest::newRow("MS ADPCM") << "adpcm_ms" << 2;
        QTest::newRow("MS ADPCM mono") << "adpcm_ms" << 1;
        QTest::newRow("IMA ADPCM") << "adpcm_ima_wav" << 2;
    }
    void packedCodings_areThoseOfAnotherDecoder()
    {
        QFETCH(QString, codec);
        QFETCH(int, channels);
        const QString plain = made(kit::wav16(kit::music16(50'000, channels, 44100), channels, 44100));
        const QString packed = m_folder.filePath("packed.wav");
        const QString other = m_folder.filePath("other.raw");
        QVERIFY(kit::run("ffmpeg", {"-y", "-i", plain, "-c:a", codec, packed}));
        QVERIFY(kit::run("sox", {packed, "-t", "raw", "-e", "signed", "-b", "16", other}));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(packed), 0);
        QVERIFY(reader->length() >= 50'000);
        const QByteArray ours = kit::bytes16(kit::readNarrow(*reader));
        QCOMPARE(ours.size(), reader->length() * channels * 2);
        QVERIFY(ours.startsWith(kit::contentOf(other).first(50'000 * channels * 2)));
        QCOMPARE(reader->seek(30'000), 30'000);
        QCOMPARE(kit::bytes16(kit::readNarrow(*reader)), ours.sliced(30'000 * channels * 2));
        const auto information = makeAudioInformation();
        QVERIFY(information->open(packed));
        QVERIFY(!information->isPcm());
        QCOMPARE(information->durationMs(), static_cast<qint32>(reader->length() * 1000 / 44100));
    }
    void mp3_insideWav_isDecoded()
    {
        const QString mp3 =
            kit::lameFile("mpeg1-44-plain-cbr", 7 * 44100 + 777, 2, 44100, {"-b", "128", "-t"});
        const QString path = made(kit::riff(kit::chunk("fmt ", kit::format(0x55, 2, 44100, 0, 1)) +
                                            kit::chunk("data", kit::contentOf(mp3))));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(kit::readNarrow(*reader), kit::libraryDecode(mp3));
    }
    void surround_isMixedDown_data()
    {
        QTest::addColumn<int>("channels");
        QTest::addColumn<quint32>("speakers");
        QTest::addColumn<QList<float>>("left"); // before scaling
        const float half = std::sqrt(0.5F);
        QTest::newRow("5.1") << 6 << 0x3FU << QList<float>{1, 0, half, 0, half, 0};
        QTest::newRow("5.1 without a mask") << 6 << 0U << QList<float>{1, 0, half, 0, half, 0};
        QTest::newRow("5.1 side") << 6 << 0x60FU << QList<float>{1, 0, half, 0, half, 0};
        QTest::newRow("quad") << 4 << 0x33U << QList<float>{1, 0, half, 0};
        QTest::newRow("three fronts") << 3 << 0x7U << QList<float>{1, 0, half};
        QTest::newRow("7.1") << 8 << 0x63FU << QList<float>{1, 0, half, 0, half, 0, half, 0};
    }
    void surround_isMixedDown()
    {
        QFETCH(int, channels);
        QFETCH(quint32, speakers);
        QFETCH(QList<float>, left);
        float sum = 0;
        for (const float share : left)
            sum += share;
        QList<float> samples; // one channel after the other speaks alone
        for (int speaking = 0; speaking < channels; ++speaking)
            for (int channel = 0; channel < channels; ++channel)
                samples << (channel == speaking ? 0.5F : 0.0F);
        const QByteArray format = speakers == 0 ? kit::format(3, channels, 44100, 32)
                                                : kit::extensibleFormat(3, channels, 44100, 32, 4, speakers);
        const QString path =
            made(kit::riff(kit::chunk("fmt ", format) + kit::chunk("data", packed(samples))));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(reader->formatChannels(), 2);
        QCOMPARE(reader->length(), qint64{channels});
        const QList<float> mixed = kit::readWide(*reader);
        for (int speaking = 0; speaking < channels; ++speaking)
            QVERIFY(std::abs(mixed[2 * speaking] - 0.5F * left[speaking] / sum) < 1e-6F);
        const auto information = makeAudioInformation();
        QVERIFY(information->open(path));
        QCOMPARE(information->channels(), channels);
    }
    void speakerShares_ofEachPlace_areItsShares_data()
    {
        QTest::addColumn<quint32>("speaker");
        QTest::addColumn<float>("left");
        QTest::addColumn<float>("right");
        const float half = std::sqrt(0.5F); // of the power
        const auto row = [](const char* name, quint32 speaker, float left, float right) {
            QTest::newRow(name) << speaker << left << right;
        };
        row("front left", 0x1, 1, 0);
        row("front right", 0x2, 0, 1);
        row("front centre", 0x4, half, half);
        row("low frequencies", 0x8, 0, 0);
        row("back left", 0x10, half, 0);
        row("back right", 0x20, 0, half);
        row("front left of centre", 0x40, 1, 0);
        row("front right of centre", 0x80, 0, 1);
        row("back centre", 0x100, 0.5F, 0.5F);
        row("side left", 0x200, half, 0);
        row("side right", 0x400, 0, half);
        row("top centre", 0x800, 0.5F, 0.5F);
        row("top front left", 0x1000, half, 0);
        row("top front centre", 0x2000, 0.5F, 0.5F);
        row("top front right", 0x4000, 0, half);
        row("top back left", 0x8000, 0.5F, 0);
        row("top back centre", 0x10000, 0.5F, 0.5F);
        row("top back right", 0x20000, 0, 0.5F);
        row("a place without a name", 0x40000, 0, 0);
    }
    void speakerShares_ofEachPlace_areItsShares()
    {
        QFETCH(quint32, speaker);
        std::vector<float> left;
        std::vector<float> right;
        speakerShares(1, speaker, left, right);
        QTEST(left.at(0), "left");
        QTEST(right.at(0), "right");
    }
    void speakerShares_withoutAMask_areTheUsualPlaces_data()
    {
        QTest::addColumn<int>("channels");
        QTest::addColumn<quint32>("usual");
        QTest::newRow("one") << 1 << 0x4U;
        QTest::newRow("two") << 2 << 0x3U;
        QTest::newRow("three fronts") << 3 << 0x7U;
        QTest::newRow("quadraphonic") << 4 << 0x33U;
        QTest::newRow("5.0") << 5 << 0x37U;
        QTest::newRow("5.1") << 6 << 0x3FU;
        QTest::newRow("6.1") << 7 << 0x70FU;
        QTest::newRow("7.1") << 8 << 0x63FU;
    }
    void speakerShares_withoutAMask_areTheUsualPlaces()
    {
        QFETCH(int, channels);
        QFETCH(quint32, usual);
        std::vector<float> left;
        std::vector<float> right;
        std::vector<float> expectedLeft;
        std::vector<float> expectedRight;
        speakerShares(channels, 0, left, right);
        speakerShares(channels, usual, expectedLeft, expectedRight);
        QCOMPARE(left, expectedLeft);
        QCOMPARE(right, expectedRight);
    }
    void surround_isWhatAnotherProgramMixes()
    {
        const QString path =
            made(kit::riff(kit::chunk("fmt ", kit::extensibleFormat(1, 6, 44100, 16, 2, 0x3F)) +
                           kit::chunk("data", kit::bytes16(kit::music16(4000, 6, 44100)))));
        const QString other = m_folder.filePath("other.raw");
        QVERIFY(kit::run("ffmpeg", {"-y", "-i", path, "-ac", "2", "-f", "s16le", other}));
        const QByteArray raw = kit::contentOf(other);
        const auto* theirs = reinterpret_cast<const qint16*>(raw.constData());
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        const QList<float> ours = kit::readWide(*reader);
        QCOMPARE(raw.size(), ours.size() * 2);
        for (qsizetype i = 0; i < ours.size(); ++i)
            QVERIFY2(std::abs(ours[i] * 32768.0F - theirs[i]) <= 3.0F, qPrintable(QString::number(i)));
    }
    void sixteenBitBlocks_ofFineSources_areRounded()
    {
        const QList<float> samples = kit::music(30'000, 2, 44100);
        const QString path = made(kit::riff(kit::chunk("fmt ", kit::format(3, 2, 44100, 32)) +
                                            kit::chunk("data", packed(samples))));
        const auto reader = makeAudioFile();
        reader->setSixteenBitBlocks(true);
        QCOMPARE(reader->open(path), 0);
        const QList<qint16> rounded = kit::readNarrow(*reader);
        QCOMPARE(rounded.size(), samples.size());
        for (qsizetype i = 0; i < samples.size(); ++i)
            QVERIFY(std::abs(samples[i] * 32768.0F - rounded[i]) <= 1.6F);
    }
};

QTEST_GUILESS_MAIN(TestWavReader)
#include "tst_wavreader.moc"
