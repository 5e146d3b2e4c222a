#include "burn/TrackList.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeSeams.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace zib;

namespace {

CompilationRow rowOf(const QString& folder, const QString& name)
{
    CompilationRow row;
    row.fileName = name;
    row.location = folder;
    return row;
}

FakeSound formatted(int rateHz, int channels, int bits, bool isPcm)
{
    FakeSound sound;
    sound.rateHz = rateHz;
    sound.channels = channels;
    sound.bits = bits;
    sound.isPcm = isPcm;
    return sound;
}

FakeSound mp3()
{
    return formatted(44100, 2, 16, false);
}

/// An application folder and sounds that the audio component knows.
struct Desk
{
    Desk() { setApplicationFolder(folder.path()); }
    QString temp(const QString& name) const { return folder.filePath("Temp/" + name); }
    /// A row for a file that plays as @p sound, or is no audio.
    void add(const QString& place, const QString& name, const std::optional<FakeSound>& sound = FakeSound{})
    {
        rows << rowOf(place, name);
        if (sound)
            shelf.sounds.insert(rows.last().path(), *sound);
    }
    void put(const QString& name) const
    {
        QDir().mkpath(folder.filePath("Temp"));
        QFile file(temp(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QStringList built()
    {
        list = std::make_unique<TrackList>(information, rows);
        list->BuildTrackList([this](const std::function<TrackList::Look()>& question) {
            ++questions;
            return question();
        });
        return list->entries();
    }

    QTemporaryDir folder;
    FakeDesk desk;
    FakeAudioShelf shelf;
    std::shared_ptr<AudioInformation> information = std::make_shared<FakeAudioInformation>(shelf);
    QList<CompilationRow> rows;
    std::unique_ptr<TrackList> list;
    int questions = 0;
};

} // namespace

/// What the list of track files is made of: names, comparisons, counts.
class TestTrackList : public QObject
{
    Q_OBJECT
private slots:
    void IsCDFormatWav_ofASound_needsEveryCondition_data();
    void IsCDFormatWav_ofASound_needsEveryCondition();
    void IsCDFormatWav_ofNoSound_isFalse();
    void BuildTrackList_ofCdWavs_takesThemAsTheyAre();
    void BuildTrackList_ofAnythingElse_namesTempFiles_data();
    void BuildTrackList_ofAnythingElse_namesTempFiles();
    void BuildTrackList_ofEqualNames_countsUp();
    void BuildTrackList_onceMore_isTheSame();
    void BuildTrackList_withFilesInTheWay_goesRoundThem();
    void BuildTrackList_whileAnotherInstancePrepares_goesRoundItsNames();
    void BuildTrackList_ofASourceInTempItself_takesAnotherName();
    void BuildTrackList_ofASourceThatIsTakenAsItIs_keepsItsNameTaken();
    void BuildTrackList_ofManyEqualNames_staysQuick();
    void BuildTrackList_ofEveryRow_asksOnce();
    void BuildTrackList_whenTempCannotBeMade_saysSoOnce();
    void MakeTempWavName_always_makesTheFolder();
    void CountConversions_comparesTrimmedAndInLowerCase();
    void CountConversions_beyond16Bits_isNothing();
    void preparedPercent_always_runsOnceOverAll_data();
    void preparedPercent_always_runsOnceOverAll();
};

void TestTrackList::IsCDFormatWav_ofASound_needsEveryCondition_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("pcm");
    QTest::addColumn<bool>("answer");
    QTest::newRow("CD") << 44100 << 2 << 16 << true << true;
    QTest::newRow("rate") << 22050 << 2 << 16 << true << false;
    QTest::newRow("rate above") << 48000 << 2 << 16 << true << false;
    QTest::newRow("mono") << 44100 << 1 << 16 << true << false;
    QTest::newRow("surround") << 44100 << 6 << 16 << true << false;
    QTest::newRow("8 bits") << 44100 << 2 << 8 << true << false;
    QTest::newRow("24 bits") << 44100 << 2 << 24 << true << false;
    QTest::newRow("MP3") << 44100 << 2 << 16 << false << false;
}

void TestTrackList::IsCDFormatWav_ofASound_needsEveryCondition()
{
    QFETCH(int, rate);
    QFETCH(int, channels);
    QFETCH(int, bits);
    QFETCH(bool, pcm);
    Desk desk;
    desk.shelf.sounds.insert("/m/a.wav", formatted(rate, channels, bits, pcm));
    QTEST(TrackList(desk.information, {}).IsCDFormatWav("/m/a.wav"), "answer");
}

void TestTrackList::IsCDFormatWav_ofNoSound_isFalse()
{
    Desk desk;
    QVERIFY(!TrackList(desk.information, {}).IsCDFormatWav("/missing.wav"));
    QVERIFY(!TrackList(desk.information, {}).IsCDFormatWav(QString()));
}

void TestTrackList::BuildTrackList_ofCdWavs_takesThemAsTheyAre()
{
    Desk desk;
    desk.add("/music/", "a.wav");
    desk.add("/music/", "B.WAV");
    QCOMPARE(desk.built(), (QStringList{"/music/a.wav", "/music/B.WAV"}));
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>(0));
    QVERIFY(!QFileInfo::exists(desk.folder.filePath("Temp")));
}

void TestTrackList::BuildTrackList_ofAnythingElse_namesTempFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("entry");
    QTest::newRow("mp3") << "song.mp3"
                         << "song.wav";
    QTest::newRow("capitals") << "SONG.MP3"
                              << "SONG.wav";
    QTest::newRow("mixed") << "Song.Mp3"
                           << "Song.wav";
    QTest::newRow("wav") << "song.wav"
                         << "song.wav";
    QTest::newRow("WAV") << "song.WAV"
                         << "song.wav";
    QTest::newRow("other extension") << "song.ogg"
                                     << "song.ogg.wav";
    QTest::newRow("no extension") << "song"
                                  << "song.wav";
    QTest::newRow("two extensions") << "song.wav.mp3"
                                    << "song.wav.wav";
    QTest::newRow("dots") << "a.b.c.mp3"
                          << "a.b.c.wav";
    QTest::newRow("extension alone") << ".mp3"
                                     << ".wav";
    QTest::newRow("short") << "mp3"
                           << "mp3.wav";
    QTest::newRow("blank behind") << "song.mp3 "
                                  << "song.mp3 .wav";
    QTest::newRow("other letters") << QString::fromUtf8("Größe – 夜.mp3")
                                   << QString::fromUtf8("Größe – 夜.wav");
    QTest::newRow("backslash in a native name") << "a\\b.mp3"
                                                << "a\\b.wav";
}

