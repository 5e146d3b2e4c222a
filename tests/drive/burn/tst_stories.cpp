#include "drive/burn/Story.h"

#include <QCoreApplication>
#include <QMap>

using namespace zib;

// Whole writes as they were recorded: the events in their order, the disc, and the commands that the drive
// was sent. What only the drive's journal shows is held here: speed, buffer protection, door, the way of
// closing.

namespace {

using Change = std::function<void(BurnBench&)>;

Change set(const QString& key, const QString& value)
{
    return [=](BurnBench& bench) { bench.recorder.set(key, value); };
}

Change fault(const QString& rule)
{
    return [=](BurnBench& bench) { bench.recorder.addFault(rule); };
}

Change disc(const QString& kind, const QStringList& recipe = {})
{
    return [=](BurnBench& bench) {
        bench.recorder.set("disc-kind", kind);
        bench.recorder.insert("other", recipe);
    };
}

Change all(const QList<Change>& changes)
{
    return [=](BurnBench& bench) {
        for (const Change& change : changes)
            change(bench);
    };
}

void nameAll(BurnBench& bench)
{
    bench.writer.nameDisc("Album");
    bench.writer.nameTrack(1, {"One", "Us"});
    bench.writer.nameTrack(2, {"Two", "You"});
}

void compare(BurnBench& bench)
{
    bench.writer.setVerify(true);
}

void cacheLocally(BurnBench& bench)
{
    bench.cache = true;
    bench.configure();
    QDir().mkpath(bench.folder.filePath("cache"));
}

QList<Story> looks()
{
    QList<Story> stories{
        {"as ever"},
        {"a pressed disc", disc("cd-rom", {"audio 400", "close"})},
        {"a full disc", disc("cd-r", {"audio 400", "close"})},
        {"a full disc, rewritable", disc("cd-rw", {"audio 400", "close"})},
        {"an open disc", disc("cd-r", {"audio 400", "session"})},
        {"an open disc, rewritable", disc("cd-rw", {"audio 400", "session"})},
        {"a blank disc, rewritable", disc("cd-rw")},
        {"a disc of another length", set("disc-frames", "123456")},
        {"no disc", [](BurnBench& bench) { bench.recorder.removeDisc(); }},
        {"other speeds", set("write-speeds", "10 52 1 10")},
        {"a speed just beside 4", fault("MODE_SENSE_10 page=2A times=forever patch=42/02CC")},
        {"a speed between 4 and 5", fault("MODE_SENSE_10 page=2A times=forever patch=42/02CD")},
        {"a speed between 5 and 6", fault("MODE_SENSE_10 page=2A times=forever patch=42/03E8")},
        {"a speed just beside 16", fault("MODE_SENSE_10 page=2A times=forever patch=42/0B1B")},
        {"no speed at all", all({fault("MODE_SENSE_10 page=2A times=forever patch=38/0000"),
                                 fault("GET_PERFORMANCE times=forever sense=5/20/00")})},
        {"only CD-R", set("writes-cd-rw", "no")},
        {"only CD-RW", set("writes-cd-r", "no")},
        {"no protection", set("buffer-protection", "no")},
        {"no test writing", set("simulation", "no")},
        {"another name",
         all({set("vendor", "A"), set("product", "A NAME OF 16 L.."), set("revision", "ZZ99")})},
        {"block descriptors", set("block-descriptor", "yes")},
        {"sense of descriptors", all({set("sense-format", "descriptor"), fault("INQUIRY sense=2/04/01")})},
        {"no sense",
         all({set("sense-format", "none"), fault("READ_DISC_INFORMATION times=forever sense=2/04/01")})},
    };
    const QStringList commands{"INQUIRY",           "TEST_UNIT_READY", "MODE_SENSE_10",
                               "GET_CONFIGURATION", "GET_PERFORMANCE", "READ_DISC_INFORMATION",
                               "PREVENT_ALLOW"};
    for (const QString& command : commands)
        for (const char* what :
             {"sense=5/24/00", "times=forever sense=5/20/00", "sense=6/28/00", "transport",
              "times=forever errno=EIO", "short=3", "times=forever status=08", "gone", "pull"})
            stories << Story{command + u' ' + what, fault(command + u' ' + what)};
    for (Story& story : stories)
        story.isWritten = false;
    return stories;
}

QList<Story> settings()
{
    return {
        {"as ever"},
        {"a test", {}, [](BurnBench& bench) { bench.writer.setTestWrite(true); }},
        {"a test with names", {}, all({nameAll, [](BurnBench& bench) { bench.writer.setTestWrite(true); }})},
        {"a test, track at once", set("sao", "no"),
         [](BurnBench& bench) { bench.writer.setTestWrite(true); }},
        {"a test the drive lacks", set("simulation", "no"),
         [](BurnBench& bench) { bench.writer.setTestWrite(true); }},
        {"a test bit that is dropped", set("test-bit", "dropped"),
         [](BurnBench& bench) { bench.writer.setTestWrite(true); }},
        {"with names", {}, nameAll},
        {"with one name",
         {},
         [](BurnBench& bench) {
             bench.writer.nameTrack(2, {"Two", {}});
         }},
        {"names a drive does not take", set("cd-text", "no"), nameAll},
        {"names, track at once", set("sao", "no"), nameAll},
        {"track at once", set("sao", "no")},
        {"neither way", all({set("sao", "no"), set("tao", "no")})},
        {"the slowest",
         {},
         [](BurnBench& bench) { bench.writer.setWriteSpeed(bench.writer.writeSpeeds().last().value); }},
        {"the second",
         {},
         [](BurnBench& bench) { bench.writer.setWriteSpeed(bench.writer.writeSpeeds().at(1).value); }},
        {"no speed", {}, [](BurnBench& bench) { bench.writer.setWriteSpeed(-5); }},
        {"without protection", {}, [](BurnBench& bench) { bench.writer.setBufferProtection(false); }},
        {"with protection", {}, [](BurnBench& bench) { bench.writer.setBufferProtection(true); }},
        {"protection the drive lacks", set("buffer-protection", "no"),
         [](BurnBench& bench) { bench.writer.setBufferProtection(true); }},
        {"left open", {}, [](BurnBench& bench) { bench.writer.setCloseDisc(false); }},
        {"left open altogether",
         {},
         all({[](BurnBench& bench) { bench.writer.setCloseDisc(false); },
              [](BurnBench& bench) { bench.writer.setCloseSession(false); }})},
        {"left open, track at once", set("sao", "no"),
         [](BurnBench& bench) { bench.writer.setCloseDisc(false); }},
        {"through the cache", {}, cacheLocally},
        {"a rewritable disc", disc("cd-rw")},
        {"a full rewritable disc", disc("cd-rw", {"audio 400", "close"})},
        {"an open disc", disc("cd-r", {"audio 400", "session"})},
        {"a full disc", disc("cd-r", {"audio 400", "close"})},
        {"no disc", [](BurnBench& bench) { bench.recorder.removeDisc(); }},
        {"a disc that is too short", set("disc-frames", "1000")},
        {"a disc that just fits", set("disc-frames", "1001")},
        {"block descriptors", set("block-descriptor", "yes")},
        {"sense of descriptors", set("sense-format", "descriptor"), fault("WRITE_10 nth=3 sense=3/0C/00")},
    };
}

QList<Story> comparisons()
{
    QList<Story> stories{
        {"identical", {}, compare},
        {"identical, with names", {}, all({compare, nameAll})},
        {"identical, track at once", set("sao", "no"), compare},
        {"a test", {}, all({compare, [](BurnBench& bench) { bench.writer.setTestWrite(true); }})}};
    for (const char* rule :
         {"READ_CD times=forever jitter=30", "READ_CD times=forever jitter=-588", "READ_CD lba=5-5 noise",
          "READ_CD lba=5-5 times=forever flip=40/01", "READ_CD times=forever missing=700",
          "READ_CD times=forever swapped=1/2", "READ_CD lba=600-601 sense=3/11/05",
          "READ_CD lba=600-601 times=forever sense=3/11/05", "READ_CD nth=2 gone", "READ_CD nth=2 pull",
          "READ_CD transport", "READ_CD times=forever sense=5/64/00"})
        stories << Story{rule, {}, all({compare, fault(rule)})};
    return stories;
}

QList<Story> cancels()
{
    QList<Story> stories{{"as ever", {}, all({compare, cacheLocally})}};
    for (const char* moment :
         {"preparing", "caching", "reading 1", "progress", "reading 2", "closing disc",
          "waiting \"Making the drive ready, please wait...\"",
          "waiting \"Reading the disc back, please wait...\"", "compared 1 of 401 frames"})
        for (const bool atOnce : {false, true})
            stories << Story{QString(moment) + (atOnce ? ", track at once" : ""),
                             atOnce ? set("sao", "no") : Change(),
                             all({compare, cacheLocally, fault("WRITE_10 times=forever delay=20"),
                                  fault("READ_CD times=forever delay=60")}),
                             [moment = QString(moment)](BurnBench& bench, const QString& said) {
                                 if (said == moment)
                                     bench.writer.cancel();
                             }};
    return stories;
}

/// Faults between the look and the end, of one manner.
QList<Story> faults(const QStringList& manners)
{
    QList<Story> stories{{"as ever"}};
    const QStringList commands{"TEST_UNIT_READY",
                               "READ_DISC_INFORMATION",
                               "READ_DISC_INFORMATION nth=3",
                               "MODE_SENSE_10",
                               "MODE_SENSE_10 nth=7",
                               "MODE_SELECT_10",
                               "MODE_SELECT_10 nth=2",
                               "READ_TRACK_INFORMATION",
                               "SEND_CUE_SHEET",
                               "WRITE_10",
                               "WRITE_10 nth=40",
                               "SYNCHRONIZE_CACHE",
                               "START_STOP_UNIT",
                               "PREVENT_ALLOW",
                               "READ_TOC nth=3"};
    for (const QString& command : commands)
        for (const QString& manner : manners)
            stories << Story{command + u' ' + manner, {}, fault(command + u' ' + manner)};
    return stories;
}

QList<Story> faultsOfNames()
{
    QList<Story> stories{{"as ever", {}, nameAll}};
    for (const char* rule :
         {"SEND_CUE_SHEET sense=5/26/00", "SEND_CUE_SHEET times=2 sense=5/26/00", "SEND_CUE_SHEET gone",
          "WRITE_10 sense=5/24/00", "WRITE_10 times=2 sense=5/24/00", "WRITE_10 sense=3/0C/00",
          "WRITE_10 nth=2 sense=5/21/00", "WRITE_10 nth=40 sense=5/21/00",
          "WRITE_10 lba=-150--150 sense=5/21/02", "READ_TOC nth=4 sense=5/24/00",
          "READ_TOC nth=5 sense=5/24/00", "READ_TOC nth=5 times=forever sense=5/24/00",
          "READ_TOC nth=5 short=40", "READ_TOC nth=5 flip=10/01", "READ_TOC nth=5 times=forever flip=10/01",
          "READ_TOC nth=5 gone", "READ_TOC nth=5 transport", "MODE_SELECT_10 nth=2 sense=5/26/00"})
        stories << Story{rule, {}, all({nameAll, fault(rule)})};
    return stories;
}

QList<Story> faultsAtOnce()
{
    const Change atOnce = set("sao", "no");
    QList<Story> stories{{"as ever", atOnce}};
    for (const char* rule : {"WRITE_10 nth=60 sense=3/0C/00",
                             "WRITE_10 nth=60 gone",
                             "WRITE_10 nth=20 pull",
                             "SYNCHRONIZE_CACHE sense=3/72/02",
                             "SYNCHRONIZE_CACHE nth=2 sense=3/72/02",
                             "SYNCHRONIZE_CACHE nth=3 sense=3/72/02",
                             "CLOSE_TRACK_SESSION sense=3/72/00",
                             "CLOSE_TRACK_SESSION times=forever sense=3/72/00",
                             "CLOSE_TRACK_SESSION nth=2 sense=3/72/00",
                             "CLOSE_TRACK_SESSION nth=3 sense=3/72/00",
                             "CLOSE_TRACK_SESSION transport",
                             "CLOSE_TRACK_SESSION gone",
                             "CLOSE_TRACK_SESSION ignored",
                             "READ_TRACK_INFORMATION nth=2 sense=5/24/00",
                             "READ_TRACK_INFORMATION nth=3 times=forever sense=5/24/00",
                             "READ_TRACK_INFORMATION nth=2 patch=8/00000100",
                             "READ_TRACK_INFORMATION times=forever short=7",
                             "MODE_SELECT_10 nth=2 sense=5/26/00",
                             "MODE_SELECT_10 nth=3 sense=5/26/00",
                             "MODE_SELECT_10 nth=4 sense=5/26/00",
                             "MODE_SELECT_10 nth=3 ignored",
                             "MODE_SENSE_10 page=05 times=forever flip=10/01"})
        stories << Story{rule, atOnce, fault(rule)};
    return stories;
}

QList<Story> faultsOfTests()
{
    const Change test = [](BurnBench& bench) { bench.writer.setTestWrite(true); };
    QList<Story> stories{{"as ever", {}, test}};
    for (const char* rule :
         {"MODE_SELECT_10 nth=2 ignored", "MODE_SELECT_10 nth=3 ignored",
          "MODE_SELECT_10 times=forever ignored", "MODE_SELECT_10 nth=3 sense=5/26/00",
          "MODE_SENSE_10 page=05 flip=10/10", "MODE_SENSE_10 page=05 nth=2 flip=10/10",
          "MODE_SENSE_10 page=05 nth=3 flip=10/10", "MODE_SENSE_10 page=05 nth=4 flip=10/10",
          "MODE_SENSE_10 page=05 nth=2 short=9", "MODE_SENSE_10 page=05 nth=3 sense=5/24/00",
          "MODE_SENSE_10 page=05 nth=4 times=forever sense=5/24/00", "WRITE_10 nth=2 sense=5/64/00",
          "WRITE_10 nth=30 reset", "SYNCHRONIZE_CACHE sense=3/72/02", "SEND_CUE_SHEET sense=5/26/00",
          "READ_DISC_INFORMATION nth=4 sense=5/24/00",
          "READ_DISC_INFORMATION nth=4 times=forever sense=5/24/00"})
        stories << Story{rule, {}, all({test, fault(rule)})};
    return stories;
}

QList<Story> storiesOf(const QString& group)
{
    static const QMap<QString, QList<Story> (*)()> groups{
        {"looks", looks},
        {"settings", settings},
        {"comparisons", comparisons},
        {"cancels", cancels},
        {"names", faultsOfNames},
        {"track at once", faultsAtOnce},
        {"tests", faultsOfTests},
        {"refusals",
         [] {
             return faults({"sense=5/24/00", "times=forever sense=3/0C/00"});
         }},
        {"ways that break",
         [] {
             return faults({"transport", "errno=EIO"});
         }},
        {"drives that go",
         [] {
             return faults({"gone", "pull", "reset"});
         }},
    };
    return groups.value(group)();
}

} // namespace

class TestStories : public QObject
{
    Q_OBJECT
private slots:
    void looks_areAsRecorded() { play("looks"); }
    void settings_areObeyedAsRecorded() { play("settings"); }
    void comparisons_endAsRecorded() { play("comparisons"); }
    void cancels_endAsRecorded() { play("cancels"); }
    void namesThatAreRefused_areToldAsRecorded() { play("names"); }
    void trackAtOnce_endsAsRecorded() { play("track at once"); }
    void tests_endAsRecorded() { play("tests"); }
    void refusals_areToldAsRecorded() { play("refusals"); }
    void waysThatBreak_areToldAsRecorded() { play("ways that break"); }
    void drivesThatGo_areToldAsRecorded() { play("drives that go"); }

private:
    static void play(const QString& group)
    {
        QStringList names;
        for (const Story& story : storiesOf(group))
            names << story.name;
        answers::Book book("drive/burn/stories/" + group);
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
    TestStories test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_stories.moc"
