#pragma once

#include <QList>
#include <QString>

class DVDWriterPro;
struct OptionsData;

namespace zib {

/// A drive as the list of drives shows it.
struct DriveEntry
{
    QString text;
    int drive; ///< Its index in the writer.
};

/// The drives that write CDs and audio.
QList<DriveEntry> usableDrives(const DVDWriterPro& writer);

/// Asks the drive about its disc.
/// @param drive the selected drive; negative when there is none.
/// @returns what to tell the user, or nothing when the disc can be written.
QString whyNotWritable(DVDWriterPro& writer, int drive);

/// Hands the settings to the writer; the folder for local copies is made when they are wanted.
void configureWrite(DVDWriterPro& writer, const OptionsData& options, bool driveProtectsBuffer);

} // namespace zib
