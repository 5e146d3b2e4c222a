#include "WavMaker.h"

#include "engines/burn/compare/DiscCheck.h"
#include "engines/burn/compare/DiscComparison.h"
#include "engines/burn/compare/ImageMatch.h"
#include "engines/burn/compare/ImageSound.h"
#include "engines/burn/compare/ReadOffset.h"

#include <QHash>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace zib;

namespace {

constexpr int kPair = 4;

/// A disc held in memory, with faults.
class MemoryDisc final : public DiscSamples
{
public:
    QByteArray bytes;
    QHash<qint64, int> unreadable; ///< So often a frame refuses.
    QHash<qint64, int> wrong;      ///< So often a frame comes with a flipped bit.
    qint64 goneAt = -1;
    Failure::Kind gone = Failure::Kind::DeviceGone; ///< Why nothing is read at goneAt.
    int reads = 0;

    Outcome<> read(qint64 frame, int count, char* buffer) override
    {
        ++reads;
        if (frame < 0 || frame + count > leadOut())
            return Failure{Failure::Kind::BadValue};
        for (qint64 at = frame; at < frame + count; ++at)
            if (at == goneAt)
                return Failure{gone, "Drive 1"};
            else if (unreadable.value(at) > 0 && unreadable[at]--)
                return Failure{Failure::Kind::UnreadableFile};
        std::memcpy(buffer, bytes.constData() + frame * kBytesPerFrame,
                    static_cast<size_t>(count) * kBytesPerFrame);
        for (qint64 at = frame; at < frame + count; ++at)
            if (wrong.value(at) > 0 && wrong[at]--)
                buffer[(at - frame) * kBytesPerFrame + 17] ^= 1;
        return {};
    }
    qint64 leadOut() const override { return bytes.size() / kBytesPerFrame; }

    /// All sound so many sample pairs early, foreign samples where it came from and goes to.
    void shift(int pairs)
    {
        const QByteArray foreign(std::abs(pairs) * kPair, '\x55');
        bytes = pairs > 0 ? bytes.mid(foreign.size()) + foreign : foreign + bytes.chopped(foreign.size());
    }
};

/// A tone that repeats after a hundred sample pairs exactly.
QByteArray tone(int pairs)
{
    QByteArray bytes;
    for (int i = 0; i < pairs; ++i) {
        const auto value = static_cast<qint16>(std::lround(9000 * std::sin(i % 100 * 2 * M_PI / 100)));
        bytes += little16(static_cast<quint16>(value)) + little16(static_cast<quint16>(value));
    }
    return bytes;
}

} // namespace

/// A disc compared with the files it was made of.
class TestDiscComparison : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;
    QList<BurnTrack> m_tracks;
    MemoryDisc m_disc;
    std::atomic<bool> m_cancelled = false;

    /// Files with these samples, and a disc that holds them.
    void record(const QList<QByteArray>& sounds)
    {
        m_tracks.clear();
        m_disc = {};
        m_cancelled = false;
        for (const QByteArray& samples : sounds) {
            const QString path = m_folder.filePath(QStringLiteral("%1.wav").arg(m_tracks.size()));
            QFile file(path);
            if (file.open(QIODevice::WriteOnly))
                file.write(riff(formatChunk() + chunk("data", samples)));
            file.close();
            const auto track = findTrack(path);
            if (track)
                m_tracks << *track;
            m_disc.bytes += QByteArray(m_tracks.size() > 1 ? kPregapFrames * kBytesPerFrame : 0, '\0') +
                            samples.leftJustified(m_tracks.last().length.bytes(), '\0');
        }
    }
    Outcome<ComparisonResult> compared(int offset = 0)
    {
        DiscComparison comparison(m_disc, piecesOf(m_tracks), &m_cancelled,
                                  [this](int track, qint64 done, qint64 of) {
                                      m_told << QList<qint64>{track, done, of};
                                  });
        m_told.clear();
        return comparison.run(offset);
    }
    /// What is told of the disc when it was written just now; nothing when it is as it should be.
    QString wordsOf(MemoryDisc& disc)
    {
        struct Silent final : BurnObserver
        {
            void readingTrack(int) override {}
            void progress(int, qint64, qint64) override {}
            void closingTrack(int) override {}
            void closingDisc() override {}
        } observer;
        const auto error = compareWithFiles(disc, piecesOf(m_tracks), 0, {}, observer);
        return error ? QString("%1: %2").arg(error->error).arg(error->description) : QString();
    }
    QList<QList<qint64>> m_told;
    QString image() const { return m_folder.filePath("image.bin"); }
    Outcome<ComparisonResult> comparedImage(
        const DiscComparison::Progress& progress = [](int, qint64, qint64) {}, qint64 seen = 0)
    {
        return compareImage(image(), piecesOf(m_tracks), seen, &m_cancelled, progress);
    }

