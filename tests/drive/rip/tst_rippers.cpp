#include "EmulatedRecorder.h"
#include "engines/audio/makers.h"
#include "engines/burn/WavMaker.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/makers.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QStandardPaths>

using namespace zib;

namespace {

/// What one program gave of one disc: the first letters of the checksum of each track's samples.
QString sums(const QList<QByteArray>& tracks)
{
    QStringList all;
    for (const QByteArray& samples : tracks)
        all << (samples.isEmpty()
                    ? QString("-")
                    : QString::fromLatin1(
                          QCryptographicHash::hash(samples, QCryptographicHash::Sha1).toHex().left(8)));
    return all.join(' ');
}

/// A disc in the emulated drive, a folder of images, and the programs that copy them.
struct RippersBench
{
    RippersBench() : ours(makeRipper(images.path(), makeAudioFile)) {}

    void insert(const QString& name, const QList<int>& frames, const QStringList& before = {},
                const QStringList& behind = {"close"}, const QString& more = {})
    {
        QStringList recipe = before;
        for (const int length : frames) {
            const QString raw = QString("%1-%2.raw").arg(name).arg(recipe.size());
            QFile file(recorder.folder() + '/' + raw);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(discSound(length, int(recipe.size()) + 1));
            recipe << "audio " + raw + (recipe.isEmpty() ? more : QString());
        }
        recorder.insert(name, recipe + behind);
    }
    QString path(const QString& name) const { return images.filePath(name); }
    void put(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QString run(const QString& program, const QStringList& arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(images.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(program, arguments);
        const bool ended = process.waitForFinished(120'000);
        return ended && process.exitCode() == 0 ? QString() : program + ": " + process.readAll();
    }
    /// What @p program copies of the tracks; nothing of those that it refuses.
    QList<QByteArray> theirs(const QString& program, const QString& device, const QList<int>& numbers) const
    {
        QList<QByteArray> all;
        for (const int number : numbers) {
            const QString target = images.filePath("theirs.wav");
            QFile::remove(target);
            run(program, {"-q", "-d", device, "-w", QString::number(number), target});
            all << fileContent(target).mid(44);
        }
        return all;
    }
    QList<QByteArray> oursOf(const QString& device, const QList<int>& tracks)
    {
        if (!ours.takeDisc(device) || ours.rip(tracks) != "finished")
            return {};
        QList<QByteArray> all;
        for (const int track : tracks)
            all << wavSamples(ours.target(track));
        return all;
    }
    /// A line of the table: the numbers as the disc has them, the tracks as rows of the list.
    void compareDisc(const char* what, const QList<int>& numbers, const QList<int>& tracks)
    {
        const QList<QByteArray> mine = oursOf(EmulatedRecorder::device(), tracks);
        const QList<QByteArray> xiph = theirs("cdparanoia", "/dev/sr0", numbers);
        const QList<QByteArray> cdio = theirs("cd-paranoia", "/dev/sr0", numbers);
        line(what, sums(xiph), sums(cdio), sums(mine));
        QVERIFY(!mine.isEmpty() && !mine.contains(QByteArray()));
        for (const QList<QByteArray>& other : {xiph, cdio})
            if (!other.contains(QByteArray())) // some releases refuse discs whose first track is not 1
                QCOMPARE(sums(mine), sums(other));
    }
    void compareImage(const char* what, const QString& sheet, const QList<int>& numbers,
                      const QList<int>& tracks, const QList<QByteArray>& truth)
    {
        const QList<QByteArray> mine = oursOf(sheet.endsWith(".toc") ? sheet : sheet.chopped(4), tracks);
        const QList<QByteArray> cdio = theirs("cd-paranoia", path(sheet), numbers);
        line(what, "(drives only)", sums(cdio), sums(mine));
        QCOMPARE(sums(mine), sums(truth));
    }
    static void line(const char* what, const QString& xiph, const QString& cdio, const QString& mine)
    {
        std::printf("| %s | %s | %s | %s |\n", what, qPrintable(xiph), qPrintable(cdio), qPrintable(mine));
    }

    EmulatedRecorder recorder;
    QTemporaryDir images;
    RipBench ours;
};

QByteArray twoTracks(const QByteArray& file)
{
    return file + "  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    INDEX 01 00:05:25\n";
}

} // namespace

/// The ripper beside cdparanoia and cd-paranoia, on the same discs and images; prints a table of checksums.
class TestRippers : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        for (const char* program : {"cdparanoia", "cd-paranoia", "cdrdao", "toc2cue"})
            if (QStandardPaths::findExecutable(program).isEmpty())
                QSKIP(program);
        std::printf("| disc or image | cdparanoia | cd-paranoia | Zib CD Burner |\n|---|---|---|---|\n");
    }

