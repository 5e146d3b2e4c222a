#include "engines/audio/AudioKit.h"
#include "engines/audio/SourceFile.h"
#include "engines/audio/makers.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace zib;

namespace {

bool isRefused(const QString& path)
{
    const auto information = makeAudioInformation();
    const auto reader = makeAudioFile();
    return !information->isAudioFile(path) && !information->open(path) && information->durationMs() == 0 &&
           reader->open(path) < 0 && reader->readBlock(1000).isEmpty() && reader->length() == 0;
}

QByteArray noise(qsizetype bytes)
{
    QByteArray content(bytes, '\0');
    quint32 state = 99;
    for (char& byte : content) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return content;
}

// The offsets of the frames of a plain stream of one bit rate.
QList<qsizetype> frameOffsets(const QByteArray& stream, int frameBytes)
{
    QList<qsizetype> offsets;
    for (qsizetype at = 0; at + 4 <= stream.size();) {
        offsets << at;
        at += frameBytes + ((stream[at + 2] & 2) != 0 ? 1 : 0);
    }
    return offsets;
}

} // namespace

/// Files that are no audio, damaged audio, and names of every kind.
class TestBadAudio : public QObject
{
    Q_OBJECT
    QTemporaryDir m_folder;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString made(const QByteArray& content) const
    {
        kit::write(path("made"), content);
        return path("made");
    }
    // 128 kbit/s without an information frame: frames of 417 or 418 bytes
    static QByteArray plain()
    {
        return kit::contentOf(
            kit::lameFile("mpeg1-44-plain-cbr", 7 * 44100 + 777, 2, 44100, {"-b", "128", "-t"}));
    }
    // Length by the reader, after proving that the inspector and the samples agree with it; -1 when they do
    // not.
    static qint64 agreedLength(const QString& file)
    {
        const auto reader = makeAudioFile();
        if (reader->open(file) < 0)
            return 0;
        const auto information = makeAudioInformation();
        const bool agrees = information->open(file) &&
                            information->durationMs() == reader->length() * 1000 / reader->formatRate() &&
                            kit::readWide(*reader).size() == reader->length() * reader->formatChannels() &&
                            reader->status() == 0;
        return agrees ? reader->length() : -1;
    }

private slots:
    void cleanupTestCase()
    {
        kit::run("rm", {"-rf", m_folder.path()});
    } // Qt cannot name every file made here