private slots:
    void pieces_lieOneBehindTheOther();
    void pieces_betweenTwoPlaces_areCutThere();
    void sameSamples_areIdentical();
    void flippedSample_isNamedByItsPlace_data();
    void flippedSample_isNamedByItsPlace();
    void missingFrame_countsAllBehindIt();
    void swappedTracks_differFromTheFirstOn();
    void soundInThePause_isNamed();
    void frameThatReadsAtLast_isNoDifference_data();
    void frameThatReadsAtLast_isNoDifference();
    void frameThatNeverReads_isNamed();
    void manyWrongFrames_areNotReadAgainForEver();
    void words_countEachKindOfFault_data();
    void words_countEachKindOfFault();
    void words_ofADiscThatIsNoMoreThere_sayWhy_data();
    void words_ofADiscThatIsNoMoreThere_sayWhy();
    void discThatEndsEarly_isNoMatch();
    void discThatCannotBeRead_isGivenUp();
    void image_isComparedInPartsAsAWhole();
    void image_seenInPart_isComparedFromThereOn_data();
    void image_seenInPart_isComparedFromThereOn();
    void image_thatCannotBeOpened_isNoMatch();
    void image_withOddTracks_isComparedToTheLastByte();
    void image_cutOffWhileCompared_isNoMatch_data();
    void image_cutOffWhileCompared_isNoMatch();
    void image_ofAFileCutOffWhileCompared_namesTheFile();
    void image_ofAChangedFile_namesTheFile();
    void image_ofAFileChangedWhileCompared_namesTheFile();
    void match_ofAnImage_endsBeforeTheFirstFault();
    void view_ofAFileThatIsCutOff_showsZerosAndSaysSo_data();
    void view_ofAFileThatIsCutOff_showsZerosAndSaysSo();
    void view_leavesOtherFaultsAlone();
    void goneDrive_endsTheComparing();
    void changedFile_endsTheComparing();
    void cancel_endsTheComparing();
    void progress_countsEachTrackToItsEnd();
    void readOffset_ofShiftedSound_isFound_data();
    void readOffset_ofShiftedSound_isFound();
    void readOffset_ofSilence_isNone();
    void readOffset_withDamage_comesFromTheNextLook();
    void readOffset_withAMissingFrame_isThatOfTheBeginning();
    void readOffset_beyondItsBounds_isNotTaken();
};

void TestDiscComparison::pieces_lieOneBehindTheOther()
{
    record({sound(588 * 300, 1), sound(588 * 301, 2)});
    const QList<DiscPiece> pieces = piecesOf(m_tracks);
    QCOMPARE(pieces.size(), 3);
    QVERIFY(!pieces[0].silent && pieces[1].silent && !pieces[2].silent);
    QCOMPARE(pieces[0].end(), 300);
    QCOMPARE(pieces[1].start, 300);
    QCOMPARE(pieces[1].track, 2);
    QCOMPARE(pieces[2].start, 450);
    QCOMPARE(pieces[2].end(), 751);
}

