#include "drive/burn/Story.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>

#include <cstdio>

namespace zib {

namespace {

using answers::Answer;

constexpr qsizetype kAtOnce = 8; // Each spends its time waiting for the library's own pauses.

/// What two runs never share: the folder of the test.
QString withoutPlaces(QString text, const BurnBench& bench)
{
    return text.replace(bench.folder.path(), QStringLiteral("FOLDER"));
}

QString field(const QString& line, const QString& name)
{
    const QRegularExpression value(QStringLiteral(" %1=(\\S+)").arg(name));
    return value.match(line).captured(1);
}

/// Commands whose parameters are chosen and not counted: told with their bytes.
bool isChosen(const QString& command)
{
    static const QStringList chosen{"PREVENT_ALLOW", "START_STOP_UNIT",   "CLOSE_TRACK_SESSION",
                                    "SET_CD_SPEED",  "SYNCHRONIZE_CACHE", "MODE_SELECT_10",
                                    "MODE_SENSE_10", "SEND_OPC",          "BLANK",
                                    "READ_TOC"};
    return chosen.contains(command);
}

/// How the library finds its way in a drive, and what is asked by the clock.
bool isLeftOut(const QString& command)
{
    static const QStringList own{"TEST_UNIT_READY",   "READ_BUFFER_CAPACITY", "INQUIRY",
                                 "GET_CONFIGURATION", "GET_PERFORMANCE",      "READ_CAPACITY",
                                 "MODE_SENSE_10 5A00"};
    return std::any_of(own.cbegin(), own.cend(),
                       [&](const QString& start) { return command.startsWith(start); });
}

/// A parameter list without the noughts at its end.
QString shortened(QString bytes)
{
    while (bytes.endsWith(u"00") && bytes.size() % 2 == 0)
        bytes.chop(2);
    return bytes;
}

QString commandIn(const QString& line)
{
    const QString command = line.section(u' ', 2, 2);
    QStringList words{command};
    if (command == u"OPEN")
        words << field(line, "how");
    else if (isChosen(command))
        words << field(line, "cdb");
    if (const QString data = field(line, "data"); !data.isEmpty())
        words << shortened(data);
    if (const QString answer = field(line, "answer"); answer != u"good" && answer != u"ok")
        words << answer;
    return words.join(u' ');
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

QStringList withoutRuns(const QStringList& lines)
{
    QStringList once;
    for (const QString& line : lines)
        if (once.isEmpty() || once.last() != line)
            once << line;
    return once;
}

QStringList commandsIn(const QStringList& journal)
{
    QStringList commands;
    for (const QString& line : journal)
        if (const QString command = commandIn(line); !isLeftOut(command))
            commands << command;
    return withoutRuns(commands);
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

Answer parsed(const QByteArray& json)
{
    Answer answer;
    for (const QJsonValue& line : QJsonDocument::fromJson(json).array())
        answer << line.toString();
    return answer;
}

/// A list of commands by what it has in place of the usual ones.
QString beside(const QString& usual, const QString& list)
{
    const QStringList before = usual.split(", ");
    const QStringList now = list.split(", ");
    const qsizetype most = std::min(before.size(), now.size());
    qsizetype start = 0;
    while (start < most && before[start] == now[start])
        ++start;
    qsizetype end = 0;
    while (end < most - start && before[before.size() - 1 - end] == now[now.size() - 1 - end])
        ++end;
    const QString own = now.sliced(start, now.size() - start - end).join(", ");
    return QString("%1 as usual, [%2], %3 as usual").arg(start).arg(own).arg(end);
}

/// Lists of commands are told by what they have in place of the usual ones.
Answer beside(const Answer& usual, Answer answer)
{
    for (QString& line : answer)
        for (const QString& usualLine : usual)
            if (const QString name = line.section(": ", 0, 0); line != usualLine &&
                                                               (name == "asked" || name == "looked") &&
                                                               usualLine.startsWith(name + ": "))
                line = name + ": " + beside(usualLine.section(": ", 1), line.section(": ", 1));
    return answer;
}

QList<Answer> toldBeside(const QString& group, qsizetype count)
{
    std::vector<std::unique_ptr<QProcess>> tellers;
    QList<Answer> answers;
    for (qsizetype i = 0; i < count + kAtOnce; ++i) {
        if (i >= kAtOnce) {
            QProcess& teller = *tellers[size_t(i - kAtOnce)];
            teller.waitForFinished(-1);
            answers << parsed(teller.readAllStandardOutput());
        }
        if (i < count) {
            tellers.push_back(std::make_unique<QProcess>());
            tellers.back()->start(QCoreApplication::applicationFilePath(),
                                  {"--story", group, QString::number(i)});
        }
    }
    return answers;
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

void tellAll(answers::Book& book, const QString& group, const QList<Story>& stories)
{
    const QList<Answer> answers = toldBeside(group, stories.size());
    book.chapter(group);
    book.tell(stories[0].name, answers[0]);
    book.chapter(group + ", beside that", answers[0]);
    for (qsizetype i = 1; i < stories.size(); ++i)
        book.tell(stories[i].name, beside(answers[0], answers[i]));
}

bool toldOne(const QStringList& arguments, const std::function<QList<Story>(const QString& group)>& find)
{
    if (arguments.size() != 4 || arguments[1] != "--story")
        return false;
    const Answer answer = told(find(arguments[2]).at(arguments[3].toInt()));
    std::puts(QJsonDocument(QJsonArray::fromStringList(answer)).toJson(QJsonDocument::Compact).constData());
    return true;
}

} // namespace zib
