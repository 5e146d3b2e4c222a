#include "answers/MemoryFile.h"
#include "answers/Sweep.h"
#include "answers/WavSweep.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/convert/SpeakerMix.h"
#include "engines/audio/sources.h"
#include "engines/audio/wav/WavReader.h"
#include "engines/audio/wav/wavsamples.h"

#include <QTest>

#include <limits>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

using Coding = WavHeader::Coding;

QString nameOf(Coding coding)
{
    switch (coding) {
    case Coding::Integer:
        return "integers";
    case Coding::Float:
        return "floats";
    case Coding::ALaw:
        return "A-law";
    case Coding::MuLaw:
        return "mu-law";
    case Coding::Mpeg3:
        return "MP3";
    default:
        return "another";
    }
}

Answer headerAnswer(const QByteArray& content)
{
    const answers::MemoryFile memory(content);
    const auto header = parseWav(*SourceFile::open(memory.path()));
    if (!header)
        return {"no WAVE file"};
    return {QString("coding: %1 of %2 bits in %3 bytes")
                .arg(nameOf(header->coding))
                .arg(header->bits)
                .arg(header->bytesPerSample),
            QString("format: %1 Hz, %2 channels, speakers %3")
                .arg(header->rateHz)
                .arg(header->channels)
                .arg(header->speakers),
            QString("data: %1 at %2, %3 missing, %4 frames")
                .arg(header->dataBytes)
                .arg(header->dataOffset)
                .arg(header->missingBytes)
                .arg(header->frames()),
            QString("title: '%1'").arg(QString::fromLatin1(header->title)),
            QString("artist: '%1'").arg(QString::fromLatin1(header->artist)),
            QString("tag: %1 at %2").arg(header->id3Bytes).arg(header->id3Offset)};
}

template <typename Sample>
Answer numbersOf(const QList<Sample>& samples)
{
    QStringList words;
    for (const Sample sample : samples)
        words << QString::number(sample);
    return {words.join(' ')};
}

Answer numbersOf(const AudioBlock& block)
{
    if (const auto* narrow = block.narrow())
        return numbersOf(*narrow);
    return block.isEmpty() ? Answer{"nothing"} : numbersOf(*block.wide());
}

std::span<const uchar> spanOf(const QByteArray& raw)
{
    return {reinterpret_cast<const uchar*>(raw.constData()), size_t(raw.size())};
}

/// Bytes that differ from each other and do not repeat soon.
QByteArray pattern(qsizetype bytes)
{
    QByteArray all;
    for (quint32 state = 1; all.size() < bytes; state = state * 1664525U + 1013904223U)
        all += static_cast<char>(state >> 24);
    return all;
}

template <typename Number>
QByteArray rawOf(const QList<Number>& numbers)
{
    return {reinterpret_cast<const char*>(numbers.constData()),
            numbers.size() * static_cast<qsizetype>(sizeof(Number))};
}

WavHeader headerFor(Coding coding, int bytesPerSample, int channels = 1)
{
    WavHeader header;
    header.coding = coding;
    header.bytesPerSample = bytesPerSample;
    header.channels = channels;
    return header;
}

} // namespace

