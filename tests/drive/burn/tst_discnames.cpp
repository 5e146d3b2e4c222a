#include "drive/burn/DiscTruth.h"

#include "engines/cdtext/CdText.h"

using namespace zib;

// Names on the disc, and the disc compared with its files.

namespace {

const DiscNames kNames{"Mix", "Choir", {{"Caf\u00E9 one", "Choir"}, {"Two", "Choir"}}};

/// A bench with two tracks and a drive, ready to write.
struct NamedBench : BurnBench
{
    NamedBench()
    {
        QObject::connect(&writer, &DVDWriterPro::Remark, [this](const QString& text) { remark = text; });
        QObject::connect(&writer, &DVDWriterPro::ComparingTrack,
                         [this](qint32 track, qint32 done, qint32 size) {
                             compared << QList<qint32>{track, done, size};
                             if (onComparing)
                                 onComparing();
                         });
    }
    bool prepare(bool named = true)
    {
        tracks = addPair(*this);
        if (named) {
            writer.nameDisc(kNames.title);
            for (int i = 0; i < 2; ++i)
                writer.nameTrack(i + 1, kNames.tracks[i]);
        }
        if (!takeDrive())
            return false;
        configure();
        return true;
    }
    std::optional<DiscNames> namesOnDisc() const
    {
        return namesInPacks(recorder.content()->cdTextPacks, 1, 2);
    }

    QList<QByteArray> tracks;
    QString remark;
    QList<QList<qint32>> compared;
    std::function<void()> onComparing;
};

} // namespace

class TestDiscNames : public QObject
{
    Q_OBJECT
private slots:
    void names_goOntoTheDisc();
    void noNames_writeNoText();
    void driveWithoutSessionAtOnce_writesWithoutNames();
    void driveThatRefusesText_getsTheDiscWithout_data();
    void driveThatRefusesText_getsTheDiscWithout();
    void driveThatRefusesText_inTestMode_isNotRemarked();
    void driveThatFailsBehindTheText_isNotAskedAgain();
    void testMode_withNames_leavesTheDiscBlank();
    void textThatIsNotOnTheDisc_isRemarked();
    void comparing_isDoneOnlyWhenAsked();
    void comparing_anExactDisc_endsWell_data();
    void comparing_anExactDisc_endsWell();
    void comparing_withFaults_tellsThem_data();
    void comparing_withFaults_tellsThem();
    void comparing_cancelled_saysSo();
    void comparing_whenTheDriveGoes_saysSo();
};

void TestDiscNames::names_goOntoTheDisc()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, bench.tracks), QString());
    QVERIFY(bench.namesOnDisc());
    QCOMPARE(*bench.namesOnDisc(), kNames);
    QCOMPARE(bench.remark, QString());
}

void TestDiscNames::noNames_writeNoText()
{
    NamedBench bench;
    QVERIFY(bench.prepare(false));
    bench.writer.nameDisc("Mix");
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.recorder.content()->cdTextPacks.isEmpty());
    QCOMPARE(bench.remark, QString());
}

void TestDiscNames::driveWithoutSessionAtOnce_writesWithoutNames()
{
    NamedBench bench;
    bench.recorder.set("sao", "no");
    QVERIFY(bench.prepare());
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.recorder.content()->finalized);
    QVERIFY(bench.recorder.content()->cdTextPacks.isEmpty());
    QVERIFY2(bench.remark.contains("no names"), qPrintable(bench.remark));
}

void TestDiscNames::driveThatRefusesText_getsTheDiscWithout_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("the layout") << "SEND_CUE_SHEET times=1 sense=5/26/00";
    QTest::newRow("the first pack") << "WRITE_10 lba=-20000--151 times=1 sense=5/64/00";
    QTest::newRow("packs in the middle") << "WRITE_10 lba=-20000--151 nth=5 times=1 sense=5/21/00";
    QTest::newRow("with a hardware error") << "WRITE_10 lba=-20000--151 times=1 sense=4/44/00";
}

void TestDiscNames::driveThatRefusesText_getsTheDiscWithout()
{
    QFETCH(QString, fault);
    NamedBench bench;
    QVERIFY(bench.prepare());
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write(), QString("completed"));
    QCOMPARE(difference(bench.recorder, bench.tracks), QString());
    QVERIFY(bench.recorder.content()->cdTextPacks.isEmpty());
    QVERIFY2(bench.remark.contains("no names"), qPrintable(bench.remark));
    QVERIFY(!bench.recorder.doorLocked());
    QCOMPARE(bench.said.count("reading 1"), 1);
}

void TestDiscNames::driveThatRefusesText_inTestMode_isNotRemarked()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    bench.writer.setTestWrite(true);
    bench.recorder.addFault("SEND_CUE_SHEET times=1 sense=5/26/00");
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.recorder.content()->blank);
    QVERIFY2(!bench.remark.contains("no names"), qPrintable(bench.remark));
}

