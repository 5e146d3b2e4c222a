#include "app/FileIntake.h"

#include "app/NaturalOrder.h"
#include "app/ProjectFile.h"
#include "app/totals.h"
#include "common/GeneralAPI.h"
#include "common/NativeName.h"
#include "components/AudioInformation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr qsizetype kNamedRefusals = 10;

const QString kNotAudio = QStringLiteral("The following file could not be added, it is not audio file \n"
                                         "or the audio type is not supported.\n\n");

QString withoutTrailingSlash(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

/// The visible entries of a folder in natural order, or nothing when it cannot be read.
std::optional<QStringList> entriesOf(const QString& folder)
{
    if (::access(nativeName(folder).constData(), R_OK | X_OK) != 0)
        return std::nullopt;
    QStringList names = folderEntries(folder);
    names.removeIf([](const QString& name) { return name.startsWith(u'.'); });
    std::sort(names.begin(), names.end(), NaturalOrder());
    return names;
}

/// A sentence and the first paths of one kind.
QString section(const QList<FoundFile>& refused, FoundFile::Kind kind, const QString& sentence)
{
    QStringList paths;
    for (const FoundFile& file : refused)
        if (file.kind == kind)
            paths << file.path;
    if (paths.isEmpty())
        return {};
    QString text = sentence + QStringLiteral("\n\n") + paths.mid(0, kNamedRefusals).join(u'\n');
    if (paths.size() > kNamedRefusals)
        text += QStringLiteral("\nand %1 more").arg(paths.size() - kNamedRefusals);
    return text;
}

} // namespace

FileIntake::FileIntake(std::shared_ptr<AudioInformation> information) : m_information(std::move(information))
{
}

void FileIntake::readFiles(const QStringList& paths)
{
    for (const QString& path : paths)
        readFile(path);
}

void FileIntake::readDrop(const QStringList& paths)
{
    for (const QString& dropped : paths) {
        const QString path = withoutTrailingSlash(dropped);
        if (m_stopped)
            return;
        if (isFolder(path))
            readFolder(path);
        else if (isProjectName(path))
            readProject(path);
        else
            readFile(path);
    }
}

QList<FoundFile> FileIntake::take()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_found, {});
}

void FileIntake::readFile(const QString& path)
{
    if (m_stopped)
        return;
    if (!m_information || !m_information->isAudioFile(path))
        return give({FoundFile::Kind::NoAudio, path});
    m_information->open(path); // A file that went away meanwhile is listed without title and time.
    FoundFile found{FoundFile::Kind::Track, path};
    found.row.fileName = GeneralAPI::GetFileNameOfPath(path);
    found.row.title = m_information->title();
    found.row.artist = m_information->artist();
    found.row.time = GeneralAPI::FormatDuration(m_information->durationMs());
    found.row.fileSize = fileSizeText(m_information->fileBytes().value_or(fileSize(path)));
    found.row.location = GeneralAPI::GetFolderOfPath(path);
    give(found);
}

void FileIntake::readFolder(const QString& path)
{
    if (m_stopped || !enters(path))
        return;
    const auto entries = entriesOf(path);
    if (!entries)
        return give({FoundFile::Kind::UnreadableFolder, path});
    for (const QString& name : *entries) {
        const QString entry = GeneralAPI::JoinPath(path, name);
        if (m_stopped)
            return;
        if (isFolder(entry))
            readFolder(entry);
        else if (!isProjectName(entry))
            readFile(entry);
    }
}

void FileIntake::readProject(const QString& path)
{
    const auto files = ProjectFile(path).read();
    if (!files)
        return give({FoundFile::Kind::BadProject, path});
    readFiles(*files);
}

bool FileIntake::enters(const QString& folder)
{
    struct stat info = {};
    if (::stat(nativeName(folder).constData(), &info) != 0)
        return true; // Reading it tells what is wrong.
    const QByteArray name =
        QByteArray::number(quint64{info.st_dev}) + ' ' + QByteArray::number(quint64{info.st_ino});
    const bool first = !m_entered.contains(name);
    m_entered.insert(name);
    return first;
}

void FileIntake::give(const FoundFile& found)
{
    const std::lock_guard lock(m_mutex);
    m_found << found;
}

bool isProjectName(const QString& path)
{
    return path.endsWith(QStringLiteral(".zibp"), Qt::CaseInsensitive);
}

QString refusalText(const QList<FoundFile>& refused)
{
    if (refused.size() == 1 && refused.first().kind == FoundFile::Kind::NoAudio)
        return kNotAudio + refused.first().path;
    QStringList sections{
        section(refused, FoundFile::Kind::NoAudio,
                QStringLiteral("The following files could not be added, they are not audio files \n"
                               "or the audio type is not supported.")),
        section(refused, FoundFile::Kind::UnreadableFolder,
                QStringLiteral("The following folders could not be read.")),
        section(refused, FoundFile::Kind::BadProject,
                QStringLiteral("The following projects could not be opened."))};
    sections.removeAll(QString());
    return sections.join(QStringLiteral("\n\n"));
}

} // namespace zib