void TestDiscComparison::pieces_betweenTwoPlaces_areCutThere()
{
    record({sound(588 * 300, 1), sound(588 * 301, 2)});
    const auto cutAt = [this](qint64 from, qint64 to) {
        QList<QList<qint64>> cut; // track, start, first, length
        for (const DiscPiece& piece : between(piecesOf(m_tracks), from, to))
            cut << QList<qint64>{piece.track, piece.start, piece.first, piece.length.frames()};
        return cut;
    };
    QCOMPARE(cutAt(0, 751), (QList<QList<qint64>>{{1, 0, 0, 300}, {2, 300, 0, 150}, {2, 450, 0, 301}}));
    QCOMPARE(cutAt(299, 301), (QList<QList<qint64>>{{1, 299, 299, 1}, {2, 300, 0, 1}}));
    QCOMPARE(cutAt(300, 450), (QList<QList<qint64>>{{2, 300, 0, 150}}));
    QCOMPARE(cutAt(500, 600), (QList<QList<qint64>>{{2, 500, 50, 100}}));
    QCOMPARE(cutAt(751, 900), QList<QList<qint64>>());
    QCOMPARE(cutAt(10, 10), QList<QList<qint64>>());
}

void TestDiscComparison::sameSamples_areIdentical()
{
    record({sound(588 * 300 + 1, 1), sound(1000, 2), sound(588 * 333, 3)});
    const auto result = compared();
    QVERIFY(result && result->isIdentical());
    QCOMPARE(result->comparedFrames, m_disc.leadOut());
    QCOMPARE(result->firstTrack, 0);
}

void TestDiscComparison::flippedSample_isNamedByItsPlace_data()
{
    QTest::addColumn<qint64>("frame");
    QTest::addColumn<int>("track");
    QTest::addColumn<qint64>("place");
    QTest::newRow("first") << qint64{0} << 1 << qint64{0};
    QTest::newRow("last of a track") << qint64{299} << 1 << qint64{299};
    QTest::newRow("first of the next") << qint64{450} << 2 << qint64{0};
    QTest::newRow("within") << qint64{600} << 2 << qint64{150};
    QTest::newRow("last of the disc") << qint64{749} << 2 << qint64{299};
}

void TestDiscComparison::flippedSample_isNamedByItsPlace()
{
    QFETCH(qint64, frame);
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.bytes[frame * kBytesPerFrame + 2351] =
        static_cast<char>(~m_disc.bytes[frame * kBytesPerFrame + 2351]);
    const auto result = compared();
    QVERIFY(result && !result->isIdentical());
    QCOMPARE(result->differingFrames, 1);
    QCOMPARE(result->unreadableFrames, 0);
    QVERIFY(!result->inPregap);
    QTEST(result->firstTrack, "track");
    QTEST(result->firstPlace.frames(), "place");
}

void TestDiscComparison::missingFrame_countsAllBehindIt()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.bytes.remove(500 * kBytesPerFrame, kBytesPerFrame);
    m_disc.bytes += QByteArray(kBytesPerFrame, '\0');
    const auto result = compared(readOffsetOf(m_disc, piecesOf(m_tracks)));
    QCOMPARE(result->firstTrack, 2);
    QCOMPARE(result->firstPlace.frames(), 50);
    QCOMPARE(result->differingFrames, 250);
}

void TestDiscComparison::swappedTracks_differFromTheFirstOn()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    const QByteArray first = m_disc.bytes.left(300 * kBytesPerFrame);
    const QByteArray second = m_disc.bytes.mid(450 * kBytesPerFrame);
    m_disc.bytes = second + QByteArray(150 * kBytesPerFrame, '\0') + first;
    const auto result = compared(readOffsetOf(m_disc, piecesOf(m_tracks)));
    QCOMPARE(result->readOffset, 0);
    QCOMPARE(result->firstTrack, 1);
    QCOMPARE(result->firstPlace.frames(), 0);
    QCOMPARE(result->differingFrames, 600);
}

void TestDiscComparison::soundInThePause_isNamed()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.bytes[310 * kBytesPerFrame] = 1;
    const auto result = compared();
    QVERIFY(result->inPregap);
    QCOMPARE(result->firstTrack, 2);
    QCOMPARE(result->firstPlace.frames(), 10);
}