/// What is made of WAVE files: of their headers, and of their samples, recorded.
class TestWavAnswers : public QObject
{
    Q_OBJECT
private slots:
    void headers()
    {
        Book book("engines/audio/answers/wavheader");
        answers::everyWav(book, headerAnswer);
        answers::everyKept(book, "engines/audio/wav", headerAnswer);
        answers::everySeed(book, "wav", headerAnswer);
        ZIB_COMPARE_ANSWERS(book);
    }
    void samples()
    {
        Book book("engines/audio/answers/wavsamples");
        QByteArray all;
        for (int byte = 0; byte < 256; ++byte)
            all += static_cast<char>(byte);
        book.chapter("All bytes");
        for (const Coding coding : {Coding::Integer, Coding::ALaw, Coding::MuLaw}) {
            book.tell(nameOf(coding), numbersOf(narrowSamples(headerFor(coding, 1), spanOf(all))));
            book.tell(nameOf(coding) + " as floats",
                      numbersOf(wideSamples(headerFor(coding, 1), spanOf(all.last(20)))));
        }
        for (const int bytes : {2, 3, 4}) {
            book.chapter(QString("Integers of %1 bytes, so many of them").arg(bytes));
            for (int count = 0; count < 14; ++count) {
                const QByteArray raw = pattern(count * bytes + 1);
                const WavHeader header = headerFor(Coding::Integer, bytes);
                book.tell(QString::number(count), numbersOf(wideSamples(header, spanOf(raw))));
                if (bytes == 2)
                    book.tell(QString("%1 narrow").arg(count), numbersOf(narrowSamples(header, spanOf(raw))));
            }
        }
        const QList<double> limits{0,
                                   0.5,
                                   -1,
                                   63.5,
                                   64,
                                   64.5,
                                   -64,
                                   -64.5,
                                   std::numeric_limits<double>::infinity(),
                                   -std::numeric_limits<double>::infinity(),
                                   std::numeric_limits<double>::quiet_NaN(),
                                   1e300};
        book.chapter("Floating numbers");
        book.tell("doubles", numbersOf(wideSamples(headerFor(Coding::Float, 8), spanOf(rawOf(limits)))));
        QList<float> narrow;
        for (const double limit : limits.first(11))
            narrow << static_cast<float>(limit);
        book.tell("floats", numbersOf(wideSamples(headerFor(Coding::Float, 4), spanOf(rawOf(narrow)))));
        ZIB_COMPARE_ANSWERS(book);
    }
    void speakers()
    {
        Book book("engines/audio/answers/speakers");
        const auto shares = [](int channels, quint32 mask) {
            std::vector<float> left;
            std::vector<float> right;
            speakerShares(channels, mask, left, right);
            return Answer{"left: " + numbersOf(QList<float>(left.begin(), left.end())).first(),
                          "right: " + numbersOf(QList<float>(right.begin(), right.end())).first()};
        };
        book.chapter("Channels without a mask");
        for (int channels = 3; channels < 22; ++channels)
            book.tell(QString::number(channels), shares(channels, 0));
        book.chapter("Three channels, front left and two others by their bits");
        for (int second = 1; second < 20; ++second)
            book.tell(QString::number(second), shares(3, 1U | 1U << second | 1U << (second + 1)));
        book.chapter("Masks of more or fewer speakers than channels");
        for (const quint32 mask : {0x1U, 0x3U, 0x7U, 0xFU, 0xFFFFFFFFU})
            book.tell(QString::number(mask), shares(3, mask));
        ZIB_COMPARE_ANSWERS(book);
    }
    void readers()
    {
        Book book("engines/audio/answers/wavreader");
        for (const int channels : {1, 2, 3, 4, 6})
            for (const auto& [tag, bits] :
                 QList<std::pair<int, int>>{{1, 8}, {1, 16}, {1, 24}, {1, 32}, {3, 32}, {6, 8}})
                tellReading(book, channels, tag, bits);
        tellBlocks(book);
        tellLoss(book);
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static std::unique_ptr<SampleSource> opened(const answers::MemoryFile& memory)
    {
        return openSource(*recognise(SourceFile::open(memory.path())), SampleKind::Narrow, 1);
    }
    static void tellReading(Book& book, int channels, int tag, int bits)
    {
        const int frameBytes = channels * bits / 8;
        QByteArray raw = pattern(frameBytes * 9 + 1);
        if (tag == 3)
            for (qsizetype at = 3; at < raw.size(); at += 4)
                raw[at] = '\x3E'; // no number is far from one
        const answers::MemoryFile memory(
            kit::riff(kit::chunk("fmt ", kit::format(tag, channels, 44100, bits)) + kit::chunk("data", raw)));
        const auto source = opened(memory);
        book.chapter(QString("%1 channels, tag %2, %3 bits").arg(channels).arg(tag).arg(bits));
        book.tell("all", {QString("%1 frames of %2 channels").arg(source->length()).arg(source->channels())});
        for (const int frames : {4, 5, 1}) {
            const AudioBlock block = source->read(frames);
            book.tell(QString("%1 frames").arg(frames), numbersOf(block));
        }
        for (const int place : {0, 1, 8, 9}) {
            source->seek(place);
            book.tell(QString("from %1").arg(place), numbersOf(source->read(1)));
        }
    }
    /// However much is asked for, a block is no larger than two MiB of the file.
    static void tellBlocks(Book& book)
    {
        book.chapter("Large blocks of a large file");
        for (const int channels : {1, 2, 3, 256}) {
            const qint64 frames = 5 * 1024 * 1024 / (2 * channels) + 7;
            const answers::MemoryFile memory(
                kit::riff(kit::chunk("fmt ", kit::format(1, channels, 44100, 16)) +
                          kit::chunk("data", QByteArray(frames * channels * 2, '\1'))));
            const auto source = opened(memory);
            QStringList sizes;
            for (AudioBlock block = source->read(10'000'000); !block.isEmpty();
                 block = source->read(10'000'000))
                sizes << QString::number(block.sampleCount() / source->channels());
            book.tell(QString("%1 channels").arg(channels), sizes);
        }
    }
    /// What a header tells beyond the end of the file is lost.
    static void tellLoss(Book& book)
    {
        const QByteArray content =
            kit::riff(kit::chunk("fmt ", kit::format(1, 2, 44100, 16)) + kit::chunk("data", pattern(16)));
        book.chapter("Loss of a file whose data was told to have so many bytes");
        for (const int told : {0, 15, 16, 17, 19, 20, 21, 23, 24, 4000}) {
            QByteArray cut = content;
            cut[40] = static_cast<char>(told);
            cut[41] = static_cast<char>(told >> 8);
            const answers::MemoryFile memory(cut);
            const AudioLoss loss = recognise(SourceFile::open(memory.path()))->loss();
            book.tell(QString::number(told), {QString("%1 from %2").arg(loss.frames).arg(loss.first)});
        }
    }
};

QTEST_APPLESS_MAIN(TestWavAnswers)
#include "tst_wavanswers.moc"
