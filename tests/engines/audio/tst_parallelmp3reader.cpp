#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "engines/audio/mp3/Mp3Reader.h"
#include "engines/audio/mp3/ParallelMp3Reader.h"

#include <QTemporaryDir>
#include <QTest>

#include <cstring>

using namespace zib;

namespace {

template <typename Sample>
const QList<Sample>& samplesOf(const AudioBlock& block)
{
    if constexpr (std::is_same_v<Sample, qint16>)
        return *block.narrow();
    else
        return *block.wide();
}

template <typename Sample>
QList<Sample> all(SampleSource& source, qint64 frames)
{
    QList<Sample> samples;
    for (AudioBlock block = source.read(frames); !block.isEmpty(); block = source.read(frames))
        samples += samplesOf<Sample>(block);
    return samples;
}

// Byte by byte: floats that compare equal may still differ.
template <typename Sample>
bool identical(const QList<Sample>& a, const QList<Sample>& b)
{
    return a.size() == b.size() &&
           std::memcmp(a.constData(), b.constData(), static_cast<size_t>(a.size()) * sizeof(Sample)) == 0;
}

} // namespace

/// Decoding on several cores against decoding on one.
class TestParallelMp3Reader : public QObject
{
    Q_OBJECT
private slots:
    void samples_ofEveryKind_areThoseOfOneDecoder_data()
    {
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("channels");
        QTest::addColumn<QStringList>("options");
        QTest::newRow("cbr128") << 44100 << 2 << QStringList{"-b", "128"};
        QTest::newRow("cbr320") << 44100 << 2 << QStringList{"-b", "320", "-m", "s"};
        QTest::newRow("vbr") << 44100 << 2 << QStringList{"-V", "5"};
        QTest::newRow("crc") << 44100 << 2 << QStringList{"-b", "192", "-p"};
        QTest::newRow("plain") << 44100 << 2 << QStringList{"-b", "128", "-t"};
        QTest::newRow("mono") << 44100 << 1 << QStringList{"-b", "48"};
        QTest::newRow("48k") << 48000 << 2 << QStringList{"-V", "2"};
        QTest::newRow("32k-low") << 32000 << 2 << QStringList{"-b", "32", "--resample", "32"};
        QTest::newRow("mpeg2-16-mono") << 16000 << 1 << QStringList{"-b", "32"};
        QTest::newRow("mpeg2-8kbit") << 24000 << 1 << QStringList{"-b", "8", "--resample", "24"};
        QTest::newRow("mpeg2-24") << 24000 << 2 << QStringList{"-V", "4"};
        QTest::newRow("mpeg25-8") << 8000 << 1 << QStringList{"-b", "8"};
    }
    void samples_ofEveryKind_areThoseOfOneDecoder()
    {
        QFETCH(int, rateHz);
        QFETCH(int, channels);
        QFETCH(QStringList, options);
        const QString name = QString("long-") + QTest::currentDataTag();
        const qint64 seconds = channels == 1 ? 150 : 90;
        const QString path = kit::lameFile(name, seconds * rateHz + 123, channels, rateHz, options);
        QVERIFY(!path.isEmpty());
        const auto file = SourceFile::open(path);
        const auto layout = walkMp3(file, 0, file->size());
        QVERIFY(layout);
        constexpr int kWorkers = 5;
        if (!ParallelMp3Reader::suits(*layout, SampleKind::Wide, kWorkers))
            QSKIP("too small to be cut");
        Mp3Reader one(file, *layout, SampleKind::Wide);
        ParallelMp3Reader many(file, *layout, SampleKind::Wide, kWorkers);
        const QList<float> expected = all<float>(one, 40'000);
        QCOMPARE(expected.size(), layout->length * layout->channels);
        QVERIFY(identical(all<float>(many, 30'000), expected));
        QVERIFY(!many.failed());
    }
    void samples_at16Bits_areThoseOfTheLibrary()
    {
        const QString path = kit::lameFile("long-vbr", 90 * 44100 + 123, 2, 44100, {"-V", "5"});
        const auto file = SourceFile::open(path);
        const auto layout = walkMp3(file, 0, file->size());
        QVERIFY(ParallelMp3Reader::suits(*layout, SampleKind::Narrow, 3));
        ParallelMp3Reader many(file, *layout, SampleKind::Narrow, 3);
        QVERIFY(identical(all<qint16>(many, 44100), kit::libraryDecode(path)));
    }
    void suits_whatIsNotRegular_isFalse()
    {
        const QString path = kit::lameFile("long-cbr128", 90 * 44100 + 123, 2, 44100, {"-b", "128"});
        const auto layoutOf = [](const QString& of) {
            const auto file = SourceFile::open(of);
            return walkMp3(file, 0, file->size()).value();
        };
        Mp3Layout layout = layoutOf(path);
        QVERIFY(ParallelMp3Reader::suits(layout, SampleKind::Narrow, 4));
        QVERIFY(!ParallelMp3Reader::suits(layout, SampleKind::Narrow, 1));
        QByteArray content = kit::contentOf(path);
        content.insert(content.size() / 2, "junk between two frames"); // rather in the middle of one
        const QTemporaryDir folder;
        kit::write(folder.filePath("junk.mp3"), content);
        layout = layoutOf(folder.filePath("junk.mp3"));
        QCOMPARE(layout.runs.size(), 2);
        QVERIFY(!ParallelMp3Reader::suits(layout, SampleKind::Narrow, 4));
    }
    void destruction_inTheMiddle_ends()
    {
        const QString path =
            kit::lameFile("long-cbr320", 90 * 44100 + 123, 2, 44100, {"-b", "320", "-m", "s"});
        const auto file = SourceFile::open(path);
        const auto layout = walkMp3(file, 0, file->size());
        for (int blocks = 0; blocks < 30; ++blocks) {
            ParallelMp3Reader many(file, *layout, SampleKind::Narrow, 4);
            for (int i = 0; i < blocks; ++i)
                QVERIFY(!many.read(44100).isEmpty());
        }
    }
    void seek_afterSomeBlocks_goesOnExactlyThere()
    {
        const QString path = kit::lameFile("long-vbr", 90 * 44100 + 123, 2, 44100, {"-V", "5"});
        const QList<qint16> expected = kit::libraryDecode(path);
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        for (const qint64 frame : {0LL, 2'000'000LL, 1'152LL, 77LL, reader->length() - 1, 1'000'001LL}) {
            QCOMPARE(reader->seek(frame), frame);
            const AudioBlock block = reader->readBlock(20'000);
            QVERIFY(identical(*block.narrow(), expected.mid(frame * 2, block.sampleCount())));
        }
        QCOMPARE(reader->seek(reader->length()), reader->length());
        QVERIFY(reader->readBlock(100).isEmpty());
        QCOMPARE(reader->status(), 0);
    }
    void file_thatShrinksMeanwhile_failsInsteadOfEndingEarly()
    {
        const QString path = kit::lameFile("long-cbr128", 90 * 44100 + 123, 2, 44100, {"-b", "128"});
        const QTemporaryDir folder;
        const QString copy = folder.filePath("copy.mp3");
        QVERIFY(QFile::copy(path, copy));
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(copy), 0);
        QVERIFY(QFile::resize(copy, 200'000));
        while (!reader->readBlock(88200).isEmpty()) {
        }
        QVERIFY(reader->status() < 0);
        QVERIFY(reader->readBlock(88200).isEmpty());
        reader->close();
    }
};

QTEST_GUILESS_MAIN(TestParallelMp3Reader)
#include "tst_parallelmp3reader.moc"
