#include "label/LabelMaker.h"

#include "common/GenralMacro.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace LabelMaker;

namespace {

zib::CompilationRow track(const QString& number, const QString& fileName, const QString& title,
                          const QString& artist = "Somebody", const QString& time = "03:04:05")
{
    return {number, fileName, title, artist, time, "1 KB", "/music/"};
}

QString rowOf(const QStringList& cells)
{
    return cells.join("#*_+{}");
}

/// A scroll bar and its box in a window that is shown.
struct Pair
{
    Pair()
    {
        bar.setOrientation(Qt::Vertical);
        box.setParent(&window);
        bar.setParent(&window);
        window.show();
    }
    QWidget window;
    QScrollBar bar;
    QLineEdit box;
};

} // namespace

/// The label document and the reckoning on it.
class TestLabelMaker : public QObject
{
    Q_OBJECT
private slots:
    void init() { InitLabelDocument({}); }

    void init_always_storesTheBackgroundDefaults()
    {
        const zib::GlobalsScope globals;
        zib::setApplicationFolder("/opt/zib");
        InitLabelDocument({});
        QCOMPARE(LabelDocument.UseBackImage, true);
        QCOMPARE(LabelDocument.BackImagePath, QString("/opt/zib/Sample1.jpg"));
        QCOMPARE(LabelDocument.BackImageStretch, true);
        QCOMPARE(LabelDocument.BackImageOriginalSize, false);
        QCOMPARE(LabelDocument.BackImageLeft, 1500);
        QCOMPARE(LabelDocument.BackImageTop, 300);
        QCOMPARE(LabelDocument.UseBackColor, true);
        QCOMPARE(LabelDocument.BackColor, QColor(255, 255, 255));
    }
    void init_always_storesTheTitleDefaults()
    {
        QCOMPARE(LabelDocument.TitleText, QString("Your CD Title"));
        QCOMPARE(LabelDocument.TitleFontName, QString("Arial"));
        QCOMPARE(LabelDocument.TitleFontSize, qint16(18));
        QCOMPARE(LabelDocument.TitleFontBold, true);
        QCOMPARE(LabelDocument.TitleFontItalic, false);
        QCOMPARE(LabelDocument.TitleFontUnderline, false);
        QCOMPARE(LabelDocument.TitleColor, QColor(255, 0, 0));
        QCOMPARE(LabelDocument.TitleLeft, 2700);
        QCOMPARE(LabelDocument.TitleTop, 300);
    }
    void init_always_storesTheTableDefaults()
    {
        QCOMPARE(LabelDocument.TableCols, qint16(4));
        QCOMPARE(LabelDocument.TableLeft, 525);
        QCOMPARE(LabelDocument.TableTop, 1200);
        QCOMPARE(LabelDocument.RowHeight, 300);
        QCOMPARE(LabelDocument.ColWidths, (QList<qint32>{0, 450, 3000, 2250, 1500}));
        QCOMPARE(LabelDocument.ShowTableLines, true);
        QCOMPARE(LabelDocument.ShowTableText, true);
        QCOMPARE(LabelDocument.LineWidth, qint16(1));
        QCOMPARE(LabelDocument.LineColor, QColor(255, 0, 0));
        QCOMPARE(LabelDocument.PaddingLeft, 75);
        QCOMPARE(LabelDocument.PaddingTop, 30);
    }
    void init_always_storesTheCellTextDefaults()
    {
        QCOMPARE(LabelDocument.TextFontName, QString("Arial"));
        QCOMPARE(LabelDocument.TextFontSize, qint16(12));
        QCOMPARE(LabelDocument.TextFontBold, false);
        QCOMPARE(LabelDocument.TextFontItalic, false);
        QCOMPARE(LabelDocument.TextFontUnderline, false);
        QCOMPARE(LabelDocument.TextColor, QColor(0, 0, 255));
    }
    void init_afterEdits_forgetsThem()
    {
        Document edited = LabelDocument;
        edited.TitleText = "Mine";
        edited.TableRows = 3;
        setLabelDocument(edited);
        InitLabelDocument({});
        QCOMPARE(LabelDocument.TitleText, QString("Your CD Title"));
        QCOMPARE(LabelDocument.TableRows, qint16(16));
    }
    void init_withAnEmptyList_makesFifteenNumberedBlankRows()
    {
        QCOMPARE(LabelDocument.TableRows, qint16(16));
        QCOMPARE(LabelDocument.TableRowText.size(), 17);
        QCOMPARE(LabelDocument.TableRowText[1], rowOf({"No", "Title", "Artist", "Time"}));
        const QString blanks(10, ' ');
        for (int row = 2; row <= 16; ++row)
            QCOMPARE(LabelDocument.TableRowText[row],
                     rowOf({QString::number(row - 1), blanks, blanks, blanks}));
    }
    void init_withThreeTracks_makesFourRows()
    {
        InitLabelDocument(
            {track("1", "a.mp3", "One"), track("2", "b.mp3", "Two"), track("3", "c.mp3", "Three")});
        QCOMPARE(LabelDocument.TableRows, qint16(4));
        QCOMPARE(LabelDocument.TableRowText[1], rowOf({"No", "Title", "Artist", "Time"}));
        QCOMPARE(LabelDocument.TableRowText[4], rowOf({"3", "Three", "Somebody", "03:04:05"}));
    }
    void init_withoutATitle_showsTheFileName_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");
        QTest::newRow("mp3") << "song.mp3"
                             << ""
                             << "song";
        QTest::newRow("wav") << "song.wav"
                             << ""
                             << "song";
        QTest::newRow("capitals") << "SONG.MP3"
                                  << ""
                                  << "SONG";
        QTest::newRow("mixed capitals") << "Song.WaV"
                                        << ""
                                        << "Song";
        QTest::newRow("other extension") << "song.ogg"
                                         << ""
                                         << "song.ogg";
        QTest::newRow("none") << "song"
                              << ""
                              << "song";
        QTest::newRow("extension alone") << ".mp3"
                                         << ""
                                         << "";
        QTest::newRow("only the last extension") << "song.wav.mp3"
                                                 << ""
                                                 << "song.wav";
        QTest::newRow("blank behind") << "song.wav "
                                      << ""
                                      << "song";
        QTest::newRow("blanks before") << "  song.wav"
                                       << ""
                                       << "song";
        QTest::newRow("blank title") << "song.mp3"
                                     << "   "
                                     << "song";
        QTest::newRow("title untrimmed") << "song.mp3"
                                         << " Title "
                                         << " Title ";
    }
    void init_withoutATitle_showsTheFileName()
    {
        QFETCH(QString, fileName);
        QFETCH(QString, title);
        InitLabelDocument({track("1", fileName, title)});
        QTEST(GetCellText(2, 2), "shown");
    }
    void init_withBlankCells_joinsThemUntrimmed()
    {
        InitLabelDocument({track("7", "a.mp3", "T", "", " 1:2:3 ")});
        QCOMPARE(LabelDocument.TableRowText[2], QString("7#*_+{}T#*_+{}#*_+{} 1:2:3 "));
    }
    void init_withMoreTracksThanTheFieldHolds_stopsAtTheField()
    {
        const QList<zib::CompilationRow> many(33000, track("1", "a.mp3", "T"));
        InitLabelDocument(many);
        QCOMPARE(LabelDocument.TableRows, qint16(32767));
        QCOMPARE(GetCellText(32767, 2), QString("T"));
    }
    void cellText_ofTheDefaultDocument_readsHeaderAndNothingBeyond()
    {
        QCOMPARE(GetCellText(1, 3), QString("Artist"));
        QCOMPARE(GetCellText(1, 5), QString());
        QCOMPARE(GetCellText(40, 1), QString());
        QCOMPARE(GetCellText(0, 1), QString());
        QCOMPARE(GetCellText(-1, 1), QString());
        QCOMPARE(GetCellText(1, 0), QString());
        QCOMPARE(GetCellText(1, -4), QString());
        QCOMPARE(GetCellText(2, 1), QString("1"));
    }
    void reckoning_onTheDefaults_givesTheTableSize()
    {
        QCOMPARE(ColumnLeft(0), 0);
        QCOMPARE(ColumnLeft(1), 0);
        QCOMPARE(ColumnLeft(2), 450);
        QCOMPARE(ColumnLeft(3), 3450);
        QCOMPARE(ColumnLeft(5), 7200);
        QCOMPARE(ColumnLeft(-3), 0);
        QCOMPARE(TotalColumnWidth(), 7200);
        QCOMPARE(TableHeight(), 4800);
    }
    void columnLeft_beyondTheTable_isItsRightEdge() { QCOMPARE(ColumnLeft(900), 7200); }
    void totalColumnWidth_withoutColumns_isZero()
    {
        Document empty = LabelDocument;
        empty.TableCols = 0;
        empty.ColWidths = {0};
        setLabelDocument(empty);
        QCOMPARE(TotalColumnWidth(), 0);
        QCOMPARE(ColumnLeft(2), 0);
        empty.TableCols = 1;
        empty.ColWidths = {0, 1200};
        setLabelDocument(empty);
        QCOMPARE(TotalColumnWidth(), 1200);
    }
    void setDocument_withLongTexts_halvesNoCharacter_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<int>("kept");
        QTest::newRow("letter") << "x" << 256;
        QTest::newRow("emoji") << QString::fromUtf8("\U0001F3B5") << 255;
        QTest::newRow("accent on a letter") << QString::fromUtf8("e\u0301") << 255;
        QTest::newRow("family") << QString::fromUtf8("\U0001F468\u200D\U0001F469") << 255;
    }
    void setDocument_withLongTexts_halvesNoCharacter()
    {
        QFETCH(QString, last);
        QFETCH(int, kept);
        LabelMaker::Document document;
        document.TitleText = QString(255, 't') + last + "more";
        LabelMaker::setLabelDocument(document);
        QCOMPARE(LabelDocument.TitleText.size(), kept);
        document.TitleText = "x" + QString(400, QChar(0x301)); // One endless character fills the field.
        LabelMaker::setLabelDocument(document);
        QCOMPARE(LabelDocument.TitleText.size(), 256);
    }
    void setDocument_withLongTexts_cutsThemAtTheirFields()
    {
        Document longest = LabelDocument;
        longest.BackImagePath = QString(1025, 'p');
        longest.TitleText = QString(257, 't');
        longest.TitleFontName = QString(300, 'f');
        longest.TextFontName = QString(300, 'g');
        setLabelDocument(longest);
        QCOMPARE(LabelDocument.BackImagePath, QString(1024, 'p'));
        QCOMPARE(LabelDocument.TitleText, QString(256, 't'));
        QCOMPARE(LabelDocument.TitleFontName, QString(256, 'f'));
        QCOMPARE(LabelDocument.TextFontName, QString(256, 'g'));
    }
    void setDocument_withFewEntries_givesEveryRowAndColumnOne()
    {
        Document few = LabelDocument;
        few.TableRows = 20;
        few.TableCols = 7;
        setLabelDocument(few);
        QCOMPARE(LabelDocument.TableRowText.size(), 21);
        QCOMPARE(LabelDocument.ColWidths.size(), 8);
    }
    void setDocument_withFewerRows_dropsTheOthersText()
    {
        Document edited = LabelDocument;
        edited.TableRows = 5;
        setLabelDocument(edited);
        edited = LabelDocument;
        edited.TableRows = 7;
        setLabelDocument(edited);
        QCOMPARE(GetCellText(5, 1), QString("4"));
        QCOMPARE(GetCellText(6, 1), QString());
    }
    void scrollBar_setUp_runsBackwards_data()
    {
        QTest::addColumn<int>("min");
        QTest::addColumn<int>("max");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<int>("position");
        QTest::newRow("in range") << 0 << 300 << 35 << "35" << 265;
        QTest::newRow("above") << 0 << 300 << 400 << "300" << 0;
        QTest::newRow("below") << 10 << 300 << 3 << "10" << 300;
        QTest::newRow("lowest") << 1 << 10 << 1 << "1" << 10;
        QTest::newRow("highest") << 1 << 10 << 10 << "10" << 1;
        QTest::newRow("reversed range") << 9 << 5 << 7 << "5" << 5;
    }
    void scrollBar_setUp_runsBackwards()
    {
        QFETCH(int, min);
        QFETCH(int, max);
        QFETCH(int, value);
        Pair pair;
        QSignalSpy changed(&pair.bar, &QScrollBar::valueChanged);
        SetupScrollBar(&pair.bar, &pair.box, min, max, value);
        QTEST(pair.box.text(), "shown");
        QTEST(pair.bar.value(), "position");
        QVERIFY(pair.box.isReadOnly());
        QCOMPARE(changed.count(), 0);
    }
    void scrollBar_upperArrow_increasesTheNumber()
    {
        Pair pair;
        SetupScrollBar(&pair.bar, &pair.box, 0, 300, 35);
        pair.bar.triggerAction(QAbstractSlider::SliderSingleStepSub);
        ShowScrollBarValue(&pair.bar, &pair.box);
        QCOMPARE(pair.box.text(), QString("36"));
        QCOMPARE(pair.window.focusWidget(), &pair.box);
    }
    void scrollBar_keysInTheBox_stepTheNumber()
    {
        Pair pair;
        SetupScrollBar(&pair.bar, &pair.box, 0, 300, 35);
        SetupScrollBar(&pair.bar, &pair.box, 0, 300, 40); // Twice must not step twice.
        connect(&pair.bar, &QScrollBar::valueChanged, this,
                [&] { ShowScrollBarValue(&pair.bar, &pair.box); });
        QTest::keyClick(&pair.box, Qt::Key_Up);
        QCOMPARE(pair.box.text(), QString("41"));
        QTest::keyClick(&pair.box, Qt::Key_Down);
        QTest::keyClick(&pair.box, Qt::Key_Down);
        QCOMPARE(pair.box.text(), QString("39"));
        QTest::keyClick(&pair.box, Qt::Key_PageUp);
        QCOMPARE(pair.box.text(), QString("49"));
        QTest::keyClick(&pair.box, Qt::Key_PageDown);
        QCOMPARE(pair.box.text(), QString("39"));
    }
    void scrollBarValue_withoutControls_isIgnored() { ShowScrollBarValue(nullptr, nullptr); }
};

QTEST_MAIN(TestLabelMaker)
#include "tst_LabelMaker.moc"
