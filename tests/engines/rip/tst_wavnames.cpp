#include "engines/audio/makers.h"
#include "engines/rip/WavNames.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using zib::TrackNames;

namespace {

QByteArray little(quint32 value)
{
    value = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

/// A tenth of a second of silence with these chunks behind it.
QByteArray wavWith(const QByteArray& chunks)
{
    const QByteArray sound(17640, '\0');
    return "RIFF" + little(static_cast<quint32>(36 + sound.size() + chunks.size())) + "WAVEfmt " +
           little(16) + QByteArray("\x01\x00\x02\x00", 4) + little(44100) + little(176400) +
           QByteArray("\x04\x00\x10\x00", 4) + "data" + little(static_cast<quint32>(sound.size())) + sound +
           chunks;
}

} // namespace

/// Names in a ripped track's file, read by us and by others.
class TestWavNames : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString fileWith(const QByteArray& chunks) const
    {
        QFile file(m_folder.filePath("track.wav"));
        if (!file.open(QIODevice::WriteOnly) || file.write(wavWith(chunks)) < 0)
            return {};
        return file.fileName();
    }
private slots:
    void chunks_ofNoNames_areNone();
    void chunks_ofAsciiNames_areInfoAlone();
    void chunks_ofAnyNames_areEven();
    void names_comeBack_data();
    void names_comeBack();
    void names_areSeenByOthers();
};

void TestWavNames::chunks_ofNoNames_areNone()
{
    QVERIFY(zib::nameChunks({}).isEmpty());
}

void TestWavNames::chunks_ofAsciiNames_areInfoAlone()
{
    const QByteArray chunks = zib::nameChunks({"Song", "Singer"});
    QVERIFY(chunks.startsWith("LIST"));
    QVERIFY(chunks.contains("INAM") && chunks.contains("IART"));
    QVERIFY(!chunks.contains("id3 "));
    QVERIFY(zib::nameChunks({QStringLiteral("Größe"), {}}).contains("id3 "));
    QVERIFY(zib::nameChunks({{}, QStringLiteral("Größe")}).contains("id3 "));
}

void TestWavNames::chunks_ofAnyNames_areEven()
{
    for (const char* title : {"a", "ab", "abc", "abcd", "ä", "aä"})
        QCOMPARE(zib::nameChunks({QString::fromUtf8(title), "x"}).size() % 2, 0);
}

void TestWavNames::names_comeBack_data()
{
    QTest::addColumn<TrackNames>("names");
    QTest::newRow("both") << TrackNames{"Song", "Singer"};
    QTest::newRow("title only") << TrackNames{"Song", {}};
    QTest::newRow("artist only") << TrackNames{{}, "Singer"};
    QTest::newRow("accents") << TrackNames{QStringLiteral("Größe"), QStringLiteral("Édith")};
    QTest::newRow("scripts") << TrackNames{QStringLiteral("Калинка カラオケ"),
                                           QStringLiteral("Ελλάδα \U0001F3B5")};
    QTest::newRow("odd lengths") << TrackNames{"abc", "abcde"};
    QTest::newRow("quotes") << TrackNames{"\"It's\" = ; [x]", "A\\B"};
    QTest::newRow("long") << TrackNames{QString(999, u'ł'), QString(1000, u'x')};
}

void TestWavNames::names_comeBack()
{
    QFETCH(TrackNames, names);
    const auto information = zib::makeAudioInformation();
    QVERIFY(information->open(fileWith(zib::nameChunks(names))));
    QCOMPARE(information->title(), names.title);
    QCOMPARE(information->artist(), names.artist);
    QCOMPARE(information->durationMs(), 100);
}

void TestWavNames::names_areSeenByOthers()
{
    const QString path = fileWith(zib::nameChunks({QStringLiteral("Größe"), "Singer"}));
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-show_entries", "format_tags", path});
    if (!probe.waitForFinished())
        QSKIP("ffprobe is not installed");
    const QString told = QString::fromUtf8(probe.readAllStandardOutput());
    QVERIFY2(told.contains(QStringLiteral("title=Größe")) && told.contains("artist=Singer"),
             qPrintable(told));
}

QTEST_GUILESS_MAIN(TestWavNames)
#include "tst_wavnames.moc"