void TestDiscComparison::frameThatReadsAtLast_isNoDifference_data()
{
    QTest::addColumn<int>("times");
    QTest::addColumn<bool>("identical");
    // Once with its block, then as often as a frame is tried alone.
    QTest::newRow("once") << 1 << true;
    QTest::newRow("but for the last try") << 4 << true;
    QTest::newRow("at every try") << 5 << false;
}

void TestDiscComparison::frameThatReadsAtLast_isNoDifference()
{
    QFETCH(int, times);
    QFETCH(bool, identical);
    record({sound(588 * 300, 1)});
    m_disc.unreadable.insert(100, times);
    QCOMPARE(compared()->isIdentical(), identical);
    record({sound(588 * 300, 1)});
    m_disc.wrong.insert(100, times);
    QCOMPARE(compared()->isIdentical(), identical);
}

void TestDiscComparison::frameThatNeverReads_isNamed()
{
    record({sound(588 * 400, 1)});
    m_disc.unreadable.insert(333, 100);
    const auto result = compared();
    QCOMPARE(result->unreadableFrames, 1);
    QCOMPARE(result->differingFrames, 0);
    QCOMPARE(result->firstTrack, 1);
    QCOMPARE(result->firstPlace.frames(), 333);
}

void TestDiscComparison::manyWrongFrames_areNotReadAgainForEver()
{
    record({sound(588 * 6000, 1)});
    const qint64 frames = m_disc.leadOut();
    m_disc.bytes = sound(588 * 6000, 2);
    const auto result = compared();
    QCOMPARE(result->differingFrames, frames);
    QVERIFY2(m_disc.reads < frames + frames / 24 + 4 * 301, QByteArray::number(m_disc.reads));
}

void TestDiscComparison::words_countEachKindOfFault_data()
{
    QTest::addColumn<QList<int>>("wrong");
    QTest::addColumn<QList<int>>("unreadable");
    QTest::addColumn<QString>("words");
    const QString begin =
        "8: The disc was written, but it is not what the files hold: the first difference is "
        "in %1 (minutes:seconds:frames); of 750 frames of 1/75 second, %2.";
    const auto row = [&begin](const char* name, const QList<int>& wrong, const QList<int>& unreadable,
                              const char* place, const char* counts) {
        QTest::newRow(name) << wrong << unreadable << (place ? begin.arg(place, counts) : QString());
    };
    row("none", {}, {}, nullptr, nullptr);
    row("one differs", {77}, {}, "track 1 at 00:01:02", "1 frame differs");
    row("two differ", {77, 90}, {}, "track 1 at 00:01:02", "2 frames differ");
    row("one unreadable", {}, {78}, "track 1 at 00:01:03", "1 frame cannot be read");
    row("two unreadable", {}, {78, 90}, "track 1 at 00:01:03", "2 frames cannot be read");
    row("both", {91, 92, 93}, {90}, "track 1 at 00:01:15", "3 frames differ, 1 frame cannot be read");
    row("in the pause", {310}, {}, "the pause before track 2 at 00:00:10", "1 frame differs");
}

void TestDiscComparison::words_countEachKindOfFault()
{
    QFETCH(QList<int>, wrong);
    QFETCH(QList<int>, unreadable);
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    for (const int frame : wrong)
        m_disc.wrong.insert(frame, 100);
    for (const int frame : unreadable)
        m_disc.unreadable.insert(frame, 100);
    QTEST(wordsOf(m_disc), "words");
}

void TestDiscComparison::words_ofADiscThatIsNoMoreThere_sayWhy_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("why");
    const auto row = [](const char* name, Failure::Kind kind, const char* code, const char* why) {
        QTest::newRow(name) << static_cast<int>(kind) << code << why;
    };
    row("taken out", Failure::Kind::NoMedium, "7", "It was taken out of the drive.");
    row("changed", Failure::Kind::WrongMedium, "7", "The disc in the drive was changed.");
    row("drive gone", Failure::Kind::DeviceGone, "4", "The drive \"Drive 1\" does not answer any more.");
    row("no sound", Failure::Kind::Unsupported, "10", "The drive refuses to read sound.");
    row("in use", Failure::Kind::Busy, "6",
        "Another program is using \"Drive 1\". Close that program and write again.");
}

