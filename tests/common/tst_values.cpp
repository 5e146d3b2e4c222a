#include "common/CdTime.h"
#include "common/Colors.h"
#include "common/GenralMacro.h"
#include "common/Numbers.h"
#include "common/Twips.h"

#include <QTest>

#include <cmath>
#include <limits>

/// Times, numbers, colours and lengths.
class TestValues : public QObject
{
    Q_OBJECT
private slots:
    void sharedValues_behindAScope_areAsBefore()
    {
        zib::setTotalMinutes(1);
        zib::setCurrentFile("before.mp3");
        zib::setSettingsFile("before.ini");
        zib::setApplicationFolder("/before");
        const OptionsData before = gOptions;
        {
            const zib::GlobalsScope scope;
            OptionsData others = before;
            others.TestMode = !others.TestMode;
            zib::setOptions(others);
            zib::setTotalMinutes(2);
            zib::setCurrentFile("inside.mp3");
            zib::setSettingsFile("inside.ini");
            zib::setApplicationFolder("/inside");
        }
        QCOMPARE(TotalMinutes, 1.0);
        QCOMPARE(::CurrentFile, QString("before.mp3"));
        QCOMPARE(gSettingsFile, QString("before.ini"));
        QCOMPARE(zib::applicationFolder(), QString("/before"));
        QCOMPARE(gOptions.TestMode, before.TestMode);
    }
    void roundHalfEven_atHalves_takesTheEvenNeighbour_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<qint64>("rounded");
        QTest::newRow("0.5") << 0.5 << qint64{0};
        QTest::newRow("1.5") << 1.5 << qint64{2};
        QTest::newRow("2.5") << 2.5 << qint64{2};
        QTest::newRow("-0.5") << -0.5 << qint64{0};
        QTest::newRow("-1.5") << -1.5 << qint64{-2};
        QTest::newRow("-2.5") << -2.5 << qint64{-2};
        QTest::newRow("2.4999") << 2.4999 << qint64{2};
        QTest::newRow("2.5001") << 2.5001 << qint64{3};
        QTest::newRow("nan") << std::nan("") << qint64{0};
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << qint64{0};
    }
    void roundHalfEven_atHalves_takesTheEvenNeighbour()
    {
        QFETCH(double, value);
        QTEST(zib::roundHalfEven(value), "rounded");
    }
    void narrowed_beyondTheField_isNothing()
    {
        QCOMPARE(zib::narrowed<qint16>(32767), std::optional<qint16>(32767));
        QVERIFY(!zib::narrowed<qint16>(32768));
        QVERIFY(!zib::narrowed<qint16>(-32769));
        QVERIFY(!zib::product32(65536, 32768));
        QCOMPARE(zib::product32(44100, 2), std::optional<qint32>(88200));
    }
    void cdTime_fromSamples_countsAPartFrameAsWhole()
    {
        QCOMPARE(zib::CdTime::holdingSamples(0).frames(), 0);
        QCOMPARE(zib::CdTime::holdingSamples(1).frames(), 1);
        QCOMPARE(zib::CdTime::holdingSamples(588).frames(), 1);
        QCOMPARE(zib::CdTime::holdingSamples(589).frames(), 2);
    }
    void cdTime_asText_neverShowsFrame75()
    {
        QCOMPARE(zib::CdTime::fromFrames(74).toMsf(), QString("00:00:74"));
        QCOMPARE(zib::CdTime::fromFrames(75).toMsf(), QString("00:01:00"));
        QCOMPARE(zib::CdTime::fromFrames(80 * 60 * 75).toMsf(), QString("80:00:00"));
    }
    void color_fromNumber_hasRedInTheLowByte()
    {
        QCOMPARE(zib::colorFromNumber(255), QColor(255, 0, 0));
        QCOMPARE(zib::colorFromNumber(0xFF0000), QColor(0, 0, 255));
        QCOMPARE(zib::numberFromColor(QColor(1, 2, 3)), 0x030201);
    }
    void twips_toPixels_roundHalvesToEven()
    {
        QCOMPARE(zib::wholePixels(1500), 100);
        QCOMPARE(zib::wholePixels(22), 1);
        QCOMPARE(zib::twipsFromPixels(300), 4500);
    }
};

QTEST_APPLESS_MAIN(TestValues)
#include "tst_values.moc"
