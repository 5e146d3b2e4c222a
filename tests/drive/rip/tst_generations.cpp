#include "common/CdTime.h"
#include "drive/burn/BurnBench.h"
#include "engines/audio/makers.h"
#include "engines/cdtext/Latin1Text.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/WavNames.h"
#include "engines/rip/makers.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QStandardPaths>

using namespace zib;

namespace {

constexpr int kTracks = 12;
constexpr int kGenerations = 3;

TrackNames namesOf(int track)
{
    const QList<TrackNames> names{{QString::fromUtf8("Größe №%1"), QString::fromUtf8("Édith & Zoë")},
                                  {QString::fromUtf8("Калинка %1"), QString::fromUtf8("Хор")},
                                  {QString::fromUtf8("さくら %1"), QString::fromUtf8("カラオケ")},
                                  {QString::fromUtf8("Ελλάδα %1"), QString::fromUtf8("Χορός")}};
    const TrackNames& chosen = names[track % names.size()];
    return {chosen.title.arg(track), chosen.artist};
}

QString latin(const QString& text)
{
    return QString::fromLatin1(nearestLatin1(text));
}

QString sum(const QByteArray& samples)
{
    return QString::fromLatin1(QCryptographicHash::hash(samples, QCryptographicHash::Sha1).toHex().left(8));
}

/// One track as the list sees its file.
struct ListTrack
{
    QByteArray samples;
    TrackNames names;
    bool operator==(const ListTrack&) const = default;
};

using List = QList<ListTrack>;

List listOf(const QStringList& files)
{
    List list;
    for (const QString& file : files) {
        const auto information = makeAudioInformation();
        const bool opened = information->open(file);
        list << ListTrack{wavSamples(file), opened ? TrackNames{information->title(), information->artist()}
                                                   : TrackNames{"no file", {}}};
    }
    return list;
}

/// Writes files to a disc and copies it back.
struct Generation : BurnBench
{
    /// @returns the files of the copies; none when anything went wrong.
    QStringList goRound(const QStringList& sources, bool toImage)
    {
        QDir().mkpath(folder.filePath("Images"));
        if (!writer.initializeDrives(false) || !writer.selectDrive(toImage ? writer.driveCount() - 1 : 0))
            return {};
        writer.nameDisc("Mix");
        const List list = listOf(sources);
        for (qsizetype i = 0; i < sources.size(); ++i) {
            if (!writer.addAudioTrack(sources[i]))
                return {};
            writer.nameTrack(int(i) + 1, list[i].names);
        }
        configure();
        if (write() != "completed")
            return {};
        rips = std::make_unique<RipBench>(makeRipper(folder.filePath("Images")));
        const QString disc = toImage ? QDir(folder.filePath("Images"))
                                           .entryInfoList({"*.cue"}, QDir::Files)
                                           .value(0)
                                           .completeBaseName()
                                     : EmulatedRecorder::device();
        QList<int> all;
        QStringList copies;
        for (int track = 1; track <= sources.size(); ++track) {
            all << track;
            copies << rips->target(track);
        }
        return rips->takeDisc(disc) && rips->rip(all) == "finished" ? copies : QStringList();
    }
    /// What cdparanoia copies of the disc in the drive.
    QByteArray theirs(int track) const
    {
        const QString target = folder.filePath("theirs.wav");
        QFile::remove(target);
        QProcess::execute("cdparanoia", {"-q", "-d", "/dev/sr0", "-w", QString::number(track), target});
        return fileContent(target).mid(44);
    }

    std::unique_ptr<RipBench> rips;
};

/// Twelve files of odd lengths with names in four scripts.
QStringList makeSources(const QDir& folder)
{
    QStringList files;
    for (int track = 1; track <= kTracks; ++track) {
        const QByteArray samples = discSound(310 + track, track).left(4 * (588 * 305 + track * 131));
        files << put(folder.filePath(QString("source%1.wav").arg(track)),
                     riff(formatChunk() + chunk("data", samples) + nameChunks(namesOf(track))));
    }
    return files;
}

/// Whether a program tells a text of the disc: as its bytes, in UTF-8, or in octal digits.
bool tells(const QByteArray& told, const QString& text)
{
    const QByteArray bytes = nearestLatin1(text);
    QByteArray octal;
    for (const char byte : bytes)
        octal += static_cast<uchar>(byte) < 0x80 ? QByteArray(1, byte)
                                                 : '\\' + QByteArray::number(static_cast<uchar>(byte), 8);
    return told.contains(bytes) || told.contains(QString::fromLatin1(bytes).toUtf8()) || told.contains(octal);
}

} // namespace

/// A list that goes to a disc and back, again and again; and the same list by other ways.
class TestGenerations : public QObject
{
    Q_OBJECT
private slots:
    void list_overThreeDiscs_staysTheSame_data();
    void list_overThreeDiscs_staysTheSame();
    void list_onImageAndDrive_isTheSame();
    void names_areSeenByOthers_data();
    void names_areSeenByOthers();
};