/// The disc is spoiled then; without names it would be written in vain.
void TestDiscNames::driveThatFailsBehindTheText_isNotAskedAgain()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    bench.recorder.addFault("WRITE_10 lba=50-100 times=1 sense=3/0C/00");
    QCOMPARE(bench.write(), QString("error"));
    QCOMPARE(bench.error, DVDWriterPro::kDriveError);
    QCOMPARE(bench.sense, 1005);
    QCOMPARE(bench.senseData, QString("[3 0C 00]"));
    QCOMPARE(bench.recorder.count("SEND_CUE_SHEET"), 1);
    QVERIFY(bench.said.count("reading 1") <= 1); // none where the fault comes before the first look
    QVERIFY2(!bench.remark.contains("no names"), qPrintable(bench.remark));
}

void TestDiscNames::testMode_withNames_leavesTheDiscBlank()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    bench.writer.setTestWrite(true);
    bench.writer.setVerify(true);
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.recorder.content()->blank);
    QVERIFY(bench.compared.isEmpty());
}

void TestDiscNames::textThatIsNotOnTheDisc_isRemarked()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    bench.recorder.addFault("WRITE_10 lba=-20000--151 times=forever ignored");
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY2(bench.remark.contains("names"), qPrintable(bench.remark));
}

void TestDiscNames::comparing_isDoneOnlyWhenAsked()
{
    NamedBench bench;
    QVERIFY(bench.prepare());
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY(bench.compared.isEmpty());
}

void TestDiscNames::comparing_anExactDisc_endsWell_data()
{
    QTest::addColumn<QString>("sao");
    QTest::addColumn<QString>("fault");
    QTest::newRow("session at once") << "yes"
                                     << "";
    QTest::newRow("track at once") << "no"
                                   << "";
    QTest::newRow("a drive that reads early") << "yes"
                                              << "READ_CD times=forever jitter=667";
    QTest::newRow("a drive that reads late") << "yes"
                                             << "READ_CD times=forever jitter=-102";
    QTest::newRow("cured by reading again") << "yes"
                                            << "READ_CD lba=100-100 times=2 sense=3/11/05";
    QTest::newRow("noise that a second reading cures") << "yes"
                                                       << "READ_CD lba=100-100 nth=2 times=1 noise";
    QTest::newRow("a drive that spins up") << "yes"
                                           << "READ_CD times=5 sense=2/04/01";
}

void TestDiscNames::comparing_anExactDisc_endsWell()
{
    QFETCH(QString, sao);
    QFETCH(QString, fault);
    NamedBench bench;
    bench.recorder.set("sao", sao);
    QVERIFY(bench.prepare(false));
    bench.writer.setVerify(true);
    if (!fault.isEmpty())
        bench.recorder.addFault(fault);
    const QString end = bench.write();
    QVERIFY2(end == "completed", qPrintable(end + ": " + bench.description));
    QCOMPARE(bench.compared.last(), (QList<qint32>{2, 300, 300}));
    QVERIFY(bench.compared.contains(QList<qint32>{1, 401, 401}));
    QVERIFY(!bench.recorder.doorLocked());
}

void TestDiscNames::comparing_withFaults_tellsThem_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("words");
    QTest::newRow("a flipped bit") << "READ_CD lba=560-560 times=forever flip=100/01"
                                   << "track 2 at 00:00:09";
    QTest::newRow("an unreadable frame") << "READ_CD lba=77-77 times=forever sense=3/11/05"
                                         << "1 frame cannot be read";
}

void TestDiscNames::comparing_withFaults_tellsThem()
{
    QFETCH(QString, fault);
    QFETCH(QString, words);
    NamedBench bench;
    QVERIFY(bench.prepare(false));
    bench.writer.setVerify(true);
    bench.recorder.addFault(fault);
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.contains(words), qPrintable(bench.description));
    QVERIFY(!bench.recorder.doorLocked());
    QVERIFY(bench.recorder.content()->finalized);
}

void TestDiscNames::comparing_cancelled_saysSo()
{
    NamedBench bench;
    QVERIFY(bench.prepare(false));
    bench.writer.setVerify(true);
    bench.recorder.addFault("READ_CD times=forever delay=150");
    bench.onComparing = [&bench] { bench.writer.cancel(); };
    QCOMPARE(bench.write(), QString("completed"));
    QVERIFY2(bench.remark.contains("not compared"), qPrintable(bench.remark));
    QCOMPARE(difference(bench.recorder, bench.tracks), QString());
}

void TestDiscNames::comparing_whenTheDriveGoes_saysSo()
{
    NamedBench bench;
    QVERIFY(bench.prepare(false));
    bench.writer.setVerify(true);
    bench.recorder.addFault("READ_CD nth=6 gone");
    QCOMPARE(bench.write(), QString("error"));
    QVERIFY2(bench.description.startsWith("The disc was written, but it could not be compared"),
             qPrintable(bench.description));
}

QTEST_GUILESS_MAIN(TestDiscNames)
#include "tst_discnames.moc"