    void discs()
    {
        {
            RippersBench bench;
            bench.insert("album", {400, 320, 350});
            bench.compareDisc("disc: three tracks", {1, 2, 3}, {1, 2, 3});
        }
        {
            RippersBench bench;
            bench.insert("five", {400, 330}, {}, {"close"}, " number=5");
            bench.compareDisc("disc: first track 5", {5, 6}, {1, 2});
        }
        {
            RippersBench bench;
            bench.insert("mixed", {400, 340}, {"data 600"});
            bench.compareDisc("disc: data before", {2, 3}, {2, 3});
        }
        RippersBench bench;
        bench.insert("extra", {400, 350}, {}, {"session", "data 300", "close"});
        bench.compareDisc("disc: data in a second session", {1, 2}, {1, 2});
    }

    void imagesOfCdrdao()
    {
        RippersBench bench;
        bench.insert("album", {400, 320, 350});
        const QList<QByteArray> truth = bench.oursOf(EmulatedRecorder::device(), {1, 2, 3});
        QCOMPARE(bench.run("cdrdao", {"read-cd", "-n", "--device", "/dev/sr0", "--driver", "generic-mmc",
                                      "--datafile", "Read.bin", "Read.toc"}),
                 QString());
        QCOMPARE(bench.run("toc2cue", {"Read.toc", "Turned.cue"}), QString());
        bench.ours.ripper = makeRipper("/nowhere");
        bench.recorder.removeDisc();
        RipBench ours(makeRipper(bench.images.path(), makeAudioFile));
        for (const auto& [what, name, sheet] : QList<std::tuple<const char*, QString, QString>>{
                 {"cdrdao read-cd, its TOC", "Read", "Read.toc"},
                 {"cdrdao toc2cue of it", "Turned", "Turned.cue"}}) {
            QVERIFY(ours.takeDisc(name));
            QCOMPARE(ours.ripper->trackCount(), 3);
            QCOMPARE(ours.rip({1, 2, 3}), QString("finished"));
            QList<QByteArray> mine;
            for (const int track : {1, 2, 3})
                mine << wavSamples(ours.target(track));
            RippersBench::line(what, "(drives only)",
                               sums(bench.theirs("cd-paranoia", bench.path(sheet), {1, 2, 3})), sums(mine));
            QCOMPARE(sums(mine), sums(truth));
        }
    }

    void images()
    {
        RippersBench bench;
        const QByteArray sound = discSound(900, 7);
        const QList<QByteArray> truth{sound.left(400 * 2352), sound.mid(400 * 2352)};
        bench.put("Plain.cue", twoTracks("FILE \"Plain.bin\" BINARY\n"));
        bench.put("Plain.bin", sound);
        bench.compareImage("image: CUE and BIN", "Plain.cue", {1, 2}, {1, 2}, truth);
        bench.put("Album.cue", twoTracks("FILE \"Album remastered.bin\" BINARY\n"));
        bench.put("Album.bin", QByteArray(sound.size(), '\0'));
        bench.put("Album remastered.bin", sound);
        bench.compareImage("image: a neighbour has the sheet's name", "Album.cue", {1, 2}, {1, 2}, truth);
        bench.put("Wave.cue", twoTracks("FILE \"Wave.wav\" WAVE\n"));
        bench.put("Wave.wav", cdWav(sound));
        bench.compareImage("image: WAVE", "Wave.cue", {1, 2}, {1, 2}, truth);
        bench.put("Files.cue",
                  "FILE \"a.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\nFILE \"b.bin\" "
                  "BINARY\n  TRACK 02 AUDIO\n    INDEX 01 00:00:00\n");
        bench.put("a.bin", truth[0]);
        bench.put("b.bin", truth[1]);
        bench.compareImage("image: a file for each track", "Files.cue", {1, 2}, {1, 2}, truth);
        QByteArray turned = sound;
        for (qsizetype i = 0; i + 1 < turned.size(); i += 2)
            std::swap(turned[i], turned[i + 1]);
        bench.put("Motorola.cue", twoTracks("FILE \"Motorola.bin\" MOTOROLA\n"));
        bench.put("Motorola.bin", turned);
        bench.compareImage("image: MOTOROLA", "Motorola.cue", {1, 2}, {1, 2}, truth);
        bench.put("Small.cue", twoTracks("FILE \"Plain.bin\" BINARY\n").toLower());
        bench.put("small.bin", QByteArray(sound.size(), '\0'));
        bench.compareImage("image: small letters", "Small.cue", {1, 2}, {1, 2}, truth);
        const QByteArray mixed = QByteArray(300 * 2352, '\x5c');
        bench.put("Mixed.cue", "FILE \"Mixed.bin\" BINARY\n  TRACK 01 MODE1/2352\n    INDEX 01 00:00:00\n"
                               "  TRACK 02 AUDIO\n    INDEX 01 00:04:00\n");
        bench.put("Mixed.bin", mixed + sound);
        bench.compareImage("image: data before", "Mixed.cue", {2}, {2}, {sound});
    }
};

QTEST_GUILESS_MAIN(TestRippers)
#include "tst_rippers.moc"