void TestGenerations::list_overThreeDiscs_staysTheSame_data()
{
    QTest::addColumn<bool>("toImage");
    QTest::newRow("image") << true;
    QTest::newRow("drive") << false;
}

void TestGenerations::list_overThreeDiscs_staysTheSame()
{
    QFETCH(bool, toImage);
    const QTemporaryDir folder;
    QStringList files = makeSources(folder.path());
    List before = listOf(files);
    for (ListTrack& track : before) { // a disc has whole frames, and its own letters
        const qsizetype rest = track.samples.size() % kBytesPerFrame;
        track.samples += QByteArray(rest ? kBytesPerFrame - rest : 0, '\0');
        if (!toImage)
            track.names = {latin(track.names.title), latin(track.names.artist)};
    }
    std::vector<std::unique_ptr<Generation>> kept;
    for (int generation = 1; generation <= kGenerations; ++generation) {
        kept.push_back(std::make_unique<Generation>());
        files = kept.back()->goRound(files, toImage);
        QCOMPARE(files.size(), kTracks);
        const List now = listOf(files);
        for (int i = 0; i < kTracks; ++i) {
            QCOMPARE(now[i].names.title, before[i].names.title);
            QCOMPARE(now[i].names.artist, before[i].names.artist);
            QCOMPARE(now[i].samples.size(), before[i].samples.size());
            QCOMPARE(sum(now[i].samples), sum(before[i].samples));
        }
    }
}

void TestGenerations::list_onImageAndDrive_isTheSame()
{
    if (QStandardPaths::findExecutable("cdparanoia").isEmpty())
        QSKIP("cdparanoia is not installed");
    const QTemporaryDir folder;
    const QStringList sources = makeSources(folder.path());
    Generation image;
    Generation drive; // the last one made has /dev/sr0
    const List fromDrive = listOf(drive.goRound(sources, false));
    const List fromImage = listOf(image.goRound(sources, true));
    QCOMPARE(fromDrive.size(), kTracks);
    QCOMPARE(fromImage.size(), kTracks);
    std::printf("| track | samples | source | image | drive | cdparanoia |\n|---|---|---|---|---|---|\n");
    const List asked = listOf(sources);
    for (int i = 0; i < kTracks; ++i) {
        const qsizetype size = asked[i].samples.size();
        const QByteArray theirs = drive.theirs(i + 1);
        const QStringList sums{sum(asked[i].samples), sum(fromImage[i].samples.left(size)),
                               sum(fromDrive[i].samples.left(size)), sum(theirs.left(size))};
        std::printf("| %d | %lld | %s |\n", i + 1, static_cast<long long>(size / 4),
                    qPrintable(sums.join(" | ")));
        QCOMPARE(sums.count(sums.first()), 4);
        QCOMPARE(fromImage[i].samples, fromDrive[i].samples);
        QVERIFY(theirs.startsWith(fromDrive[i].samples));
        QCOMPARE(theirs.mid(size).count('\0'), theirs.size() - size);
    }
}

void TestGenerations::names_areSeenByOthers_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("cd-info") << "cd-info" << QStringList{"--no-cddb", "--no-header", "-C", "/dev/sr0"};
    QTest::newRow("cdrdao") << "sh"
                            << QStringList{"-c",
                                           "cdrdao read-toc --device /dev/sr0 --driver generic-mmc:0x10 "
                                           "disc.toc && cat disc.toc"};
    QTest::newRow("cdrskin") << "sh" << QStringList{"-c", "cdrskin dev=/dev/sr0 cdtext_to_v07t=- -toc"};
    QTest::newRow("icedax") << "icedax" << QStringList{"-D", "/dev/sr0", "-J", "-H", "-v", "titles"};
}

void TestGenerations::names_areSeenByOthers()
{
    QFETCH(QString, client);
    QFETCH(QStringList, arguments);
    const QString program = client == "sh" ? arguments[1].section(' ', 0, 0) : client;
    if (QStandardPaths::findExecutable(program).isEmpty())
        QSKIP(qPrintable(program + " is not installed"));
    Generation drive;
    QCOMPARE(drive.goRound(makeSources(drive.folder.path()), false).size(), kTracks);
    drive.rips.reset(); // lets the drive go
    QProcess run;
    run.setWorkingDirectory(drive.folder.path());
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(client, arguments);
    QVERIFY(run.waitForFinished(60'000));
    const QByteArray told = run.readAll();
    for (const TrackNames& names : {namesOf(1), namesOf(2), namesOf(3)}) {
        QVERIFY2(tells(told, names.title), told.right(3000).constData());
        QVERIFY2(tells(told, names.artist), told.right(3000).constData());
    }
}

QTEST_GUILESS_MAIN(TestGenerations)
#include "tst_generations.moc"
