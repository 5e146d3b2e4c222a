#include "CellRun.h"

#include "engines/burn/WavMaker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

#include <signal.h>

namespace zib {

namespace {

constexpr int kStepMs = 40;
constexpr int kOpeningMs = 60'000;
constexpr int kWritingMs = 90'000;
constexpr int kSettlingMs = 25'000; ///< A program that was asked to end takes 20 s and a little more.
constexpr int kLeavingMs = 30'000;
constexpr int kQuietMs = 1'200;
constexpr int kTries = 8;
constexpr int kBetweenTriesMs = 3'000;
// What the tests may find on a machine that is busy elsewhere; the goal itself is printed with the figures.
constexpr qint64 kFreezeMs = 400;
constexpr qint64 kSilenceMs = 15'000;

const QString kCompleted = QStringLiteral("completed");
const QString kCancelled = QStringLiteral("cancelled");
const QString kError = QStringLiteral("error");
const QString kRefused = QStringLiteral("refused");

bool isTestModeBox(const QString& box)
{
    return box.startsWith("i: The software was set");
}

QByteArray padded(const QByteArray& samples)
{
    const qsizetype frames = std::max<qsizetype>((samples.size() + 2351) / 2352, 300);
    return samples + QByteArray(frames * 2352 - samples.size(), '\0');
}

QByteArray settings(const Cell& cell, const QString& cache)
{
    return QString("[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n[Folders]\nTemporary=%1\n"
                   "[Misc]\nCache Files Locally=True\nTest Mode=%2\nBuffer Protection=True\n")
        .arg(cache, cell.testMode ? "True" : "False")
        .toUtf8();
}

} // namespace

CellRun::CellRun(const Cell& cell, QObject* parent) : QObject(parent)
{
    m_result.cell = cell;
    connect(&m_program, &QProcess::readyReadStandardOutput, this, &CellRun::read);
    connect(&m_steps, &QTimer::timeout, this, &CellRun::step);
}

void CellRun::start()
{
    prepareFolder();
    launch();
    enter(Stage::Opening, kOpeningMs);
    m_steps.start(kStepMs);
}

void CellRun::prepareFolder()
{
    const Cell& cell = m_result.cell;
    if (cell.trackAtOnce)
        m_recorder.set("sao", "no");
    const QDir folder(m_folder.path());
    folder.mkpath("program");
    folder.mkpath("cache");
    const QList<QByteArray> sounds{sound(588 * 400 + 17, 1), sound(588 * 310, 2)};
    for (qsizetype i = 0; i < sounds.size(); ++i) {
        put(folder.filePath(QString("track%1.wav").arg(i + 1)), cdWav(sounds[i]));
        m_tracks << padded(sounds[i]);
    }
    put(folder.filePath("program/settings.ini"), settings(cell, folder.filePath("cache")));
}

void CellRun::launch()
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("ZIB_DRIVE_CONFIG", m_recorder.folder() + "/drive.conf");
    m_program.setProcessEnvironment(environment);
    m_program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_screen.clear();
    m_starting = true;
    m_program.start(QCoreApplication::applicationFilePath(), {"--seat", m_folder.path()});
}

void CellRun::read()
{
    while (m_program.canReadLine())
        hear(QString::fromUtf8(m_program.readLine()).trimmed());
}

void CellRun::hear(const QString& line)
{
    const QString word = line.section(' ', 0, 0);
    const QString rest = line.section(' ', 1);
    if (word == "figures" && m_starting)
        return; // how long a program takes to start is no answer to anybody's input
    if (word == "figures") {
        m_result.freezeMs = std::max(m_result.freezeMs, rest.section(' ', 0, 0).toLongLong());
        m_result.starvationMs = std::max(m_result.starvationMs, rest.section(' ', 1, 1).toLongLong());
        if (rest.section(' ', 2, 2).toLongLong() > m_result.silenceMs) {
            m_result.silenceMs = rest.section(' ', 2, 2).toLongLong();
            m_result.silentText = rest.section(' ', 3);
        }
        return;
    }
    m_result.story << QString("%1 %2").arg(m_inStage.elapsed()).arg(line);
    if (word == "box") {
        m_boxes << rest;
    } else if (word == "screen") {
        m_screen = rest;
        m_wasBusy = m_wasBusy || rest.startsWith("busy");
        if (rest.contains("Writing Cancelled.") && !rest.contains("Please wait"))
            m_boxes << "s: " + rest.section(" | ", 0, 0).section(' ', 1);
    }
}

void CellRun::enter(Stage stage, int limitMs)
{
    m_stage = stage;
    m_limitMs = limitMs;
    m_inStage.restart();
    m_quiet.restart();
}

