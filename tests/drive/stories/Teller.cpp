#include "drive/stories/Teller.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace zib {

namespace {

using answers::Answer;

constexpr qsizetype kAtOnce = 8; // Each spends its time waiting for the library's own pauses.

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

void tellAll(answers::Book& book, const QString& group, const QStringList& names)
{
    const QList<Answer> answers = toldBeside(group, names.size());
    book.chapter(group);
    book.tell(names[0], answers[0]);
    book.chapter(group + ", beside that", answers[0]);
    for (qsizetype i = 1; i < names.size(); ++i)
        book.tell(names[i], beside(answers[0], answers[i]));
}

bool toldOne(const QStringList& arguments,
             const std::function<Answer(const QString& group, int number)>& tell)
{
    if (arguments.size() != 4 || arguments[1] != "--story")
        return false;
    const Answer answer = tell(arguments[2], arguments[3].toInt());
    std::puts(QJsonDocument(QJsonArray::fromStringList(answer)).toJson(QJsonDocument::Compact).constData());
    return true;
}

} // namespace zib
