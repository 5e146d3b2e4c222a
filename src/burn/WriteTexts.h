#pragma once

#include <QString>

/// What the writing window says.
namespace WriteTexts {

inline const QString kDefaultSpeed = QStringLiteral("Default");
inline const QString kLookingForDrives = QStringLiteral("Looking for drives, please wait...");
inline const QString kAskingDrive = QStringLiteral("Asking the drive about its disc, please wait...");
inline const QString kNoDrive = QStringLiteral("No drives installed on your computer or no drive selected.");
inline const QString kNoDisc =
    QStringLiteral("Please insert an empty disc and load the CDR-ROM for burning.");
inline const QString kWrongDisc = QStringLiteral("Please load an empty CD or CDR/W for burning.");
inline const QString kUsedDisc = QStringLiteral("Please insert an empty disc for burning.");
inline const QString kTestMode = QStringLiteral("The software was set to \"Test Mode\" now. "
                                                "The test write mode will simulate the writing "
                                                "activity on the drive, but will not write actually. "
                                                "If you want to write actually, you may uncheck the"
                                                "item \"Use Test Mode When Writing to CD\" from options.");
/// Stands before a file's path.
inline const QString kNotWritten = QStringLiteral("The following file could not be written to CD audio:\n");
/// Stands before a file's path.
inline const QString kChanged = QStringLiteral(
    "The following file was changed by another program after it was prepared, so it is not written. "
    "Close this window and press Write again:\n");
inline const QString kNoTracks =
    QStringLiteral("There is no track that can be written. Close this window, look at "
                   "the files of the list and press Write again.");
inline const QString kClosingDisc =
    QStringLiteral("Closing disc... , please wait, this may last for several minutes.");
inline const QString kCompleted = QStringLiteral("Writing is completed.");
inline const QString kCancelled = QStringLiteral("Writing Cancelled.");
/// Why the system stays awake.
inline const QString kAwake = QStringLiteral("A disc is being written");
inline const QString kCancelling = QStringLiteral("Writing Cancelled. Please wait ... ");

/// @param number what the writer tells of the track beside its name.
QString reading(qint32 track, qint32 number, const QString& fileName);
QString closingTrack(qint32 track);
/// The message of a write error: a drive's own error carries the sentence of its sense code and the sense
/// data.
QString error(qint32 code, qint32 sense, const QString& description, const QString& senseData);

} // namespace WriteTexts
