#include "answers/Sweep.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/mp3/Mp3Reader.h"
#include "engines/audio/mp3/ParallelMp3Reader.h"
#include "engines/audio/sources.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstring>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

/// The samples of a block as bytes, whatever their kind.
QByteArray bytesOf(const AudioBlock& block)
{
    if (const auto* narrow = block.narrow())
        return {reinterpret_cast<const char*>(narrow->constData()), narrow->size() * qsizetype{2}};
    if (const auto* wide = block.wide())
        return {reinterpret_cast<const char*>(wide->constData()), wide->size() * qsizetype{4}};
    return {};
}

/// Everything from here to the end in blocks of @p frames.  @param[out] sizes how long they were.
QByteArray rest(SampleSource& source, qint64 frames, QStringList& sizes)
{
    QByteArray all;
    QList<std::pair<qint64, int>> runs;
    for (AudioBlock block = source.read(frames); !block.isEmpty(); block = source.read(frames)) {
        const qint64 size = block.sampleCount() / source.channels();
        if (runs.isEmpty() || runs.last().first != size)
            runs.append({size, 0});
        ++runs.last().second;
        all += bytesOf(block);
    }
    for (const auto& [size, times] : std::as_const(runs))
        sizes << QString("%1 x %2").arg(times).arg(size);
    return all;
}