void CellRun::say(const char* word)
{
    m_program.write(QByteArray(word) + '\n');
}

void CellRun::step()
{
    if (m_done)
        return;
    const bool late = m_inStage.elapsed() > m_limitMs;
    const bool gone = m_program.state() == QProcess::NotRunning;
    if (gone && !(m_acted && m_result.cell.action == Cell::Action::Terminate) && m_stage != Stage::Leaving) {
        conclude(QString("the program ended by itself, code %1").arg(m_program.exitCode()));
        return;
    }
    const bool free = m_screen.startsWith("free");
    switch (m_stage) {
    case Stage::Opening:
    case Stage::Reopening:
        if (free && m_screen.contains("/dev/sr0"))
            began();
        else if (late)
            conclude("the drive is not offered: " + lastLines());
        break;
    case Stage::Writing:
        act();
        if (ended())
            enter(Stage::Settling, kSettlingMs + m_result.cell.delayMs());
        else if (late)
            conclude("no end: " + lastLines());
        break;
    case Stage::Settling:
        if (late || settled())
            judgeFirst(late);
        break;
    case Stage::WritingNext:
        if (ended())
            judgeNext();
        else if (late)
            conclude("no end of the next write: " + lastLines());
        break;
    case Stage::Pausing:
        break;
    case Stage::Leaving:
        if (gone || late)
            conclude(gone ? QString() : "the program does not end");
        break;
    }
}

void CellRun::began()
{
    const bool first = m_stage == Stage::Opening;
    if (first) {
        m_recorder.clearJournal();
        if (const QString rule = m_result.cell.rule(); !rule.isEmpty())
            m_recorder.addFault(rule);
    }
    m_boxes.clear();
    m_wasBusy = m_starting = false;
    say("reset");
    say("write");
    enter(first ? Stage::Writing : Stage::WritingNext, kWritingMs);
}

/// Once the fault has struck the user acts, a little later from cell to cell.
void CellRun::act()
{
    const Cell& cell = m_result.cell;
    if (!m_result.struck && m_recorder.faultStruck()) {
        m_result.struck = true;
        m_actAfterMs = static_cast<int>(m_inStage.elapsed()) + static_cast<int>(qHash(cell.name()) % 400);
    }
    if (m_acted || !m_result.struck || cell.action == Cell::Action::RunOn ||
        m_inStage.elapsed() < m_actAfterMs)
        return;
    m_acted = true;
    m_result.story << QString("%1 the user acts").arg(m_inStage.elapsed());
    if (cell.action == Cell::Action::Terminate)
        ::kill(static_cast<pid_t>(m_program.processId()), SIGTERM);
    else
        say(cell.action == Cell::Action::Cancel ? "cancel" : "close");
}

bool CellRun::ended() const
{
    if (m_program.state() == QProcess::NotRunning || m_screen == "closed")
        return true;
    const bool spoken = std::ranges::any_of(m_boxes, [](const QString& box) { return !isTestModeBox(box); });
    return m_screen.startsWith("free") && (m_wasBusy || spoken);
}

/// Nothing more reaches the drive, and the door is open.
bool CellRun::settled()
{
    const qint64 size = QFileInfo(m_recorder.folder() + "/journal.txt").size();
    if (size != m_journalSize)
        m_quiet.restart();
    m_journalSize = size;
    const bool awaited = m_screen == "closed" && !m_result.cell.testMode && exact() && told().isEmpty();
    const bool ending = m_acted && m_result.cell.action == Cell::Action::Terminate &&
                        m_program.state() != QProcess::NotRunning;
    return m_quiet.elapsed() > kQuietMs && !m_recorder.doorLocked() && !awaited && !ending;
}

QString CellRun::told() const
{
    for (const QString& box : m_boxes) {
        if (box == "i: Writing is completed.")
            return kCompleted;
        if (box.startsWith("c"))
            return kError;
        if (box.startsWith("s: ") || box.startsWith("i: Writing Cancelled."))
            return kCancelled;
    }
    for (const QString& box : m_boxes)
        if (!isTestModeBox(box))
            return kRefused;
    return {};
}

bool CellRun::exact() const
{
    const auto content = m_recorder.content();
    if (!content || !content->finalized || content->tracks.size() != m_tracks.size())
        return false;
    for (qsizetype i = 0; i < m_tracks.size(); ++i)
        if (m_recorder.frames(content->tracks[i].start, static_cast<int>(m_tracks[i].size() / 2352)) !=
            m_tracks[i])
            return false;
    return true;
}