    void noAudio_isRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("one byte") << QByteArray("\xFF");
        QTest::newRow("a header alone") << QByteArray("\xFF\xFB\x90\x00", 4);
        QTest::newRow("text") << QByteArray("This is a text.\n").repeated(10'000);
        QTest::newRow("zeros") << QByteArray(3'000'000, '\0');
        QTest::newRow("ones") << QByteArray(3'000'000, '\xFF');
        QTest::newRow("noise") << noise(4'000'000);
        QTest::newRow("sync after sync") << QByteArray("\xFF\xFB").repeated(500'000);
        QTest::newRow("only a tag") << QByteArray("ID3\x03\0\0\0\0\x07\x68", 10) + QByteArray(1000, '\0');
        QTest::newRow("RIFF of another kind")
            << QByteArray("RIFF\x10\0\0\0AVI LIST", 16) + QByteArray(100, '\0');
        QTest::newRow("half an MP3 frame") << plain().first(300);
        QTest::newRow("picture") << QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF", 10) + noise(50'000);
    }
    void noAudio_isRefused()
    {
        QFETCH(QByteArray, content);
        QVERIFY(isRefused(made(content)));
    }
    void otherLayers_areRefused()
    {
        QVERIFY(kit::run("ffmpeg", {"-y", "-f", "lavfi", "-i", "sine=d=2", "-c:a", "mp2", "-f", "mp2",
                                    path("layer2.mp3")}));
        QVERIFY(isRefused(path("layer2.mp3")));
        QVERIFY(
            kit::run("ffmpeg", {"-y", "-f", "lavfi", "-i", "sine=d=2", "-c:a", "aac", path("other.aac")}));
        QVERIFY(isRefused(path("other.aac")));
    }
    void noFile_isRefusedWithoutWaiting()
    {
        QCOMPARE(::mkfifo(qPrintable(path("pipe.mp3")), 0600), 0);
        QVERIFY(isRefused(path("pipe.mp3")));
        for (const char* device : {"/dev/zero", "/dev/null", "/dev/tty", "/dev/random", "/dev/full"})
            QVERIFY2(isRefused(device), device);
        QVERIFY(isRefused(m_folder.path()));
        QVERIFY(isRefused("/"));
        QVERIFY(isRefused(QString()));
        QVERIFY(isRefused(path("missing.mp3")));
        QVERIFY(isRefused(path("missing/folder.mp3")));
        QVERIFY(isRefused("/proc/self/mem"));
        QVERIFY(isRefused(QString::fromLatin1("a\0b.mp3", 7)));
        QVERIFY(isRefused(QString(5000, 'x')));
    }
    void socket_isRefused()
    {
        const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, qPrintable(path("socket.mp3")), sizeof address.sun_path - 1);
        QCOMPARE(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        QVERIFY(isRefused(path("socket.mp3")));
        ::close(listener);
    }
    void links_areFollowedUnlessTheyTurnInCircles()
    {
        kit::write(path("real.wav"), kit::wav16(kit::music16(1000, 2, 44100), 2, 44100));
        QVERIFY(QFile::link(path("real.wav"), path("link.wav")));
        QCOMPARE(agreedLength(path("link.wav")), 1000);
        QVERIFY(QFile::link(path("round2.wav"), path("round1.wav")));
        QVERIFY(QFile::link(path("round1.wav"), path("round2.wav")));
        QVERIFY(isRefused(path("round1.wav")));
        QVERIFY(QFile::link("/dev/zero", path("zero.wav")));
        QVERIFY(isRefused(path("zero.wav")));
    }
    void unreadable_isRefused()
    {
        kit::write(path("secret.wav"), kit::wav16(kit::music16(1000, 2, 44100), 2, 44100));
        QVERIFY(QFile::setPermissions(path("secret.wav"), {}));
        const bool isRoot = ::geteuid() == 0; // who could read it
        ::chmod(qPrintable(m_folder.path()), 0755);
        QVERIFY(!isRoot || ::seteuid(65534) == 0);
        const bool refused = isRefused(path("secret.wav"));
        QVERIFY(!isRoot || ::seteuid(0) == 0);
        QVERIFY(refused);
    }
    void content_decidesAndNotTheName()
    {
        const QByteArray wav = kit::wav16(kit::music16(1000, 2, 44100), 2, 44100);
        for (const char* name : {"song.mp3", "song.txt", "song", "SONG.WAV"}) {
            kit::write(path(name), wav);
            QCOMPARE(agreedLength(path(name)), 1000);
            kit::write(path(name), plain());
            QVERIFY(agreedLength(path(name)) > 300'000);
        }
    }
    void names_ofEveryEncoding_areOpened_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("UTF-8") << QByteArray("Gr\xC3\xB6\xC3\x9F"
                                             "e.wav");
        QTest::newRow("decomposed") << QByteArray("o\xCC\x88.wav");
        QTest::newRow("Latin-1 bytes") << QByteArray("Gr\xF6\xDF"
                                                     "e.wav");
        QTest::newRow("broken UTF-8") << QByteArray("a\xC3(\xFF.wav");
        QTest::newRow("line break") << QByteArray("a\nb.wav");
        QTest::newRow("blanks") << QByteArray("  a  ");
        QTest::newRow("backslash") << QByteArray("a\\b.wav");
    }
    void names_ofEveryEncoding_areOpened()
    {
        QFETCH(QByteArray, name);
        const QByteArray wav = kit::wav16(kit::music16(1000, 2, 44100), 2, 44100);
        QVERIFY(QDir(m_folder.path()).mkpath("names"));
        for (const QString& folder : {path("names"), path("names/" + QFile::decodeName(name) + "-folder")}) {
            QDir().mkpath(folder);
            const QByteArray native = QFile::encodeName(folder) + '/' + name;
            FILE* file = std::fopen(native.constData(), "wb");
            QVERIFY(file != nullptr);
            QCOMPARE(std::fwrite(wav.constData(), 1, static_cast<size_t>(wav.size()), file),
                     size_t(wav.size()));
            std::fclose(file);
            QCOMPARE(agreedLength(folder + '/' + QFile::decodeName(name)),
                     1000); // as a folder's listing tells it
        }
    }
    void sourceDeleted_afterItWasSeen_isRefused()
    {
        const QString file = made(plain());
        const auto information = makeAudioInformation();
        QVERIFY(information->isAudioFile(file));
        QVERIFY(QFile::remove(file));
        QVERIFY(!information->isAudioFile(file));
        QVERIFY(!information->open(file));
    }
    void sourceReplaced_afterItWasSeen_isSeenAnew()
    {
        const QString file = made(kit::wav16(kit::music16(44100, 2, 44100), 2, 44100));
        const auto information = makeAudioInformation();
        QVERIFY(information->open(file));
        QCOMPARE(information->durationMs(), 1000);
        kit::write(path("new"), kit::wav16(kit::music16(88200, 2, 44100), 2, 44100));
        QVERIFY(QFile::remove(file) && QFile::rename(path("new"), file));
        QVERIFY(information->open(file));
        QCOMPARE(information->durationMs(), 2000);
    }
    void mp3_thatBeginsInTheMiddle_isDecoded()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream, 417);
        const QString cleanCut = made(stream.sliced(offsets[40]));
        QCOMPARE(agreedLength(cleanCut), (offsets.size() - 40) * 1152);
        const auto reader = makeAudioFile();
        reader->open(cleanCut);
        QCOMPARE(kit::readNarrow(*reader).sliced(1152 * 8), kit::libraryDecode(cleanCut).sliced(1152 * 8));
        QCOMPARE(agreedLength(made(stream.sliced(offsets[40] + 100))), (offsets.size() - 41) * 1152);
    }
    void mp3_cutAnywhere_givesItsWholeFrames()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream, 417);
        for (const qsizetype frames : {1, 2, 3, 50}) {
            for (const qsizetype more : {0, 1, 3, 4, 200, 416}) {
                const QString file = made(stream.first(offsets[frames] + more));
                QVERIFY2(agreedLength(file) == frames * 1152,
                         qPrintable(QString("%1+%2").arg(frames).arg(more)));
            }
        }
    }
    void mp3_withJunkBetween_losesNoWholeFrame_data()
    {
        QTest::addColumn<QByteArray>("junk");
        QTest::newRow("text") << QByteArray("what is this?");
        QTest::newRow("more than a kilobyte") << QByteArray(5000, 'x');
        QTest::newRow("zeros") << QByteArray(100'000, '\0');
        QTest::newRow("noise") << noise(20'000);
        QTest::newRow("an old tag") << QByteArray("TAG") + QByteArray(125, ' ');
        QTest::newRow("a false header") << QByteArray("\xFF\xFB\x90\x40", 4) + QByteArray(50, 'x');
        QTest::newRow("another file's RIFF header") << kit::riff(kit::chunk("data", {}));
    }
    void mp3_withJunkBetween_losesNoWholeFrame()
    {
        QFETCH(QByteArray, junk);
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream, 417);
        QByteArray content = stream;
        content.insert(offsets[100], junk);
        QCOMPARE(agreedLength(made(content)), offsets.size() * 1152);
        content = junk + stream;
        QCOMPARE(agreedLength(made(content)), offsets.size() * 1152);
        content = stream + junk;
        QCOMPARE(agreedLength(made(content)), offsets.size() * 1152);
    }
    void mp3_withOverwrittenBytes_keepsTheRest()
    {
        QByteArray content = plain();
        const auto offsets = frameOffsets(content, 417);
        content.replace(offsets[50] - 10, 1000, QByteArray(1000, '\0'));
        const qint64 length = agreedLength(made(content));
        QVERIFY(length >= (offsets.size() - 4) * 1152);
        QVERIFY(length <= offsets.size() * 1152);
    }
    void mp3_thatChangesItsFormat_keepsOneFormatAndAllOfTheSound_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<int>("rateHz");
        QTest::addColumn<int>("channels");
        QTest::newRow("to 48 kHz") << QStringList{"-b", "160", "-t"} << 48000 << 2;
        QTest::newRow("to 22 kHz") << QStringList{"-b", "64", "-t"} << 22050 << 2;
        QTest::newRow("to mono") << QStringList{"-b", "64", "-t"} << 44100 << 1;
        QTest::newRow("to mono at 16 kHz") << QStringList{"-b", "32", "-t"} << 16000 << 1;
    }
    void mp3_thatChangesItsFormat_keepsOneFormatAndAllOfTheSound()
    {
        QFETCH(QStringList, options);
        QFETCH(int, rateHz);
        QFETCH(int, channels);
        const QString second = kit::lameFile(QString("second-%1-%2").arg(rateHz).arg(channels), rateHz * 3,
                                             channels, rateHz, options);
        QVERIFY(!second.isEmpty());
        const qint64 first = agreedLength(made(plain()));
        const qint64 frames = kit::libraryDecode(second).size() / channels;
        const QByteArray other = kit::contentOf(second);
        const qint64 added = (frames * 44100 + rateHz / 2) / rateHz;
        QCOMPARE(agreedLength(made(plain() + other)), first + added);
        QCOMPARE(agreedLength(made(plain() + other + plain())), first + added + first);
        const auto reader = makeAudioFile();
        reader->open(path("made"));
        QCOMPARE(reader->formatRate(), 44100);
        QCOMPARE(reader->formatChannels(), 2);
        QCOMPARE(reader->seek(first + added + 5000), first + added + 5000);
        QCOMPARE(kit::readWide(*reader).size(), (first - 5000) * 2);
    }
    void mp3_whoseInformationFrameLies_isNotCut_data()
    {
        QTest::addColumn<int>("told");
        QTest::newRow("fewer frames than there are") << 10;
        QTest::newRow("none") << 0;
        QTest::newRow("far more") << 1'000'000;
    }
    void mp3_whoseInformationFrameLies_isNotCut()
    {
        QFETCH(int, told);
        QByteArray content =
            kit::contentOf(kit::lameFile("mpeg1-44-vbr2", 7 * 44100 + 777, 2, 44100, {"-V", "2"}));
        const qsizetype at = content.indexOf("Xing") + 8;
        QVERIFY(at > 8);
        for (int i = 0; i < 4; ++i)
            content[at + i] = static_cast<char>(told >> (24 - 8 * i));
        const qint64 length = agreedLength(made(content));
        QVERIFY(length >= 7 * 44100 + 777);
        QVERIFY(length < 7 * 44100 + 777 + 2 * 1152 + 1152);
    }
    void vbriFrame_isNoSound()
    {
        const QByteArray stream = plain();
        const auto offsets = frameOffsets(stream, 417);
        QByteArray information = stream.first(offsets[1]);
        information.replace(4, information.size() - 4, QByteArray(information.size() - 4, '\0'));
        information.replace(36, 4, "VBRI");
        QCOMPARE(agreedLength(made(information + stream)), offsets.size() * 1152);
    }
};

QTEST_GUILESS_MAIN(TestBadAudio)
#include "tst_badaudio.moc"