void TestDiscComparison::words_ofADiscThatIsNoMoreThere_sayWhy()
{
    QFETCH(int, kind);
    QFETCH(QString, code);
    QFETCH(QString, why);
    record({sound(588 * 300, 1)});
    m_disc.goneAt = 200;
    m_disc.gone = static_cast<Failure::Kind>(kind);
    QCOMPARE(wordsOf(m_disc), code + ": The disc was written, but it could not be compared with its files. " +
                                  why + " Listen to it before you throw it away.");
}

void TestDiscComparison::discThatEndsEarly_isNoMatch()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.bytes.chop(10 * kBytesPerFrame);
    const auto result = compared();
    QCOMPARE(result->unreadableFrames, 10);
    QCOMPARE(result->firstTrack, 2);
    QCOMPARE(result->firstPlace.frames(), 290);
}

void TestDiscComparison::discThatCannotBeRead_isGivenUp()
{
    record({sound(588 * 3000, 1), sound(588 * 300, 2)});
    for (qint64 frame = 1000; frame < 3000; ++frame)
        m_disc.unreadable.insert(frame, 100);
    const auto result = compared();
    QVERIFY(result->givenUp);
    QCOMPARE(result->firstPlace.frames(), 1000);
    QVERIFY2(result->unreadableFrames > 300 && result->unreadableFrames <= 324,
             QByteArray::number(result->unreadableFrames));
    QVERIFY(result->comparedFrames < 1400);
    m_disc.unreadable.clear();
    for (qint64 frame = 1000; frame < 1300; ++frame)
        m_disc.unreadable.insert(frame, 100);
    QVERIFY(!compared()->givenUp);
}

/// Two and a half minutes in one track and two short ones, so that parts end within a track.
void TestDiscComparison::image_isComparedInPartsAsAWhole()
{
    const qint64 frames = 75 * 150;
    record({sound(588 * frames, 1), sound(588 * 300, 2), sound(588 * 301, 3)});
    const auto comparedAgain = [&] {
        m_told.clear();
        put(image(), m_disc.bytes);
        return comparedImage([this](int track, qint64 done, qint64 of) {
            m_told << QList<qint64>{track, done, of};
        });
    };
    auto result = comparedAgain();
    QVERIFY(result && result->isIdentical());
    QCOMPARE(result->comparedFrames, m_disc.leadOut());
    QVERIFY(m_told.contains(QList<qint64>{1, frames, frames}));
    QCOMPARE(m_told.last(), (QList<qint64>{3, 301, 301}));
    QVERIFY(std::is_sorted(m_told.cbegin(), m_told.cend()));

    for (const qint64 frame : {frames + 151, frames - 1, qint64{75 * 70}, qint64{75 * 70 + 1}})
        m_disc.bytes[frame * kBytesPerFrame + 9] ^= 1;
    result = comparedAgain();
    QCOMPARE(result->differingFrames, 4);
    QCOMPARE(result->firstTrack, 1);
    QCOMPARE(result->firstPlace.frames(), 75 * 70);
    QVERIFY(!result->inPregap);

    m_cancelled = true;
    QVERIFY(comparedAgain().error().kind == Failure::Kind::Cancelled);
}

void TestDiscComparison::image_seenInPart_isComparedFromThereOn_data()
{
    QTest::addColumn<qint64>("seen");
    QTest::newRow("within a track") << qint64{1000};
    QTest::newRow("up to a pause") << qint64{5000};
    QTest::newRow("within a pause") << qint64{5001};
    QTest::newRow("all but the last frame") << qint64{5449};
    QTest::newRow("all") << qint64{5450};
}

