#include "drive/burn/Story.h"

namespace zib {

namespace {

using answers::Answer;

/// What two runs never share: the folder of the test.
QString withoutPlaces(QString text, const BurnBench& bench)
{
    return text.replace(bench.folder.path(), QStringLiteral("FOLDER"));
}

QString discTold(const EmulatedRecorder& recorder)
{
    static const QStringList ends{"none", "blank", "begun", "finished"};
    QStringList words{ends.at(int(recorder.discEnd()))};
    if (const auto content = recorder.content()) {
        for (const auto& track : content->tracks)
            words << QString("%1 of session %2: %3, %4 to %5, control %6")
                         .arg(track.number)
                         .arg(track.session)
                         .arg(track.pregap)
                         .arg(track.start)
                         .arg(track.end)
                         .arg(track.control);
        words << QString("%1 bytes of names").arg(content->cdTextPacks.size());
    }
    return words.join(", ");
}

/// The last place of each track that was told.
QString placesTold(const BurnBench& bench)
{
    QMap<int, QString> last;
    for (const auto& [track, done, size] : bench.positions)
        last[track] = QString("%1: %2 of %3").arg(track).arg(done).arg(size);
    return QStringList(last.values()).join(", ");
}

void listen(BurnBench& bench, const Story& story)
{
    const auto hear = [&bench](const char* what) {
        return [&bench, what](const QString& text) { bench.tell(QString("%1 \"%2\"").arg(what, text)); };
    };
    QObject::connect(&bench.writer, &DVDWriterPro::Waiting, hear("waiting"));
    QObject::connect(&bench.writer, &DVDWriterPro::Remark, hear("remark"));
    QObject::connect(&bench.writer, &DVDWriterPro::ClosingTrack,
                     [&bench](qint32 track) { bench.tell(QString("closing track %1").arg(track)); });
    QObject::connect(&bench.writer, &DVDWriterPro::ComparingTrack,
                     [&bench](qint32 track, qint32 done, qint32 size) {
                         if (done == size)
                             bench.tell(QString("compared %1 of %2 frames").arg(track).arg(size));
                     });
    if (story.meanwhile)
        bench.onSaid = [&bench, &story](const QString& text) { story.meanwhile(bench, text); };
}

Answer lookTold(BurnBench& bench)
{
    bench.recorder.clearJournal();
    if (!bench.takeDrive())
        return {"found: " + bench.said.join(", "),
                "looked: " + commandsIn(bench.recorder.journal()).join(", ")};
    DiscWriter& writer = bench.writer;
    QStringList words{QString("%1 drives").arg(writer.driveCount()),
                      writer.driveText1(0) + u'/' + writer.driveText2(0) + u'/' + writer.driveText3(0),
                      QString("status %1").arg(writer.discStatus()),
                      QString("fastest %1").arg(writer.maxWriteSpeed())};
    for (const WriteSpeed& speed : writer.writeSpeeds())
        words << QString("%1 = %2").arg(speed.value).arg(speed.factor);
    const std::initializer_list<std::pair<const char*, bool>> facts{
        {"CD-R", writer.canWriteCdR(0)},
        {"CD-RW", writer.canWriteCdRw(0)},
        {"audio", writer.canWriteAudio(0)},
        {"protects", writer.supportsBufferProtection()},
        {"holds data", writer.discHoldsData()}};
    for (const auto& [what, holds] : facts)
        if (holds)
            words << what;
    return {"found: " + words.join(", "), "looked: " + commandsIn(bench.recorder.journal()).join(", ")};
}

/// How far a write that does not come to its end had come is seen now and then only.
QStringList saidFor(const BurnBench& bench, bool byTheClock)
{
    QStringList said = bench.said;
    if (!said.contains("completed"))
        said.removeIf([byTheClock](const QString& text) {
            return text.startsWith("reading ") || (byTheClock && text.startsWith("waiting "));
        });
    return withoutRuns(said);
}

Answer writeTold(BurnBench& bench, bool byTheClock)
{
    bench.recorder.clearJournal();
    Answer answer{"end: " + bench.write()};
    answer << "said: " + withoutPlaces(saidFor(bench, byTheClock).join(", "), bench);
    if (bench.said.contains("completed"))
        answer << "places: " + placesTold(bench);
    if (bench.said.contains("error"))
        answer << withoutPlaces(QString("error: %1, sense %2: %3 %4")
                                    .arg(QString::number(bench.error), QString::number(bench.sense),
                                         bench.description, bench.senseData),
                                bench);
    answer << "disc: " +
                  (byTheClock ? discTold(bench.recorder).section(", ", 0, 0) : discTold(bench.recorder));
    answer << QString("door: %1").arg(bench.recorder.doorLocked() ? "locked" : "unlocked");
    answer << "left: " + bench.leftCopies().join(", ");
    if (!byTheClock)
        answer << "asked: " + commandsIn(bench.recorder.journal()).join(", ");
    return answer;
}

} // namespace

Answer told(const Story& story)
{
    BurnBench bench;
    if (story.prepare)
        story.prepare(bench);
    addPair(bench);
    listen(bench, story);
    Answer answer = lookTold(bench);
    if (!story.isWritten || bench.writer.driveCount() < 2)
        return answer;
    bench.configure();
    if (story.choose)
        story.choose(bench);
    return answer + writeTold(bench, bool(story.meanwhile));
}

} // namespace zib
