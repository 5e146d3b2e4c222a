#include "app/Desk.h"
#include "app/Wav.h"
#include "engines/audio/makers.h"

#include <QDir>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kNotAudio = "c: The following file could not be added, it is not audio file \n"
                          "or the audio type is not supported.\n\n";

} // namespace

/// What is no audio, is not what it says, or cannot even be named: the real engine behind the real window.
class TestBadInput : public QObject
{
    Q_OBJECT
private slots:
    void add_whatIsNoAudio_isNamedAndSkipped_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"letter.txt", "letter.mp3", "empty.wav", "empty.mp3", "folder.mp3", "zeros.mp3", "noise.wav",
              "loop.wav", "dangling.mp3", "pipe.wav", "zero device.wav", "null device.mp3", "memory.wav",
              "header only.wav", "missing.wav", "locked.wav", "riff.wav", "picture.mp3"})
            QTest::newRow(name) << name;
    }
    void add_whatIsNoAudio_isNamedAndSkipped()
    {
        QFETCH(QString, name);
        RealDesk real;
        makeFiles(real.desk.folder.path());
        const QString path = real.desk.folder.filePath(name);
        if (name == "locked.wav" && ::access(QFile::encodeName(path).constData(), R_OK) == 0)
            QSKIP("This account may read every file.");
        real.desk.add({path});
        QCOMPARE(real.desk.rows(), 0);
        QCOMPARE(real.desk.desk.messages.shown, QStringList{kNotAudio + path});
        QCOMPARE(real.desk.panel(2), QString("Total Files: 0"));
    }
    void add_namesTooLongForAnySystem_areRefused()
    {
        RealDesk real;
        const QStringList paths{"/tmp/" + QString(300, 'n') + ".wav", "/" + QString(5000, 'p') + "/a.wav",
                                "relative-and-missing.wav", "/a" + QString(QChar(QChar::Null)) + "b.wav"};
        for (const QString& path : paths) {
            real.desk.desk.messages.shown.clear();
            real.desk.window().AddOneFileToList(path);
            QCOMPARE(real.desk.desk.messages.shown, QStringList{kNotAudio + path});
        }
        QCOMPARE(real.desk.rows(), 0);
    }
    void add_aNameThatIsNotUnicode_isFoundAllTheSame()
    {
        RealDesk real;
        const QByteArray raw = QFile::encodeName(real.desk.folder.path()) + "/caf\xE9.wav"; // Latin-1
        const QByteArray content = wav(176400, 176400);
        const int file = ::open(raw.constData(), O_CREAT | O_WRONLY, 0600);
        QVERIFY(file >= 0);
        QCOMPARE(::write(file, content.constData(), static_cast<size_t>(content.size())), content.size());
        ::close(file);
        const QStringList seen =
            QDir(real.desk.folder.path()).entryList({"caf*"}, QDir::Files | QDir::System);
        const QString path =
            real.desk.folder.filePath(seen.value(0, QFile::decodeName(raw).section('/', -1)));
        real.desk.add({path});
        QCOMPARE(real.desk.desk.messages.shown, QStringList());
        QCOMPARE(real.desk.column(4), QStringList{"00:01:00"});
        QCOMPARE(real.desk.column(5), QStringList{"173 KB"});
        QCOMPARE(::unlink(raw.constData()), 0);
    }
    void add_aWavWhoseSizesLie_countsWhatIsThere_data()
    {
        QTest::addColumn<quint32>("claimed");
        QTest::addColumn<quint32>("held");
        QTest::addColumn<QString>("time");
        QTest::newRow("honest") << 352800u << 352800u << "00:02:00";
        QTest::newRow("claims more") << 0x7fffff00u << 352800u << "00:02:00";
        QTest::newRow("claims all") << 0xffffffffu << 352800u << "00:02:00";
        QTest::newRow("cut short") << 352800u << 176400u << "00:01:00";
    }
    void add_aWavWhoseSizesLie_countsWhatIsThere()
    {
        QFETCH(quint32, claimed);
        QFETCH(quint32, held);
        RealDesk real;
        write(real.desk.folder.filePath("liar.wav"), wav(claimed, held));
        real.desk.add({real.desk.folder.filePath("liar.wav")});
        QCOMPARE(real.desk.rows(), 1);
        QTEST(real.desk.cell(0, 4), "time");
    }
    void add_audioUnderAnyName_isTakenByItsContent()
    {
        RealDesk real;
        write(real.desk.folder.filePath("song.txt"), wav(176400, 176400));
        QVERIFY(QFile::copy(ZIB_SOURCE_DIR "/data/samples/Morning Light.mp3",
                            real.desk.folder.filePath("x.wav")));
        QVERIFY(QFile::link(real.desk.folder.filePath("song.txt"), real.desk.folder.filePath("link.wav")));
        real.desk.add({real.desk.folder.filePath("song.txt"), real.desk.folder.filePath("x.wav"),
                       real.desk.folder.filePath("link.wav")});
        QCOMPARE(real.desk.column(4), (QStringList{"00:01:00", "00:12:04", "00:01:00"}));
        QCOMPARE(real.desk.desk.messages.shown, QStringList());
    }
    void add_theSamples_showsTheirTags()
    {
        RealDesk real;
        real.desk.window().AddOneFileToList(ZIB_SOURCE_DIR "/data/samples/Morning Light.mp3");
        QCOMPARE(real.desk.cell(0, 2), QString("Morning Light"));
        QCOMPARE(real.desk.cell(0, 3), QString::fromUtf8("Zoë Ångström"));
        QCOMPARE(real.desk.cell(0, 5), QString("145 KB"));
    }

private:
    struct RealDesk
    {
        RealDesk() { desk.desk.components.makeInformation = zib::makeAudioInformation; }
        Desk desk;
    };

    static void write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    static void makeFiles(const QString& folder)
    {
        const auto path = [&](const char* name) { return folder + '/' + name; };
        write(path("letter.txt"), "Dear reader, this is no music at all.\n");
        write(path("letter.mp3"), QByteArray("This is no music either. ").repeated(2000));
        write(path("empty.wav"), {});
        write(path("empty.mp3"), {});
        write(path("zeros.mp3"), QByteArray(100000, '\0'));
        write(path("noise.wav"), QByteArray("\xFF\x00\xFF\x7F", 4).repeated(5000));
        write(path("header only.wav"), wav(0, 0));
        write(path("riff.wav"), "RIFF\xff\xff\xff\xffWAVE");
        write(path("picture.mp3"), QByteArray("\xFF\xD8\xFF\xE0", 4) + QByteArray(3000, '\x55'));
        write(path("locked.wav"), wav(1000, 1000));
        QVERIFY(QDir(folder).mkdir("folder.mp3"));
        QVERIFY(QFile::link(path("loop.wav"), path("loop.wav")));
        QVERIFY(QFile::link(path("nowhere"), path("dangling.mp3")));
        QVERIFY(QFile::link("/dev/zero", path("zero device.wav")));
        QVERIFY(QFile::link("/dev/null", path("null device.mp3")));
        QVERIFY(QFile::link("/proc/self/mem", path("memory.wav")));
        QCOMPARE(::mkfifo(QFile::encodeName(path("pipe.wav")).constData(), 0600), 0);
        QCOMPARE(::chmod(QFile::encodeName(path("locked.wav")).constData(), 0), 0);
    }
};

QTEST_MAIN(TestBadInput)
#include "tst_badinput.moc"