void TestDiscComparison::image_seenInPart_isComparedFromThereOn()
{
    QFETCH(qint64, seen);
    record({sound(588 * 5000, 1), sound(588 * 300, 2)});
    m_disc.bytes[(seen - 1) * kBytesPerFrame] ^= 1; // is not looked at again
    put(image(), m_disc.bytes);
    QList<QList<qint64>> told;
    const auto tell = [&](int track, qint64 done, qint64 of) { told << QList<qint64>{track, done, of}; };
    auto result = comparedImage(tell, seen);
    QVERIFY(result && result->isIdentical());
    QCOMPARE(result->comparedFrames, 5450);
    QCOMPARE(told.first(), (QList<qint64>{1, std::min<qint64>(seen, 5000), 5000}));
    QCOMPARE(told.last(), (QList<qint64>{2, 300, 300}));
    QVERIFY(std::is_sorted(told.cbegin(), told.cend()));
    if (seen == 5450)
        return;
    m_disc.bytes[seen * kBytesPerFrame] ^= 1;
    put(image(), m_disc.bytes);
    result = comparedImage(tell, seen);
    QCOMPARE(result->differingFrames, 1);
    QCOMPARE(result->comparedFrames, 5450);
    QCOMPARE(result->firstTrack, seen < 5000 ? 1 : 2);
    QCOMPARE(result->firstPlace.frames(), seen < 5000 ? seen : seen < 5150 ? seen - 5000 : seen - 5150);
}

void TestDiscComparison::image_thatCannotBeOpened_isNoMatch()
{
    record({sound(588 * 300, 1)});
    const auto result = compareImage(m_folder.filePath("none.bin"), piecesOf(m_tracks), 0, nullptr,
                                     [](int, qint64, qint64) {});
    QVERIFY(result);
    QCOMPARE(result->unreadableFrames, 300);
}

/// Sound, padding and pauses: a byte at each end of each of them.
void TestDiscComparison::image_withOddTracks_isComparedToTheLastByte()
{
    record({sound(588 * 300 + 1, 1), sound(1000, 2), QByteArray(588 * 4 * 320, '\0'), sound(588 * 333, 3)});
    put(image(), m_disc.bytes);
    auto result = comparedImage();
    QVERIFY(result && result->isIdentical());
    QCOMPARE(result->comparedFrames, m_disc.leadOut());
    for (const DiscPiece& piece : piecesOf(m_tracks))
        for (const qint64 byte : {piece.start * kBytesPerFrame, piece.end() * kBytesPerFrame - 1}) {
            QByteArray bytes = m_disc.bytes;
            bytes[byte] ^= 1;
            put(image(), bytes);
            result = comparedImage();
            QCOMPARE(result->differingFrames, 1);
            QCOMPARE(result->firstTrack, piece.track);
            QCOMPARE(result->firstPlace.frames(), byte / kBytesPerFrame - piece.start);
            QCOMPARE(result->inPregap, piece.silent);
        }
}

void TestDiscComparison::image_cutOffWhileCompared_isNoMatch_data()
{
    QTest::addColumn<bool>("silent");
    QTest::newRow("sound") << false;
    QTest::newRow("silence, which a missing page looks like") << true;
}

void TestDiscComparison::image_cutOffWhileCompared_isNoMatch()
{
    QFETCH(bool, silent);
    const qint64 frames = 4000; // one part, so that the end is not looked at before the beginning
    record({silent ? QByteArray(frames * kBytesPerFrame, '\0') : sound(588 * frames)});
    put(image(), m_disc.bytes);
    const auto result = comparedImage([this](int, qint64, qint64) { QFile::resize(image(), 5'000'001); });
    QVERIFY(result);
    QVERIFY(!result->isIdentical());
    QCOMPARE(result->firstTrack, 1);
    QVERIFY(result->firstPlace.frames() >= 5'000'001 / kBytesPerFrame);
}

void TestDiscComparison::image_ofAFileCutOffWhileCompared_namesTheFile()
{
    record({QByteArray(4000 * kBytesPerFrame, '\0')});
    put(image(), m_disc.bytes);
    const auto result =
        comparedImage([this](int, qint64, qint64) { QFile::resize(m_tracks[0].path, 5'000'001); });
    QVERIFY(!result && result.error().kind == Failure::Kind::UnreadableFile);
    QCOMPARE(result.error().detail, m_tracks[0].name);
}

