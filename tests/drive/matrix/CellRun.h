#pragma once

#include "Cell.h"
#include "EmulatedRecorder.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QTimer>

namespace zib {

/// What one cell brought.
struct CellResult
{
    Cell cell;
    QString wrong;       ///< empty when all is well
    QString told;        ///< the end that the user was told
    bool struck = false; ///< whether the fault came to strike at all
    qint64 freezeMs = 0;
    qint64 starvationMs = 0;
    qint64 silenceMs = 0;
    QString silentText;
    Census census; ///< the commands of the first write
    QStringList story;
};

/// Plays one cell: a program of its own writes on a recorder of its own, and is judged by what the recorder
/// knows.
class CellRun final : public QObject
{
    Q_OBJECT
public:
    explicit CellRun(const Cell& cell, QObject* parent = nullptr);

    void start();
    [[nodiscard]] const CellResult& result() const { return m_result; }

signals:
    void finished();

private:
    enum class Stage
    {
        Opening,   ///< the window looks for drives
        Writing,   ///< the disturbed write
        Settling,  ///< it has ended; the drive may still be busy
        Reopening, ///< a window for the next write
        WritingNext,
        Pausing,
        Leaving
    };

    void prepareFolder();
    void launch();
    void read();
    void hear(const QString& line);
    void step();
    void enter(Stage stage, int limitMs);
    void act();
    void began();
    void judgeFirst(bool late);
    void beginNext();
    void judgeNext();
    void conclude(const QString& wrong);
    void say(const char* word);
    [[nodiscard]] bool ended() const;
    [[nodiscard]] bool settled();
    [[nodiscard]] QString told() const;
    [[nodiscard]] QString judgeDisc(const QString& end) const;
    [[nodiscard]] QString judgeTraces() const;
    [[nodiscard]] QString judgeTimes() const;
    [[nodiscard]] bool exact() const;
    [[nodiscard]] QString lastLines() const;

    CellResult m_result;
    EmulatedRecorder m_recorder;
    QTemporaryDir m_folder;
    QList<QByteArray> m_tracks;
    QProcess m_program;
    QTimer m_steps;
    QElapsedTimer m_inStage;
    QElapsedTimer m_quiet; ///< since the journal grew last
    Stage m_stage = Stage::Opening;
    int m_limitMs = 0;
    QStringList m_boxes; ///< of the present write
    QString m_screen;
    bool m_starting = false; ///< The program was launched and no write was begun yet.
    bool m_wasBusy = false;  ///< the window took up the present write
    bool m_acted = false;
    bool m_done = false;
    int m_tries = 0;
    int m_actAfterMs = -1;
    qint64 m_journalSize = 0;
};

} // namespace zib
