#include "DiscImage.h"
#include "WavMaker.h"

#include "common/NativeName.h"
#include "common/StagedFile.h"
#include "engines/burn/compare/FileLease.h"
#include "engines/burn/image/CueSheet.h"
#include "engines/burn/image/ImageRecorder.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <cdio/cdio.h>
#include <cdio/disc.h>

#include <functional>
#include <utility>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

using namespace zib;

namespace {

bool g_flushFails = false; ///< Of whatever is longer than a sheet.

} // namespace

// Stands before the system's own for everything that is linked into this program.
extern "C" int fsync(int file)
{
    struct stat info = {};
    if (g_flushFails && ::fstat(file, &info) == 0 && info.st_size > 100'000) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, file));
}

namespace {

/// Remembers what a recorder tells, and may do something at one of the steps.
struct Listener final : BurnObserver
{
    void readingTrack(int track) override { note(QString("reading %1").arg(track)); }
    void progress(int track, qint64 done, qint64 size) override
    {
        last = QString("%1: %2 of %3").arg(track).arg(done).arg(size);
        if (onProgress)
            onProgress(track, done);
    }
    void closingTrack(int track) override { note(QString("closing %1").arg(track)); }
    void closingDisc() override { note("closing disc"); }
    void comparing(int track, qint64 done, qint64 of) override
    {
        if (firstCompared.isEmpty())
            firstCompared = QString("%1: %2 of %3").arg(track).arg(done).arg(of);
        compared = done == of ? track : compared;
        if (onCompare)
            onCompare();
    }
    void remark(const QString& text) override { remarks << text; }
    void note(const QString& step)
    {
        if (!last.isEmpty())
            steps << last;
        last.clear();
        steps << step;
        if (onStep)
            onStep(step);
    }

    QStringList steps;
    QStringList remarks;
    QString last;
    QString firstCompared; ///< What was told of comparing first.
    int compared = 0;      ///< The last track that was compared to its end.
    std::function<void(int, qint64)> onProgress;
    std::function<void()> onCompare;
    std::function<void(const QString&)> onStep;
};

/// A folder for images and tracks of the given numbers of sample pairs.
struct Bench
{
    explicit Bench(const QList<qint64>& lengths)
    {
        for (qsizetype i = 0; i < lengths.size(); ++i) {
            sounds << sound(lengths[i], int(i) + 1);
            const QString path = put(folder.filePath(QString("%1.wav").arg(i + 1)), cdWav(sounds.last()));
            job.tracks << *findTrack(path);
        }
        job.cancelled = &cancelled;
    }
    std::optional<BurnError> write() { return ImageRecorder(images()).write(job, listener); }
    QString images() const { return folder.filePath("Images"); }
    /// Everything in the folder of images, hidden files too.
    QStringList found() const
    {
        return QDir(images()).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    }
    /// Somebody looks into the image as it is closed: it is compared from its beginning on then.
    void lookIntoImageAtItsEnd()
    {
        listener.onStep = [this](const QString& step) {
            QFile image(QDir(images()).filePath(found().value(0)));
            if (step == "closing disc")
                QVERIFY(image.open(QIODevice::ReadOnly));
        };
    }
    /// Flips a bit of the image that is being written.
    void flipBitOfImage(qint64 byte) const
    {
        QFile image(QDir(images()).filePath(found().value(0)));
        char value = 0;
        QVERIFY(image.open(QIODevice::ReadWrite) && image.seek(byte));
        image.read(&value, 1);
        value = static_cast<char>(value ^ 1);
        QVERIFY(image.seek(byte) && image.write(&value, 1) == 1);
    }
    QString cue() const { return QDir(images()).filePath(found().value(1)); }

    QTemporaryDir folder;
    QList<QByteArray> sounds;
    std::atomic<bool> cancelled = false;
    BurnJob job;
    Listener listener;
};

QByteArray fileContentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct CloseCdio
{
    void operator()(CdIo_t* disc) const { cdio_destroy(disc); }
};
using Disc = std::unique_ptr<CdIo_t, CloseCdio>;

/// The samples of a track as the library reads them, up to the next track's gap.
QByteArray readTrack(const QString& cue, int track)
{
    const auto image = demo::DiscImage::open(cue);
    if (!image)
        return {};
    const auto tracks = image->tracks();
    if (!tracks || tracks->size() < track)
        return {};
    const demo::DiscTrack& place = tracks->at(track - 1);
    return image->read(place.start, place.frames);
}

} // namespace

/// The recorder of disc images, read back by a library that is not ours.
class TestImageRecorder : public QObject
{
    Q_OBJECT
private slots:
    void identity_always_isABlankDiscOf80Minutes();
    void write_severalTracks_readsBackBitForBit();
    void write_aShortTrack_isPaddedToFourSeconds();
    void write_99Tracks_areAllThere();
    void write_withNames_putsThemIntoTheSheet();
    void write_withOddNames_putsWhatASheetCanHold();
    void write_thatNobodyTouches_isComparedMeanwhile();
    void write_withAChangedSample_namesItsPlace();
    void write_withABitFlippedBehindIt_namesItsPlace();
    void write_withABitFlippedBeforeIt_isRight();
    void write_changedBehindTheComparing_isAnError_data();
    void write_changedBehindTheComparing_isAnError();
    void write_replacedByAnotherFile_isAnError();
    void write_cutOffWhileCompared_isAnError();
    void write_intoAFolderThatGoesWhileCompared_saysSo();
    void write_ofAFileThatGoesWhileCompared_keepsTheImage();
    void write_cancelledWhileCompared_isKeptAndSaysSo();
    void write_intoAFolderThatIsNoUtf8_isComparedToo();
    void write_always_tellsItsStepsInOrder();
    void write_twiceInOneSecond_replacesNothing();
    void write_aSimulation_leavesNothing();
    void write_cancelledAnywhere_leavesNothing_data();
    void write_cancelledAnywhere_leavesNothing();
    void write_cancelledSimulation_isCancelled();
    void write_whenASourceVanishes_namesItAndLeavesNothing();
    void write_whenASourceIsCutOff_namesItAndLeavesNothing();
    void write_intoAFullStorage_saysSoAndLeavesNothing_data();
    void write_intoAFullStorage_saysSoAndLeavesNothing();
    void write_toAStorageThatFailsWhileCompared_leavesNothing();
    void write_whenTheFolderCannotBeMade_saysSo();
    void write_whenTheFolderMayNotBeWritten_saysSo();
    void write_whileRunning_hasNoFinalName();
    void write_whenTheImageIsTamperedWith_isAnError_data();
    void write_whenTheImageIsTamperedWith_isAnError();
    void write_afterAKilledRun_removesWhatItLeft();
    void write_whileAnotherProgramWrites_leavesItsFileAlone();
    void keep_whereAFileStands_replacesNothing();
    void killed_inTheMiddle_leavesNoImage();
    void parseCue_ofWhatIsNoSheetOfOurs_isRefused_data();
    void parseCue_ofWhatIsNoSheetOfOurs_isRefused();
};

void TestImageRecorder::identity_always_isABlankDiscOf80Minutes()
{
    QTemporaryDir folder;
    ImageRecorder recorder(folder.filePath("Images"));
    QVERIFY(!recorder.path().isEmpty() && !recorder.maker().isEmpty() && !recorder.model().isEmpty());
    QVERIFY(recorder.canWriteCdR() && recorder.canWriteAudio());
    const auto medium = recorder.inspect({});
    QVERIFY(medium);
    QCOMPARE(medium->status, DVDWriterPro::kBlankDisc);
    QCOMPARE(medium->holdsData, false);
    QCOMPARE(medium->capacity.toMsf(), QString("80:00:00"));
    QVERIFY(!QFileInfo::exists(folder.filePath("Images")));
}

void TestImageRecorder::write_severalTracks_readsBackBitForBit()
{
    Bench bench({450 * 588, 333 * 588 + 1, 500 * 588 - 1});
    QVERIFY(!bench.write());
    QCOMPARE(bench.found().size(), 2);
    QVERIFY(bench.found()[0].startsWith("Disc 20") && bench.found()[0].endsWith(".bin"));
    QCOMPARE(bench.found()[1].chopped(4), bench.found()[0].chopped(4));
    const Disc disc(cdio_open(qPrintable(bench.cue()), DRIVER_BINCUE));
    QVERIFY(disc);
    QCOMPARE(int(cdio_get_num_tracks(disc.get())), 3);
    QCOMPARE(cdio_get_discmode(disc.get()), CDIO_DISC_MODE_CD_DA);
    const QList<int> starts{0, 450 + 150, 450 + 150 + 334 + 150};
    for (int track = 1; track <= 3; ++track) {
        QCOMPARE(cdio_get_track_lsn(disc.get(), track_t(track)), starts[track - 1]);
        const QByteArray read = readTrack(bench.cue(), track);
        const QByteArray& written = bench.sounds[track - 1];
        QCOMPARE(read.size(), bench.job.tracks[track - 1].length.bytes());
        QVERIFY(read.left(written.size()) == written);
        QCOMPARE(read.mid(written.size()).count('\0'), read.size() - written.size());
    }
    QCOMPARE(cdio_get_disc_last_lsn(disc.get()), starts[2] + 500);
}

void TestImageRecorder::write_aShortTrack_isPaddedToFourSeconds()
{
    Bench bench({10, 588});
    QVERIFY(!bench.write());
    const Disc disc(cdio_open(qPrintable(bench.cue()), DRIVER_BINCUE));
    QVERIFY(disc);
    QCOMPARE(readTrack(bench.cue(), 1).size(), 300 * 2352);
    QVERIFY(readTrack(bench.cue(), 2).startsWith(bench.sounds[1]));
}

void TestImageRecorder::write_99Tracks_areAllThere()
{
    Bench bench(QList<qint64>(99, 1));
    QVERIFY(!bench.write());
    const Disc disc(cdio_open(qPrintable(bench.cue()), DRIVER_BINCUE));
    QVERIFY(disc);
    QCOMPARE(int(cdio_get_num_tracks(disc.get())), 99);
    QCOMPARE(cdio_get_track_lsn(disc.get(), 99), 98 * 450);
    QVERIFY(readTrack(bench.cue(), 99).startsWith(bench.sounds[98]));
}

void TestImageRecorder::write_withNames_putsThemIntoTheSheet()
{
    Bench bench({588, 588, 588});
    bench.job.names =
        namesOfDisc(QStringLiteral("Größe"),
                    {{QStringLiteral("Щука"), "Choir"}, {"say \"hi\"\n there", "Choir"}, {"", "Choir"}});
    QVERIFY(!bench.write());
    QFile sheet(bench.cue());
    QVERIFY(sheet.open(QIODevice::ReadOnly));
    const auto content = parseCue(sheet.readAll());
    QVERIFY(content);
    QCOMPARE(content->names.title, QStringLiteral("Größe"));
    QCOMPARE(content->names.artist, QString("Choir"));
    QCOMPARE(content->names.tracks[0].title, QStringLiteral("Щука"));
    QCOMPARE(content->names.tracks[1].title, QString("say \"hi\" there"));
    QCOMPARE(content->names.tracks[2], (TrackNames{"", "Choir"}));
    const Disc disc(cdio_open(qPrintable(bench.cue()), DRIVER_BINCUE));
    QVERIFY(disc);
    const cdtext_t* text = cdio_get_cdtext(disc.get());
    QVERIFY(text);
    // The library takes every sheet for Latin-1 and tells it in UTF-8.
    const auto told = [text](cdtext_field_t field, track_t track) {
        return QString::fromUtf8(QString::fromUtf8(cdtext_get_const(text, field, track)).toLatin1());
    };
    QCOMPARE(told(CDTEXT_FIELD_TITLE, 0), QStringLiteral("Größe"));
    QCOMPARE(told(CDTEXT_FIELD_TITLE, 1), QStringLiteral("Щука"));
    QCOMPARE(told(CDTEXT_FIELD_PERFORMER, 3), QString("Choir"));
    QVERIFY(cdio_get_track_copy_permit(disc.get(), 1) == CDIO_TRACK_FLAG_TRUE);
}

/// Half a letter, as in a damaged tag, has no bytes in UTF-8; it must not look like a sheet that reads back
/// wrong.
void TestImageRecorder::write_withOddNames_putsWhatASheetCanHold()
{
    Bench bench({588, 588, 588, 588});
    const QString half = QString("a") + QChar(0xD83D) + "b";
    bench.job.names =
        namesOfDisc("C:\\", {{half, QString::fromLatin1("x\0y", 3) + QChar(0x1B) + QChar(0x85)},
                             {"\"quoted\"", "back\\\"slash\\"},
                             {QString(QChar(0x202E)) + QStringLiteral("שלום"), QString(200, u'ż')},
                             {QStringLiteral("😀 e\u0301"), "TRACK 02 AUDIO"}});
    const auto error = bench.write();
    QVERIFY2(!error, error ? qPrintable(error->description) : "");
    const auto content = parseCue(fileContentOf(bench.cue()));
    QVERIFY(content);
    const auto& names = content->names;
    QCOMPARE(names.title, QString("C:\\"));
    QVERIFY((names.tracks[0] == TrackNames{"ab", "xy"}));
    for (int track = 1; track < 4; ++track)
        QCOMPARE(names.tracks[track], bench.job.names.tracks[track]);
}

/// A pause before the second track gives the comparing time for the first one.
void TestImageRecorder::write_thatNobodyTouches_isComparedMeanwhile()
{
    QTemporaryFile probe;
    if (!probe.open() || !FileLease(probe.handle()).isHeld())
        QSKIP("The storage of temporary files gives no leases.");
    const QString whole = "1: 1000 of 1000";
    QString first;
    for (int pause = 25; first != whole && pause < 10'000; pause *= 2) {
        Bench bench({588 * 1000, 588 * 300});
        bench.listener.onStep = [pause](const QString& step) {
            if (step == "reading 2")
                QThread::msleep(static_cast<unsigned long>(pause));
        };
        QVERIFY(!bench.write());
        QCOMPARE(bench.listener.compared, 2);
        first = bench.listener.firstCompared;
    }
    QCOMPARE(first, whole);
}

void TestImageRecorder::write_withAChangedSample_namesItsPlace()
{
    Bench bench({588 * 300, 588 * 400});
    bench.listener.onStep = [&bench](const QString& step) {
        if (step != "closing disc")
            return;
        QFile image(QDir(bench.images()).filePath(bench.found().value(0)));
        if (image.open(QIODevice::ReadWrite) && image.seek((450 + 75) * 2352 + 7))
            image.write("x");
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kVerify);
    QVERIFY2(error->description.contains("track 2 at 00:01:00"), qPrintable(error->description));
    QCOMPARE(bench.found(), QStringList());
}

/// What happens to the beginning of an image while its end is being written.
void TestImageRecorder::write_withABitFlippedBehindIt_namesItsPlace()
{
    Bench bench({588 * 300, 588 * 400});
    bool done = false;
    bench.listener.onProgress = [&](int track, qint64) {
        if (track == 2 && !std::exchange(done, true))
            bench.flipBitOfImage(100 * 2352 + 7);
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kVerify);
    QVERIFY2(error->description.contains("track 1 at 00:01:25"), qPrintable(error->description));
    QVERIFY2(error->description.contains("1 frame differs"), qPrintable(error->description));
    QCOMPARE(bench.found(), QStringList());
}

/// The writing goes over it.
void TestImageRecorder::write_withABitFlippedBeforeIt_isRight()
{
    Bench bench({588 * 300, 588 * 400});
    bool done = false;
    bench.listener.onProgress = [&](int track, qint64) {
        if (track == 1 && !std::exchange(done, true))
            bench.flipBitOfImage(600 * 2352 + 7);
    };
    QVERIFY(!bench.write());
    QVERIFY(done);
    QCOMPARE(readTrack(bench.cue(), 2), bench.sounds[1]);
}

void TestImageRecorder::write_cutOffWhileCompared_isAnError()
{
    Bench bench({588 * 300, 588 * 1500});
    bench.lookIntoImageAtItsEnd();
    bench.listener.onCompare = [&] {
        QFile::resize(QDir(bench.images()).filePath(bench.found().value(0)), 2'000'000);
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kVerify);
    QVERIFY2(error->description.contains("cannot be read"), qPrintable(error->description));
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_changedBehindTheComparing_isAnError_data()
{
    QTest::addColumn<bool>("longer");
    QTest::addColumn<QString>("told");
    QTest::newRow("a bit") << false << "1 frame differs";
    QTest::newRow("a byte more") << true << "does not show the tracks that were written";
}

/// Where the comparing has passed, but before the image has its name.
void TestImageRecorder::write_changedBehindTheComparing_isAnError()
{
    QFETCH(bool, longer);
    QFETCH(QString, told);
    Bench bench({588 * 300, 588 * 1500});
    bench.listener.onCompare = [&] {
        if (bench.listener.compared < 2)
            return;
        bench.listener.onCompare = nullptr;
        const QString image = QDir(bench.images()).filePath(bench.found().value(0));
        longer ? void(QFile::resize(image, QFileInfo(image).size() + 1)) : bench.flipBitOfImage(3000);
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kVerify);
    QVERIFY2(error->description.contains(told), qPrintable(error->description));
    QCOMPARE(bench.found(), QStringList());
}

/// Another file under the image's hidden name opens nothing of ours.
void TestImageRecorder::write_replacedByAnotherFile_isAnError()
{
    Bench bench({588 * 300, 588 * 1500});
    QVERIFY(!bench.write());
    QByteArray other = fileContentOf(QDir(bench.images()).filePath(bench.found().value(0)));
    other[3000] = static_cast<char>(other[3000] ^ 1);
    const QString path = put(bench.folder.filePath("other.bin"), other);
    QVERIFY(QDir(bench.images()).removeRecursively());
    bench.listener.onStep = [&](const QString& step) {
        if (step == "closing disc")
            QVERIFY(std::rename(qPrintable(path),
                                qPrintable(QDir(bench.images()).filePath(bench.found().value(0)))) == 0);
    };
    const auto error = bench.write();
    QVERIFY(error);
    QVERIFY2(error->description.contains("went away while it was compared"), qPrintable(error->description));
    QCOMPARE(bench.found().size(), 1); // It is not ours to remove.
    QVERIFY(fileContentOf(QDir(bench.images()).filePath(bench.found().value(0))) == other);
}

void TestImageRecorder::write_intoAFolderThatGoesWhileCompared_saysSo()
{
    Bench bench({588 * 300, 588 * 1500});
    bench.lookIntoImageAtItsEnd();
    bench.listener.onCompare = [&] {
        bench.flipBitOfImage(2352 * 1500); // the files that are open yet go on to be read
        QDir(bench.images()).removeRecursively();
        bench.listener.onCompare = nullptr;
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kStorage);
    QVERIFY2(error->description.contains("went away while it was compared"), qPrintable(error->description));
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_ofAFileThatGoesWhileCompared_keepsTheImage()
{
    Bench bench({588 * 300, 588 * 1500});
    bench.listener.onStep = [&](const QString& step) {
        if (step == "closing disc") {
            QVERIFY(QFile(QDir(bench.images()).filePath(bench.found().value(0))).open(QIODevice::ReadOnly));
            QFile::remove(bench.job.tracks[1].path);
        }
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kSourceFile);
    QCOMPARE(bench.found().size(), 2);
    QVERIFY2(error->description.endsWith(" The disc image: " + bench.cue()), qPrintable(error->description));
    QCOMPARE(readTrack(bench.cue(), 2), bench.sounds[1]);
}

void TestImageRecorder::write_cancelledWhileCompared_isKeptAndSaysSo()
{
    Bench bench({588 * 300, 588 * 1500});
    bench.lookIntoImageAtItsEnd();
    bench.listener.onCompare = [&] { bench.cancelled = true; };
    QVERIFY(!bench.write());
    QVERIFY(bench.listener.compared < 2);
    QVERIFY2(bench.listener.remarks.contains("The disc was written, but not compared with its files."),
             qPrintable(bench.listener.remarks.join('|')));
    QCOMPARE(bench.found().size(), 2);
    QCOMPARE(readTrack(bench.cue(), 2), bench.sounds[1]);
}

void TestImageRecorder::write_intoAFolderThatIsNoUtf8_isComparedToo()
{
    Bench bench({588 * 300, 588 * 300});
    const QString images = nativeText(nativeBytes(bench.folder.path()) + "/Caf\xE9 \xFF");
    QVERIFY(!ImageRecorder(images).write(bench.job, bench.listener));
    QCOMPARE(bench.listener.compared, 2);
    QCOMPARE(folderEntries(images).filter(QRegularExpression("^Disc .*[.](bin|cue)$")).size(), 2);

    bench.listener.onStep = [&images](const QString& step) {
        const QString part = folderEntries(images).filter(QRegularExpression("part$")).value(0);
        std::FILE* image =
            step == "closing disc" ? std::fopen(nativeName(images + "/" + part).constData(), "r+") : nullptr;
        if (image) {
            std::fseek(image, 20 * 2352 + 1, SEEK_SET);
            std::fputc('x', image);
            std::fclose(image);
        }
    };
    const auto error = ImageRecorder(images).write(bench.job, bench.listener);
    QVERIFY(error);
    QVERIFY2(error->description.contains("track 1 at 00:00:20"), qPrintable(error->description));
    for (const QString& name : folderEntries(images)) // the toolkit could not
        QVERIFY(removeFile(images + '/' + name));
    QCOMPARE(std::remove(nativeName(images).constData()), 0);
}

void TestImageRecorder::write_always_tellsItsStepsInOrder()
{
    for (const bool simulate : {false, true}) {
        Bench bench({588, 301 * 588});
        bench.job.simulate = simulate;
        QVERIFY(!bench.write());
        QCOMPARE(bench.listener.steps,
                 (QStringList{"reading 1", "1: 705600 of 705600", "closing 1", "reading 2",
                              "2: 707952 of 707952", "closing 2", "closing disc"}));
    }
}

void TestImageRecorder::write_twiceInOneSecond_replacesNothing()
{
    Bench bench({588});
    for (int n = 0; n < 4; ++n)
        QVERIFY(!bench.write());
    QCOMPARE(bench.found().size(), 8);
}

void TestImageRecorder::write_aSimulation_leavesNothing()
{
    Bench bench({588, 588});
    bench.job.simulate = true;
    QVERIFY(!bench.write());
    QVERIFY(!QFileInfo::exists(bench.images()));
}

void TestImageRecorder::write_cancelledAnywhere_leavesNothing_data()
{
    QTest::addColumn<QString>("step");
    for (const char* step : {"reading 1", "closing 1", "reading 2", "closing 2", "closing disc"})
        QTest::newRow(step) << QString(step);
}

void TestImageRecorder::write_cancelledAnywhere_leavesNothing()
{
    QFETCH(QString, step);
    Bench bench({400 * 588, 400 * 588});
    bench.listener.onStep = [&](const QString& now) { bench.cancelled = bench.cancelled || now == step; };
    const auto error = bench.write();
    QVERIFY(error);
    QVERIFY(error->cancelled);
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_cancelledSimulation_isCancelled()
{
    Bench bench({588});
    bench.job.simulate = true;
    bench.listener.onStep = [&](const QString& now) { bench.cancelled = now == "closing disc"; };
    const auto error = bench.write();
    QVERIFY(error && error->cancelled);
}

void TestImageRecorder::write_whenASourceVanishes_namesItAndLeavesNothing()
{
    Bench bench({588, 588});
    QFile::remove(bench.job.tracks[1].path);
    const auto error = bench.write();
    QVERIFY(error && !error->cancelled);
    QCOMPARE(error->error, BurnErrorCode::kSourceFile);
    QVERIFY(error->description.contains(bench.job.tracks[1].name));
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_whenASourceIsCutOff_namesItAndLeavesNothing()
{
    Bench bench({2000 * 588});
    bench.listener.onProgress = [&](int, qint64) { QFile::resize(bench.job.tracks[0].path, 100'000); };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kSourceFile);
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_intoAFullStorage_saysSoAndLeavesNothing_data()
{
    QTest::addColumn<qint64>("room");
    QTest::newRow("no byte") << qint64{0};
    QTest::newRow("half of it") << qint64{400'000};
    QTest::newRow("all but a byte") << qint64{705600 + 150 * 2352 + 705600 - 1};
}

void TestImageRecorder::write_intoAFullStorage_saysSoAndLeavesNothing()
{
    QFETCH(qint64, room);
    Bench bench({588, 588});
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{static_cast<rlim_t>(room), before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const auto error = bench.write();
    setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kStorage);
    QVERIFY(error->description.contains(bench.images()));
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_toAStorageThatFailsWhileCompared_leavesNothing()
{
    Bench bench({588 * 300, 588 * 1500});
    g_flushFails = true;
    const auto error = bench.write();
    g_flushFails = false;
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kStorage);
    QCOMPARE(bench.listener.compared, 2);
    QCOMPARE(bench.listener.remarks, QStringList());
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_whenTheFolderCannotBeMade_saysSo()
{
    Bench bench({588});
    put(bench.images(), "a file in the way");
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kStorage);
    QVERIFY(error->description.contains(bench.images()));
}

void TestImageRecorder::write_whenTheFolderMayNotBeWritten_saysSo()
{
    Bench bench({588});
    const auto error = ImageRecorder("/proc/self").write(bench.job, bench.listener);
    QVERIFY(error);
    QVERIFY(error->error == BurnErrorCode::kNoPermission || error->error == BurnErrorCode::kStorage);
    QVERIFY(error->description.contains("/proc/self"));
}

void TestImageRecorder::write_whileRunning_hasNoFinalName()
{
    Bench bench({588, 588});
    QStringList names;
    const auto look = [&](const QString&) { names << bench.found(); };
    bench.listener.onStep = look;
    QVERIFY(!bench.write());
    QVERIFY(!names.isEmpty());
    for (const QString& name : names)
        QVERIFY2(name.startsWith(".") && name.endsWith(".part"), qPrintable(name));
}

void TestImageRecorder::write_whenTheImageIsTamperedWith_isAnError_data()
{
    QTest::addColumn<qint64>("bytes"); // -1: removed
    QTest::newRow("cut off") << qint64{1000};
    QTest::newRow("too long") << qint64{705600 + 1};
    QTest::newRow("removed") << qint64{-1};
}

void TestImageRecorder::write_whenTheImageIsTamperedWith_isAnError()
{
    QFETCH(qint64, bytes);
    Bench bench({588});
    bench.listener.onStep = [&](const QString& now) {
        const QString path = QDir(bench.images()).filePath(bench.found().value(0));
        if (now == "closing disc")
            bytes < 0 ? QFile::remove(path) : QFile::resize(path, bytes);
    };
    const auto error = bench.write();
    QVERIFY(error);
    QCOMPARE(error->error, BurnErrorCode::kVerify);
    QVERIFY(!error->description.isEmpty());
    QCOMPARE(bench.found(), QStringList());
}

void TestImageRecorder::write_afterAKilledRun_removesWhatItLeft()
{
    Bench bench({588});
    QDir().mkpath(bench.images());
    put(QDir(bench.images()).filePath(".Disc 2020-01-01 00.00.00.bin.part"), "half");
    put(QDir(bench.images()).filePath(".keep"), "not ours");
    QVERIFY(!bench.write());
    QCOMPARE(bench.found().size(), 3);
    QCOMPARE(bench.found()[0], QString(".keep"));
}

void TestImageRecorder::write_whileAnotherProgramWrites_leavesItsFileAlone()
{
    Bench bench({588});
    QDir().mkpath(bench.images());
    StagedFile other;
    QVERIFY(other.create(bench.images(), "Disc 2020-01-01 00.00.00.bin"));
    QVERIFY(!bench.write());
    QVERIFY(other.write("x", 1));
    QVERIFY(other.keep());
    QVERIFY(QFileInfo::exists(QDir(bench.images()).filePath("Disc 2020-01-01 00.00.00.bin")));
}

void TestImageRecorder::keep_whereAFileStands_replacesNothing()
{
    QTemporaryDir folder;
    {
        StagedFile file;
        QVERIFY(file.create(folder.path(), "Disc.bin"));
        QVERIFY(file.write("new", 3));
        put(folder.filePath("Disc.bin"), "old");
        QVERIFY(!file.keep());
    }
    QFile kept(folder.filePath("Disc.bin"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("old"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"Disc.bin"});
}

void TestImageRecorder::killed_inTheMiddle_leavesNoImage()
{
    if (qEnvironmentVariableIsSet("ZIB_KILLED_FOLDER")) { // the child that kills itself while it writes
        Bench bench({588, 588});
        bench.listener.onStep = [](const QString& now) {
            if (now == qEnvironmentVariable("ZIB_KILLED_STEP"))
                raise(SIGKILL);
        };
        ImageRecorder(qEnvironmentVariable("ZIB_KILLED_FOLDER")).write(bench.job, bench.listener);
        return;
    }
    for (const char* step : {"reading 1", "closing 2", "closing disc"}) {
        Bench bench({588});
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("ZIB_KILLED_FOLDER", bench.images());
        environment.insert("ZIB_KILLED_STEP", step);
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {"killed_inTheMiddle_leavesNoImage"});
        QVERIFY(child.waitForFinished(60'000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QCOMPARE(QDir(bench.images()).entryList(QDir::Files), QStringList());
        QVERIFY(!bench.write());
        QCOMPARE(bench.found().size(), 2);
    }
}

void TestImageRecorder::parseCue_ofWhatIsNoSheetOfOurs_isRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    const QByteArray head = "FILE \"a.bin\" BINARY\n";
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no track") << head;
    QTest::newRow("no file") << QByteArray("TRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    QTest::newRow("two files") << head + head + "TRACK 01 AUDIO\nINDEX 01 00:00:00\n";
    QTest::newRow("frame 75") << head + "TRACK 01 AUDIO\nINDEX 01 00:00:75\n";
    QTest::newRow("second 60") << head + "TRACK 01 AUDIO\nINDEX 01 00:60:00\n";
    QTest::newRow("no start") << head + "TRACK 01 AUDIO\nINDEX 00 00:00:00\n";
    QTest::newRow("wrong number") << head + "TRACK 02 AUDIO\nINDEX 01 00:00:00\n";
    QTest::newRow("backwards")
        << head + "TRACK 01 AUDIO\nINDEX 01 00:05:00\nTRACK 02 AUDIO\nINDEX 01 00:04:00\n";
    QTest::newRow("index before its track") << head + "INDEX 01 00:00:00\nTRACK 01 AUDIO\n";
    QTest::newRow("data track") << head + "TRACK 01 MODE1/2352\nINDEX 01 00:00:00\n";
}

void TestImageRecorder::parseCue_ofWhatIsNoSheetOfOurs_isRefused()
{
    QFETCH(QByteArray, text);
    QVERIFY(!parseCue(text));
}

QTEST_GUILESS_MAIN(TestImageRecorder)
#include "tst_imagerecorder.moc"
