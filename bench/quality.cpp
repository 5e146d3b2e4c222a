#include "quality.h"

#include "engines/audio/convert/RateConverter.h"
#include "engines/audio/makers.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <vector>

namespace zib::bench {

namespace {

constexpr int kTarget = 44100;
constexpr size_t kPoints = 1 << 17;
constexpr double kPi = std::numbers::pi;

using Spectrum = std::vector<std::complex<double>>;

// A plain radix-2 transform, in place; the size is a power of two.
void transform(Spectrum& x)
{
    for (size_t i = 1, j = 0; i < x.size(); ++i) {
        size_t bit = x.size() >> 1;
        for (; (j & bit) != 0; bit >>= 1)
            j ^= bit;
        j ^= bit;
        if (i < j)
            std::swap(x[i], x[j]);
    }
    for (size_t half = 1; half < x.size(); half *= 2) {
        for (size_t k = 0; k < half; ++k) {
            const auto turn = std::polar(1.0, -kPi * static_cast<double>(k) / static_cast<double>(half));
            for (size_t i = k; i < x.size(); i += 2 * half) {
                const auto odd = x[i + half] * turn;
                x[i + half] = x[i] - odd;
                x[i] += odd;
            }
        }
    }
}

// A seven-term Blackman-Harris window: side lobes below -160 dB.
double window(size_t i)
{
    constexpr double a[] = {0.27105140069342, 0.43329793923448, 0.21812299954311, 0.06592544638803,
                            0.01081174209837, 0.00077658482522, 0.00001388721735};
    double value = 0;
    for (int k = 0; k < 7; ++k)
        value += (k % 2 == 0 ? a[k] : -a[k]) * std::cos(2 * kPi * k * static_cast<double>(i) / kPoints);
    return value;
}

constexpr double kCoherentGain = 0.27105140069342;
constexpr int kLobe = 9; // bins on either side that belong to a tone

struct Measured
{
    double levelDb;   // of the tone, full-scale sine = 0
    double residueDb; // everything else together, RMS below a full-scale sine
    double spurDb;    // the strongest single other line
};

// @p hz may be a tone that must not be there; then everything counts as residue.
Measured analyse(const std::vector<double>& samples, double hz, bool isWanted)
{
    Spectrum bins(kPoints);
    const size_t start = (samples.size() - kPoints) / 2;
    for (size_t i = 0; i < kPoints; ++i)
        bins[i] = samples[start + i] * window(i);
    transform(bins);
    const auto centre = static_cast<long>(std::lround(hz * kPoints / kTarget));
    const auto amplitude = [&](size_t bin) { return std::abs(bins[bin]) * 2 / (kPoints * kCoherentGain); };
    double tone = 0;
    double spur = 1e-12;
    double power = 1e-30;
    double noiseGain = 0;
    for (size_t i = 0; i < kPoints; ++i)
        noiseGain += window(i) * window(i) / kPoints;
    for (size_t bin = kLobe; bin < kPoints / 2 - kLobe; ++bin) {
        if (isWanted && std::labs(static_cast<long>(bin) - centre) <= kLobe) {
            tone = std::max(tone, amplitude(bin));
            continue;
        }
        spur = std::max(spur, amplitude(bin));
        power += 2 * std::norm(bins[bin]) / (static_cast<double>(kPoints) * kPoints * noiseGain);
    }
    const auto db = [](double value) { return 20 * std::log10(std::max(value, 1e-12)); };
    return {db(tone), db(std::sqrt(2 * power)), db(spur)};
}

template <typename Number>
void put(QByteArray& to, Number value)
{
    to.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// A mono 32-bit float WAV file.
void writeTone(const QString& path, int rateHz, double hz, double level)
{
    const auto frames = static_cast<size_t>(static_cast<double>(kPoints) * 1.25 * rateHz / kTarget);
    QByteArray content = "RIFF";
    put(content, static_cast<quint32>(36 + frames * 4));
    content += "WAVEfmt ";
    put(content, quint32{16});
    put(content, quint16{3});
    put(content, quint16{1});
    put(content, static_cast<quint32>(rateHz));
    put(content, static_cast<quint32>(rateHz * 4));
    put(content, quint16{4});
    put(content, quint16{32});
    content += "data";
    put(content, static_cast<quint32>(frames * 4));
    for (size_t i = 0; i < frames; ++i)
        put(content, static_cast<float>(level * std::sin(2 * kPi * hz * static_cast<double>(i) / rateHz)));
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

// Through reader and writer of the program: what ends up in the file, left channel.
std::vector<double> converted(const QString& folder, int rateHz, double hz, double level)
{
    const QString source = folder + QStringLiteral("/tone.wav");
    const QString target = folder + QStringLiteral("/out.wav");
    writeTone(source, rateHz, hz, level);
    const auto reader = makeAudioFile();
    const auto writer = makeAudioFile();
    writer->setOutputFormat(kTarget, 2, 16);
    reader->open(source);
    writer->create(target);
    writer->setInputFormat(reader->formatRate(), reader->formatChannels());
    for (auto block = reader->readBlock(rateHz); !block.isEmpty(); block = reader->readBlock(rateHz))
        writer->writeBlock(block);
    writer->close();
    QFile file(target);
    std::vector<double> samples;
    if (!file.open(QIODevice::ReadOnly))
        return samples;
    const QByteArray data = file.readAll().mid(44);
    for (qsizetype at = 0; at + 4 <= data.size(); at += 4) {
        qint16 sample = 0;
        std::memcpy(&sample, data.constData() + at, sizeof sample);
        samples.push_back(sample / 32768.0);
    }
    return samples;
}

// The converter alone, before rounding: lines far below the dither are only seen here.
std::vector<double> convertedWide(int rateHz, double hz, double level)
{
    RateConverter converter(rateHz, kTarget, 1);
    const auto frames = static_cast<qsizetype>(static_cast<double>(kPoints) * 1.25 * rateHz / kTarget);
    QList<float> tone(frames);
    for (qsizetype i = 0; i < frames; ++i)
        tone[i] = static_cast<float>(level * std::sin(2 * kPi * hz * static_cast<double>(i) / rateHz));
    QList<float> out = converter.convert({tone.constData(), static_cast<size_t>(tone.size())});
    out += converter.finish();
    return {out.cbegin(), out.cend()};
}

bool report(const char* what, int rateHz, double value, double limit, const char* unit)
{
    const bool good = value <= limit;
    std::printf("| %-46s | %6d | %8.2f %-2s | %8.2f | %s |\n", what, rateHz, value, unit, limit,
                good ? "yes" : "NO");
    return good;
}

bool measureRate(const QString& folder, int rateHz)
{
    constexpr double kNearlyFull = 0.9999;
    bool good = true;
    const Measured file = analyse(converted(folder, rateHz, 997, kNearlyFull), 997, true);
    good &= report("997 Hz full scale, rest of the 16-bit file (RMS)", rateHz, file.residueDb, -92.0, "dB");
    good &= report("997 Hz full scale, strongest line of the file", rateHz, file.spurDb, -110.0, "dB");
    const Measured wide = analyse(convertedWide(rateHz, 997, kNearlyFull), 997, true);
    good &= report("997 Hz full scale, strongest line before rounding", rateHz, wide.spurDb, -110.0, "dB");
    if (rateHz > 2 * 20'000) {
        const Measured high = analyse(convertedWide(rateHz, 20'000, 0.5), 20'000, true);
        good &= report("20 kHz, error of level", rateHz, std::abs(high.levelDb + 6.0206), 0.05, "dB");
    }
    double image = -200;
    for (double hz = 20'500; hz < rateHz / 2.0; hz += 487) {
        const bool isKept = hz < kTarget / 2.0;
        image = std::max(image, analyse(convertedWide(rateHz, hz, 0.9), hz, isKept).spurDb);
    }
    if (image > -200)
        good &= report("tones above 20.5 kHz, strongest image", rateHz, image, -110.0, "dB");
    return good;
}

} // namespace

bool measureQuality()
{
    const QTemporaryDir folder;
    std::puts("| measured at 44.1 kHz                           | source | value       | at most  | kept |");
    std::puts("|---|---|---|---|---|");
    bool good = true;
    for (const int rate : {44100, 48000, 32000, 22050, 88200, 96000, 192000})
        good = measureRate(folder.path(), rate) && good;
    return good;
}

} // namespace zib::bench
