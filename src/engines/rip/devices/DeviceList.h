#pragma once

#include "common/Outcome.h"

#include <QList>
#include <QString>

namespace zib {

/// One place that a disc can be read from.
struct RipDevice
{
    QString path{};  ///< The device node, or the sheet of an image.
    QString text1{}; ///< What the list of drives shows: place,
    QString text2{}; ///< maker,
    QString text3{}; ///< and model.
    bool isImage = false;

    bool operator==(const RipDevice&) const = default;
};

/// The optical drives of this machine, with maker and model where the system knows them. Asks no drive.
QList<RipDevice> findReaders();
/// The disc images in @p folder, by name: CUE sheets and TOC files. May wait for the storage.
QList<RipDevice> findImages(const QString& folder);

/// Whether a drive can be had, without disturbing who has it.
/// @returns Busy, NoPermission or NotFound. A mounted disc does not make its drive busy.
Outcome<> whetherFree(const QString& device);
/// Why a device cannot be used, in a few words for the list; empty when the list need not tell.
QString refusalWords(const Failure& why);
/// Asks a drive for maker and model where the system did not know them. May take its time.
RipDevice withIdentity(RipDevice device);

/// A drive for ourselves, for as long as this lives.
class DriveHold
{
public:
    /// @param device a node; a mounted disc cannot be held, and need not be.
    explicit DriveHold(const QString& device);
    ~DriveHold();
    Q_DISABLE_COPY_MOVE(DriveHold)

private:
    int m_node;
};

} // namespace zib