void TestTrackList::BuildTrackList_ofAnythingElse_namesTempFiles()
{
    QFETCH(QString, name);
    QFETCH(QString, entry);
    Desk desk;
    desk.add("/music/", name, mp3());
    QCOMPARE(desk.built(), QStringList{desk.temp(entry)});
    QVERIFY(desk.list->needsConversion(0));
}

void TestTrackList::BuildTrackList_onceMore_isTheSame()
{
    Desk desk;
    desk.add("/one/", "a.mp3", mp3());
    desk.add("/two/", "a.mp3", mp3());
    desk.add("/two/", "b.wav");
    const QStringList first = desk.built();
    desk.list->BuildTrackList([](const std::function<TrackList::Look()>& question) { return question(); });
    QCOMPARE(desk.list->entries().size(), 3);
    QCOMPARE(desk.list->entries().last(), first.last());
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>(2));
}

void TestTrackList::BuildTrackList_ofEqualNames_countsUp()
{
    Desk desk;
    desk.add("/one/", "song.mp3", mp3());
    desk.add("/two/", "song.mp3", mp3());
    desk.add("/three/", "song.wav", formatted(22050, 2, 16, true));
    desk.add("/four/", "SONG.MP3", mp3());
    desk.add("/one/", "song.mp3", mp3());
    desk.add("/five/", "song-1.mp3", mp3());
    QCOMPARE(desk.built(),
             (QStringList{desk.temp("song.wav"), desk.temp("song-1.wav"), desk.temp("song-2.wav"),
                          desk.temp("SONG-3.wav"), desk.temp("song-4.wav"), desk.temp("song-1-1.wav")}));
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>(6));
}

void TestTrackList::BuildTrackList_withFilesInTheWay_goesRoundThem()
{
    Desk desk;
    desk.put("song.wav");
    desk.put("song-2.wav");
    QFile::link("nowhere", desk.temp("song-3.wav"));
    QDir().mkdir(desk.temp("song-4.wav"));
    desk.add("/one/", "song.mp3", mp3());
    desk.add("/two/", "song.mp3", mp3());
    QCOMPARE(desk.built(), (QStringList{desk.temp("song-1.wav"), desk.temp("song-5.wav")}));
}

