#include "burn/TrackList.h"
#include "engines/audio/makers.h"
#include "engines/burn/tracks/TrackSource.h"
#include "engines/burn/WavMaker.h"

#include <QTemporaryDir>
#include <QTest>

using namespace zib;

/// What preparation takes as it is, the disc writer must take too, with the same samples: the one judges by
/// the audio engine, the other by its own reader.
class TestCdFormat : public QObject
{
    Q_OBJECT
private slots:
    void aFileTakenAsItIs_always_isATrackOfTheSameLength_data();
    void aFileTakenAsItIs_always_isATrackOfTheSameLength();

private:
    /// @returns whether the two agree about @p content.
    bool agree(const QByteArray& content);

    QTemporaryDir m_folder;
    int m_files = 0;
    int m_taken = 0;
};

void TestCdFormat::aFileTakenAsItIs_always_isATrackOfTheSameLength_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("headerBytes");
    const QByteArray data = chunk("data", sound(100));
    QTest::newRow("plain") << riff(formatChunk() + data) << 44;
    QTest::newRow("extensible") << riff(extensibleChunk() + data) << 68;
    QTest::newRow("rf64") << riff(chunk("ds64", QByteArray(8, '\0') + little32(400) + QByteArray(16, '\0')) +
                                      formatChunk() + "data" + little32(0xFFFFFFFF) + sound(100),
                                  "RF64")
                          << 80;
    QTest::newRow("odd chunk between")
        << riff(formatChunk() + chunk("junk", "x") + data + chunk("LIST", "abc")) << 54;
}

/// Every byte of the header takes every value.
void TestCdFormat::aFileTakenAsItIs_always_isATrackOfTheSameLength()
{
    QFETCH(QByteArray, content);
    QFETCH(int, headerBytes);
    m_taken = 0;
    QVERIFY(agree(content));
    QCOMPARE(m_taken, 1);
    for (int at = 0; at < headerBytes; ++at)
        for (int value = 0; value < 256; ++value) {
            QByteArray changed = content;
            changed[at] = static_cast<char>(value);
            QVERIFY2(agree(changed), qPrintable(QString("byte %1 is %2").arg(at).arg(value)));
        }
    QVERIFY(m_taken > 1000);
}

bool TestCdFormat::agree(const QByteArray& content)
{
    const QString path = put(m_folder.filePath(QString("%1.wav").arg(m_files++)), content);
    const bool taken = TrackList(makeAudioInformation(), {}).IsCDFormatWav(path);
    const auto track = findTrack(path);
    bool same = !taken || track;
    if (taken && track) {
        const auto reader = makeAudioFile();
        same = reader->open(path) == 0 && reader->length() * 4 == track->dataBytes;
        ++m_taken;
    }
    QFile::remove(path);
    return same;
}

QTEST_GUILESS_MAIN(TestCdFormat)
#include "tst_cdformat.moc"
