#pragma once

#include "common/CompilationRow.h"
#include "components/AudioLoss.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class AudioInformation;

namespace zib {

class ReservedNames;

/// The track file list in the making: one path of a CD-format WAV file for each row of the compilation, and
/// which of them must be converted first.
class TrackList
{
public:
    /// What is asked of a source before anything is done with it.
    struct Look
    {
        bool isCdFormat = false; ///< As IsCDFormatWav tells.
        AudioLoss loss{};        ///< Of a source in CD format.
    };
    /// Answers a question that may take its time and owns what it uses.
    using Ask = std::function<Look(const std::function<Look()>& question)>;

    /// @param information answers the questions about formats.
    TrackList(std::shared_ptr<AudioInformation> information, const QList<CompilationRow>& rows);
    ~TrackList();
    Q_DISABLE_COPY_MOVE(TrackList)

    /// Whether a file can go onto a disc as it is: a WAV file of plain samples, 44100 Hz, 2 channels, 16
    /// bits.
    bool IsCDFormatWav(const QString& path);
    /// @returns a path in the "Temp" folder of the application folder where no file stands and that no other
    /// row was given, nor another running instance of the program; the folder is made. The name is kept for
    /// as long as this list lives. Empty when the count of such names ran out.
    QString MakeTempWavName(const QString& source);
    /// Fills the list.  @param ask answers what each row asks of its source.
    void BuildTrackList(const Ask& ask);
    /// @returns how many rows must be converted, or nothing when the count does not fit its 16 bits.
    std::optional<qint16> CountConversions() const;

    qsizetype size() const { return m_sources.size(); }
    const QString& source(qsizetype row) const { return m_sources[row]; }
    const QString& entry(qsizetype row) const { return m_entries[row]; }
    bool needsConversion(qsizetype row) const;
    const QStringList& entries() const { return m_entries; }
    /// What a row's file lacks that is taken as it is; nothing for the others.
    const AudioLoss& loss(qsizetype row) const { return m_losses[row]; }

    /// Makes a folder with its parents. A failure is told by GeneralAPI, once for each list and folder.
    void makeFolder(const QString& folder);

private:
    bool take(const QString& candidate, const QString& source);

    std::shared_ptr<AudioInformation> m_information;
    QStringList m_sources;
    QStringList m_entries;
    QList<AudioLoss> m_losses;
    QSet<QString> m_given;                     ///< Entries made here, in the form that is compared.
    QHash<QString, qint32> m_lastNumber;       ///< By first candidate: no number up to this one is free.
    QSet<QString> m_impossible;                ///< Folders that could not be made.
    std::unique_ptr<ReservedNames> m_reserved; ///< Of the "Temp" folder.
};

/// The percent over all conversions together, at most 100.
/// @param finished conversions already done.  @param fraction of the current one, 0 to 1.
/// @param total conversions in all.
double preparedPercent(qint16 finished, double fraction, qint16 total);

} // namespace zib
