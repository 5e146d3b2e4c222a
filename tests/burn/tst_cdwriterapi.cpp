#include "burn/CDWriterAPI.h"

#include <QTest>

#include <limits>

/// The sentences for the numbers that a drive reports.
class TestCDWriterAPI : public QObject
{
    Q_OBJECT
private slots:
    void WriterErrorText_ofACode_isItsSentence_data();
    void WriterErrorText_ofACode_isItsSentence();
    void WriterErrorText_outsideTheTable_isTheCodeAlone_data();
    void WriterErrorText_outsideTheTable_isTheCodeAlone();
};

void TestCDWriterAPI::WriterErrorText_ofACode_isItsSentence_data()
{
    QTest::addColumn<qint32>("code");
    QTest::addColumn<QString>("sentence");
    const auto row = [](qint32 code, const char* sentence) {
        QTest::addRow("%d", code) << code << QString(sentence);
    };
    row(1000, "No additional error data was reported (1000).");
    row(1001, "Abnormal I/O Termination (1001).");
    row(1002, "The drive is not ready (1002).");
    row(1003, "Communication with drive unit failed (1003).");
    row(1004, "The drive could not track properly (1004).");
    row(1005, "Writing error of unknown origin (1005).");
    row(1006, "Writing occurred, but recovery is needed (1006).");
    row(1007, "Recovery attempt failed (1007).");
    row(1008, "A buffer under-run has occurred (1008).");
    row(1009, "The disc could not be read (1009).");
    row(1010, "The drive's attempts at reading retries failed (1010).");
    row(1011, "The read timed out (1011).");
    row(1012, "While reading, the LEC was not recovered (1012).");
    row(1013, "The CIRC could not be validated (1013).");
    row(1014, "Reading of the UPC failed (1014).");
    row(1015, "Reading of the ISRC failed (1015).");
    row(1016, "Streaming while reading was interrupted (1016).");
    row(1017, "Drive could not position media (1017).");
    row(1018, "An incompatible parameter length was sent to the drive (1018).");
    row(1019, "A transfer error occurred to the drive (1019).");
    row(1020, "An invalid command was sent to the drive (1020).");
    row(1021, "Error trying to write past the end of the media (1021).");
    row(1022, "Invalid command field (1022).");
    row(1023, "An incompatible parameter field was sent to the drive (1023).");
    row(1024, "A command parameter is not supported (1024).");
    row(1025, "A command parameter had an invalid value (1025).");
    row(1026, "The SCSI/ATAPI bus was reset and caused a write failure (1026).");
    row(1027, "A command parameter changed while in progress (1027).");
    row(1028, "The disc is not compatible with the drive mode (1028).");
    row(1029, "The drive does not recognize the format of the disc (1029).");
    row(1030, "The disc format is not compatible with the drive (1030).");
    row(1031, "The disc is of an unknown format (1031).");
    row(1032, "The drive cannot write because of an incompatible format (1032).");
    row(1033, "A disc is not present (1033).");
    row(1034, "The drive had an unknown failure (1034).");
    row(1035, "The drive has timed out while completing a command (1035).");
    row(1036, "The disc could not be erased (1036).");
    row(1037, "The Table of Contents is unrecoverable (1037).");
    row(1038, "Error trying to write past the user area of the media (1038).");
    row(1039, "Packet recording is not configured correctly (1039).");
    row(1040, "The current track mode is incompatible with the disc format (1040).");
    row(1041, "Packet recording has incorrect size (1041).");
    row(1042, "A generic session closing error occurred (1042).");
    row(1043, "Error closing Lead-in area (1043).");
    row(1044, "Error closing Lead-out area (1044).");
    row(1045, "While closing, the track was never completed (1045).");
    row(1046, "Error attempting to write to a reserved track (1046).");
    row(1047, "Power calibration area is full (1047).");
    row(1048, "A flaw exists in the Power calibration area (1048).");
    row(1049, "The disc's PMA could not be updated (1049).");
    row(1050, "The disc's PMA is full (1050).");
    row(1051, "Unknown error - use extended data for more information (1051).");
    row(1052, "No Error Reported (1052).");
    row(1053, "A seek command was interrupted by another command (1053).");
    row(1054, "A NT disc I/O operation failed (1054).");
    row(1055, "A format is in progress causing operation failure (1055).");
}

void TestCDWriterAPI::WriterErrorText_ofACode_isItsSentence()
{
    QFETCH(qint32, code);
    QTEST(CDWriterAPI::WriterErrorText(code), "sentence");
}

void TestCDWriterAPI::WriterErrorText_outsideTheTable_isTheCodeAlone_data()
{
    QTest::addColumn<qint32>("code");
    QTest::addColumn<QString>("sentence");
    QTest::newRow("below") << 999 << " (999).";
    QTest::newRow("above") << 1056 << " (1056).";
    QTest::newRow("zero") << 0 << " (0).";
    QTest::newRow("negative") << -1 << " (-1).";
    QTest::newRow("negative table row") << -1008 << " (-1008).";
    QTest::newRow("lowest") << std::numeric_limits<qint32>::min() << " (-2147483648).";
    QTest::newRow("highest") << std::numeric_limits<qint32>::max() << " (2147483647).";
}

void TestCDWriterAPI::WriterErrorText_outsideTheTable_isTheCodeAlone()
{
    QFETCH(qint32, code);
    QTEST(CDWriterAPI::WriterErrorText(code), "sentence");
}

QTEST_APPLESS_MAIN(TestCDWriterAPI)
#include "tst_cdwriterapi.moc"
