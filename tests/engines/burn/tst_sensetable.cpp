#include "engines/burn/mmc/SenseTable.h"

#include <QSet>
#include <QTest>

using zib::Sense;

/// From sense data to the writer's error codes.
class TestSenseTable : public QObject
{
    Q_OBJECT
private slots:
    void code_ofRealSenseData_tellsMost_data();
    void code_ofRealSenseData_tellsMost();
    void everyCode_isReachableOrExplained();
    void everyRow_decidesForSomeSenseData();
    void text_isAsDrivesAreQuoted();
    void inText_findsTheTriple_data();
    void inText_findsTheTriple();
};

void TestSenseTable::code_ofRealSenseData_tellsMost_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("asc");
    QTest::addColumn<int>("ascq");
    QTest::addColumn<int>("code");
    const auto row = [](const char* name, int key, int asc, int ascq, int code) {
        QTest::newRow(name) << key << asc << ascq << code;
    };
    row("an error without a reason", 3, 0x00, 0x00, 1000);
    row("terminated", 0xB, 0x00, 0x06, 1001);
    row("aborted", 0xB, 0x7F, 0x01, 1001);
    row("becoming ready", 2, 0x04, 0x01, 1002);
    row("long write in progress", 2, 0x04, 0x08, 1002);
    row("format in progress", 2, 0x04, 0x04, 1055);
    row("disc changed", 6, 0x28, 0x00, 1002);
    row("communication failure", 4, 0x08, 0x00, 1003);
    row("communication time-out", 4, 0x08, 0x01, 1035);
    row("tracking servo", 4, 0x09, 0x01, 1004);
    row("write error", 3, 0x0C, 0x00, 1005);
    row("recovery needed", 3, 0x0C, 0x07, 1006);
    row("recovered write", 1, 0x0C, 0x00, 1006);
    row("recovery failed", 3, 0x0C, 0x08, 1007);
    row("under-run", 3, 0x0C, 0x09, 1008);
    row("read error", 3, 0x11, 0x00, 1009);
    row("read retries", 3, 0x11, 0x01, 1010);
    row("L-EC", 3, 0x11, 0x05, 1012);
    row("CIRC", 3, 0x11, 0x06, 1013);
    row("UPC", 3, 0x11, 0x0F, 1014);
    row("ISRC", 3, 0x11, 0x10, 1015);
    row("streaming read", 3, 0x11, 0x11, 1016);
    row("positioning", 4, 0x15, 0x01, 1017);
    row("no seek complete", 4, 0x02, 0x00, 1017);
    row("list length", 5, 0x1A, 0x00, 1018);
    row("transfer", 0xB, 0x4B, 0x00, 1019);
    row("parity", 0xB, 0x47, 0x00, 1019);
    row("unknown command", 5, 0x20, 0x00, 1020);
    row("sequence", 5, 0x2C, 0x00, 1020);
    row("past the end", 5, 0x21, 0x00, 1021);
    row("wrong next address", 5, 0x21, 0x02, 1021);
    row("CDB field", 5, 0x24, 0x00, 1022);
    row("parameter field", 5, 0x26, 0x00, 1023);
    row("parameter unsupported", 5, 0x26, 0x01, 1024);
    row("parameter value", 5, 0x26, 0x02, 1025);
    row("bus reset", 6, 0x29, 0x00, 1026);
    row("parameters changed", 6, 0x2A, 0x01, 1027);
    row("incompatible disc", 2, 0x30, 0x00, 1028);
    row("unknown format, reading", 2, 0x30, 0x01, 1029);
    row("incompatible format, reading", 2, 0x30, 0x02, 1030);
    row("unknown format, writing", 2, 0x30, 0x04, 1031);
    row("incompatible format, writing", 5, 0x30, 0x05, 1032);
    row("no disc", 2, 0x3A, 0x00, 1033);
    row("no disc, tray open", 2, 0x3A, 0x02, 1033);
    row("internal failure", 4, 0x44, 0x00, 1034);
    row("time-out", 4, 0x3E, 0x02, 1035);
    row("erase", 3, 0x51, 0x00, 1036);
    row("table of contents", 3, 0x57, 0x00, 1037);
    row("end of user area", 5, 0x63, 0x00, 1038);
    row("track mode", 5, 0x64, 0x00, 1040);
    row("packet size", 5, 0x64, 0x01, 1041);
    row("session", 3, 0x72, 0x00, 1042);
    row("lead-in", 3, 0x72, 0x01, 1043);
    row("lead-out", 3, 0x72, 0x02, 1044);
    row("incomplete track", 3, 0x72, 0x03, 1045);
    row("reserved track", 3, 0x72, 0x04, 1046);
    row("calibration area full", 3, 0x73, 0x02, 1047);
    row("calibration area", 3, 0x73, 0x03, 1048);
    row("PMA update", 3, 0x73, 0x04, 1049);
    row("PMA full", 3, 0x73, 0x05, 1050);
    row("a vendor's own", 4, 0x81, 0x12, 1051);
    row("not configured yet", 2, 0x3E, 0x00, 1002);
    row("failed its self-test", 4, 0x3E, 0x03, 1034);
    row("no answer to selection", 4, 0x05, 0x00, 1003);
    row("communication parity", 4, 0x08, 0x02, 1019);
    row("communication checksum", 4, 0x08, 0x03, 1019);
    row("unreachable copy target", 4, 0x08, 0x04, 1003);
    row("synchronous transfer", 4, 0x1B, 0x00, 1019);
    row("information unit checksum", 0xB, 0x47, 0x03, 1019);
    row("initiator's message", 0xB, 0x48, 0x00, 1019);
    row("data offset", 0xB, 0x4B, 0x05, 1019);
    row("power on", 6, 0x29, 0x01, 1026);
    row("parameters changed, somehow", 6, 0x2A, 0x00, 1027);
    row("commands cleared", 6, 0x2F, 0x00, 1027);
    row("insufficient time", 5, 0x2E, 0x00, 1035);
    row("out of time", 5, 0x2E, 0x01, 1035);
    row("focus servo", 4, 0x09, 0x02, 1004);
    row("no reference position", 4, 0x06, 0x00, 1017);
    row("mechanical positioning", 4, 0x15, 0x00, 1017);
    row("component failure", 4, 0x40, 0x80, 1034);
    row("tray does not move", 4, 0x53, 0x00, 1034);
    row("removal prevented", 5, 0x53, 0x02, 1034);
    row("voltage", 4, 0x65, 0x00, 1034);
    row("reallocated write", 3, 0x0C, 0x01, 1006);
    row("write that cannot be reallocated", 3, 0x0C, 0x02, 1005);
    row("write fault", 3, 0x03, 0x00, 1005);
    row("invalid element", 5, 0x21, 0x01, 1021);
    row("packet does not fit", 5, 0x63, 0x01, 1038);
    row("track mode, somehow", 5, 0x64, 0x02, 1040);
    row("no more reservations", 5, 0x72, 0x05, 1046);
    row("session, some other way", 3, 0x72, 0x06, 1042);
    row("calibration area almost full", 1, 0x73, 0x01, 1047);
    row("recording control", 3, 0x73, 0x00, 1048);
    row("PMA almost full", 3, 0x73, 0x06, 1050);
    row("erase, incomplete", 3, 0x51, 0x01, 1036);
    row("error too long to correct", 3, 0x11, 0x02, 1009);
    row("unknown format", 5, 0x30, 0x03, 1028);
    row("incompatible format, formatting", 5, 0x30, 0x06, 1030);
    row("application code", 5, 0x30, 0x08, 1032);
    row("not formatted", 5, 0x30, 0x10, 1031);
    row("write protected", 7, 0x27, 0x00, 1032);
    row("CDB field of a copy", 5, 0x24, 0x01, 1022);
    row("parameter of a copy", 5, 0x26, 0x03, 1023);
    row("saving unsupported", 5, 0x39, 0x00, 1024);
    row("no resources", 4, 0x55, 0x00, 1034);
    row("recovered, no matter how", 1, 0x17, 0x01, 1006);
    row("aborted, no matter why", 0xB, 0x49, 0x00, 1001);
}

