#include "WindowRoad.h"

#include "common/CdTime.h"
#include "engines/burn/WavMaker.h"
#include "engines/cdtext/CdText.h"
#include "engines/cdtext/Latin1Text.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/WavNames.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QStandardPaths>

#include <array>

using namespace zib;

namespace {

constexpr int kTracks = 12;
constexpr int kGenerations = 3;

using Recorder = WindowRoad::Recorder;

TrackNames namesOf(int track)
{
    const QList<TrackNames> names{{QString::fromUtf8("Größe №%1"), QString::fromUtf8("Édith & Zoë")},
                                  {QString::fromUtf8("Калинка %1"), QString::fromUtf8("Хор")},
                                  {QString::fromUtf8("さくら %1"), QString::fromUtf8("カラオケ")},
                                  {QString::fromUtf8("Ελλάδα %1"), QString::fromUtf8("Χορός")}};
    const TrackNames& chosen = names[(track + track / 4) % names.size()];
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

/// A kind of source, as a user may have it.
struct Kind
{
    const char* name;
    int rateHz;
    int channels;
    bool mp3;
};

constexpr std::array<Kind, 4> kKinds{{{"44.1 kHz", 44100, 2, false},
                                      {"mono", 44100, 1, false},
                                      {"48 kHz", 48000, 2, false},
                                      {"VBR MP3", 44100, 2, true}}};

const Kind& kindOf(int track)
{
    return kKinds[static_cast<std::size_t>(track) % kKinds.size()];
}

/// The samples of one source, of an odd length.
QByteArray soundOf(int track)
{
    const Kind& kind = kindOf(track);
    const QByteArray stereo = discSound(360 + track, track).left(4 * (588 * 345 + track * 131));
    if (kind.channels == 2)
        return stereo;
    QByteArray mono;
    for (qsizetype at = 0; at < stereo.size(); at += 4)
        mono += stereo.mid(at, 2);
    return mono;
}

/// Twelve files of four kinds, with names in four scripts.
QStringList makeSources(const WindowRoad& road)
{
    QStringList files;
    for (int track = 1; track <= kTracks; ++track) {
        const Kind& kind = kindOf(track);
        const QString wav = put(road.path(QString("source%1.wav").arg(track)),
                                riff(formatChunk(1, kind.channels, kind.rateHz) +
                                     chunk("data", soundOf(track)) + nameChunks(namesOf(track))));
        const QString mp3 = road.path(QString("source%1.mp3").arg(track));
        if (kind.mp3)
            QProcess::execute("ffmpeg", {"-v", "error", "-nostdin", "-i", wav, "-c:a", "libmp3lame", "-q:a",
                                         "2", "-metadata", "title=" + namesOf(track).title, "-metadata",
                                         "artist=" + namesOf(track).artist, mp3});
        files << (kind.mp3 ? mp3 : wav);
    }
    return files;
}

/// What cdparanoia copies of the disc in the drive.
QByteArray theirs(const WindowRoad& road, int track)
{
    const QString target = road.path("theirs.wav");
    QFile::remove(target);
    QProcess::execute("cdparanoia", {"-q", "-d", "/dev/sr0", "-w", QString::number(track), target});
    return fileContent(target).mid(44);
}

/// A list as it came back from a disc.
struct Generation
{
    QList<WindowRoad::Row> rows;
    QList<QByteArray> samples;
};

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

/// A list that goes to a disc and back, again and again, through the program's own windows; and the same disc
/// in other programs' hands.
class TestGenerations : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void list_overThreeDiscs_staysTheSame_data();
    void list_overThreeDiscs_staysTheSame();
    void disc_onImageAndDrive_isTheSame();
    void discsName_isTheProjects();
    void names_areSeenByOthers_data();
    void names_areSeenByOthers();
    void cleanupTestCase() { m_road.reset(); }

private:
    /// Takes the list to a disc and back, again and again; each generation is made of the one before.
    void goRounds(Recorder recorder, QList<Generation>& generations);

    std::unique_ptr<WindowRoad> m_road;
    QList<WindowRoad::Row> m_sources;
    QList<QByteArray> m_prepared; ///< What was made of them, as the first disc took it.
    QList<QByteArray> m_theirs;
    QList<Generation> m_images;
    QList<Generation> m_discs;
    DiscNames m_onDisc;
};

void TestGenerations::initTestCase()
{
    for (const char* tool : {"ffmpeg", "cdparanoia"})
        if (QStandardPaths::findExecutable(tool).isEmpty())
            QSKIP(qPrintable(QString("%1 is not installed").arg(tool)));
    m_road = std::make_unique<WindowRoad>();
    const QStringList sources = makeSources(*m_road);
    m_sources = m_road->list(sources);
    QCOMPARE(m_sources.size(), kTracks);
    m_road->saveProject("Mix.zibp");
    goRounds(Recorder::Image, m_images);
    m_road->list(sources);
    goRounds(Recorder::Drive, m_discs);
    QVERIFY(!m_road->recorder.doorLocked());
}

void TestGenerations::goRounds(Recorder recorder, QList<Generation>& generations)
{
    for (int round = 1; round <= kGenerations; ++round) {
        if (recorder == Recorder::Drive && round > 1)
            m_road->recorder.insert(QString("disc%1").arg(round));
        const auto written = m_road->write(recorder);
        QVERIFY2(written.box == "i: Writing is completed.", qPrintable(written.box));
        if (m_prepared.isEmpty())
            for (const WindowRoad::Row& row : m_sources)
                m_prepared << wavSamples(m_road->prepared(row.path));
        if (recorder == Recorder::Drive && round == 1) {
            m_onDisc =
                namesInPacks(m_road->recorder.content()->cdTextPacks, 1, kTracks).value_or(DiscNames());
            for (int track = 1; track <= kTracks; ++track)
                m_theirs << theirs(*m_road, track);
        }
        const QStringList copies = m_road->rip(recorder, kTracks);
        QVERIFY2(!copies.isEmpty(), qPrintable(m_road->desk.messages.shown.join('\n')));
        Generation generation{m_road->list(copies), {}};
        for (const QString& copy : copies)
            generation.samples << wavSamples(copy);
        generations << generation;
    }
}

void TestGenerations::list_overThreeDiscs_staysTheSame_data()
{
    QTest::addColumn<bool>("toImage");
    QTest::newRow("image") << true;
    QTest::newRow("drive") << false;
}

void TestGenerations::list_overThreeDiscs_staysTheSame()
{
    QFETCH(bool, toImage);
    const QList<Generation>& generations = toImage ? m_images : m_discs;
    QCOMPARE(generations.size(), kGenerations);
    for (const Generation& now : generations) {
        QCOMPARE(now.rows.size(), kTracks);
        for (int i = 0; i < kTracks; ++i) { // a disc has whole frames, and its own letters
            const TrackNames asked = namesOf(i + 1);
            QCOMPARE(m_sources[i].names, asked);
            QCOMPARE(now.rows[i].names.title, toImage ? asked.title : latin(asked.title));
            QCOMPARE(now.rows[i].names.artist, toImage ? asked.artist : latin(asked.artist));
            QCOMPARE(now.rows[i].time, generations[0].rows[i].time);
            const qsizetype rest = m_prepared[i].size() % kBytesPerFrame;
            const QByteArray whole = m_prepared[i] + QByteArray(rest ? kBytesPerFrame - rest : 0, '\0');
            QCOMPARE(now.samples[i].size(), whole.size());
            QCOMPARE(sum(now.samples[i]), sum(whole));
        }
    }
}

void TestGenerations::disc_onImageAndDrive_isTheSame()
{
    QCOMPARE(m_theirs.size(), kTracks);
    std::printf("| track | source | samples | prepared | image | drive | cdparanoia | title |\n"
                "|---|---|---|---|---|---|---|---|\n");
    for (int i = 0; i < kTracks; ++i) {
        const qsizetype size = m_prepared[i].size();
        const QStringList sums{sum(m_prepared[i]), sum(m_images[0].samples[i].left(size)),
                               sum(m_discs[0].samples[i].left(size)), sum(m_theirs[i].left(size))};
        std::printf("| %d | %s | %lld | %s | %s |\n", i + 1, kindOf(i + 1).name,
                    static_cast<long long>(size / 4), qPrintable(sums.join(" | ")),
                    qPrintable(namesOf(i + 1).title));
        QVERIFY(size > 588 * 4 * 300);
        QCOMPARE(sums.count(sums.first()), 4);
        QCOMPARE(m_images[0].samples[i], m_discs[0].samples[i]);
        // What cdparanoia counts as the end of a track is the silence before the next one.
        QVERIFY(m_theirs[i].startsWith(m_discs[0].samples[i]));
        QCOMPARE(m_theirs[i].mid(size).count('\0'), m_theirs[i].size() - size);
    }
}

void TestGenerations::discsName_isTheProjects()
{
    QCOMPARE(m_onDisc.title, QString("Mix"));
    QCOMPARE(m_onDisc.artist, QString()); // the artists differ
    QVERIFY(fileContent(m_road->sheets().value(0)).startsWith("TITLE \"Mix\"\nFILE "));
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
    const QTemporaryDir folder;
    QProcess run;
    run.setWorkingDirectory(folder.path());
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(client, arguments);
    QVERIFY(run.waitForFinished(60'000));
    const QByteArray told = run.readAll();
    for (int track = 1; track <= 4; ++track) {
        QVERIFY2(tells(told, namesOf(track).title), told.right(3000).constData());
        QVERIFY2(tells(told, namesOf(track).artist), told.right(3000).constData());
    }
}

QTEST_MAIN(TestGenerations)
#include "tst_generations.moc"
