#include "answers/MemoryFile.h"
#include "answers/Sweep.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/convert/Ditherer.h"
#include "engines/audio/convert/RateConverter.h"
#include "engines/audio/makers.h"
#include "engines/audio/ReadAhead.h"
#include "engines/audio/sources.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

template <typename Sample>
std::span<const Sample> spanOf(const QList<Sample>& samples)
{
    return {samples.constData(), static_cast<size_t>(samples.size())};
}

template <typename Sample>
Answer numbersOf(const QList<Sample>& samples)
{
    QStringList words;
    for (const Sample sample : samples)
        words << QString::number(sample);
    return {words.join(' ')};
}

/// A slope through all of a full scale and a little beyond it.
QList<float> slope(qsizetype count)
{
    QList<float> samples;
    for (qsizetype i = 0; i < count; ++i)
        samples << static_cast<float>(i * 1103 % 2417) / 1200.0F - 1.007F;
    return samples;
}

/// The rounding of @p samples in pieces of these sizes, again and again.
QList<qint16> roundedInPieces(const QList<float>& samples, const QList<qsizetype>& sizes)
{
    Ditherer ditherer;
    QList<qint16> all;
    for (qsizetype at = 0, piece = 0; at < samples.size(); ++piece) {
        const qsizetype size = std::min(sizes[piece % sizes.size()], samples.size() - at);
        all += ditherer.round({samples.constData() + at, static_cast<size_t>(size)});
        at += size;
    }
    return all;
}

/// All that a converter gives of @p frames frames, given in pieces.
QList<float> convertedInPieces(int fromHz, int toHz, int channels, qint64 frames, qint64 piece)
{
    RateConverter converter(fromHz, toHz, channels);
    const QList<float> samples = kit::music(frames, channels, fromHz);
    QList<float> all;
    for (qint64 at = 0; at < frames; at += piece) {
        const qint64 size = std::min(piece, frames - at);
        all += converter.convert({samples.constData() + at * channels, static_cast<size_t>(size * channels)});
    }
    return converter.failed() ? QList<float>() : all + converter.finish();
}

QString sameWords(bool same)
{
    return same ? "the same" : "OTHERS";
}

/// A file of so many frames, each channel of each frame another sample.
QByteArray countingWav(int frames, int channels)
{
    QList<qint16> samples;
    for (int i = 0; i < frames * channels; ++i)
        samples << static_cast<qint16>(100 + i);
    return kit::wav16(samples, channels, 44100);
}

QString countOf(const AudioBlock& block)
{
    if (block.isEmpty())
        return "nothing";
    const QString first = block.narrow() ? QString::number(block.narrow()->first()) : QString("floats");
    return QString("%1 from %2").arg(block.sampleCount()).arg(first);
}

/// A source that delivers so many frames of one channel, which count, in blocks of one size whatever is asked
/// for.
class CountingSource final : public SampleSource
{
public:
    CountingSource(qint64 frames, qint64 block) : m_frames(frames), m_block(block) {}
    int rateHz() const override { return 44100; }
    int channels() const override { return 1; }
    qint64 length() const override { return m_frames; }
    AudioBlock read(qint64 asked) override
    {
        QList<qint16> samples;
        const qint64 most = m_block > 0 ? m_block : asked;
        while (samples.size() < most && m_next < m_frames)
            samples << static_cast<qint16>(m_next++ % 30'000);
        return samples.isEmpty() ? AudioBlock() : AudioBlock(samples);
    }
    void seek(qint64 frame) override { m_next = frame; }
    bool failed() const override { return false; }

private:
    qint64 m_frames;
    qint64 m_block;
    qint64 m_next = 0;
};

} // namespace

/// What becomes of samples on their way from one file into another: rounding, rates, blocks, channels,
/// recorded.
class TestConvertAnswers : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

