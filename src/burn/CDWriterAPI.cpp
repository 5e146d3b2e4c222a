#include "burn/CDWriterAPI.h"

#include <array>

namespace CDWriterAPI {

namespace {

constexpr qint32 kFirstCode = 1000;

// clang-format off
constexpr std::array<const char*, 56> kTexts = {
    "No additional error data was reported", // 1000
    "Abnormal I/O Termination", // 1001
    "The drive is not ready", // 1002
    "Communication with drive unit failed", // 1003
    "The drive could not track properly", // 1004
    "Writing error of unknown origin", // 1005
    "Writing occurred, but recovery is needed", // 1006
    "Recovery attempt failed", // 1007
    "A buffer under-run has occurred", // 1008
    "The disc could not be read", // 1009
    "The drive's attempts at reading retries failed", // 1010
    "The read timed out", // 1011
    "While reading, the LEC was not recovered", // 1012
    "The CIRC could not be validated", // 1013
    "Reading of the UPC failed", // 1014
    "Reading of the ISRC failed", // 1015
    "Streaming while reading was interrupted", // 1016
    "Drive could not position media", // 1017
    "An incompatible parameter length was sent to the drive", // 1018
    "A transfer error occurred to the drive", // 1019
    "An invalid command was sent to the drive", // 1020
    "Error trying to write past the end of the media", // 1021
    "Invalid command field", // 1022
    "An incompatible parameter field was sent to the drive", // 1023
    "A command parameter is not supported", // 1024
    "A command parameter had an invalid value", // 1025
    "The SCSI/ATAPI bus was reset and caused a write failure", // 1026
    "A command parameter changed while in progress", // 1027
    "The disc is not compatible with the drive mode", // 1028
    "The drive does not recognize the format of the disc", // 1029
    "The disc format is not compatible with the drive", // 1030
    "The disc is of an unknown format", // 1031
    "The drive cannot write because of an incompatible format", // 1032
    "A disc is not present", // 1033
    "The drive had an unknown failure", // 1034
    "The drive has timed out while completing a command", // 1035
    "The disc could not be erased", // 1036
    "The Table of Contents is unrecoverable", // 1037
    "Error trying to write past the user area of the media", // 1038
    "Packet recording is not configured correctly", // 1039
    "The current track mode is incompatible with the disc format", // 1040
    "Packet recording has incorrect size", // 1041
    "A generic session closing error occurred", // 1042
    "Error closing Lead-in area", // 1043
    "Error closing Lead-out area", // 1044
    "While closing, the track was never completed", // 1045
    "Error attempting to write to a reserved track", // 1046
    "Power calibration area is full", // 1047
    "A flaw exists in the Power calibration area", // 1048
    "The disc's PMA could not be updated", // 1049
    "The disc's PMA is full", // 1050
    "Unknown error - use extended data for more information", // 1051
    "No Error Reported", // 1052
    "A seek command was interrupted by another command", // 1053
    "A NT disc I/O operation failed", // 1054
    "A format is in progress causing operation failure", // 1055
};
// clang-format on

} // namespace

QString WriterErrorText(qint32 code)
{
    const qint64 row = qint64{code} - kFirstCode;
    const bool known = row >= 0 && row < static_cast<qint64>(kTexts.size());
    const QString text = known ? QString::fromLatin1(kTexts[static_cast<size_t>(row)]) : QString();
    return QStringLiteral("%1 (%2).").arg(text).arg(code);
}

} // namespace CDWriterAPI
