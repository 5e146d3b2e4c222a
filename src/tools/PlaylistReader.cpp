#include "tools/PlaylistReader.h"

#include "common/GeneralAPI.h"
#include "components/AudioInformation.h"

namespace zib {

PlaylistReader::PlaylistReader(std::unique_ptr<AudioInformation> information)
    : m_information(std::move(information))
{
}

PlaylistReader::~PlaylistReader() = default;

void PlaylistReader::read(const QStringList& paths)
{
    for (const QString& path : paths) {
        if (m_stopped)
            return;
        const PlaylistRow row = look(path);
        const std::lock_guard lock(m_mutex);
        m_rows << row;
    }
}

PlaylistRow PlaylistReader::look(const QString& path)
{
    m_information->open(path);
    QString title = m_information->tagTitle(AudioInformation::TagKind::Main).trimmed();
    if (title.isEmpty())
        title = m_information->tagTitle(AudioInformation::TagKind::Old).trimmed();
    return {.fileName = GeneralAPI::GetFileNameOfPath(path),
            .time = GeneralAPI::FormatDuration(m_information->durationMs()),
            .title = title,
            .location = GeneralAPI::GetFolderOfPath(path)};
}

QList<PlaylistRow> PlaylistReader::take(qsizetype most)
{
    const std::lock_guard lock(m_mutex);
    const QList<PlaylistRow> taken = m_rows.first(qMin(most, m_rows.size()));
    m_rows.remove(0, taken.size());
    return taken;
}

} // namespace zib
