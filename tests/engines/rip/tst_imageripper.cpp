#include "common/CdTime.h"
#include "engines/burn/makers.h"
#include "engines/burn/WavMaker.h"
#include "engines/rip/drive/CdioDisc.h"
#include "engines/rip/makers.h"
#include "engines/rip/RipBench.h"

#include <csignal>

#include <cdio/logging.h>
#include <sys/resource.h>

using namespace zib;

namespace {

/// A folder of disc images and the ripper of the program on it.
struct ImageBench
{
    QString images() const { return folder.filePath("Images"); }
    /// Puts an image there: the sheet's text, and the binary file beside it.
    void add(const QString& name, const QByteArray& sheet, const QByteArray& binary)
    {
        QDir().mkpath(images());
        put(images() + '/' + name + ".cue", sheet);
        if (!binary.isEmpty())
            put(images() + '/' + name + ".bin", binary);
    }
    RipBench& open()
    {
        bench = std::make_unique<RipBench>(makeRipper(images()));
        return *bench;
    }

    QTemporaryDir folder;
    std::unique_ptr<RipBench> bench;
};

QByteArray msf(int frames)
{
    return CdTime::fromFrames(frames).toMsf().toLatin1();
}

QByteArray frames(const QByteArray& disc, int first, int count)
{
    return disc.mid(qsizetype{first} * kBytesPerFrame, qsizetype{count} * kBytesPerFrame);
}

} // namespace

/// The ripper on disc images, in all shapes that discs have.
class TestImageRipper : public QObject
{
    Q_OBJECT
private slots:
    void images_areListedByName_afterTheDrives()
    {
        ImageBench b;
        const QByteArray sheet = "FILE \"one.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
        b.add("one", sheet, discSound(300, 1));
        b.add("another", QByteArray(sheet).replace("one.bin", "another.bin"), discSound(310, 2));
        put(b.images() + "/.hidden.cue", sheet);
        put(b.images() + "/readme.txt", "no image");
        RipBench& r = b.open();
        const int count = r.ripper->deviceCount();
        QVERIFY(count >= 2);
        QCOMPARE(r.ripper->deviceText1(count - 2), QString("another"));
        QCOMPARE(r.ripper->deviceText1(count - 1), QString("one"));
        QCOMPARE(r.ripper->deviceText2(count - 1) + ' ' + r.ripper->deviceText3(count - 1),
                 QString("Disc image"));
        QCOMPARE(r.ripper->deviceText1(count), QString());
        QCOMPARE(r.ripper->deviceText1(-1), QString());
    }

    void folder_thatIsMissing_holdsNoImages()
    {
        auto ripper = makeRipper("/nowhere/at/all");
        auto empty = makeRipper(QDir::tempPath() + "/no-images-here");
        QCOMPARE(ripper->deviceCount(), empty->deviceCount());
    }

