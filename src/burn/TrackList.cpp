#include "burn/TrackList.h"

#include "common/CdTime.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/ReservedNames.h"
#include "components/AudioInformation.h"

#include <QDir>

#include <algorithm>

namespace zib {

namespace {

const QString kTempFolder = QStringLiteral("Temp");
const QString kWavExtension = QStringLiteral(".wav");
constexpr qsizetype kExtensionLength = 4;

/// Paths are the same when they are the same in this form.
QString comparable(const QString& path)
{
    return path.trimmed().toLower();
}

QString baseName(const QString& source)
{
    const QString name = GeneralAPI::GetFileNameOfPath(source);
    const QString extension = name.right(kExtensionLength).toLower();
    const bool known = extension == QStringLiteral(".mp3") || extension == kWavExtension;
    return known ? name.chopped(kExtensionLength) : name;
}

bool isCdFormat(AudioInformation& information, const QString& path)
{
    return information.isAudioFile(path) && information.open(path) && information.isPcm() &&
           information.sampleRate() == kCdSampleRate && information.channels() == kCdChannels &&
           information.bitsPerSample() == kCdBits;
}

} // namespace

TrackList::TrackList(std::shared_ptr<AudioInformation> information, const QList<CompilationRow>& rows)
    : m_information(std::move(information))
{
    m_sources.reserve(rows.size());
    for (const CompilationRow& row : rows)
        m_sources << row.path();
}

TrackList::~TrackList() = default;

bool TrackList::IsCDFormatWav(const QString& path)
{
    return isCdFormat(*m_information, path);
}

QString TrackList::MakeTempWavName(const QString& source)
{
    const QString folder = GeneralAPI::JoinPath(applicationFolder(), kTempFolder);
    makeFolder(folder);
    const QString base = baseName(source);
    const QString first = GeneralAPI::JoinPath(folder, base + kWavExtension);
    if (!m_reserved)
        m_reserved = std::make_unique<ReservedNames>(folder);
    if (take(first, source))
        return first;
    qint32& last = m_lastNumber[comparable(first)];
    while (const auto number = narrowed<qint32>(qint64{last} + 1)) {
        last = *number;
        const QString candidate =
            GeneralAPI::JoinPath(folder, base + u'-' + QString::number(last) + kWavExtension);
        if (take(candidate, source))
            return candidate;
    }
    return {};
}

/// A name is also taken when it differs from the source's own in letter case alone: it would count as the
/// source.
bool TrackList::take(const QString& candidate, const QString& source)
{
    const QString compared = comparable(candidate);
    return !m_given.contains(compared) && compared != comparable(source) &&
           m_reserved->take(GeneralAPI::GetFileNameOfPath(candidate));
}

void TrackList::BuildTrackList(const Ask& ask)
{
    m_entries.clear();
    m_losses.clear();
    m_given.clear();
    m_lastNumber.clear();
    for (const QString& source : m_sources) {
        const Look look = ask([source, information = m_information] {
            return isCdFormat(*information, source) ? Look{true, information->loss()} : Look{};
        });
        const QString entry = look.isCdFormat ? source : MakeTempWavName(source);
        m_entries << entry;
        m_losses << look.loss;
        m_given << comparable(entry);
    }
}

std::optional<qint16> TrackList::CountConversions() const
{
    qint64 count = 0;
    for (qsizetype row = 0; row < m_entries.size(); ++row)
        count += needsConversion(row) ? 1 : 0;
    return narrowed<qint16>(count);
}

bool TrackList::needsConversion(qsizetype row) const
{
    return comparable(m_sources[row]) != comparable(m_entries[row]);
}

void TrackList::makeFolder(const QString& folder)
{
    const QString compared = QDir::cleanPath(folder);
    if (m_impossible.contains(compared))
        return;
    GeneralAPI::MakeFolderPath(folder);
    if (!isFolder(folder))
        m_impossible << compared;
}

double preparedPercent(qint16 finished, double fraction, qint16 total)
{
    return total > 0 ? std::min((finished + fraction) * 100 / total, 100.0) : 0;
}

} // namespace zib
