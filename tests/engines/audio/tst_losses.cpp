#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "engines/audio/mp3/Mp3Header.h"

#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using namespace zib;

namespace {

constexpr qint64 kFrame = 1152; // samples of a frame at the full rates

/// Where the frames of a stream begin, as their headers tell.
QList<qsizetype> frameOffsets(const QByteArray& stream)
{
    QList<qsizetype> offsets;
    for (qsizetype at = 0; at + 4 <= stream.size();) {
        const auto head = Mp3Header::parse(reinterpret_cast<const uchar*>(stream.constData() + at));
        if (!head)
            break;
        offsets << at;
        at += head->frameBytes(0);
    }
    return offsets;
}

/// A number of up to 64 bits as little-endian bytes.
QByteArray number(quint64 value, int bytes)
{
    QByteArray all(8, '\0');
    qToLittleEndian(value, all.data());
    return all.first(bytes);
}

} // namespace

/// What of a file's sound is lost: counted, placed, and none where nothing is.
class TestLosses : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString made(const QByteArray& content) const
    {
        kit::write(m_folder.filePath("made"), content);
        return m_folder.filePath("made");
    }
    // frames of 417 or 418 bytes and no information frame
    static QByteArray plain()
    {
        return kit::contentOf(
            kit::lameFile("mpeg1-44-plain-cbr", 7 * 44100 + 777, 2, 44100, {"-b", "128", "-t"}));
    }
    static QByteArray variable()
    {
        return kit::contentOf(kit::lameFile("mpeg1-44-vbr2", 7 * 44100 + 777, 2, 44100, {"-V", "2"}));
    }
    static QByteArray half()
    {
        return kit::contentOf(kit::lameFile("mpeg2-22-cbr64", 7 * 22050, 2, 22050, {"-b", "64", "-t"}));
    }
    /// What a file lost once it was read to its end, after proving that both kinds of blocks tell the same.
    static AudioLoss lossOf(const QString& file)
    {
        const auto narrow = makeAudioFile();
        narrow->setSixteenBitBlocks(true);
        const auto wide = makeAudioFile();
        if (narrow->open(file) < 0 || wide->open(file) < 0)
            return {-1, -1};
        kit::readWide(*wide);
        kit::readNarrow(*narrow);
        return narrow->loss() == wide->loss() ? narrow->loss() : AudioLoss{-2, -2};
    }
    AudioLoss lossOf(const QByteArray& content) const { return lossOf(made(content)); }