    void image_ofTheImageRecorder_givesTheSamplesBack()
    {
        ImageBench b;
        auto writer = makeDiscWriter(b.images());
        QVERIFY(writer->initializeDrives(false));
        QVERIFY(writer->selectDrive(writer->driveCount() - 1));
        QList<QByteArray> sounds;
        for (int track = 1; track <= 3; ++track) {
            sounds << sound(588 * 320 + track * 100, track);
            QVERIFY(writer->addAudioTrack(
                put(b.folder.filePath(QString("%1.wav").arg(track)), cdWav(sounds.last()))));
        }
        bool completed = false;
        QObject::connect(writer.get(), &DVDWriterPro::WriteCompleted, [&] { completed = true; });
        QVERIFY(writer->start());
        QTRY_VERIFY_WITH_TIMEOUT(completed, 60'000);

        RipBench& r = b.open();
        QVERIFY(r.takeDisc(QDir(b.images()).entryInfoList({"*.cue"}).value(0).completeBaseName()));
        QCOMPARE(r.ripper->trackCount(), 3);
        QCOMPARE(r.rip({1, 2, 3}), QString("finished"));
        QCOMPARE(r.ripper->unreadTracks(), QStringList());
        for (int track = 1; track <= 3; ++track) {
            const QByteArray samples = wavSamples(r.target(track));
            QCOMPARE(samples.size(), 321 * kBytesPerFrame);
            QCOMPARE(r.ripper->trackLength(track), 321 + (track < 3 ? kPregapFrames : 0));
            QVERIFY(r.ripper->copyPermitted(track));
            QVERIFY(samples.startsWith(sounds[track - 1]));
            QCOMPARE(samples.mid(sounds[track - 1].size()).count('\0'),
                     samples.size() - sounds[track - 1].size());
        }
    }

    void libraryThatRaisesAnAlarm_doesNotEndTheProgram()
    {
        const auto any = CdioDisc::openDrive("/dev/null"); // the first use takes the library's voice
        cdio_error("The default listener exits here.");
        cdio_log(CDIO_LOG_ASSERT, "And it aborts here.");
        Q_UNUSED(any)
    }

    void image_ofManyShapes_isBitExact_data()
    {
        QTest::addColumn<QByteArray>("tracks");
        QTest::addColumn<QList<int>>("starts");
        QTest::addColumn<QList<int>>("kinds"); // 1 for sound
        const auto track = [](int number, const char* mode, int start, const QByteArray& more = {}) {
            return "  TRACK " + QByteArray::number(number).rightJustified(2, '0') + ' ' + mode + '\n' + more +
                   "    INDEX 01 " + msf(start) + '\n';
        };
        QTest::newRow("one track") << track(1, "AUDIO", 0) << QList<int>{0} << QList<int>{1};
        QTest::newRow("hidden first track")
            << track(1, "AUDIO", 400, "    INDEX 00 00:00:00\n") + track(2, "AUDIO", 800)
            << QList<int>{400, 800} << QList<int>{1, 1};
        QTest::newRow("pregaps") << track(1, "AUDIO", 0) +
                                        track(2, "AUDIO", 550, "    INDEX 00 " + msf(400) + '\n') +
                                        track(3, "AUDIO", 1000, "    INDEX 00 " + msf(999) + '\n')
                                 << QList<int>{0, 550, 1000} << QList<int>{1, 1, 1};
        QTest::newRow("mixed mode") << track(1, "MODE1/2352", 0) + track(2, "AUDIO", 450) +
                                           track(3, "AUDIO", 900)
                                    << QList<int>{0, 450, 900} << QList<int>{0, 1, 1};
        QTest::newRow("data behind the sound")
            << track(1, "AUDIO", 0) + track(2, "AUDIO", 450) + track(3, "MODE2/2352", 900)
            << QList<int>{0, 450, 900} << QList<int>{1, 1, 0};
        QTest::newRow("first number 3")
            << track(3, "AUDIO", 0) + track(4, "AUDIO", 600) << QList<int>{0, 600} << QList<int>{1, 1};
        QTest::newRow("words around")
            << "PERFORMER \"A \\\"B\\\" C\"\nTITLE \"T\"\nCATALOG 1234567890123\nREM DATE 1999\n" +
                   track(1, "AUDIO", 0, "    TITLE \"x\"\n    FLAGS DCP PRE\n    ISRC ABCDE1234567\n") +
                   track(2, "AUDIO", 500, "    FLAGS 4CH\n")
            << QList<int>{0, 500} << QList<int>{1, 1};
        QTest::newRow("many indexes")
            << track(1, "AUDIO", 0) + "    INDEX 02 00:02:00\n    INDEX 03 00:04:00\n" +
                   track(2, "AUDIO", 600)
            << QList<int>{0, 600} << QList<int>{1, 1};
    }
    void image_ofManyShapes_isBitExact()
    {
        QFETCH(QByteArray, tracks);
        QFETCH(QList<int>, starts);
        QFETCH(QList<int>, kinds);
        constexpr int kFrames = 1300;
        const QByteArray disc = discSound(kFrames, 3);
        const QByteArray head =
            tracks.startsWith("PERF") ? QByteArray() : QByteArray("FILE \"disc.bin\" BINARY\n");
        ImageBench b;
        QByteArray sheet = head + tracks;
        if (head.isEmpty())
            sheet.replace("  TRACK 01", "FILE \"disc.bin\" BINARY\n  TRACK 01");
        b.add("disc", sheet, disc);
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QCOMPARE(r.ripper->trackCount(), starts.size());
        QCOMPARE(r.ripper->maxReadSpeed(), 0);
        QList<int> sound;
        starts << kFrames;
        for (int track = 1; track < starts.size(); ++track) {
            QCOMPARE(r.ripper->trackStart(track), starts[track - 1]);
            QCOMPARE(r.ripper->trackLength(track), starts[track] - starts[track - 1]);
            QCOMPARE(r.ripper->isAudioTrack(track), kinds[track - 1] == 1);
            if (r.ripper->isAudioTrack(track))
                sound << track;
            else
                QVERIFY(!r.ripper->addTrack(track, r.target(track)));
        }
        QCOMPARE(r.rip(sound), QString("finished"));
        QCOMPARE(r.ripper->unreadTracks(), QStringList());
        for (const int track : sound)
            QVERIFY2(wavSamples(r.target(track)) ==
                         frames(disc, starts[track - 1], starts[track] - starts[track - 1]),
                     qPrintable(QString::number(track)));
        QCOMPARE(r.left().size(), sound.size());
    }

    void flags_ofATrack_areTold()
    {
        ImageBench b;
        b.add("disc",
              "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    FLAGS DCP\n    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n    INDEX 01 00:05:00\n",
              discSound(900, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QVERIFY(r.ripper->copyPermitted(1));
        QVERIFY(!r.ripper->copyPermitted(2));
        QCOMPARE(r.ripper->timeText(r.ripper->trackLength(1)), QString("00:05:00"));
        QVERIFY(!r.ripper->isAudioTrack(0) && !r.ripper->isAudioTrack(3) && !r.ripper->isAudioTrack(-7));
        QCOMPARE(r.ripper->trackLength(3), 0);
    }

    void sheet_thatIsBroken_isListedButHasNoDisc_data()
    {
        QTest::addColumn<QByteArray>("sheet");
        const QByteArray head = "FILE \"disc.bin\" BINARY\n";
        const QByteArray first = "  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("no file") << first;
        QTest::newRow("no tracks") << head;
        QTest::newRow("no index") << head + "  TRACK 01 AUDIO\n";
        QTest::newRow("first track without index")
            << head + "  TRACK 01 AUDIO\n  TRACK 02 AUDIO\n    INDEX 01 00:00:00\n";
        QTest::newRow("missing binary") << "FILE \"other.bin\" BINARY\n" + first;
        QTest::newRow("folder as binary") << "FILE \"..\" BINARY\n" + first;
        QTest::newRow("device as binary") << "FILE \"/dev/null\" BINARY\n" + first;
        QTest::newRow("binary above") << "FILE \"../disc.bin\" BINARY\n" + first;
        QTest::newRow("other kind of file") << "FILE \"disc.bin\" MP3\n" + first;
        QTest::newRow("unknown mode") << head + "  TRACK 01 VIDEO\n    INDEX 01 00:00:00\n";
        QTest::newRow("track 0") << head + "  TRACK 00 AUDIO\n    INDEX 01 00:00:00\n";
        QTest::newRow("track 100") << head + "  TRACK 100 AUDIO\n    INDEX 01 00:00:00\n";
        QTest::newRow("same track twice") << head + first + first;
        QTest::newRow("numbers leap") << head + first + "  TRACK 03 AUDIO\n    INDEX 01 00:02:00\n";
        QTest::newRow("second 60") << head + "  TRACK 01 AUDIO\n    INDEX 01 00:60:00\n";
        QTest::newRow("frame 75") << head + "  TRACK 01 AUDIO\n    INDEX 01 00:00:75\n";
        QTest::newRow("no time") << head + "  TRACK 01 AUDIO\n    INDEX 01 soon\n";
        QTest::newRow("backwards")
            << head + "  TRACK 01 AUDIO\n    INDEX 01 00:03:00\n  TRACK 02 AUDIO\n    INDEX 01 00:01:00\n";
        QTest::newRow("index without track") << head + "    INDEX 01 00:00:00\n";
        QTest::newRow("noise") << discSound(1, 1);
        QTest::newRow("noughts") << QByteArray(3000, '\0');
        QTest::newRow("one long line")
            << head + "  TITLE \"" + QByteArray(20'000, 'x') + "\"\n" + "  TRACK 01 AUDIO\n    INDEX 01\n";
        QTest::newRow("huge") << head + first + QByteArray(1'100'000, '\n');
    }
    void sheet_thatIsBroken_isListedButHasNoDisc()
    {
        QFETCH(QByteArray, sheet);
        ImageBench b;
        b.add("disc", sheet, discSound(400, 1));
        RipBench& r = b.open();
        const int last = r.ripper->deviceCount() - 1;
        QCOMPARE(r.ripper->deviceText1(last), QString("disc"));
        QTRY_VERIFY_WITH_TIMEOUT(!r.ripper->selectDevice(last), 20'000);
        QVERIFY(r.ripper->status() != CDRipperX::kReady);
        QVERIFY(!r.ripper->discPresent());
        QCOMPARE(r.ripper->trackCount(), 0);
        QCOMPARE(r.ripper->driveState(), CDRipperX::kNoDisc);
        QVERIFY(!r.ripper->addTrack(1, r.target(1)));
        QVERIFY(!r.ripper->start());
    }

    void reason_ofAnImage_standsInItsEntry_andGoesWithIt()
    {
        ImageBench b;
        const QByteArray sheet =
            "FILE \"Album remastered.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
        b.add("Album", sheet, discSound(100, 1));
        b.add("Sound", QByteArray(sheet).replace("Album remastered", "Sound"), discSound(100, 2));
        RipBench& r = b.open();
        const int album = r.find("Album");
        const int sound = r.find("Sound");
        const QString reason = "the file Album remastered.bin is missing";
        QTRY_COMPARE_WITH_TIMEOUT(r.ripper->deviceText3(album), "image (" + reason + ')', 20'000);
        QCOMPARE(r.ripper->deviceHint(album), b.images() + "/Album.cue: " + reason);
        QCOMPARE(r.ripper->deviceText3(sound), QString("image"));
        QCOMPARE(r.ripper->deviceHint(sound), b.images() + "/Sound.cue");
        QTRY_VERIFY_WITH_TIMEOUT(!r.ripper->selectDevice(album), 20'000);
        QVERIFY(r.ripper->selectDevice(sound));
        int told = 0;
        connect(r.ripper.get(), &CDRipperX::DevicesChanged, this, [&told] { ++told; });
        put(b.images() + "/Album remastered.bin", discSound(90, 3));
        QTRY_COMPARE_WITH_TIMEOUT(told, 1, 20'000);
        QCOMPARE(r.ripper->deviceText3(album), QString("image"));
        QVERIFY(r.takeDisc("Album"));
        QCOMPARE(r.rip({1}), QString("finished"));
        QVERIFY(wavSamples(r.target(1)) == discSound(90, 3));
        QVERIFY(QFile::remove(b.images() + "/Album remastered.bin"));
        QTRY_COMPARE_WITH_TIMEOUT(r.ripper->driveState(), CDRipperX::kNoDisc, 20'000);
        QTRY_COMPARE_WITH_TIMEOUT(r.ripper->deviceText3(album), "image (" + reason + ')', 20'000);
    }

    void images_ofOneName_areToldApart()
    {
        ImageBench b;
        b.add("Album", "FILE \"Album.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(100, 1));
        put(b.images() + "/Album.toc", "TRACK AUDIO\nFILE \"Album.bin\" SWAP 00:00:20 00:00:30\n");
        put(b.images() + "/Other.TOC", "TRACK AUDIO\nSILENCE 00:04:00\n");
        RipBench& r = b.open();
        const int cue = r.find("Album");
        QCOMPARE(r.ripper->deviceText1(cue + 1), QString("Album.toc"));
        QCOMPARE(r.ripper->deviceText1(cue + 2), QString("Other"));
        QVERIFY(r.takeDisc("Album.toc"));
        QCOMPARE(r.rip({1}), QString("finished"));
        QVERIFY(wavSamples(r.target(1)) == frames(discSound(100, 1), 20, 30));
        QVERIFY(r.takeDisc("Other"));
        QCOMPARE(r.ripper->trackLength(1), 300);
    }

    void track_ofOneFrame_isCopied()
    {
        ImageBench b;
        b.add("disc",
              "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n"
              "    INDEX 01 00:00:01\n",
              discSound(3, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QCOMPARE(r.ripper->trackLength(1), 1);
        QCOMPARE(r.rip({1, 2}), QString("finished"));
        QVERIFY(wavSamples(r.target(1)) == frames(discSound(3, 1), 0, 1));
    }

    void image_longerThanItsFile_givesWhatIsThere()
    {
        ImageBench b;
        b.add("disc",
              "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n"
              "    INDEX 01 00:01:00\n  TRACK 03 AUDIO\n    INDEX 01 70:00:00\n",
              discSound(100, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QCOMPARE(r.ripper->deviceText3(r.find("disc")), QString("image (the file disc.bin is too short)"));
        QCOMPARE(r.ripper->trackCount(), 3);
        QVERIFY(!r.ripper->addTrack(3, r.target(3)));
        QCOMPARE(r.rip({1, 2}), QString("finished"));
        QCOMPARE(
            r.ripper->unreadTracks(),
            QStringList("Track 2 could not be read at 00:00:25: the file disc.bin cannot be read there"));
        QVERIFY(wavSamples(r.target(1)) == frames(discSound(100, 1), 0, 75));
        QCOMPARE(r.left(), QStringList("Track1.wav"));
    }

    void sheet_withOddButSoundText_isTaken_data()
    {
        QTest::addColumn<QByteArray>("sheet");
        QTest::newRow("line ends of another system")
            << QByteArray("FILE \"disc.bin\" BINARY\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n");
        QTest::newRow("no last line end")
            << QByteArray("FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00");
        QTest::newRow("long title")
            << "TITLE \"" + QByteArray(200, 't') +
                   "\"\nFILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
        QTest::newRow("title in another language")
            << QByteArray("TITLE \"\xC3\x9C\x62\x65r \xE6\x97\xA5\"\nFILE \"disc.bin\" BINARY\n  TRACK 01 "
                          "AUDIO\n    INDEX 01 00:00:00\n");
    }
    void sheet_withOddButSoundText_isTaken()
    {
        QFETCH(QByteArray, sheet);
        ImageBench b;
        b.add("disc", sheet, discSound(400, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QCOMPARE(r.rip({1}), QString("finished"));
        QVERIFY(wavSamples(r.target(1)) == discSound(400, 1));
    }

    void image_withAnOddName_isTaken()
    {
        ImageBench b;
        const QString name = QString::fromUtf8("Größe 日本 (1) & 'x' 100%");
        b.add(name, "FILE \"" + name.toUtf8() + ".bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(300, 4));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc(name));
        QCOMPARE(r.rip({1}), QString("finished"));
        QVERIFY(wavSamples(r.target(1)) == discSound(300, 4));
    }

    void image_thatLosesItsEnd_losesTheTrack()
    {
        ImageBench b;
        b.add("disc",
              "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n"
              "    INDEX 01 00:06:00\n",
              discSound(900, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        r.ripper->addTrack(1, r.target(1));
        r.ripper->addTrack(2, r.target(2));
        QVERIFY(QFile::resize(b.images() + "/disc.bin", 600 * 2352));
        QVERIFY(r.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(r.ended(), 60'000);
        QCOMPARE(
            r.ripper->unreadTracks(),
            QStringList("Track 2 could not be read at 00:02:00: the file disc.bin cannot be read there"));
        QCOMPARE(r.left(), QStringList("Track1.wav"));
    }

    void image_thatGoes_isNoDisc_untilItIsBack()
    {
        ImageBench b;
        const QByteArray sheet = "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n";
        b.add("disc", sheet, discSound(300, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QVERIFY(QFile::remove(b.images() + "/disc.cue"));
        QTRY_COMPARE_WITH_TIMEOUT(r.ripper->driveState(), CDRipperX::kNoDisc, 20'000);
        b.add("disc", sheet, {});
        QTRY_COMPARE_WITH_TIMEOUT(r.ripper->driveState(), CDRipperX::kDiscLoaded, 20'000);
        QVERIFY(r.ripper->selectDevice(r.ripper->deviceCount() - 1));
        QCOMPARE(r.ripper->trackCount(), 1);
    }

    void addTrack_whereNoFileCanBe_isRefused()
    {
        ImageBench b;
        b.add("disc", "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(300, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        QVERIFY(!r.ripper->addTrack(1, "Track1.wav"));
        QVERIFY(!r.ripper->addTrack(1, "/proc/nothing/Track1.wav"));
        put(r.folder.filePath("plain"), "file");
        QVERIFY(!r.ripper->addTrack(1, r.folder.filePath("plain/Track1.wav")));
        QVERIFY(!r.ripper->addTrack(1, r.folder.path()));
        QVERIFY(r.ripper->addTrack(1, r.folder.filePath("new/deep/Track1.wav")));
        QVERIFY(r.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(r.ended(), 60'000);
        QVERIFY(wavSamples(r.folder.filePath("new/deep/Track1.wav")) == discSound(300, 1));
    }

    void track_whoseNameWasTakenSinceTheUserWasAsked_replacesNothing()
    {
        ImageBench b;
        b.add("disc", "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(300, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        const QString path = r.folder.filePath("Track1.wav");
        put(path, "another program's");
        QVERIFY(r.ripper->addTrack(1, path, NameBearer{}));
        QVERIFY(r.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(r.ended(), 60'000);
        QFile there(path);
        QVERIFY(there.open(QIODevice::ReadOnly));
        QCOMPARE(there.readAll(), QByteArray("another program's"));
        QCOMPARE(r.ripper->unreadTracks(), QStringList("Track 1 was not saved: a file of its name has been "
                                                       "put there since the start was pressed"));
    }

    void storage_thatTakesNoFile_isTold()
    {
        ImageBench b;
        b.add("disc", "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(300, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        const QString folder = r.folder.filePath("goes");
        QVERIFY(r.ripper->addTrack(1, folder + "/Track1.wav"));
        QVERIFY(QDir(folder).removeRecursively());
        put(folder, "a file now");
        QVERIFY(r.ripper->start());
        QTRY_VERIFY_WITH_TIMEOUT(r.ended(), 60'000);
        QCOMPARE(r.ripper->unreadTracks(),
                 QStringList("Track 1 could not be saved: check the folder and its free space"));
    }

    void storage_thatIsFull_isTold_andNothingIsLost()
    {
        ImageBench b;
        b.add("disc",
              "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
              "  TRACK 02 AUDIO\n    INDEX 01 00:08:00\n",
              discSound(900, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        put(r.target(1), "old");
        rlimit before{};
        QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
        const rlimit small{1'000'000,
                           before.rlim_max}; // larger than the second track, smaller than the first
        std::signal(SIGXFSZ, SIG_IGN);
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
        const QString end = r.rip({1, 2});
        setrlimit(RLIMIT_FSIZE, &before);
        QCOMPARE(end, QString("finished"));
        QCOMPARE(r.ripper->unreadTracks(),
                 QStringList("Track 1 could not be saved: check the folder and its free space"));
        QCOMPARE(r.left(), (QStringList{"Track1.wav", "Track2.wav"}));
        QCOMPARE(fileContent(r.target(1)), QByteArray("old"));
        QCOMPARE(wavSamples(r.target(2)).size(), qsizetype{300} * kBytesPerFrame);
    }

    void leftOver_ofAKilledRun_isNoHindrance()
    {
        ImageBench b;
        b.add("disc", "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(300, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        put(r.folder.filePath(".Track1.wav.part"), "half");
        put(r.target(1), "old");
        QCOMPARE(r.rip({1}), QString("finished"));
        QCOMPARE(r.left(), QStringList("Track1.wav"));
        QVERIFY(wavSamples(r.target(1)) == discSound(300, 1));
    }

    void abort_inTheMiddle_leavesNothingHalf()
    {
        ImageBench b;
        QByteArray sheet("FILE \"disc.bin\" BINARY\n");
        for (int track = 1; track <= 10; ++track)
            sheet += "  TRACK " + QByteArray::number(track).rightJustified(2, '0') + " AUDIO\n    INDEX 01 " +
                     msf((track - 1) * 900) + '\n';
        b.add("disc", sheet, discSound(9000, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        for (int track = 1; track <= 10; ++track)
            QVERIFY(r.ripper->addTrack(track, r.target(track)));
        QVERIFY(r.ripper->start());
        while (r.left().isEmpty())
            QTest::qSleep(1);
        r.ripper->abort();
        QTRY_VERIFY_WITH_TIMEOUT(r.left().filter(".part").isEmpty(), 20'000);
        QTest::qWait(200);
        QVERIFY(!r.ended());
        QVERIFY(r.left().size() < 10);
        for (const QString& name : r.left())
            QCOMPARE(QFileInfo(r.folder.filePath(name)).size(), 44 + qint64{900} * kBytesPerFrame);
        QCOMPARE(r.rip({1}), QString("finished"));
        QCOMPARE(r.ripper->unreadTracks(), QStringList());
        QCOMPARE(wavSamples(r.target(1)).size(), qsizetype{900} * kBytesPerFrame);
    }

    void select_whileExtracting_isRefused()
    {
        ImageBench b;
        b.add("disc", "FILE \"disc.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n",
              discSound(3000, 1));
        RipBench& r = b.open();
        QVERIFY(r.takeDisc("disc"));
        const int device = r.ripper->deviceCount() - 1;
        QVERIFY(r.ripper->addTrack(1, r.target(1)));
        QVERIFY(r.ripper->start());
        QVERIFY(!r.ripper->selectDevice(device));
        QCOMPARE(r.ripper->status(), CDRipperX::kExtracting);
        QVERIFY(!r.ripper->start());
        QCOMPARE(r.ripper->driveState(), CDRipperX::kPlaying);
        QTRY_VERIFY_WITH_TIMEOUT(r.ended(), 60'000);
        QVERIFY(r.ripper->selectDevice(device));
        QCOMPARE(r.ripper->trackCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestImageRipper)
#include "tst_imageripper.moc"
