#include "engines/burn/mmc/SenseTable.h"

#include <QRegularExpression>

#include <algorithm>

namespace zib {

namespace {

constexpr int kAny = -1;
constexpr int kUnknownError = 1051;

const QList<SenseRow> kTable = {
    // Not ready, and no disc.
    {kAny, 0x04, 0x04, 1055, "LOGICAL UNIT NOT READY, FORMAT IN PROGRESS"},
    {kAny, 0x04, kAny, 1002, "LOGICAL UNIT NOT READY"},
    {kAny, 0x3E, 0x00, 1002, "LOGICAL UNIT HAS NOT SELF-CONFIGURED YET"},
    {kAny, 0x28, kAny, 1002, "NOT READY TO READY CHANGE, MEDIUM MAY HAVE CHANGED"},
    {kAny, 0x3A, kAny, 1033, "MEDIUM NOT PRESENT"},
    // The way to the drive.
    {kAny, 0x05, 0x00, 1003, "LOGICAL UNIT DOES NOT RESPOND TO SELECTION"},
    {kAny, 0x08, 0x01, 1035, "LOGICAL UNIT COMMUNICATION TIME-OUT"},
    {kAny, 0x08, 0x02, 1019, "LOGICAL UNIT COMMUNICATION PARITY ERROR"},
    {kAny, 0x08, 0x03, 1019, "LOGICAL UNIT COMMUNICATION CRC ERROR"},
    {kAny, 0x08, kAny, 1003, "LOGICAL UNIT COMMUNICATION FAILURE"},
    {kAny, 0x1B, 0x00, 1019, "SYNCHRONOUS DATA TRANSFER ERROR"},
    {kAny, 0x47, kAny, 1019, "SCSI PARITY ERROR"},
    {kAny, 0x48, 0x00, 1019, "INITIATOR DETECTED ERROR MESSAGE RECEIVED"},
    {kAny, 0x4B, kAny, 1019, "DATA PHASE ERROR"},
    {kAny, 0x29, kAny, 1026, "POWER ON, RESET, OR BUS DEVICE RESET OCCURRED"},
    {kAny, 0x2A, kAny, 1027, "PARAMETERS CHANGED"},
    {kAny, 0x2F, kAny, 1027, "COMMANDS CLEARED BY ANOTHER INITIATOR"},
    {kAny, 0x00, 0x06, 1001, "I/O PROCESS TERMINATED"},
    {kAny, 0x3E, 0x02, 1035, "TIMEOUT ON LOGICAL UNIT"},
    {kAny, 0x2E, kAny, 1035, "INSUFFICIENT TIME FOR OPERATION"},
    // Mechanics and optics.
    {kAny, 0x09, kAny, 1004, "TRACK FOLLOWING, TRACKING, FOCUS OR SPINDLE SERVO FAILURE"},
    {kAny, 0x02, 0x00, 1017, "NO SEEK COMPLETE"},
    {kAny, 0x06, 0x00, 1017, "NO REFERENCE POSITION FOUND"},
    {kAny, 0x15, kAny, 1017, "RANDOM OR MECHANICAL POSITIONING ERROR"},
    {kAny, 0x3E, kAny, 1034, "LOGICAL UNIT FAILURE"},
    {kAny, 0x40, kAny, 1034, "DIAGNOSTIC FAILURE ON COMPONENT"},
    {kAny, 0x44, kAny, 1034, "INTERNAL TARGET FAILURE"},
    {kAny, 0x53, kAny, 1034, "MEDIA LOAD OR EJECT FAILED"},
    {kAny, 0x65, 0x00, 1034, "VOLTAGE FAULT"},
    // Writing.
    {0x1, 0x0C, kAny, 1006, "WRITE ERROR, recovered"},
    {kAny, 0x0C, 0x01, 1006, "WRITE ERROR - RECOVERED WITH AUTO REALLOCATION"},
    {kAny, 0x0C, 0x07, 1006, "WRITE ERROR - RECOVERY NEEDED"},
    {kAny, 0x0C, 0x08, 1007, "WRITE ERROR - RECOVERY FAILED"},
    {kAny, 0x0C, 0x09, 1008, "WRITE ERROR - LOSS OF STREAMING"},
    {kAny, 0x0C, kAny, 1005, "WRITE ERROR"},
    {kAny, 0x03, 0x00, 1005, "PERIPHERAL DEVICE WRITE FAULT"},
    {kAny, 0x21, 0x00, 1021, "LOGICAL BLOCK ADDRESS OUT OF RANGE"},
    {kAny, 0x21, kAny, 1021, "INVALID ADDRESS FOR WRITE"},
    {kAny, 0x63, kAny, 1038, "END OF USER AREA ENCOUNTERED ON THIS TRACK"},
    {kAny, 0x64, 0x01, 1041, "INVALID PACKET SIZE"},
    {kAny, 0x64, kAny, 1040, "ILLEGAL MODE FOR THIS TRACK"},
    {kAny, 0x72, 0x01, 1043, "SESSION FIXATION ERROR WRITING LEAD-IN"},
    {kAny, 0x72, 0x02, 1044, "SESSION FIXATION ERROR WRITING LEAD-OUT"},
    {kAny, 0x72, 0x03, 1045, "SESSION FIXATION ERROR - INCOMPLETE TRACK IN SESSION"},
    {kAny, 0x72, 0x04, 1046, "EMPTY OR PARTIALLY WRITTEN RESERVED TRACK"},
    {kAny, 0x72, 0x05, 1046, "NO MORE TRACK RESERVATIONS ALLOWED"},
    {kAny, 0x72, kAny, 1042, "SESSION FIXATION ERROR"},
    {kAny, 0x73, 0x01, 1047, "POWER CALIBRATION AREA ALMOST FULL"},
    {kAny, 0x73, 0x02, 1047, "POWER CALIBRATION AREA IS FULL"},
    {kAny, 0x73, 0x03, 1048, "POWER CALIBRATION AREA ERROR"},
    {kAny, 0x73, 0x04, 1049, "PROGRAM MEMORY AREA UPDATE FAILURE"},
    {kAny, 0x73, 0x05, 1050, "PROGRAM MEMORY AREA IS FULL"},
    {kAny, 0x73, 0x06, 1050, "RMA/PMA IS ALMOST FULL"},
    {kAny, 0x73, kAny, 1048, "CD CONTROL ERROR"},
    {kAny, 0x51, kAny, 1036, "ERASE FAILURE"},
    // Reading back.
    {kAny, 0x57, 0x00, 1037, "UNABLE TO RECOVER TABLE-OF-CONTENTS"},
    {kAny, 0x11, 0x01, 1010, "READ RETRIES EXHAUSTED"},
    {kAny, 0x11, 0x05, 1012, "L-EC UNCORRECTABLE ERROR"},
    {kAny, 0x11, 0x06, 1013, "CIRC UNRECOVERED ERROR"},
    {kAny, 0x11, 0x0F, 1014, "ERROR READING UPC/EAN NUMBER"},
    {kAny, 0x11, 0x10, 1015, "ERROR READING ISRC NUMBER"},
    {kAny, 0x11, 0x11, 1016, "READ ERROR - LOSS OF STREAMING"},
    {kAny, 0x11, kAny, 1009, "UNRECOVERED READ ERROR"},
    // What the disc is.
    {kAny, 0x30, 0x01, 1029, "CANNOT READ MEDIUM - UNKNOWN FORMAT"},
    {kAny, 0x30, 0x02, 1030, "CANNOT READ MEDIUM - INCOMPATIBLE FORMAT"},
    {kAny, 0x30, 0x04, 1031, "CANNOT WRITE MEDIUM - UNKNOWN FORMAT"},
    {kAny, 0x30, 0x05, 1032, "CANNOT WRITE MEDIUM - INCOMPATIBLE FORMAT"},
    {kAny, 0x30, 0x06, 1030, "CANNOT FORMAT MEDIUM - INCOMPATIBLE MEDIUM"},
    {kAny, 0x30, 0x08, 1032, "CANNOT WRITE - APPLICATION CODE MISMATCH"},
    {kAny, 0x30, 0x10, 1031, "MEDIUM NOT FORMATTED"},
    {kAny, 0x30, kAny, 1028, "INCOMPATIBLE MEDIUM INSTALLED"},
    {kAny, 0x27, kAny, 1032, "WRITE PROTECTED"},
    // What was sent.
    {kAny, 0x1A, 0x00, 1018, "PARAMETER LIST LENGTH ERROR"},
    {kAny, 0x20, kAny, 1020, "INVALID COMMAND OPERATION CODE"},
    {kAny, 0x2C, kAny, 1020, "COMMAND SEQUENCE ERROR"},
    {kAny, 0x24, kAny, 1022, "INVALID FIELD IN CDB"},
    {kAny, 0x26, 0x01, 1024, "PARAMETER NOT SUPPORTED"},
    {kAny, 0x26, 0x02, 1025, "PARAMETER VALUE INVALID"},
    {kAny, 0x26, kAny, 1023, "INVALID FIELD IN PARAMETER LIST"},
    {kAny, 0x39, 0x00, 1024, "SAVING PARAMETERS NOT SUPPORTED"},
    {kAny, 0x55, kAny, 1034, "SYSTEM RESOURCE FAILURE"},
    // Keys alone, when the rest says nothing known.
    {0x1, kAny, kAny, 1006, "key RECOVERED ERROR"},
    {0xB, kAny, kAny, 1001, "key ABORTED COMMAND"},
    {kAny, 0x00, 0x00, 1000, "NO ADDITIONAL SENSE INFORMATION"},
};

const QList<UnreachableCode> kUnreachable = {
    {1011, "MMC has no sense data for a read that takes too long; drives report 3E 02, which is 1035"},
    {1039, "only packet writing reports its configuration, and this program never writes packets"},
    {1052, "a command that fails without sense data failed on its way; that is told as a lost drive"},
    {1053, "MMC drives finish or abort a seek before they take another command"},
    {1054, "the failing call of another operating system, which no sense data stand for"},
};

bool fits(int wanted, int actual)
{
    return wanted == kAny || wanted == actual;
}

} // namespace

QString Sense::toText() const
{
    const auto two = [](int n) { return QStringLiteral("%1").arg(n, 2, 16, QLatin1Char('0')).toUpper(); };
    return QStringLiteral("[%1 %2 %3]").arg(QString::number(key, 16).toUpper(), two(asc), two(ascq));
}

std::optional<Sense> Sense::inText(const QString& text)
{
    static const QRegularExpression triple(
        QStringLiteral("\\[([0-9A-Fa-f]) ([0-9A-Fa-f]{2}) ([0-9A-Fa-f]{2})\\]"));
    const QRegularExpressionMatch match = triple.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const auto number = [&match](int group) { return match.captured(group).toInt(nullptr, 16); };
    return Sense{number(1), number(2), number(3)};
}

int writerErrorCode(const Sense& sense)
{
    const auto row = std::find_if(kTable.begin(), kTable.end(), [&sense](const SenseRow& candidate) {
        return fits(candidate.key, sense.key) && fits(candidate.asc, sense.asc) &&
               fits(candidate.ascq, sense.ascq);
    });
    return row == kTable.end() ? kUnknownError : row->code;
}

const QList<SenseRow>& senseTable()
{
    return kTable;
}

const QList<UnreachableCode>& unreachableCodes()
{
    return kUnreachable;
}

} // namespace zib