void TestTrackList::BuildTrackList_whileAnotherInstancePrepares_goesRoundItsNames()
{
    Desk first;
    first.add("/one/", "song.mp3", mp3());
    QCOMPARE(first.built(), QStringList{first.temp("song.wav")});
    Desk second;
    setApplicationFolder(first.folder.path());
    second.add("/two/", "song.mp3", mp3());
    QCOMPARE(second.built(), QStringList{first.temp("song-1.wav")});
    first.list.reset();
    second.list.reset();
    QVERIFY(
        QDir(first.folder.filePath("Temp")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void TestTrackList::BuildTrackList_ofASourceInTempItself_takesAnotherName()
{
    Desk desk;
    desk.put("song.WAV");
    desk.add(desk.folder.filePath("Temp/"), "song.WAV", formatted(22050, 2, 16, true));
    QCOMPARE(desk.built(), QStringList{desk.temp("song-1.wav")});
    QVERIFY(desk.list->needsConversion(0));
}

void TestTrackList::BuildTrackList_ofASourceThatIsTakenAsItIs_keepsItsNameTaken()
{
    Desk desk;
    desk.add(desk.folder.filePath("Temp/"), "song.wav");
    desk.add("/one/", "song.mp3", mp3());
    QCOMPARE(desk.built(), (QStringList{desk.temp("song.wav"), desk.temp("song-1.wav")}));
}

void TestTrackList::BuildTrackList_ofManyEqualNames_staysQuick()
{
    Desk desk;
    for (int n = 0; n < 20'000; ++n)
        desk.add(QString("/%1/").arg(n), "song.mp3", mp3());
    const QStringList entries = desk.built();
    QCOMPARE(QSet<QString>(entries.begin(), entries.end()).size(), 20'000);
    QCOMPARE(entries.last(), desk.temp("song-19999.wav"));
}

void TestTrackList::BuildTrackList_ofEveryRow_asksOnce()
{
    Desk desk;
    for (int n = 0; n < 7; ++n)
        desk.add("/music/", QString("%1.mp3").arg(n), mp3());
    desk.built();
    QCOMPARE(desk.questions, 7);
}

void TestTrackList::BuildTrackList_whenTempCannotBeMade_saysSoOnce()
{
    Desk desk;
    QFile file(desk.folder.filePath("Temp"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    for (int n = 0; n < 3; ++n)
        desk.add("/music/", QString("%1.mp3").arg(n), mp3());
    QCOMPARE(desk.built().size(), 3);
    desk.list->makeFolder(desk.folder.filePath("Temp") + "/");
    QCOMPARE(desk.desk.messages.shown,
             QStringList{"c[Error]: Create directory error: " + desk.folder.filePath("Temp")});
}

void TestTrackList::MakeTempWavName_always_makesTheFolder()
{
    Desk desk;
    setApplicationFolder(desk.folder.filePath("not/yet/there"));
    const QString name = TrackList(desk.information, {}).MakeTempWavName("/m/x.mp3");
    QCOMPARE(name, desk.folder.filePath("not/yet/there/Temp/x.wav"));
    QVERIFY(QFileInfo(desk.folder.filePath("not/yet/there/Temp")).isDir());
    QVERIFY(!QFileInfo::exists(name));
}

void TestTrackList::CountConversions_comparesTrimmedAndInLowerCase()
{
    Desk desk;
    desk.add("/music/", "a.wav");
    desk.add("/music/", "b.mp3", mp3());
    desk.add("/music/", "missing.wav", std::nullopt);
    desk.add("  /Music/", "C.wav ");
    desk.built();
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>(2));
    QVERIFY(!desk.list->needsConversion(0));
    QVERIFY(desk.list->needsConversion(1));
    QVERIFY(desk.list->needsConversion(2));
    QVERIFY(!desk.list->needsConversion(3));
}

void TestTrackList::CountConversions_beyond16Bits_isNothing()
{
    Desk desk;
    for (int n = 0; n < 32'768; ++n)
        desk.add("/m/", QString("%1.mp3").arg(n), mp3());
    desk.built();
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>());
    desk.rows.removeLast();
    desk.built();
    QCOMPARE(desk.list->CountConversions(), std::optional<qint16>(32'767));
}

void TestTrackList::preparedPercent_always_runsOnceOverAll_data()
{
    QTest::addColumn<int>("finished");
    QTest::addColumn<double>("fraction");
    QTest::addColumn<int>("total");
    QTest::addColumn<double>("percent");
    QTest::newRow("begin") << 0 << 0.0 << 4 << 0.0;
    QTest::newRow("half of the first of four") << 0 << 0.5 << 4 << 12.5;
    QTest::newRow("half of the third of four") << 2 << 0.5 << 4 << 62.5;
    QTest::newRow("end") << 3 << 1.0 << 4 << 100.0;
    QTest::newRow("beyond") << 4 << 1.0 << 4 << 100.0;
    QTest::newRow("none") << 0 << 1.0 << 0 << 0.0;
}

void TestTrackList::preparedPercent_always_runsOnceOverAll()
{
    QFETCH(int, finished);
    QFETCH(double, fraction);
    QFETCH(int, total);
    QTEST(preparedPercent(qint16(finished), fraction, qint16(total)), "percent");
}

QTEST_GUILESS_MAIN(TestTrackList)
#include "tst_tracklist.moc"