private slots:
    void mp3_thatIsWhole_losesNothing_data()
    {
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("channels");
        QTest::addColumn<QStringList>("options");
        for (const int rate : {8000, 11025, 16000, 22050, 24000, 32000, 44100, 48000})
            for (const int channels : {1, 2})
                for (const char* options : {"-V 2", "-b 64 -t", "-b 64 -p", "--abr 90", "-V 9 -h"})
                    QTest::addRow("%d Hz, %d channels, %s", rate, channels, options)
                        << rate << channels << QString(options).split(' ');
        QTest::newRow("free format") << 44100 << 2 << QStringList{"--freeformat", "-b", "400"};
    }
    void mp3_thatIsWhole_losesNothing()
    {
        QFETCH(int, rateHz);
        QFETCH(int, channels);
        QFETCH(QStringList, options);
        const QString name = QString("whole-%1-%2%3").arg(rateHz).arg(channels).arg(options.join(""));
        const QString file = kit::lameFile(name, rateHz * 2, channels, rateHz, options);
        QVERIFY(!file.isEmpty());
        QCOMPARE(lossOf(file), AudioLoss());
        const QByteArray content = kit::contentOf(file);
        const QByteArray tag("ID3\x03\0\0\0\0\x07\x68", 10);
        const QByteArray tagged = tag + QByteArray(1000, '\0') + content + "TAG" + QByteArray(125, ' ');
        QCOMPARE(lossOf(tagged), AudioLoss());
        QCOMPARE(lossOf(tagged + tagged), AudioLoss()); // two files put together
    }
    void mp3_thatWasCutOutOfALongerOne_losesNothing()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        QCOMPARE(lossOf(stream.sliced(offsets[40], offsets[200] - offsets[40])), AudioLoss());
        QCOMPARE(lossOf(stream.sliced(offsets[40] - 100)), AudioLoss());
    }
    void mp3_beforeSomethingElse_isTrustedFromFourFramesOn()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        const auto reader = makeAudioFile();
        for (const int frames : {3, 4, 5}) {
            const QString file = made(stream.first(offsets[frames]) + QByteArray(5000, 'x'));
            QCOMPARE(reader->open(file) == 0, frames >= 4);
            QCOMPARE(reader->length(), frames >= 4 ? frames * kFrame : 0);
        }
    }
    void mp3_ofFreeFormat_hasFramesUpToALimit()
    {
        const auto reader = makeAudioFile();
        for (const int bytes : {3456, 3457}) {
            const QByteArray frame = QByteArray("\xFF\xFB\0\0", 4) + QByteArray(bytes - 4, '\0');
            QCOMPARE(reader->open(made(frame.repeated(8))) == 0, bytes == 3456);
        }
    }
    void mp3_withFramesOverwritten_losesThem_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<int>("frames");
        QTest::addColumn<char>("filling");
        for (const int frames : {1, 3, 40}) {
            QTest::addRow("%d of one bit rate, zeros", frames) << plain() << frames << '\0';
            QTest::addRow("%d of one bit rate, letters", frames) << plain() << frames << 'x';
            QTest::addRow("%d of many bit rates", frames) << variable() << frames << '\0';
            QTest::addRow("%d of the half rate", frames) << half() << frames << '\0';
        }
    }
    void mp3_withFramesOverwritten_losesThem()
    {
        QFETCH(QByteArray, stream);
        QFETCH(int, frames);
        QFETCH(char, filling);
        const auto offsets = frameOffsets(stream);
        const auto head = Mp3Header::parse(reinterpret_cast<const uchar*>(stream.constData()));
        const qint64 samples = head->samples();
        const bool hasInfo = stream.first(200).contains("Xing");
        const qsizetype bytes = offsets[100 + frames] - offsets[100];
        stream.replace(offsets[100], bytes, QByteArray(bytes, filling));
        const AudioLoss loss = lossOf(stream);
        qInfo("first %lld, %lld frames", loss.first / samples, loss.frames / samples);
        QCOMPARE(loss.first, 100 * samples - (hasInfo ? 2 * samples - 47 : 0));
        // the frames behind reach back into what is gone
        QVERIFY(loss.frames >= frames * samples * 9 / 10);
        QVERIFY(loss.frames <= (frames + 12) * samples * 11 / 10);
    }
    void mp3_withoutItsEnd_losesIt()
    {
        const QByteArray stream = variable();
        const auto offsets = frameOffsets(stream);
        const qsizetype frames = offsets.size() - 1; // the information frame is none
        const auto reader = makeAudioFile();
        for (const qsizetype kept : {qsizetype{20}, frames / 2, frames - 3}) {
            for (const int more : {0, 50}) {
                const AudioLoss loss = lossOf(stream.first(offsets[kept + 1] + more));
                QCOMPARE(reader->open(m_folder.filePath("made")), 0);
                QCOMPARE(loss, (AudioLoss{reader->length(), (frames - kept) * kFrame}));
            }
        }
    }
    void mp3_thatDoesNotTellItsLength_losesTheFrameThatIsCut()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        QCOMPARE(lossOf(stream.first(offsets[100])), AudioLoss());
        QCOMPARE(lossOf(stream.first(offsets[100] + 200)), (AudioLoss{100 * kFrame, kFrame}));
    }
    void mp3_withSomethingBetween_losesNoFrame()
    {
        const QByteArray stream = variable();
        const auto offsets = frameOffsets(stream);
        QByteArray content = stream;
        content.insert(offsets[100], QByteArray(20'000, 'x'));
        const AudioLoss loss = lossOf(content);
        QVERIFY(loss.frames <= 12 * kFrame); // those that reach back across it
    }
    void mp3_gapOfPartOfAFrame_countsFromHalfAFrameOn()
    {
        const QByteArray stream = plain(); // of 418 bytes a frame
        const auto offsets = frameOffsets(stream);
        const auto gap = [&](int bytes) {
            QByteArray content = stream;
            content.replace(offsets[100], offsets[101] - offsets[100], QByteArray(bytes, 'x'));
            return lossOf(content).frames;
        };
        QCOMPARE(gap(220), gap(200) + kFrame);
    }
    void mp3_whoseInformationFrameLies_losesNothing()
    {
        QByteArray content = variable();
        const qsizetype at = content.indexOf("Xing") + 8;
        content.replace(at, 4, QByteArray("\0\x0F\x42\x40", 4));
        QCOMPARE(lossOf(content), AudioLoss());
    }
    void mp3_withBrokenSideInformation_losesThatFrame()
    {
        QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        for (const int frame : {50, 51, 200}) // all bits on: more data than can be
            stream.replace(offsets[frame] + 6, 30, QByteArray(30, '\xFF'));
        QCOMPARE(lossOf(stream), (AudioLoss{50 * kFrame, 3 * kFrame}));
    }
    void mp3_afterASeek_countsOnce()
    {
        QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        stream.replace(offsets[150] + 6, 30, QByteArray(30, '\xFF'));
        const auto reader = makeAudioFile();
        reader->open(made(stream));
        for (int round = 0; round < 3; ++round) {
            kit::readWide(*reader);
            QCOMPARE(reader->loss(), (AudioLoss{150 * kFrame, kFrame}));
            reader->seek(0);
        }
    }
    void wav_thatIsWhole_losesNothing_data()
    {
        QTest::addColumn<quint64>("told");
        QTest::newRow("its size") << quint64{4000};
        QTest::newRow("never finished") << quint64{0};
        for (const quint64 told : {0xFFFFFFFFULL, 0x7FFFF000ULL, 0x7FFFFFFFULL, 0x80000000ULL, 0xFFFFFFDBULL})
            QTest::addRow("a pipe's %llx", told) << told;
    }
    void wav_thatIsWhole_losesNothing()
    {
        QFETCH(quint64, told);
        QByteArray wav = kit::wav16(kit::music16(1000, 2, 44100), 2, 44100);
        wav.replace(40, 4, number(told, 4));
        QCOMPARE(lossOf(wav), AudioLoss());
    }
    /// Where each byte is a frame, none of them goes by rounding.
    void wav_ofOneByteFrames_thatIsWhole_losesNothing_data() { wav_thatIsWhole_losesNothing_data(); }
    void wav_ofOneByteFrames_thatIsWhole_losesNothing()
    {
        QFETCH(quint64, told);
        const QByteArray sound(4000, 'a');
        QByteArray wav =
            kit::riff(kit::chunk("fmt ", kit::format(1, 1, 8000, 8)) + kit::chunk("data", sound));
        QCOMPARE(lossOf(wav.chopped(1)), (AudioLoss{3999, 1}));
        wav.replace(wav.size() - 4004, 4, number(told, 4));
        QCOMPARE(lossOf(wav), AudioLoss());
    }
    void wav_thatIsShorterThanItSays_losesTheRest()
    {
        const QByteArray wav = kit::wav16(kit::music16(10'000, 2, 44100), 2, 44100);
        QCOMPARE(lossOf(wav.chopped(4 * 3000)), (AudioLoss{7000, 3000}));
        QCOMPARE(lossOf(wav.chopped(2)), (AudioLoss{9999, 1}));
        const QByteArray mono24 = kit::riff(kit::chunk("fmt ", kit::format(1, 1, 8000, 24)) +
                                            kit::chunk("data", QByteArray(3 * 5000, 'a')));
        QCOMPARE(lossOf(mono24.chopped(3 * 1000)), (AudioLoss{4000, 1000}));
    }
    void wav_ofMoreThan4GiB_isBelievedWithinReason_data()
    {
        QTest::addColumn<quint64>("told");
        QTest::addColumn<qint64>("lost");
        QTest::newRow("half of it") << quint64{8000} << qint64{1000};
        QTest::newRow("six hours") << quint64{4'000'000'000} << qint64{1'000'000'000 - 1000};
        QTest::newRow("nothing real") << ~quint64{0} / 2 << qint64{0};
    }
    void wav_ofMoreThan4GiB_isBelievedWithinReason()
    {
        QFETCH(quint64, told);
        QFETCH(qint64, lost);
        QByteArray wav = kit::riff(
            kit::chunk("ds64", number(told + 100, 8) + number(told, 8) + number(0, 8) + number(0, 4)) +
            kit::chunk("fmt ", kit::format(1, 2, 44100, 16)) + kit::chunk("data", QByteArray(4000, 'a')));
        wav.replace(0, 4, "RF64");
        wav.replace(wav.size() - 4004, 4, number(0xFFFFFFFF, 4));
        QCOMPARE(lossOf(wav), (lost > 0 ? AudioLoss{1000, lost} : AudioLoss()));
    }
    void wav_ofAPackedCoding_losesByItsBytes()
    {
        kit::write(m_folder.filePath("plain.wav"), kit::wav16(kit::music16(44100, 1, 22050), 1, 22050));
        QVERIFY(kit::run(
            "sox", {m_folder.filePath("plain.wav"), "-e", "ima-adpcm", m_folder.filePath("packed.wav")}));
        const QByteArray wav = kit::contentOf(m_folder.filePath("packed.wav"));
        QCOMPARE(lossOf(wav), AudioLoss());
        const AudioLoss loss = lossOf(wav.first(wav.size() / 2));
        QVERIFY(qAbs(loss.first - 22050) < 2000);
        QVERIFY(qAbs(loss.frames - 22050) < 2000);
    }
    void samples_ofDamagedFiles_areWhatTheyAlwaysWere()
    {
        QByteArray stream = plain();
        const auto offsets = frameOffsets(stream);
        stream.replace(offsets[60] + 6, 30, QByteArray(30, '\xFF'));
        const QString file = made(stream);
        const auto reader = makeAudioFile();
        reader->open(file);
        QCOMPARE(reader->length(), offsets.size() * kFrame);
        QCOMPARE(kit::readNarrow(*reader), kit::libraryDecode(file));
    }
};

QTEST_GUILESS_MAIN(TestLosses)
#include "tst_losses.moc"
