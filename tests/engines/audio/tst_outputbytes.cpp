#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"

#include <QCryptographicHash>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

#include <soxr.h>

using namespace zib;

namespace {

constexpr qint64 kFrames = 2 * 44100 + 30'777;

/// How the samples of a WAV source stand in its file.
struct Form
{
    int tag = 1; // WAVE_FORMAT_PCM; 3 is floating, 6 A-law, 7 mu-law
    int bits = 16;
    int channels = 2;
    int rateHz = 44100;
};

// Triangles of changing pitch, steps and noise, reckoned in integers: the same on every machine. A few peaks
// lie near full scale.
QList<qint32> integerMusic(qint64 frames, int channels)
{
    QList<qint32> samples;
    samples.reserve(frames * channels);
    quint32 noise = 20'041;
    QList<quint32> phase(channels, 0);
    for (qint64 i = 0; i < frames; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            const auto glide = static_cast<quint32>(i / 64 % 4096) * 3000U;
            phase[channel] += 21'000'000U + 9'000'000U * static_cast<quint32>(channel) + glide;
            const auto triangle =
                std::abs(static_cast<qint64>(static_cast<qint32>(phase[channel]))) - 0x40000000LL;
            noise = noise * 1664525U + 1013904223U;
            const qint64 hiss = static_cast<qint32>(noise) / 24;
            const qint64 click = i % 9000 < 12 ? 0x38000000LL : 0;
            samples << static_cast<qint32>(std::clamp(triangle + hiss + click, -0x80000000LL, 0x7FFFFFFFLL));
        }
    return samples;
}

template <typename Number>
QByteArray bytesOf(Number value)
{
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

// One and a half times full scale, so that the writer has something to clip.
double loud(qint32 sample)
{
    return static_cast<double>(sample) / 1431655765.0;
}

QByteArray dataOf(const QList<qint32>& samples, const Form& form)
{
    QByteArray data;
    for (const qint32 sample : samples)
        if (form.tag == 3)
            data += form.bits == 64 ? bytesOf(loud(sample)) : bytesOf(static_cast<float>(loud(sample)));
        else if (form.bits == 8)
            data += bytesOf(
                static_cast<quint8>(static_cast<quint32>(sample) >> 24 ^ (form.tag == 1 ? 0x80U : 0U)));
        else
            data += bytesOf(sample).last(form.bits / 8);
    return data;
}

QByteArray wavOf(const Form& form)
{
    const QByteArray data = dataOf(integerMusic(kFrames * form.rateHz / 44100, form.channels), form);
    const QByteArray format = kit::format(form.tag, form.channels, form.rateHz, form.bits);
    return kit::riff(kit::chunk("fmt ", format) + kit::chunk("data", data));
}

QByteArray sumOf(const QByteArray& content)
{
    return QCryptographicHash::hash(content, QCryptographicHash::Md5).toHex();
}

/// The writer's road in plain words: each channel through the library at once, one rounding with the dither
/// of the published recipe, one channel doubled last.
class PlainRoad
{
public:
    static QList<qint16> of(const QList<float>& samples, int rateHz, int channels)
    {
        const QList<float> wide = rateHz == 44100 ? samples : resampled(samples, rateHz, channels);
        return doubled(rounded(wide), channels);
    }
    static QList<qint16> doubled(const QList<qint16>& samples, int channels)
    {
        QList<qint16> out;
        for (const qint16 sample : samples)
            out += QList<qint16>(channels == 1 ? 2 : 1, sample);
        return out;
    }
    static QList<float> resampledAlone(const QList<float>& samples, int rateHz, qint64 whole)
    {
        QList<float> out(whole);
        const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        size_t given = 0;
        soxr_oneshot(rateHz, 44100, 1, samples.constData(), static_cast<size_t>(samples.size()), nullptr,
                     out.data(), static_cast<size_t>(whole), &given, &io, &quality, nullptr);
        return out;
    }

private:
    static QList<float> resampled(const QList<float>& samples, int rateHz, int channels)
    {
        const qint64 frames = samples.size() / channels;
        const qint64 whole = (frames * 44100 + rateHz / 2) / rateHz;
        QList<float> out(whole * channels);
        for (int channel = 0; channel < channels; ++channel) {
            QList<float> one;
            for (qint64 i = 0; i < frames; ++i)
                one << samples[i * channels + channel];
            const QList<float> other = resampledAlone(one, rateHz, whole);
            for (qint64 i = 0; i < whole; ++i)
                out[i * channels + channel] = other[i];
        }
        return out;
    }
    static QList<qint16> rounded(const QList<float>& samples)
    {
        QList<quint32> states(16);
        quint32 seed = 0x9E3779B9U;
        for (quint32& state : states)
            state = seed = seed * 1664525U + 1013904223U;
        QList<qint16> out;
        for (qsizetype i = 0; i < samples.size(); ++i) {
            quint32& x = states[i % 16];
            x ^= x << 13;
            x ^= x >> 17;
            x ^= x << 5;
            const double noise = (static_cast<double>(x & 0xFFFFU) + (x >> 16) - 65535.0) / 65536.0;
            const float sum = samples[i] * 32768.0F + static_cast<float>(noise);
            out << static_cast<qint16>(std::clamp(std::nearbyint(sum), -32768.0F, 32767.0F));
        }
        return out;
    }
};

// Whether the library for rates gives the very samples here that it gave where the sums were taken.
bool resamplesAsEver()
{
    QList<float> samples;
    for (const qint32 sample : integerMusic(48000, 1))
        samples << static_cast<float>(sample) * (1.0F / 2147483648.0F);
    const QList<float> out = PlainRoad::resampledAlone(samples, 48000, 44100);
    const QByteArray sum = sumOf({reinterpret_cast<const char*>(out.constData()), out.size() * 4});
    return sum == "e95ce7a9d24d03fef6de20d5a078f04e";
}

// The same of the encoder and the decoder of MP3.
bool decodesAsEver()
{
    const QString mp3 = kit::lameFile("long-48k", 90 * 48000 + 123, 2, 48000, {"-V", "2"});
    const QList<float> out = kit::libraryDecodeWide(mp3);
    const QByteArray sum = sumOf({reinterpret_cast<const char*>(out.constData()), out.size() * 4});
    return sum == "630f68dc9dadf4eae63c713caddbd9c9";
}

} // namespace

/// The bytes of converted files: what they were stays what they are, however the work is shared out.
class TestOutputBytes : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QByteArray converted(const QString& source, int channels = 2) const
    {
        return kit::convert(source, path("out.wav"), 44100, channels) == 0 ? kit::contentOf(path("out.wav"))
                                                                           : QByteArray();
    }
    static int rateOf(const QString& source)
    {
        const auto reader = makeAudioFile();
        return reader->open(source) < 0 ? 0 : reader->formatRate();
    }

private slots:
    void wav_ofEveryForm_keepsItsSum_data()
    {
        QTest::addColumn<Form>("form");
        QTest::addColumn<QByteArray>("sum");
        QTest::newRow("16 bits") << Form{} << QByteArray("680b9aec0a667970b4876da11b828f5b");
        QTest::newRow("16 bits, mono")
            << Form{.channels = 1} << QByteArray("48e9906f275dc8aa4c7c656f624bb105");
        QTest::newRow("8 bits") << Form{.bits = 8} << QByteArray("f4d1a79f58e6ea98eab397cbd286c1b0");
        QTest::newRow("8 bits, mono")
            << Form{.bits = 8, .channels = 1} << QByteArray("8d8f8585e3ad6682ed0a0004da2b0be4");
        QTest::newRow("A-law") << Form{.tag = 6, .bits = 8} << QByteArray("938e7e91d7926ddc9388baecd6f7b832");
        QTest::newRow("mu-law") << Form{.tag = 7, .bits = 8}
                                << QByteArray("cf6d156851d074d9fe0be38ea43c29be");
        QTest::newRow("24 bits") << Form{.bits = 24} << QByteArray("1a96ca84fc315cb855defeb7c25e11d0");
        QTest::newRow("24 bits, mono")
            << Form{.bits = 24, .channels = 1} << QByteArray("e6dc83b7606ce117c479524b57be995b");
        QTest::newRow("32 bits") << Form{.bits = 32} << QByteArray("dc79aaf2cb9a39d87492b748594f2542");
        QTest::newRow("floats") << Form{.tag = 3, .bits = 32}
                                << QByteArray("255fab179ca24a1ae21eb1aff46a771e");
        QTest::newRow("doubles") << Form{.tag = 3, .bits = 64}
                                 << QByteArray("255fab179ca24a1ae21eb1aff46a771e");
        QTest::newRow("quadraphonic")
            << Form{.channels = 4} << QByteArray("5446b8dc63aef079ab06be6666bdc80b");
        QTest::newRow("5.1 of 24 bits")
            << Form{.bits = 24, .channels = 6} << QByteArray("e002fae2d40ccd0f637f55ffe968d53c");
    }
    void wav_ofEveryForm_keepsItsSum()
    {
        QFETCH(Form, form);
        QFETCH(QByteArray, sum);
        kit::write(path("in.wav"), wavOf(form));
        QCOMPARE(sumOf(converted(path("in.wav"))), sum);
    }
    void wav_atAnotherRate_keepsItsSum_data()
    {
        QTest::addColumn<Form>("form");
        QTest::addColumn<QByteArray>("sum");
        QTest::newRow("48 kHz") << Form{.rateHz = 48000} << QByteArray("f683aad5b5384a135c691c1aac31e83a");
        QTest::newRow("48 kHz, mono")
            << Form{.channels = 1, .rateHz = 48000} << QByteArray("87d3c56201cddd754a388ce166789b94");
        QTest::newRow("48 kHz, 24 bits")
            << Form{.bits = 24, .rateHz = 48000} << QByteArray("fda18baf3cc3ab100ae409bc324967b6");
        QTest::newRow("48 kHz, floats")
            << Form{.tag = 3, .bits = 32, .rateHz = 48000} << QByteArray("550622d00df41445c1e6f69b994c5aff");
        QTest::newRow("48 kHz, 5.1") << Form{.bits = 24, .channels = 6, .rateHz = 48000}
                                     << QByteArray("f6f606b6c72655451de5df4ba353beff");
        QTest::newRow("88.2 kHz, 24 bits")
            << Form{.bits = 24, .rateHz = 88200} << QByteArray("5bd5279335fa54562d3d8a90ea8f0e3d");
        QTest::newRow("96 kHz, 24 bits")
            << Form{.bits = 24, .rateHz = 96000} << QByteArray("93009966a6ab3111a173239cba838fce");
        QTest::newRow("192 kHz, 32 bits")
            << Form{.bits = 32, .rateHz = 192000} << QByteArray("0528568ba95fae6c45880d25e6919930");
        QTest::newRow("32 kHz") << Form{.rateHz = 32000} << QByteArray("84b0d795962485b4c7e354aa64be219c");
        QTest::newRow("22.05 kHz, mono")
            << Form{.channels = 1, .rateHz = 22050} << QByteArray("86a596b96c5dac2fd833b26072a50986");
        QTest::newRow("8 kHz, mu-law") << Form{.tag = 7, .bits = 8, .channels = 1, .rateHz = 8000}
                                       << QByteArray("e10b3eb24583d19c5085984778f7bbda");
    }
    void wav_atAnotherRate_keepsItsSum()
    {
        QFETCH(Form, form);
        QFETCH(QByteArray, sum);
        static const bool isTheSame = resamplesAsEver();
        if (!isTheSame)
            QSKIP("the library for rates gives other samples here than where the sums were taken");
        kit::write(path("in.wav"), wavOf(form));
        QCOMPARE(sumOf(converted(path("in.wav"))), sum);
    }
    void wav_toOneChannel_keepsItsSum()
    {
        kit::write(path("in.wav"), wavOf({.bits = 24}));
        QCOMPARE(sumOf(converted(path("in.wav"), 1)), QByteArray("6f2c9ddd5fbf5c66945effc1aea826a1"));
    }
    void sixteenBitBlocks_ofAFinerSource_keepTheirSum()
    {
        kit::write(path("in.wav"), wavOf({.bits = 24}));
        const auto reader = makeAudioFile();
        reader->setSixteenBitBlocks(true);
        QCOMPARE(reader->open(path("in.wav")), 0);
        QCOMPARE(sumOf(kit::bytes16(kit::readNarrow(*reader))),
                 QByteArray("490f98e4ab9277ec961d7dc85c162707"));
    }
    void wav_ofEveryRate_goesThePlainRoad_data()
    {
        QTest::addColumn<Form>("form");
        for (const int rateHz : {8000, 44100, 48000, 96000})
            for (const int channels : {1, 2})
                for (const int bits : {16, 24})
                    QTest::addRow("%d Hz, %d channels, %d bits", rateHz, channels, bits)
                        << Form{.bits = bits, .channels = channels, .rateHz = rateHz};
    }
    void wav_ofEveryRate_goesThePlainRoad()
    {
        QFETCH(Form, form);
        kit::write(path("in.wav"), wavOf(form));
        QList<float> samples;
        for (const qint32 sample : integerMusic(kFrames * form.rateHz / 44100, form.channels)) {
            const qint32 kept = sample >> (32 - form.bits) << (32 - form.bits);
            samples << static_cast<float>(kept) * (1.0F / 2147483648.0F);
        }
        QList<qint16> expected = PlainRoad::of(samples, form.rateHz, form.channels);
        if (form.rateHz == 44100 && form.bits == 16) { // nothing to round: nothing is added
            for (qsizetype i = 0; i < samples.size(); ++i)
                expected[i] = static_cast<qint16>(samples[i] * 32768.0F);
            expected = PlainRoad::doubled(expected.first(samples.size()), form.channels);
        }
        QVERIFY(converted(path("in.wav")).mid(44) == kit::bytes16(expected));
    }
    void mp3_ofEveryKind_keepsItsSum_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("channels");
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QByteArray>("sum");
        const auto row = [](const char* name, int seconds, int rateHz, int channels,
                            const QStringList& options, const char* source, const char* sum) {
            QTest::newRow(name) << seconds << rateHz << channels << options << QByteArray(source)
                                << QByteArray(sum);
        };
        row("cbr128", 90, 44100, 2, {"-b", "128"}, "93215db5cf905cc024f977af2dc18731",
            "aad2d6586eca423f37de4b9ae19f0f3f");
        row("cbr320", 90, 44100, 2, {"-b", "320", "-m", "s"}, "4886b012f2683f44dedd267538606674",
            "c72b3283461fd2b3590d21aef5c11683");
        row("vbr", 90, 44100, 2, {"-V", "5"}, "7987747b928eb49f7efad3c16afa8636",
            "2751773ca3bf81223a8133367eeac6f2");
        row("mono", 150, 44100, 1, {"-b", "48"}, "c2289ef10211c3fabfdd6dcbd8b3176a",
            "7c953e5759b6fadcae5026df09f7b4d6");
        row("48k", 90, 48000, 2, {"-V", "2"}, "26ea385343d588df4c831528e47a9ca7",
            "57e11e118b491728b94136fe09412d83");
        row("32k-low", 90, 32000, 2, {"-b", "32", "--resample", "32"}, "ce96a768df7cc7e6d1ee6943a56ad175",
            "7af3a1673c81801b32b97d57d993ddb2");
        row("mpeg2-24", 90, 24000, 2, {"-V", "4"}, "aa1ca466977a58a9a4b41d507085a7df",
            "65b6b9719248a8a7d6d884e6923bb00e");
        row("mpeg25-8", 150, 8000, 1, {"-b", "8"}, "80910b8fac7e3ccf92bd2697ff3f57d4",
            "7c92d905942acd0d777d95813b9a221a");
    }
    void mp3_ofEveryKind_keepsItsSum()
    {
        QFETCH(int, seconds);
        QFETCH(int, rateHz);
        QFETCH(int, channels);
        QFETCH(QStringList, options);
        QFETCH(QByteArray, source);
        QFETCH(QByteArray, sum);
        const QString mp3 = kit::lameFile(QString("long-") + QTest::currentDataTag(),
                                          seconds * qint64{rateHz} + 123, channels, rateHz, options);
        QVERIFY(!mp3.isEmpty());
        const QByteArray out = converted(mp3);
        const int made = rateOf(mp3); // the encoder may have chosen a lower one
        const QList<qint16> expected = made == 44100
                                           ? PlainRoad::doubled(kit::libraryDecode(mp3), channels)
                                           : PlainRoad::of(kit::libraryDecodeWide(mp3), made, channels);
        QVERIFY(out.mid(44) == kit::bytes16(expected));
        static const bool isTheSame = decodesAsEver();
        if (!isTheSame || sumOf(kit::contentOf(mp3)) != source)
            QSKIP("encoder or decoder give other bytes here than where the sums were taken");
        QCOMPARE(sumOf(out), sum);
    }
};

QTEST_GUILESS_MAIN(TestOutputBytes)
#include "tst_outputbytes.moc"
