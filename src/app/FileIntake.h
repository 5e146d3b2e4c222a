#pragma once

#include "common/CompilationRow.h"

#include <QList>
#include <QSet>
#include <QStringList>

#include <atomic>
#include <memory>
#include <mutex>

class AudioInformation;

namespace zib {

/// What was found behind one path.
struct FoundFile
{
    enum class Kind
    {
        Track,
        NoAudio,
        UnreadableFolder,
        BadProject
    };

    Kind kind;
    QString path;
    CompilationRow row{}; ///< Of a track; its number is left to the list.
};

/// Looks into the files that are to be added, one after the other, so that a window need not wait for a slow
/// place. One thread reads, another takes what was found.
class FileIntake
{
public:
    /// Without @p information every file is no audio.
    explicit FileIntake(std::shared_ptr<AudioInformation> information);

    /// Reads these files. For the reading thread, as is readDrop().
    void readFiles(const QStringList& paths);
    /// Reads what was dropped: files; folders with all in them, in natural order, hidden entries and projects
    /// left out; and the files that a project names.
    void readDrop(const QStringList& paths);

    /// Ends the reading before the next file. Any thread.
    void stop() { m_stopped = true; }
    /// Everything found since the last call. Any thread.
    QList<FoundFile> take();

private:
    void readFile(const QString& path);
    void readFolder(const QString& path);
    void readProject(const QString& path);
    bool enters(const QString& folder);
    void give(const FoundFile& found);

    std::shared_ptr<AudioInformation> m_information;
    std::atomic<bool> m_stopped = false;
    QSet<QByteArray> m_entered; ///< Folders by device and number: links may lead in circles.
    std::mutex m_mutex;         ///< Guards what was found.
    QList<FoundFile> m_found;
};

/// Whether a path has the name of a project file.
bool isProjectName(const QString& path);

/// What a user is told of the files that could not be taken; @p refused is not empty.
QString refusalText(const QList<FoundFile>& refused);

} // namespace zib
