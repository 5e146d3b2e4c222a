#include "components/AudioWorlds.h"

#include <QTest>

using namespace zib;

/// What every AudioInformation promises, asked of the stand-in and of the engine.
class TestAudioInformationContract : public QObject
{
    Q_OBJECT
private slots:
    void isAudioFile_ofASound_isTrue_data() { AudioWorld::rows(); }
    void isAudioFile_ofASound_isTrue()
    {
        const auto world = AudioWorld::ofRow();
        world->add(world->path("a.wav"), FakeAudioShelf::ramp(100));
        const auto information = world->makeInformation();
        QVERIFY(information->isAudioFile(world->path("a.wav")));
        QVERIFY(!information->isAudioFile(world->path("missing.wav")));
        QVERIFY(!information->isAudioFile(QString()));
    }
    void open_ofASound_tellsAllOfIt_data() { AudioWorld::rows(); }
    void open_ofASound_tellsAllOfIt()
    {
        const auto world = AudioWorld::ofRow();
        FakeSound sound = FakeAudioShelf::ramp(22050 * 2 + 21, 22050, 1);
        sound.title = QString::fromUtf8(" Größe ");
        sound.artist = QString::fromUtf8("Łódź");
        world->add(world->path("a.wav"), sound);
        const auto information = world->makeInformation();
        QVERIFY(information->open(world->path("a.wav")));
        QCOMPARE(information->title(), QString::fromUtf8("Größe"));
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Main), QString::fromUtf8("Größe"));
        QCOMPARE(information->tagTitle(AudioInformation::TagKind::Old), QString());
        QCOMPARE(information->artist(), QString::fromUtf8("Łódź"));
        QCOMPARE(information->durationMs(), 2000);
        QCOMPARE(information->sampleRate(), 22050);
        QCOMPARE(information->channels(), 1);
        QCOMPARE(information->bitsPerSample(), 16);
        QVERIFY(information->isPcm());
    }
    void open_ofNothing_emptiesEveryAnswer_data() { AudioWorld::rows(); }
    void open_ofNothing_emptiesEveryAnswer()
    {
        const auto world = AudioWorld::ofRow();
        FakeSound sound = FakeAudioShelf::ramp(44100);
        sound.title = sound.artist = "before";
        world->add(world->path("a.wav"), sound);
        const auto information = world->makeInformation();
        QVERIFY(information->open(world->path("a.wav")));
        QVERIFY(!information->open(world->path("missing.wav")));
        QCOMPARE(information->title() + information->artist(), QString());
        QCOMPARE(information->durationMs(), 0);
        QCOMPARE(information->sampleRate(), 0);
        QCOMPARE(information->channels(), 0);
        QCOMPARE(information->bitsPerSample(), 0);
        QVERIFY(!information->isPcm());
    }
};

QTEST_GUILESS_MAIN(TestAudioInformationContract)
#include "tst_audioinformation_contract.moc"