/// Whether what was told is what became of the disc.
QString CellRun::judgeDisc(const QString& end) const
{
    using enum EmulatedRecorder::DiscEnd;
    const auto disc = m_recorder.discEnd();
    const QString words = m_boxes.join(" // ");
    if (m_result.cell.testMode)
        return disc == Blank ? QString() : "burnt in test mode, told: " + words;
    if (end == kCompleted)
        return exact() ? QString() : "told as completed, but the disc is not what was to be written";
    if (end == kRefused)
        return disc == Blank ? QString() : "refused after writing began: " + words;
    if (end.isEmpty() && m_result.cell.action == Cell::Action::Terminate)
        return {}; // whoever ended the program asked for no news
    if (end.isEmpty())
        return disc == Finished && exact() ? "a whole disc, and nobody was told" : QString();
    if (end == kCancelled && exact())
        return "told as cancelled, but the disc is whole: " + words;
    if (exact() && words.contains("not use", Qt::CaseInsensitive))
        return "an exact disc told as not to be used: " + words;
    if (words.contains("blank still") && disc != Blank)
        return "a disc that was begun told as blank";
    return {};
}

QString CellRun::judgeTraces() const
{
    if (m_recorder.doorLocked() && !m_result.cell.keepsTheDoor())
        return "the door stays locked";
    const QStringList left =
        QDir(m_folder.filePath("cache")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    return left.isEmpty() ? QString() : "copies left: " + left.join(' ');
}

QString CellRun::judgeTimes() const
{
    if (m_result.freezeMs > kFreezeMs + 3 * m_result.starvationMs)
        return QString("frozen for %1 ms (the machine kept everybody waiting for %2 ms)")
            .arg(m_result.freezeMs)
            .arg(m_result.starvationMs);
    if (m_result.silenceMs > kSilenceMs)
        return QString("silent for %1 ms under \"%2\"").arg(m_result.silenceMs).arg(m_result.silentText);
    return {};
}

void CellRun::judgeFirst(bool late)
{
    m_result.told = told();
    for (const QString& line : m_recorder.journal())
        if (const QString command = line.section(' ', 2, 2); command != "OPEN")
            ++m_result.census[command];
    const Cell& cell = m_result.cell;
    QString wrong = judgeDisc(m_result.told);
    if (wrong.isEmpty())
        wrong = judgeTraces();
    if (wrong.isEmpty() && late && m_acted && cell.action == Cell::Action::Terminate &&
        m_program.state() != QProcess::NotRunning)
        wrong = "the program does not end";
    if (wrong.isEmpty() && m_result.told == kCancelled && !m_acted)
        wrong = "nobody cancelled";
    const QString words = m_boxes.join(" // ");
    if (wrong.isEmpty() && !cell.sense().isEmpty() && words.contains("Error Sense Data: [") &&
        !words.contains(cell.sense()))
        wrong = "other sense data is told: " + words;
    if (!wrong.isEmpty())
        conclude(wrong);
    else
        beginNext();
}

void CellRun::beginNext()
{
    m_recorder.clearFaults();
    m_recorder.insert("fresh");
    if (m_program.state() == QProcess::NotRunning)
        launch();
    else if (m_screen == "closed")
        say("reopen");
    enter(Stage::Reopening, kOpeningMs);
}

/// A command that hung comes back once the drive is well; until then the drive may be told as lost.
void CellRun::judgeNext()
{
    const QString end = told();
    const bool hangsStill = m_result.cell.delayMs() > 0 || m_boxes.join(' ').contains("has not come back");
    if (end != kCompleted && hangsStill && ++m_tries < kTries) {
        m_stage = Stage::Pausing;
        QTimer::singleShot(kBetweenTriesMs, this, [this] { enter(Stage::Reopening, kOpeningMs); });
        return;
    }
    QString wrong = end == kCompleted ? judgeDisc(end) : "the next write: " + lastLines();
    if (wrong.isEmpty())
        wrong = judgeTraces();
    if (!wrong.isEmpty()) {
        conclude(wrong);
        return;
    }
    say("quit");
    enter(Stage::Leaving, kLeavingMs);
}

QString CellRun::lastLines() const
{
    return m_screen + " // " + m_boxes.join(" // ");
}

void CellRun::conclude(const QString& wrong)
{
    m_done = true;
    m_steps.stop();
    m_result.wrong = wrong.isEmpty() ? judgeTimes() : wrong;
    disconnect(&m_program, nullptr, this, nullptr);
    if (m_program.state() != QProcess::NotRunning) {
        m_program.kill();
        m_program.waitForFinished();
    }
    emit finished();
}

} // namespace zib
