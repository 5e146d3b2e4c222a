#include "app/CapacityGauge.h"
#include "app/Desk.h"

#include <QAccessible>
#include <QScrollBar>

namespace {

constexpr int kFileName = 1;

} // namespace

/// The list under keys and mouse: what is selected, what scrolls, what an empty one says.
class TestList : public QObject
{
    Q_OBJECT
private slots:
    void rows_intoTheEmptyList_selectTheFirst()
    {
        Desk desk;
        for (int round = 0; round < 2; ++round) {
            desk.addThree();
            QCOMPARE(selected(desk), 0);
            desk.list()->selectRow(1);
            desk.add({desk.sound("d.wav")});
            QCOMPARE(selected(desk), 1); // Later rows change nothing.
            desk.trigger("mnuTracksSub_8");
            QCOMPARE(selected(desk), -1);
        }
    }
    void keys_afterAdding_actAtOnce()
    {
        Desk desk;
        desk.addThree();
        QVERIFY(desk.focusList());
        QTest::keyClick(desk.list(), Qt::Key_Down);
        QCOMPARE(selected(desk), 1);
        QTest::keyClick(desk.list(), Qt::Key_Return);
        QCOMPARE(desk.desk.windows.shown, QStringList{"play"});
        QCOMPARE(::CurrentFile, desk.folder.filePath("b.wav"));
        QTest::keyClick(desk.list(), Qt::Key_End);
        QCOMPARE(selected(desk), 2);
        QTest::keyClick(desk.list(), Qt::Key_Home);
        QCOMPARE(selected(desk), 0);
        desk.trigger("Toolbar1_down");
        QCOMPARE(desk.column(kFileName), (QStringList{"b.wav", "a.wav", "c.wav"}));
    }
    void letters_inTheList_findTheFile()
    {
        Desk desk;
        desk.addThree();
        QVERIFY(desk.focusList());
        QTest::keyClick(desk.list(), Qt::Key_C);
        QCOMPARE(selected(desk), 2);
    }
    void homeAndEnd_inAnEmptyList_doNothing()
    {
        Desk desk;
        QVERIFY(desk.focusList());
        for (const Qt::Key key : {Qt::Key_Home, Qt::Key_End, Qt::Key_Down, Qt::Key_Left, Qt::Key_Space})
            QTest::keyClick(desk.list(), key);
        QCOMPARE(selected(desk), -1);
        QCOMPARE(desk.desk.messages.shown, QStringList());
    }
    void remove_ofOtherRows_keepsTheSelectedFile_data()
    {
        QTest::addColumn<int>("rows");
        QTest::newRow("few") << 7;
        QTest::newRow("many") << 101;
    }
    void remove_ofOtherRows_keepsTheSelectedFile()
    {
        QFETCH(int, rows);
        Desk desk;
        QStringList sounds;
        for (int i = 0; i < rows; ++i)
            sounds << desk.sound(QString("%1.wav").arg(i, 3, 10, QChar('0')));
        desk.add(sounds);
        for (int row = 0; row < rows; row += 2)
            desk.tick(row);
        desk.list()->selectRow(5);
        desk.trigger("Toolbar1_delete");
        QCOMPARE(selected(desk), 2);
        QCOMPARE(desk.cell(2, kFileName), QString("005.wav"));
        desk.tick(2);
        desk.trigger("Toolbar1_delete"); // The selected one goes itself: its next neighbour follows.
        QCOMPARE(selected(desk), std::min(2, desk.rows() - 1));
    }
    void scrollingSideways_staysWhereItWas()
    {
        Desk desk;
        desk.window().resize(500, 400);
        desk.addThree();
        QVERIFY(desk.focusList());
        QScrollBar* sideways = desk.list()->horizontalScrollBar();
        QVERIFY(sideways->maximum() > 0);
        QTest::keyClick(desk.list(), Qt::Key_Right);
        QVERIFY(sideways->value() > 0);
        const int at = sideways->maximum() / 2;
        sideways->setValue(at);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_Space, Qt::Key_Up}) {
            QTest::keyClick(desk.list(), key);
            QCOMPARE(sideways->value(), at);
        }
        for (const char* command : {"Toolbar1_down", "Toolbar1_up", "Toolbar1_delete"}) {
            desk.trigger(command);
            QCOMPARE(sideways->value(), at);
        }
        const QRect cell = desk.list()->visualRect(desk.list()->model()->index(0, kFileName));
        QTest::mouseClick(desk.list()->viewport(), Qt::LeftButton, {}, {5, cell.center().y()});
        QCOMPARE(sideways->value(), at);
        desk.add({desk.sound("d.wav")});
        QCOMPARE(sideways->value(), at);
    }
    void doubleClick_ofAnotherButton_playsNothing()
    {
        Desk desk;
        desk.addThree();
        const QPoint at = desk.list()->visualRect(desk.list()->model()->index(1, kFileName)).center();
        for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton, Qt::BackButton}) {
            QTest::mouseClick(desk.list()->viewport(), button, {}, at);
            QTest::mouseDClick(desk.list()->viewport(), button, {}, at);
            QCOMPARE(desk.desk.windows.shown, QStringList());
        }
    }
    void emptyList_showsHowToBegin()
    {
        Desk desk;
        QVERIFY(desk.list()->property("hint").toString().contains("Ctrl+F"));
        QVERIFY(hasInk(desk));
        QCOMPARE(desk.rows(), 0);
        desk.add({desk.sound("a.wav")});
        desk.list()->hideRow(0);
        desk.list()->clearSelection();
        QVERIFY(!hasInk(desk)); // It goes with the first row and comes back after the last one.
        desk.trigger("mnuTracksSub_8");
        QVERIFY(hasInk(desk));
    }
    void gauge_tellsItsValueToAScreenReader()
    {
        Desk desk;
        desk.addThree();
        auto* gauge = desk.control<zib::CapacityGauge>("picPanel");
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(gauge);
        QVERIFY(reader && reader->valueInterface());
        QCOMPARE(reader->text(QAccessible::Name), QString("Disc capacity"));
        QVERIFY(qAbs(reader->valueInterface()->currentValue().toDouble() - 3.1) < 1e-9);
        QCOMPARE(reader->valueInterface()->maximumValue().toDouble(), 100.0);
        QCOMPARE(reader->text(QAccessible::Value), QString("03:06:00 of 80:00:00"));
        QCOMPARE(gauge->toolTip(), QString("03:06:00 of 80:00:00"));
        desk.add({desk.sound("long.wav", 80 * 60000)});
        QVERIFY(reader->text(QAccessible::Value).endsWith("more than an 80-minute disc holds"));
    }

private:
    static int selected(Desk& desk)
    {
        const QModelIndexList rows = desk.list()->selectionModel()->selectedRows();
        return rows.isEmpty() ? -1 : rows.first().row();
    }
    /// Whether anything is drawn on the list's ground.
    static bool hasInk(Desk& desk)
    {
        const QImage picture = desk.list()->viewport()->grab().toImage();
        const QRgb ground = picture.pixel(2, picture.height() - 3);
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (picture.pixel(x, y) != ground)
                    return true;
        return false;
    }
};

QTEST_MAIN(TestList)
#include "tst_list.moc"
