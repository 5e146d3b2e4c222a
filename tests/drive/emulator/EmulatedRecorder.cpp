#include "EmulatedRecorder.h"

#include "Disc.h"
#include "Station.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>

namespace zib {
namespace {

QByteArray text(const char* begin, std::size_t size)
{
    return begin[0] == 0 ? QByteArray{} : QByteArray{begin, static_cast<qsizetype>(size)};
}

EmulatedRecorder::Track trackOf(const drive::Track& track)
{
    return {track.number,
            track.session,
            track.control,
            track.pregap,
            track.start,
            track.end,
            text(track.isrc.data(), track.isrc.size())};
}

/// The drive's own state; nothing before a program has used the drive.
std::optional<drive::DriveState> driveStateIn(const QString& folder)
{
    // Read and not mapped: a drive that no program has used yet must not get an empty state from here.
    QFile file{folder + QStringLiteral("/sr0.drive")};
    drive::DriveState state;
    if (!file.open(QIODevice::ReadOnly) ||
        file.read(reinterpret_cast<char*>(&state), sizeof state) != sizeof state) {
        return std::nullopt;
    }
    return state;
}

} // namespace

EmulatedRecorder::EmulatedRecorder() : m_disc(QStringLiteral("disc1"))
{
    set(QStringLiteral("disc"), m_disc);
    qputenv("ZIB_DRIVE_CONFIG", QFile::encodeName(m_folder.filePath(QStringLiteral("drive.conf"))));
    m_preloaded = QFileInfo::exists(device());
}

bool EmulatedRecorder::isPreloaded() const
{
    return m_preloaded;
}

QStringList EmulatedRecorder::environment(const QString& library) const
{
    return {QStringLiteral("LD_PRELOAD=") + library,
            QStringLiteral("ZIB_DRIVE_CONFIG=") + m_folder.filePath(QStringLiteral("drive.conf"))};
}

void EmulatedRecorder::set(const QString& key, const QString& value)
{
    const auto at = m_keys.indexOf(key);
    if (at >= 0) {
        m_values[at] = value;
    } else {
        m_keys.append(key);
        m_values.append(value);
    }
    write();
}

void EmulatedRecorder::insert(const QString& name, const QStringList& recipe)
{
    QFile file{m_folder.filePath(name + QStringLiteral(".recipe"))};
    if (file.open(QIODevice::WriteOnly)) {
        file.write(recipe.join(QLatin1Char('\n')).toUtf8() + '\n');
        file.close();
    }
    m_disc = name;
    set(QStringLiteral("recipe"), name + QStringLiteral(".recipe"));
    set(QStringLiteral("disc"), name);
}

void EmulatedRecorder::removeDisc()
{
    m_disc.clear();
    set(QStringLiteral("disc"), QStringLiteral("none"));
}

void EmulatedRecorder::addFault(const QString& rule)
{
    m_faults.append(rule);
    write();
}

void EmulatedRecorder::clearFaults()
{
    m_faults.clear();
    write();
}

void EmulatedRecorder::write()
{
    // Replaced as a whole, so that a drive in use never sees half of it.
    QSaveFile file{m_folder.filePath(QStringLiteral("drive.conf"))};
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write the configuration of the emulated recorder");
    }
    QStringList lines{QStringLiteral("[sr0]")};
    for (qsizetype i = 0; i < m_keys.size(); ++i) {
        lines.append(m_keys[i] + QStringLiteral(" = ") + m_values[i]);
    }
    for (const QString& fault : m_faults) {
        lines.append(QStringLiteral("fault = ") + fault);
    }
    file.write(lines.join(QLatin1Char('\n')).toUtf8() + '\n');
    if (!file.commit()) {
        qFatal("cannot write the configuration of the emulated recorder");
    }
}

QStringList EmulatedRecorder::journal() const
{
    QFile file{m_folder.filePath(QStringLiteral("journal.txt"))};
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void EmulatedRecorder::clearJournal()
{
    QFile::remove(m_folder.filePath(QStringLiteral("journal.txt")));
}

int EmulatedRecorder::count(const QString& command, const QString& answer) const
{
    int found = 0;
    for (const QString& line : journal()) {
        const bool named = line.section(QLatin1Char(' '), 2, 2) == command;
        const bool answered = answer.isEmpty() || line.contains(QStringLiteral(" answer=%1 ").arg(answer));
        found += named && answered ? 1 : 0;
    }
    return found;
}

bool EmulatedRecorder::doorLocked() const
{
    const auto state = driveStateIn(folder());
    return state && state->doorLocked;
}

bool EmulatedRecorder::faultStruck() const
{
    const auto state = driveStateIn(folder());
    return state && std::ranges::any_of(state->faultCounters, [](const drive::FaultCounter& counter) {
               return counter.rule != 0 && counter.strikes > 0;
           });
}

EmulatedRecorder::DiscEnd EmulatedRecorder::discEnd() const
{
    const auto held = content();
    if (!held) {
        return m_disc.isEmpty() ? DiscEnd::None : DiscEnd::Blank; // made at the first look at the drive
    }
    return held->blank ? DiscEnd::Blank : held->finalized ? DiscEnd::Finished : DiscEnd::Begun;
}

std::optional<EmulatedRecorder::Content> EmulatedRecorder::content() const
{
    drive::Disc disc;
    const QString stem = m_folder.filePath(m_disc);
    if (m_disc.isEmpty() || !QFileInfo::exists(stem + QStringLiteral(".state")) ||
        !disc.open(QFile::encodeName(stem).toStdString(), drive::DiscKind::CdR, 0)) {
        return std::nullopt;
    }
    const drive::DiscState& state = disc.state();
    Content content;
    content.blank = disc.status() == drive::DiscStatus::Blank;
    content.finalized = state.finalized;
    for (std::uint32_t i = 0; i < state.sessionCount; ++i) {
        content.leadOut = state.sessions.at(i).complete ? state.sessions.at(i).leadOut : content.leadOut;
    }
    for (std::uint32_t i = 0; i < state.trackCount; ++i) {
        content.tracks.append(trackOf(state.tracks.at(i)));
    }
    content.catalogNumber = text(state.mcn.data(), state.mcn.size());
    content.cdTextPacks = QByteArray{reinterpret_cast<const char*>(state.cdText.data()),
                                     static_cast<qsizetype>(state.cdTextBytes)};
    return content;
}

QByteArray EmulatedRecorder::frames(std::int32_t lba, std::int32_t count) const
{
    drive::Disc disc;
    if (m_disc.isEmpty() ||
        !disc.open(QFile::encodeName(m_folder.filePath(m_disc)).toStdString(), drive::DiscKind::CdR, 0)) {
        return {};
    }
    const auto bytes = disc.readBytes(lba, 0, static_cast<std::size_t>(count) * drive::kFrameBytes);
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

} // namespace zib