/// A source read whole, and what other ways of reading are held to.
class Bench
{
public:
    explicit Bench(std::unique_ptr<SampleSource> source) : m_source(std::move(source))
    {
        QStringList sizes;
        m_all = rest(*m_source, 40'000, sizes);
        m_frameBytes = m_source->length() > 0 ? m_all.size() / m_source->length() : 1;
    }
    Answer facts() const
    {
        return {QString("%1 Hz, %2 channels, %3 frames, of which %4 come in bytes of %5")
                    .arg(m_source->rateHz())
                    .arg(m_source->channels())
                    .arg(m_source->length())
                    .arg(m_all.size() / m_frameBytes)
                    .arg(m_frameBytes) +
                state()};
    }
    /// All of it from @p frame on, in blocks of @p block.
    Answer from(qint64 frame, qint64 block)
    {
        m_source->seek(frame);
        QStringList sizes;
        const QByteArray got = rest(*m_source, block, sizes);
        const QByteArray expected = m_all.sliced(frame * m_frameBytes);
        const bool same = got == expected;
        return {QString("%1%2").arg(same ? "the same: " : "OTHER: ", sizes.join(", ")) + state()};
    }
    /// A few samples from @p frame on.
    Answer glance(qint64 frame)
    {
        m_source->seek(frame);
        const QByteArray got = bytesOf(m_source->read(1500));
        const QByteArray expected = m_all.mid(frame * m_frameBytes, got.size());
        return {QString("%1 frames%2")
                    .arg(got.size() / m_frameBytes)
                    .arg(got == expected ? ", the same" : ", OTHERS") +
                state()};
    }
    qint64 length() const { return m_source->length(); }
    const QByteArray& all() const { return m_all; }

private:
    QString state() const
    {
        const AudioLoss loss = m_source->loss();
        return QString("%1, %2 lost from %3")
            .arg(m_source->failed() ? ", failed" : "")
            .arg(loss.frames)
            .arg(loss.first);
    }

    std::unique_ptr<SampleSource> m_source;
    QByteArray m_all;
    qsizetype m_frameBytes = 1;
};

QByteArray lame(const QString& name, int rateHz, int channels, const QStringList& options)
{
    return kit::contentOf(kit::lameFile("answer-" + name, rateHz * 3 + 777, channels, rateHz, options));
}

/// Places where a reader changes what it does: the ends, frames, entries, and one beside each.
QList<qint64> placesIn(const Mp3Layout& layout)
{
    QList<qint64> places{0, 1, layout.length - 1, layout.length};
    const auto add = [&](qint64 raw) {
        for (const qint64 place : {raw - layout.skip - 1, raw - layout.skip, raw - layout.skip + 1})
            if (place >= 0 && place <= layout.length)
                places << place;
    };
    const QList<qint64> beginnings{0, 1, 16};
    const QList<qint64> entries{0, 1, 2, 15, 16, 17, 79, 80, 81, 95, 96, 97, 110, 113};
    qint64 samples = 0;
    for (const Mp3Run& run : layout.runs) {
        for (const qint64 frame : layout.runs.size() > 1 ? beginnings : entries)
            if (frame < run.frames)
                add(samples + samplesAtRate(frame * run.head.samples(), run.head.rateHz, layout.rateHz));
        samples += samplesAtRate(run.samples(), run.head.rateHz, layout.rateHz);
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

struct Stream
{
    QString name;
    QByteArray content;
    SampleKind kind = SampleKind::Narrow;
};

/// Streams of one format and of several, whole and damaged.
QList<Stream> streams()
{
    const QByteArray full = lame("full", 44100, 2, {"-b", "128"});
    const QByteArray low = lame("low", 22050, 1, {"-b", "32", "-t"});
    const QByteArray narrow = lame("narrow", 24000, 1, {"-b", "8", "--resample", "24", "-t"});
    const QByteArray one = lame("one", 44100, 1, {"-b", "64", "-t"});
    QByteArray damaged = full;
    damaged.replace(damaged.size() / 2, 3000, QByteArray(3000, '\0'));
    return {{"constant rate", full},
            {"variable rate, floats", lame("variable", 44100, 2, {"-V", "5"}), SampleKind::Wide},
            {"free format", lame("free", 44100, 2, {"--freeformat", "-b", "400"})},
            {"low rate", low},
            {"lowest bit rate", narrow},
            {"damaged", damaged},
            {"one channel, then two", one + full},
            {"two channels, then one, floats", full + one, SampleKind::Wide},
            {"three rates", full + low + narrow},
            {"low before full", low + full + low}};
}

Mp3Layout layoutOf(const std::shared_ptr<const SourceFile>& file)
{
    return *walkMp3(file, 0, file->size());
}

} // namespace

/// What readers of sound deliver in blocks of any size and after seeks to any place, held to what they
/// deliver from the front, recorded.
class TestReaderAnswers : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    std::shared_ptr<const SourceFile> made(const QByteArray& content) const
    {
        kit::write(m_folder.filePath("made"), content);
        return SourceFile::open(m_folder.filePath("made"));
    }

private slots:
    void mp3Streams()
    {
        Book book("engines/audio/answers/mp3reader");
        for (const Stream& stream : streams()) {
            QVERIFY(stream.content.size() > 1000);
            const auto file = made(stream.content);
            const Mp3Layout layout = layoutOf(file);
            Bench bench(std::make_unique<Mp3Reader>(file, layout, stream.kind));
            book.chapter(stream.name);
            book.tell("all", bench.facts());
            for (const qint64 block : {1151, 1152, 100'000})
                book.tell(QString("blocks of %1").arg(block), bench.from(0, block));
            for (const qint64 place : placesIn(layout))
                book.tell(QString::number(place), bench.glance(place));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void severalDecoders()
    {
        Book book("engines/audio/answers/mp3parallel");
        const auto file =
            SourceFile::open(kit::lameFile("long-cbr128", 90 * 44100 + 123, 2, 44100, {"-b", "128"}));
        QVERIFY(file);
        const Mp3Layout layout = layoutOf(file);
        Bench alone(std::make_unique<Mp3Reader>(file, layout, SampleKind::Narrow));
        book.chapter("A minute and a half");
        for (const int workers : {2, 5, 7})
            for (const qint64 block : {0, 2303, 30'000, 44100, 92'160}) {
                ParallelMp3Reader many(file, layout, SampleKind::Narrow, workers);
                QStringList sizes;
                const bool same = rest(many, block, sizes) == alone.all();
                book.tell(QString("%1 workers, blocks of %2").arg(workers).arg(block),
                          {(same ? "the same: " : "OTHER: ") + sizes.join(", ")});
            }
        tellSuiting(book, layout);
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    /// From how many frames on several decoders share a stream.
    static void tellSuiting(Book& book, const Mp3Layout& real)
    {
        for (const int channels : {1, 2})
            for (const bool lowRate : {false, true})
                for (const int workers : {1, 2, 3, 16}) {
                    Mp3Layout layout = real;
                    layout.channels = channels;
                    layout.runs.first().head.lowRate = lowRate;
                    book.chapter(QString("Frames of %1 channels%2 that suit %3 workers")
                                     .arg(channels)
                                     .arg(lowRate ? " at a low rate" : "")
                                     .arg(workers));
                    layout.entries.clear();
                    for (qint64 frame = 0; frame < 12'000; frame += 64)
                        layout.entries << Mp3Entry{frame, frame * 417};
                    for (int frames = 300; frames < 12'000; ++frames) {
                        layout.runs.first().frames = frames;
                        const bool narrow = ParallelMp3Reader::suits(layout, SampleKind::Narrow, workers);
                        const bool wide = ParallelMp3Reader::suits(layout, SampleKind::Wide, workers);
                        book.tell(
                            QString::number(frames),
                            {QString("%1, %2").arg(narrow ? "narrow" : "not").arg(wide ? "wide" : "not")});
                    }
                }
    }
};

QTEST_APPLESS_MAIN(TestReaderAnswers)
#include "tst_readeranswers.moc"