private slots:
    void rounding()
    {
        Book book("engines/audio/answers/rounding");
        const QList<float> samples = slope(9'000);
        const QList<qint16> whole = roundedInPieces(samples, {samples.size()});
        book.chapter("A slope");
        book.tell("first", numbersOf(whole.first(64)));
        book.tell("around the end of the first noise", numbersOf(whole.mid(4'080, 40)));
        book.tell("last", numbersOf(whole.last(40)));
        book.chapter("In pieces");
        for (const QList<qsizetype>& sizes : QList<QList<qsizetype>>{
                 {1}, {7}, {8}, {15}, {16}, {17}, {1, 31}, {4'095}, {4'096}, {4'097}, {33, 5, 4'000}}) {
            QStringList words;
            for (const qsizetype size : sizes)
                words << QString::number(size);
            book.tell(words.join(" and "), {sameWords(roundedInPieces(samples, sizes) == whole)});
        }
        book.chapter("So many samples");
        for (int count = 0; count < 40; ++count)
            book.tell(QString::number(count),
                      {sameWords(roundedInPieces(samples.first(count), {count}) == whole.first(count))});
        book.chapter("Beyond full scale, with noise of its own");
        book.tell("all", numbersOf(Ditherer().round(spanOf(QList<float>{
                             1, 1.01F, 2, 1e9F, -1, -1.01F, -2, -1e9F, 0, 0, 0, 0.99997F, -0.99997F}))));
        book.chapter("16 bits as floats");
        book.tell("all", numbersOf(widened(spanOf(QList<qint16>{0, 1, -1, 16384, 32767, -32768}))));
        ZIB_COMPARE_ANSWERS(book);
    }
    /// The samples are the library's; how many come, and that it does not matter how they are given, is ours.
    void rates()
    {
        Book book("engines/audio/answers/rates");
        for (const auto& [from, to] : QList<std::pair<int, int>>{
                 {48000, 44100}, {22050, 44100}, {96000, 44100}, {8000, 44100}, {44100, 48000}}) {
            book.chapter(QString("From %1 to %2, so many frames").arg(from).arg(to));
            for (const qint64 frames : {0, 1, 2, 3, 100, 2'047, 2'048, 2'049, 6'000, 20'001}) {
                const QList<float> whole =
                    convertedInPieces(from, to, 1, frames, std::max<qint64>(frames, 1));
                Answer words{QString("%1 frames").arg(whole.size())};
                for (const qint64 piece : {700, 2'048, 2'049, 5'000})
                    words << QString("in pieces of %1: %2")
                                 .arg(piece)
                                 .arg(sameWords(convertedInPieces(from, to, 1, frames, piece) == whole));
                const QList<float> both = convertedInPieces(from, to, 2, frames, 3'000);
                QList<float> left;
                for (qsizetype i = 0; i + 1 < both.size(); i += 2)
                    left << both[i];
                words << QString("two channels: %1").arg(both.size());
                const QList<float> stereo = kit::music(frames, 2, from);
                RateConverter alone(from, to, 1);
                QList<float> first;
                for (qsizetype i = 0; i < stereo.size(); i += 2)
                    first << stereo[i];
                QList<float> expected = alone.convert(spanOf(first));
                expected += alone.finish();
                words << QString("the left one by itself: %1").arg(sameWords(left == expected));
                book.tell(QString::number(frames), {words.join(", ")});
            }
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void blocks()
    {
        Book book("engines/audio/answers/blocks");
        for (const int channels : {1, 2, 6}) {
            const answers::MemoryFile memory(countingWav(50, channels));
            const auto reader = makeAudioFile();
            book.chapter(QString("A file of 50 frames and %1 channels").arg(channels));
            const int opened = reader->open(memory.path());
            book.tell("opened", {QString("%1: %2 Hz, %3 channels, %4 frames")
                                     .arg(opened)
                                     .arg(reader->formatRate())
                                     .arg(reader->formatChannels())
                                     .arg(reader->length())});
            for (const int samples : {-1, 0, 1, 2, 3, 4, 5, 20, 60, 200})
                book.tell(QString("%1 samples").arg(samples), {countOf(reader->readBlock(samples))});
            for (const int place : {-5, 0, 1, 49, 50, 51, 1'000}) {
                const qint64 reached = reader->seek(place);
                book.tell(QString("after a seek to %1").arg(place),
                          {QString("%1: %2").arg(reached).arg(countOf(reader->readBlock(10)))});
            }
            reader->setSixteenBitBlocks(true);
            reader->seek(3);
            book.tell("16 bits", {countOf(reader->readBlock(4))});
        }
        tellReadingAhead(book);
        ZIB_COMPARE_ANSWERS(book);
    }
    void files()
    {
        Book book("engines/audio/answers/written");
        for (const int from : {1, 2})
            for (const int to : {1, 2})
                tellWriting(book, from, to);
        tellFormats(book);
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    /// Blocks of one size, asked for in another.
    static void tellReadingAhead(Book& book)
    {
        book.chapter("200000 frames, read ahead");
        for (const qint64 block : {0, 1'000, 30'000, 95'999})
            for (const qint64 asked :
                 {1, 999, 1'000, 1'001, 1'500, 16'383, 16'385, 20'000, 40'001, 95'999, 96'001, 250'000}) {
                ReadAhead ahead(std::make_unique<CountingSource>(200'000, block));
                QStringList sizes;
                qint64 at = 0;
                bool same = true;
                for (AudioBlock got = ahead.read(asked); !got.isEmpty(); got = ahead.read(asked)) {
                    same = same && got.narrow()->first() == at % 30'000 &&
                           got.narrow()->last() == (at + got.sampleCount() - 1) % 30'000;
                    at += got.sampleCount();
                    if (sizes.size() < 6)
                        sizes << QString::number(got.sampleCount());
                }
                book.tell(QString("%1 of blocks of %2").arg(asked).arg(block),
                          {QString("%1 frames, %2: %3 ...").arg(at).arg(sameWords(same), sizes.join(' '))});
            }
    }
    QByteArray written(int fromChannels, int toChannels, const QList<AudioBlock>& blocks,
                       int fromHz = 44100) const
    {
        const QString path = m_folder.filePath("out.wav");
        const auto writer = makeAudioFile();
        writer->setOutputFormat(44100, toChannels, 16);
        if (writer->create(path) != 0)
            return {};
        writer->setInputFormat(fromHz, fromChannels);
        for (const AudioBlock& block : blocks)
            writer->writeBlock(block);
        writer->close();
        return kit::contentOf(path);
    }
    void tellWriting(Book& book, int from, int to) const
    {
        const QList<qint16> narrow{1, 2, 300, -4, 32767, -32768, 5, 7};
        const QList<float> wide{0, 0.25F, -0.25F, 1, -1, 0.5F, 0.125F, 0};
        book.chapter(QString("%1 channels into %2").arg(from).arg(to));
        const auto tell = [&](const char* name, const QList<AudioBlock>& blocks) {
            book.tell(name, {QString::fromLatin1(written(from, to, blocks).toHex())});
        };
        tell("nothing", {});
        tell("16 bits", {AudioBlock(narrow)});
        tell("floats", {AudioBlock(wide)});
        tell("both", {AudioBlock(narrow.first(2)), AudioBlock(wide.first(2)), AudioBlock(),
                      AudioBlock(narrow.last(2))});
        const QByteArray other = written(from, to, {AudioBlock(narrow)}, 22050);
        book.tell("half the rate", {QString("%1 bytes, begins %2")
                                        .arg(other.size())
                                        .arg(QString::fromLatin1(other.first(44).toHex()))});
    }
    void tellFormats(Book& book) const
    {
        book.chapter("Formats to write: rate, channels and bits");
        for (const int rate : {0, 1, 44100, 768'000, 768'001})
            for (const int channels : {0, 1, 2, 3})
                for (const int bits : {8, 16, 24}) {
                    const auto writer = makeAudioFile();
                    writer->setOutputFormat(rate, channels, bits);
                    book.tell(QString("%1, %2, %3").arg(rate).arg(channels).arg(bits),
                              {QString::number(writer->create(m_folder.filePath("format.wav")))});
                    writer->discard();
                }
        book.chapter("Formats of what is given");
        for (const int rate : {0, 1, 768'000, 768'001})
            for (const int channels : {0, 1, 2, 3}) {
                const auto writer = makeAudioFile();
                writer->setOutputFormat(44100, 2, 16);
                writer->create(m_folder.filePath("format.wav"));
                writer->setInputFormat(rate, channels);
                writer->writeBlock(AudioBlock(QList<qint16>{1, 2}));
                writer->writeBlock(AudioBlock(QList<qint16>{1, 2}));
                book.tell(QString("%1, %2").arg(rate).arg(channels), {QString::number(writer->status())});
                writer->discard();
            }
    }
};

QTEST_GUILESS_MAIN(TestConvertAnswers)
#include "tst_convertanswers.moc"