void TestDiscComparison::image_ofAChangedFile_namesTheFile()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    put(image(), m_disc.bytes);
    QFile file(m_tracks[1].path);
    QVERIFY(file.open(QIODevice::Append) && file.write("x") == 1);
    file.close();
    const auto result = comparedImage();
    QVERIFY(!result && result.error().kind == Failure::Kind::UnreadableFile);
    QCOMPARE(result.error().detail, m_tracks[1].name);
}

/// Where it was looked at already.
void TestDiscComparison::image_ofAFileChangedWhileCompared_namesTheFile()
{
    record({sound(588 * 2000, 1)});
    put(image(), m_disc.bytes);
    const auto result = comparedImage([this](int, qint64, qint64) {
        QFile file(m_tracks[0].path);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(1000) && file.write("x") == 1);
    });
    QVERIFY(!result && result.error().kind == Failure::Kind::UnreadableFile);
    QCOMPARE(result.error().detail, m_tracks[0].name);
}

void TestDiscComparison::match_ofAnImage_endsBeforeTheFirstFault()
{
    record({sound(588 * 2000, 1), sound(588 * 300, 2)});
    m_disc.bytes[1500 * kBytesPerFrame] ^= 1;
    put(image(), m_disc.bytes);
    const QList<DiscPiece> pieces = piecesOf(m_tracks);
    const ImageSound open(image());
    ImageMatch match(open.handle(), pieces);
    const auto framesOf = [&](qsizetype piece) {
        return match.framesOf(pieces[piece], &m_cancelled, [](int, qint64, qint64) {});
    };
    QVERIFY2(framesOf(0) > 1000 && framesOf(0) <= 1500, QByteArray::number(framesOf(0)));
    QCOMPARE(framesOf(1), 150);
    QCOMPARE(framesOf(2), 300);
    m_cancelled = true;
    QCOMPARE(framesOf(2), 0);
}

void TestDiscComparison::view_ofAFileThatIsCutOff_showsZerosAndSaysSo_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::newRow("to nothing") << qint64{0};
    QTest::newRow("at a page") << qint64{1 << 20};
    QTest::newRow("by a byte") << qint64{(3 << 20) - 1};
}

void TestDiscComparison::view_ofAFileThatIsCutOff_showsZerosAndSaysSo()
{
    QFETCH(qint64, bytes);
    QFile file(put(m_folder.filePath("view"), QByteArray(3 << 20, 'x')));
    QVERIFY(file.open(QIODevice::ReadWrite));
    FileView view;
    const qint64 size = (3 << 20) - 1000;
    QVERIFY(view.show(file.handle(), 1000, size));
    QCOMPARE(view.at(0)[size - 1], 'x');
    view.forget(size - 1);
    QCOMPARE(view.at(0)[size - 1], 'x');
    QVERIFY(view.isWhole());
    QVERIFY(file.resize(bytes));
    QCOMPARE(view.at(0)[size - 1], '\0');
    QVERIFY(!view.isWhole());
    QVERIFY(file.resize(3 << 20));
    QCOMPARE(view.isWhole(),
             size + 1000 - bytes == 1); // nobody saw the missing byte but as the zero it is now
}

/// A place that is missing from somebody else's window ends the program, as it does without any view.
void TestDiscComparison::view_leavesOtherFaultsAlone()
{
    QFile file(put(m_folder.filePath("view"), QByteArray(1 << 20, 'x')));
    QVERIFY(file.open(QIODevice::ReadWrite));
    FileView view;
    QVERIFY(view.show(file.handle(), 0, 1 << 20));
    auto* other = static_cast<char*>(mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file.handle(), 0));
    QVERIFY(other != MAP_FAILED && file.resize(0));
    const pid_t child = fork();
    if (child == 0)
        _exit(other[0] == 'x' ? 1 : 0);
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFSIGNALED(status) || WEXITSTATUS(status) > 1); // a sanitizer makes an exit of it
    munmap(other, 4096);
}

