#pragma once

#include "common/CdTime.h"
#include "components/DVDWriterPro.h"
#include "engines/burn/mmc/DiscReadback.h"
#include "engines/burn/mmc/DriveLine.h"

#include <QList>

#include <functional>
#include <optional>

namespace zib {

/// What a drive tells of the disc in it (MMC-5, 6.22, and the current profile of 6.6).
struct DiscFacts
{
    enum class Status
    {
        Blank,
        Appendable,
        Complete,
        Other
    };

    Status status = Status::Other;
    // Profiles of the discs that an audio CD is made of (MMC-5, 5.3.1).
    static constexpr int kCdR = 0x09;
    static constexpr int kCdRw = 0x0A;

    std::optional<int> profile{}; ///< Nothing where the drive does not say; the refusal then says why.
    int sessions = 0;
    CdTime capacity{}; ///< Frames that a blank disc takes, the first pregap included; 0 when unknown.
};

/// Called again and again while a drive is waited for, with its last answer.  @returns whether to go on.
using WhileWaiting = std::function<bool(const DriveAnswer& last)>;

/// Asks whether the disc is ready until the drive has made up its mind, at most @p patienceMs.
/// @returns its last answer.
DriveAnswer awaitReady(DriveLine& line, int patienceMs, const WhileWaiting& going = {});

/// Asks about the disc; a second time where the drive was not ready to answer, or refused once.
/// @param[out] refusal the drive's last answer where nothing is returned; a good one said too little.
std::optional<DiscFacts> factsOf(DriveLine& line, DriveAnswer& refusal);

/// The table of contents of a disc with one session.
/// @param[out] refusal the drive's last answer where nothing is returned; a good one said too little.
std::optional<DiscContents> contentsOf(DriveLine& line, DriveAnswer& refusal);

/// What the drive tells of the track that would be written next (MMC-5, 6.27).
DriveAnswer nextTrackOf(DriveLine& line);

/// The speeds of drive and disc, fastest first, each once.
QList<WriteSpeed> speedsOf(DriveLine& line);

/// The CD recorder at the end of @p line, as it tells of itself.
struct DriveAbilities
{
    bool isDisc = false; ///< A drive for discs at all.
    QString maker{};
    QString model{};
    bool writesCdR = false;
    bool writesCdRw = false;
    bool sessionAtOnce = false;
    bool trackAtOnce = false;
    bool simulates = false;
    bool bufferProtection = false;
};
/// @returns nothing when the drive does not tell who it is.
std::optional<DriveAbilities> abilitiesOf(DriveLine& line);

} // namespace zib
