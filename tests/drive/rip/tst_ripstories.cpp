#include "EmulatedRecorder.h"
#include "drive/stories/Teller.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/makers.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QMap>

using namespace zib;
using answers::Answer;

// Whole copies of discs as they were recorded: what is found, what is said, the files to the byte, and the
// commands that change the drive.

namespace {

struct Bench : RipBench
{
    Bench() : RipBench(makeRipper("/nowhere")) {}

    EmulatedRecorder recorder;
};

using Change = std::function<void(Bench&)>;

struct Story
{
    QString name;
    Change prepare{}; ///< Before the drive is looked at.
    Change choose{};  ///< Between the look and the copying.
    QList<int> tracks{1, 3};
};

/// The usual disc: tracks of different lengths, one of them quiet at its end.
void insertAlbum(Bench& bench)
{
    const QList<int> lengths{500, 300, 420};
    QStringList recipe;
    for (const int length : lengths) {
        const QString raw = QString("album-%1.raw").arg(length);
        QFile file(bench.recorder.folder() + '/' + raw);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("no room for the disc");
        file.write(discSound(length - (length == 420 ? 80 : 0), length));
        file.write(QByteArray(length == 420 ? 80 * 2352 : 0, '\0'));
        recipe << "audio " + raw + (length == 300 ? " pregap=40" : "");
    }
    bench.recorder.insert("album", recipe + QStringList{"close"});
}

QString discTold(Bench& bench)
{
    CDRipperX& ripper = *bench.ripper;
    QStringList words{QString("\"%1\"").arg(ripper.discText()), QString("%1 tracks").arg(ripper.trackCount()),
                      QString("%1 times").arg(ripper.maxReadSpeed())};
    for (int track = 1; track <= ripper.trackCount(); ++track)
        words << QString("%1: %2 from %3%4%5")
                     .arg(track)
                     .arg(ripper.timeText(ripper.trackLength(track)))
                     .arg(ripper.trackStart(track))
                     .arg(ripper.isAudioTrack(track) ? " sound" : " data",
                          ripper.copyPermitted(track) ? " free" : "");
    return words.join(", ");
}

QString filesTold(const Bench& bench)
{
    QStringList words;
    for (const QString& name : bench.left()) {
        const QByteArray bytes = fileContent(bench.folder.filePath(name));
        const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex().left(12);
        words << QString("%1 %2 bytes %3").arg(name).arg(bytes.size()).arg(QString::fromLatin1(hash));
    }
    return words.join(", ");
}

/// The libraries find their own way in a drive; what changes the drive is the program's choice.
QString changesIn(const QStringList& journal)
{
    static const QStringList kinds{"SET_CD_SPEED", "PREVENT_ALLOW", "START_STOP_UNIT", "MODE_SELECT"};
    QStringList changes = commandsIn(journal);
    changes.removeIf([](const QString& command) {
        return std::none_of(kinds.cbegin(), kinds.cend(),
                            [&](const QString& kind) { return command.startsWith(kind); });
    });
    return withoutRuns(changes).join(", ");
}

/// What a drive is and whether it holds a disc is told late.
bool found(Bench& bench)
{
    if (bench.ripper->deviceCount() < 1)
        return false;
    bench.ripper->selectDevice(0);
    const auto isKnown = [&bench] {
        return bench.ripper->driveState() == CDRipperX::kDiscLoaded &&
               !bench.ripper->deviceText3(0).isEmpty();
    };
    return QTest::qWaitFor(isKnown, 4000);
}

Answer told(const Story& story)
{
    Bench bench;
    insertAlbum(bench);
    if (story.prepare)
        story.prepare(bench);
    const bool isThere = found(bench);
    const CDRipperX& ripper = *bench.ripper;
    Answer answer{
        QString("drive: %1, %2, %3").arg(ripper.deviceText1(0), ripper.deviceText2(0), ripper.deviceText3(0)),
        QString("hint: %1").arg(ripper.deviceHint(0)),
        QString("status: %1, state %2").arg(ripper.status()).arg(bench.ripper->driveState()),
        "disc: " + (isThere ? discTold(bench) : QString())};
    if (!isThere)
        return answer;
    if (story.choose)
        story.choose(bench);
    bench.recorder.clearJournal();
    answer << "end: " + bench.rip(story.tracks, 60'000);
    answer << QString("status then: %1").arg(ripper.status());
    answer << "said: " + bench.said.join(", ");
    answer << "unread: " + ripper.unreadTracks().join(", ");
    answer << "files: " + filesTold(bench);
    answer << "asked: " + changesIn(bench.recorder.journal());
    answer << QString("door: %1").arg(bench.recorder.doorLocked() ? "locked" : "unlocked");
    return answer;
}

Change set(const QString& key, const QString& value)
{
    return [=](Bench& bench) { bench.recorder.set(key, value); };
}

Change fault(const QString& rule)
{
    return [=](Bench& bench) { bench.recorder.addFault(rule); };
}

Change disc(const QStringList& recipe)
{
    return [=](Bench& bench) { bench.recorder.insert("other", recipe); };
}

QList<Story> discs()
{
    return {
        {"the album"},
        {"all of it", {}, {}, {1, 2, 3}},
        {"backwards", {}, {}, {3, 2, 1}},
        {"a slow speed", {}, [](Bench& bench) { bench.ripper->setReadSpeed(4); }},
        {"the drive's speed", {}, [](Bench& bench) { bench.ripper->setReadSpeed(0); }},
        {"a slow drive", set("read-speed", "11")},
        {"one track", disc({"audio 400", "close"}), {}, {1}},
        {"from number 7", disc({"audio 400 number=7 copy", "audio 350 preemphasis", "close"}), {}, {1, 2}},
        {"data first", disc({"data 300", "audio 400", "audio 350", "close"}), {}, {2, 3}},
        {"data last", disc({"audio 400", "data 300", "close"}), {}, {1}},
        {"a data track asked for", disc({"audio 400", "data 300", "close"}), {}, {2}},
        {"a second session", disc({"audio 400", "session", "data 300", "close"}), {}, {1}},
        {"an open disc", disc({"audio 400", "audio 310", "session"}), {}, {1, 2}},
        {"long pregaps", disc({"audio 400 pregap=300", "audio 350 pregap=75", "close"}), {}, {1, 2}},
        {"a blank disc", disc({}), {}, {1}},
        {"no disc", [](Bench& bench) { bench.recorder.removeDisc(); }},
        {"only data", disc({"data 600", "close"}), {}, {1}},
        {"another name",
         [](Bench& bench) {
             bench.recorder.set("vendor", "WE");
             bench.recorder.set("product", "MADE IT");
         }},
        {"no C2", set("c2-pointers", "no")},
        {"held by another", set("open", "busy")},
        {"forbidden", set("open", "denied")},
        {"only to be read", set("open", "read-only")},
        {"missing", set("open", "missing")},
    };
}

QList<Story> damages()
{
    QList<Story> stories{{"the album"}};
    for (const char* rule : {"READ_CD lba=200-203 noise",
                             "READ_CD lba=200 times=forever noise",
                             "READ_CD lba=200-205 times=3 sense=3/11/05",
                             "READ_CD lba=0 times=forever sense=3/11/05",
                             "READ_CD lba=499 times=forever sense=3/11/05",
                             "READ_CD lba=900-1200 times=forever sense=3/11/05",
                             "READ_CD lba=1219 times=forever sense=3/11/05",
                             "READ_CD nth=4 times=3 jitter=37",
                             "READ_CD times=forever jitter=-12",
                             "READ_CD nth=4 transport",
                             "READ_CD nth=4 times=2 short=100",
                             "READ_CD nth=3 gone",
                             "READ_CD nth=3 pull",
                             "READ_CD nth=3 reset",
                             "READ_CD nth=3 times=forever sense=2/04/01",
                             "READ_CD times=forever sense=5/20/00",
                             "READ_CD times=forever sense=5/6F/03",
                             "READ_TOC sense=5/24/00",
                             "READ_TOC times=forever sense=5/24/00",
                             "READ_TOC short=11",
                             "READ_TOC times=2 sense=3/11/00",
                             "READ_TOC times=3 sense=3/11/00",
                             "READ_TOC transport",
                             "READ_TOC sense=2/04/01",
                             "READ_TOC sense=3/11/00",
                             "INQUIRY sense=5/24/00",
                             "SET_CD_SPEED times=forever sense=5/20/00",
                             "READ_SUB_CHANNEL times=forever sense=5/20/00",
                             "MODE_SENSE_10 times=forever sense=5/20/00"})
        stories << Story{rule, fault(rule)};
    for (const char* open : {"missing", "denied", "busy"})
        stories << Story{QString("a drive that is %1 then").arg(open), {}, set("open", open)};
    for (const char* rule : {"READ_CD nth=3 gone", "READ_TOC sense=5/24/00", "SET_CD_SPEED transport",
                             "GET_EVENT_STATUS times=forever sense=5/20/00"})
        stories << Story{QString(rule) + ", later", {}, fault(rule)};
    return stories;
}

QList<Story> storiesOf(const QString& group)
{
    return group == u"discs" ? discs() : damages();
}

} // namespace

class TestRipStories : public QObject
{
    Q_OBJECT
private slots:
    void discs_areCopiedAsRecorded() { play("discs"); }
    void damages_areToldAsRecorded() { play("damages"); }

private:
    static void play(const QString& group)
    {
        QStringList names;
        for (const Story& story : storiesOf(group))
            names << story.name;
        answers::Book book("drive/rip/stories/" + group);
        tellAll(book, group, names);
        ZIB_COMPARE_ANSWERS(book);
    }
};

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const auto tell = [](const QString& group, int number) { return told(storiesOf(group).at(number)); };
    if (toldOne(QCoreApplication::arguments(), tell))
        return 0;
    TestRipStories test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_ripstories.moc"
