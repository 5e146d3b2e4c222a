#include "engines/audio/AudioKit.h"
#include "engines/audio/convert/Ditherer.h"
#include "engines/audio/convert/RateConverter.h"
#include "engines/audio/makers.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <numbers>

using namespace zib;

namespace {

// Pumps a file through reader and writer in blocks of @p count samples.
QByteArray converted(const QString& source, const QString& target, qint32 count, int rateHz = 44100,
                     int channels = 2)
{
    const auto reader = makeAudioFile();
    const auto writer = makeAudioFile();
    writer->setOutputFormat(rateHz, channels, 16);
    reader->open(source);
    writer->create(target);
    writer->setInputFormat(reader->formatRate(), reader->formatChannels());
    for (AudioBlock block = reader->readBlock(count); !block.isEmpty(); block = reader->readBlock(count))
        writer->writeBlock(block);
    writer->close();
    return writer->status() == 0 ? kit::contentOf(target) : QByteArray();
}

} // namespace

/// Rate, width and channels on the way from reader to writer.
class TestConversion : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }

private slots:
    void length_afterAnyRate_isExact_data()
    {
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("frames");
        for (const int rate :
             {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44056, 48000, 88200, 96000, 192000, 7})
            for (const int frames : {1, 2, 159, 160, 4800, 99'991})
                QTest::addRow("%d at %d", frames, rate)
                    << rate << (rate == 7 ? std::min(frames, 160) : frames);
    }
    void length_afterAnyRate_isExact()
    {
        QFETCH(int, rateHz);
        QFETCH(int, frames);
        kit::write(path("in.wav"), kit::wav16(kit::music16(frames, 1, 48000), 1, rateHz));
        QCOMPARE(kit::convert(path("in.wav"), path("out.wav")), 0);
        const qint64 expected = (qint64{frames} * 44100 + rateHz / 2) / rateHz;
        QCOMPARE(kit::wavSamples(path("out.wav")).size(), expected * 2);
    }
    void tone_afterAnotherRate_isTheSameTone()
    {
        QList<qint16> tone;
        QList<double> expected;
        for (int i = 0; i < 48000; ++i)
            tone << static_cast<qint16>(
                std::lrint(20000 * std::sin(2 * std::numbers::pi * 1000 * i / 48000.0)));
        for (int i = 0; i < 44100; ++i)
            expected << 20000 * std::sin(2 * std::numbers::pi * 1000 * i / 44100.0);
        kit::write(path("in.wav"), kit::wav16(tone, 1, 48000));
        QCOMPARE(kit::convert(path("in.wav"), path("out.wav")), 0);
        const QList<qint16> samples = kit::wavSamples(path("out.wav"));
        for (int i = 1000; i < 43100; ++i) {
            QCOMPARE(samples[2 * i], samples[2 * i + 1]);
            QVERIFY2(std::abs(samples[2 * i] - expected[i]) < 3, qPrintable(QString::number(i)));
        }
    }
    void result_doesNotDependOnTheBlocks_data()
    {
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("bits");
        QTest::newRow("48 kHz") << 48000 << 16;
        QTest::newRow("44.1 kHz, 24 bits") << 44100 << 24;
        QTest::newRow("96 kHz, 24 bits") << 96000 << 24;
    }
    void result_doesNotDependOnTheBlocks()
    {
        QFETCH(int, rateHz);
        QFETCH(int, bits);
        QByteArray data;
        for (const float sample : kit::music(100'000, 2, rateHz)) {
            const auto value = static_cast<qint32>(std::lrint(sample * 8388607.0F));
            data += QByteArray(reinterpret_cast<const char*>(&value), 4).mid(bits == 24 ? 0 : 1, bits / 8);
        }
        kit::write(path("in.wav"),
                   kit::riff(kit::chunk("fmt ", kit::format(1, 2, rateHz, bits)) + kit::chunk("data", data)));
        const QByteArray once = converted(path("in.wav"), path("out.wav"), rateHz * 2);
        QVERIFY(once.size() > 44);
        for (const qint32 count : {2, 1000, 33'334, 10'000'000})
            if (count > 2 || rateHz == 44100)
                QVERIFY(converted(path("in.wav"), path("out.wav"), count) == once);
    }
    void sixteenBitStereo_passesUntouched()
    {
        const QList<qint16> samples = kit::music16(123'457, 2, 44100);
        kit::write(path("in.wav"), kit::wav16(samples, 2, 44100));
        QCOMPARE(kit::convert(path("in.wav"), path("out.wav")), 0);
        QCOMPARE(kit::contentOf(path("out.wav")), kit::wav16(samples, 2, 44100));
    }
    void mono_goesToBothChannelsUntouched()
    {
        const QList<qint16> samples = kit::music16(50'001, 1, 44100);
        kit::write(path("in.wav"), kit::wav16(samples, 1, 44100));
        QCOMPARE(kit::convert(path("in.wav"), path("out.wav")), 0);
        const QList<qint16> out = kit::wavSamples(path("out.wav"));
        QCOMPARE(out.size(), samples.size() * 2);
        for (qsizetype i = 0; i < samples.size(); ++i)
            QVERIFY(out[2 * i] == samples[i] && out[2 * i + 1] == samples[i]);
    }
    void stereo_toOneChannel_isItsMean()
    {
        kit::write(path("in.wav"), kit::wav16(kit::music16(20'000, 2, 44100), 2, 44100));
        const QList<qint16> in = kit::music16(20'000, 2, 44100);
        QCOMPARE(kit::convert(path("in.wav"), path("out.wav"), 44100, 1), 0);
        const QList<qint16> out = kit::wavSamples(path("out.wav"));
        QCOMPARE(out.size(), in.size() / 2);
        for (qsizetype i = 0; i < out.size(); ++i)
            QVERIFY(std::abs(out[i] - (in[2 * i] + in[2 * i + 1]) / 2.0) < 2);
    }
    void mp3_atCdRate_isTheLibrarysOwn16Bits()
    {
        const QString mp3 = kit::lameFile("long-vbr", 90 * 44100 + 123, 2, 44100, {"-V", "5"});
        QVERIFY(!mp3.isEmpty());
        QCOMPARE(kit::convert(mp3, path("out.wav")), 0);
        QVERIFY(kit::wavSamples(path("out.wav")) == kit::libraryDecode(mp3));
    }
    void mp3_atCdRate_agreesWithAnotherDecoder()
    {
        const QString mp3 = kit::lameFile("mpeg1-44-vbr2", 7 * 44100 + 777, 2, 44100, {"-V", "2"});
        QVERIFY(kit::run("ffmpeg", {"-y", "-i", mp3, "-f", "f32le", path("other.raw")}));
        const QByteArray raw = kit::contentOf(path("other.raw"));
        const auto* theirs = reinterpret_cast<const float*>(raw.constData());
        QCOMPARE(kit::convert(mp3, path("out.wav")), 0);
        const QList<qint16> ours = kit::wavSamples(path("out.wav"));
        QVERIFY(raw.size() / 4 >= ours.size());
        double sum = 0;
        for (qsizetype i = 0; i < ours.size(); ++i)
            sum += std::pow(ours[i] - static_cast<double>(theirs[i]) * 32768, 2);
        QVERIFY(std::sqrt(sum / static_cast<double>(ours.size())) < 0.3); // the rounding alone gives 0.289
    }
    void mp3_atAnotherRate_hasTheExactLength()
    {
        const QString mp3 = kit::lameFile("mpeg1-48-cbr", 7 * 48000 + 777, 2, 48000, {"-b", "160"});
        QCOMPARE(kit::convert(mp3, path("out.wav")), 0);
        const qint64 frames = 7 * 48000 + 777;
        QCOMPARE(kit::wavSamples(path("out.wav")).size(), (frames * 44100 + 24000) / 48000 * 2);
    }
    void dither_isTriangularAndUnbiased()
    {
        Ditherer ditherer;
        const QList<float> quiet(1'000'000, 0.25F / 32768.0F);
        double sum = 0;
        double squares = 0;
        for (const qint16 sample : ditherer.round({quiet.constData(), static_cast<size_t>(quiet.size())})) {
            QVERIFY(sample >= -1 && sample <= 2);
            sum += sample;
            squares += (sample - 0.25) * (sample - 0.25);
        }
        QVERIFY(std::abs(sum / 1e6 - 0.25) < 0.005);
        QVERIFY(std::abs(squares / 1e6 - 0.25) < 0.005); // a quarter of a step squared, whatever the signal
    }
    void dither_ofOneSound_isAlwaysTheSame()
    {
        const QList<float> sound = kit::music(10'000, 1, 44100);
        Ditherer whole;
        Ditherer cut;
        const std::span<const float> samples(sound.constData(), static_cast<size_t>(sound.size()));
        QList<qint16> pieces;
        for (size_t at = 0; at < samples.size(); at += 777)
            pieces += cut.round(samples.subspan(at, std::min<size_t>(777, samples.size() - at)));
        QCOMPARE(pieces, whole.round(samples));
    }
    void converter_ofAlmostNothing_givesTheRoundedLength_data()
    {
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("frames");
        for (const int channels : {1, 2})
            for (const int frames : {0, 1, 2, 3})
                QTest::addRow("%d of %d", frames, channels) << channels << frames;
    }
    void converter_ofAlmostNothing_givesTheRoundedLength()
    {
        QFETCH(int, channels);
        QFETCH(int, frames);
        RateConverter converter(48000, 16000, channels);
        const QList<float> in(frames * channels, 0.5F);
        QList<float> out = converter.convert({in.constData(), static_cast<size_t>(in.size())});
        out += converter.finish();
        QCOMPARE(out.size(), (frames + 1) / 3 * channels);
        QVERIFY(!converter.failed());
    }
    void rounding_beyondFullScale_clips()
    {
        Ditherer ditherer;
        const QList<float> loud{1.5F, -1.5F, 64.0F, -64.0F, 1.0F, -1.0F};
        const QList<qint16> out = ditherer.round({loud.constData(), static_cast<size_t>(loud.size())});
        QCOMPARE(out.first(4), (QList<qint16>{32767, -32768, 32767, -32768}));
        QVERIFY(out[4] >= 32766 && out[5] <= -32767);
    }
};

QTEST_GUILESS_MAIN(TestConversion)
#include "tst_conversion.moc"
