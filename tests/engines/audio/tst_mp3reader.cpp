#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zib;

namespace {

struct Recipe
{
    const char* name;
    int rateHz;
    int channels;
    QStringList options;
};

// Every version, rate and channel mode; constant, average and variable bit rate; with and without what helps.
const QList<Recipe>& recipes()
{
    static const QList<Recipe> list{
        {"mpeg1-44-cbr128-joint", 44100, 2, {"-b", "128"}},
        {"mpeg1-44-cbr320-stereo", 44100, 2, {"-b", "320", "-m", "s"}},
        {"mpeg1-44-cbr192-dual", 44100, 2, {"-b", "192", "-m", "d"}},
        {"mpeg1-44-cbr64-mono", 44100, 1, {"-b", "64"}},
        {"mpeg1-44-vbr2", 44100, 2, {"-V", "2"}},
        {"mpeg1-44-vbr9-crc", 44100, 2, {"-V", "9", "-p", "--resample", "44.1"}},
        {"mpeg1-44-abr", 44100, 2, {"--abr", "150"}},
        {"mpeg1-44-plain-cbr", 44100, 2, {"-b", "128", "-t"}},
        {"mpeg1-44-plain-vbr", 44100, 2, {"-V", "4", "-t"}},
        {"mpeg1-44-nores", 44100, 2, {"-b", "128", "--nores"}},
        {"mpeg1-44-crc", 44100, 2, {"-b", "160", "-p"}},
        {"mpeg1-48-cbr", 48000, 2, {"-b", "160"}},
        {"mpeg1-32-vbr", 32000, 2, {"-V", "3", "--resample", "32"}},
        {"mpeg2-24", 24000, 2, {"-b", "64"}},
        {"mpeg2-22-vbr", 22050, 2, {"-V", "4"}},
        {"mpeg2-16-mono", 16000, 1, {"-b", "32"}},
        {"mpeg25-12", 12000, 2, {"-b", "32"}},
        {"mpeg25-11-mono", 11025, 1, {"-b", "16"}},
        {"mpeg25-8-vbr", 8000, 2, {"-V", "5"}},
        {"mpeg1-44-free", 44100, 2, {"--freeformat", "-b", "400"}},
        {"mpeg1-44-free-plain", 44100, 1, {"--freeformat", "-b", "330", "-t"}},
    };
    return list;
}

QString made(const Recipe& recipe)
{
    return kit::lameFile(recipe.name, recipe.rateHz * 7LL + 777, recipe.channels, recipe.rateHz,
                         recipe.options);
}

void addRecipes()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < recipes().size(); ++i)
        QTest::newRow(recipes()[i].name) << i;
}

} // namespace

/// MP3 streams against the library's own sequential decode of the whole file.
class TestMp3Reader : public QObject
{
    Q_OBJECT
private slots:
    void length_ofEveryKind_isThatOfTheDecode_data() { addRecipes(); }
    void length_ofEveryKind_isThatOfTheDecode()
    {
        QFETCH(int, index);
        const Recipe& recipe = recipes()[index];
        const QString path = made(recipe);
        QVERIFY(!path.isEmpty());
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(reader->formatRate(), recipe.rateHz);
        QCOMPARE(reader->formatChannels(), recipe.channels);
        QCOMPARE(reader->length(), kit::libraryDecode(path).size() / recipe.channels);
        QCOMPARE(reader->length(), kit::libraryScan(path));
        const auto information = makeAudioInformation();
        QVERIFY(information->open(path));
        QCOMPARE(information->durationMs(), static_cast<qint32>(reader->length() * 1000 / recipe.rateHz));
    }
    void samples_ofEveryKind_areTheLibrarysOwn_data() { addRecipes(); }
    void samples_ofEveryKind_areTheLibrarysOwn()
    {
        QFETCH(int, index);
        const QString path = made(recipes()[index]);
        const auto reader = makeAudioFile();
        reader->setSixteenBitBlocks(true);
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(kit::readNarrow(*reader), kit::libraryDecode(path));
    }
    void wideSamples_ofOtherRates_areTheLibrarysFloats_data() { addRecipes(); }
    void wideSamples_ofOtherRates_areTheLibrarysFloats()
    {
        QFETCH(int, index);
        if (recipes()[index].rateHz == 44100)
            return;
        const QString path = made(recipes()[index]);
        const auto reader = makeAudioFile();
        QCOMPARE(reader->open(path), 0);
        QCOMPARE(kit::readWide(*reader), kit::libraryDecodeWide(path));
    }
};

QTEST_GUILESS_MAIN(TestMp3Reader)
#include "tst_mp3reader.moc"