void TestSenseTable::code_ofRealSenseData_tellsMost()
{
    QFETCH(int, key);
    QFETCH(int, asc);
    QFETCH(int, ascq);
    QTEST(zib::writerErrorCode({key, asc, ascq}), "code");
}

void TestSenseTable::everyCode_isReachableOrExplained()
{
    QSet<int> reached;
    for (int key = 0; key <= 0xB; ++key)
        for (int asc = 0; asc <= 0xFF; ++asc)
            for (int ascq = 0; ascq <= 0x20; ++ascq)
                reached << zib::writerErrorCode({key, asc, ascq});
    QSet<int> explained;
    for (const zib::UnreachableCode& code : zib::unreachableCodes()) {
        QVERIFY2(!reached.contains(code.code), qPrintable(QString::number(code.code)));
        QVERIFY(*code.reason != '\0');
        explained << code.code;
    }
    for (int code = 1000; code <= 1055; ++code)
        QVERIFY2(reached.contains(code) || explained.contains(code), qPrintable(QString::number(code)));
    for (int code : reached)
        QVERIFY2(code >= 1000 && code <= 1055, qPrintable(QString::number(code)));
}

void TestSenseTable::everyRow_decidesForSomeSenseData()
{
    const auto concrete = [](int wanted, int fallback) { return wanted < 0 ? fallback : wanted; };
    for (const zib::SenseRow& row : zib::senseTable()) {
        bool decided = false;
        for (int key = 0; key <= 0xB && !decided; ++key)
            for (int ascq = 0; ascq <= 0xFF && !decided; ++ascq) {
                const Sense sense{concrete(row.key, key), concrete(row.asc, 0xEE), concrete(row.ascq, ascq)};
                decided = zib::writerErrorCode(sense) == row.code;
            }
        QVERIFY2(decided, row.meaning);
        QVERIFY(*row.meaning != '\0');
    }
}

void TestSenseTable::text_isAsDrivesAreQuoted()
{
    QCOMPARE((Sense{3, 0x0C, 0}.toText()), QString("[3 0C 00]"));
    QCOMPARE((Sense{0xB, 0x4B, 0xFF}.toText()), QString("[B 4B FF]"));
}

void TestSenseTable::inText_findsTheTriple_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("found");
    QTest::newRow("as the library writes it") << "SCSI error on write(16,16): [3 0C 00] Write error." << true;
    QTest::newRow("lower case") << "x [3 0c 00]" << true;
    QTest::newRow("none") << "Burn run failed" << false;
    QTest::newRow("other brackets") << "[12 0C 00] [3 C 0]" << false;
}

void TestSenseTable::inText_findsTheTriple()
{
    QFETCH(QString, text);
    QFETCH(bool, found);
    const std::optional<Sense> sense = Sense::inText(text);
    QCOMPARE(sense.has_value(), found);
    if (found)
        QCOMPARE(*sense, (Sense{3, 0x0C, 0}));
}

QTEST_APPLESS_MAIN(TestSenseTable)
#include "tst_sensetable.moc"