void TestDiscComparison::goneDrive_endsTheComparing()
{
    record({sound(588 * 300, 1)});
    m_disc.goneAt = 200;
    QVERIFY(compared().error().kind == Failure::Kind::DeviceGone);
}

void TestDiscComparison::changedFile_endsTheComparing()
{
    record({sound(588 * 300, 1)});
    QFile file(m_tracks[0].path);
    QVERIFY(file.open(QIODevice::Append) && file.write("x") == 1);
    file.close();
    const auto result = compared();
    QVERIFY(!result && result.error().kind == Failure::Kind::UnreadableFile);
    QCOMPARE(result.error().detail, m_tracks[0].name);
}

void TestDiscComparison::cancel_endsTheComparing()
{
    record({sound(588 * 300, 1)});
    m_cancelled = true;
    QVERIFY(compared().error().kind == Failure::Kind::Cancelled);
}

void TestDiscComparison::progress_countsEachTrackToItsEnd()
{
    record({sound(588 * 300, 1), sound(588 * 310, 2)});
    QVERIFY(compared());
    QVERIFY(m_told.contains(QList<qint64>{1, 300, 300}));
    QCOMPARE(m_told.last(), (QList<qint64>{2, 310, 310}));
    for (qsizetype i = 1; i < m_told.size(); ++i)
        QVERIFY(m_told[i] > m_told[i - 1]);
}

void TestDiscComparison::readOffset_ofShiftedSound_isFound_data()
{
    QTest::addColumn<int>("pairs");
    for (const int pairs : {0, 1, -1, 6, -6, 102, 667, -1164, 1776, 587, 588, -588, 2940, -2940})
        QTest::addRow("%d", pairs) << pairs;
}

void TestDiscComparison::readOffset_ofShiftedSound_isFound()
{
    QFETCH(int, pairs);
    for (const bool steady : {false, true}) {
        record(steady ? QList{tone(588 * 300), tone(588 * 320), tone(588 * 310)}
                      : QList{sound(588 * 300, 1), sound(588 * 320, 2), sound(588 * 310, 3)});
        m_disc.shift(pairs);
        const int offset = readOffsetOf(m_disc, piecesOf(m_tracks));
        QCOMPARE(offset, pairs);
        QVERIFY(compared(offset)->isIdentical());
        QCOMPARE(compared(0)->isIdentical(), pairs == 0);
    }
    record({tone(588 * 300)});
    m_disc.shift(pairs);
    QVERIFY(compared(readOffsetOf(m_disc, piecesOf(m_tracks)))->isIdentical());
}

void TestDiscComparison::readOffset_ofSilence_isNone()
{
    record({QByteArray(588 * 4 * 300, '\0'), QByteArray(588 * 4 * 300, '\0')});
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 0);
    m_disc.bytes.fill(1);
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 0);
}

void TestDiscComparison::readOffset_withDamage_comesFromTheNextLook()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.shift(30);
    m_disc.bytes[150 * kBytesPerFrame + 5] = static_cast<char>(~m_disc.bytes[150 * kBytesPerFrame + 5]);
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 30);
    m_disc.unreadable.insert(450, 1);
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 30);
}

void TestDiscComparison::readOffset_withAMissingFrame_isThatOfTheBeginning()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2), sound(588 * 300, 3)});
    m_disc.bytes.remove(200 * kBytesPerFrame, kBytesPerFrame);
    m_disc.bytes += QByteArray(kBytesPerFrame, '\0');
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 0);
}

void TestDiscComparison::readOffset_beyondItsBounds_isNotTaken()
{
    record({sound(588 * 300, 1), sound(588 * 300, 2)});
    m_disc.shift(kMostReadOffset + 1);
    QCOMPARE(readOffsetOf(m_disc, piecesOf(m_tracks)), 0);
}

QTEST_GUILESS_MAIN(TestDiscComparison)
#include "tst_disccomparison.moc"
