#include "common/BoxedRows.h"

#include <QApplication>
#include <QHeaderView>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStyle>
#include <QTableView>
#include <QTest>
#include <QTreeWidget>

using zib::BoxedRows;

namespace {

constexpr int kRows = 5;
constexpr int kColumns = 3;

/// A list with boxes of either kind that the windows have.
struct List
{
    explicit List(const QString& kind, BoxedRows::DoubleClick doubleClick = BoxedRows::DoubleClick::Ticks)
    {
        if (kind == "tree")
            view = std::make_unique<QTreeView>();
        else
            view = std::make_unique<QTableView>();
        if (auto* tree = qobject_cast<QTreeView*>(view.get()))
            tree->setRootIsDecorated(false);
        for (int row = 0; row < kRows; ++row) {
            QList<QStandardItem*> items;
            for (int column = 0; column < kColumns; ++column)
                items << new QStandardItem(QString("cell %1 %2").arg(row).arg(column));
            items[0]->setCheckable(true);
            model.appendRow(items);
        }
        view->setModel(&model);
        view->setSelectionMode(QAbstractItemView::SingleSelection);
        view->setSelectionBehavior(QAbstractItemView::SelectRows);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        new BoxedRows(view.get(), doubleClick);
        view->resize(500, 300);
        view->show();
        QApplication::setActiveWindow(view.get());
        view->setFocus();
    }

    QPoint middle(int row, int column) const { return view->visualRect(model.index(row, column)).center(); }
    /// In the middle of a row's box.
    QPoint box(int row) const
    {
        QStyleOptionViewItem option;
        option.initFrom(view.get());
        option.rect = view->visualRect(model.index(row, 0));
        option.features = QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDisplay;
        option.widget = view.get();
        return view->style()
            ->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, view.get())
            .center();
    }
    void click(QPoint at) const { QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at); }
    /// Two presses and releases, the second press as a double click, as the desktop sends them.
    void doubleClick(QPoint at) const
    {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at); // the press alone
        QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, at);
    }
    void key(Qt::Key key, Qt::KeyboardModifiers with = {}) const { QTest::keyClick(view.get(), key, with); }
    /// One letter for each row: x ticked, - not.
    QString ticks() const
    {
        QString all;
        for (int row = 0; row < model.rowCount(); ++row)
            all += model.item(row)->checkState() == Qt::Checked ? 'x' : '-';
        return all;
    }
    int row() const { return view->currentIndex().row(); }

    QStandardItemModel model;
    std::unique_ptr<QAbstractItemView> view;
};

} // namespace

/// Lists with boxes, driven by key and mouse.
class TestBoxedRows : public QObject
{
    Q_OBJECT

    static void kinds()
    {
        QTest::addColumn<QString>("kind");
        QTest::newRow("table") << "table";
        QTest::newRow("tree") << "tree";
    }

private slots:
    void box_inADarkList_isSeen_data() { kinds(); }
    void box_inADarkList_isSeen()
    {
        QFETCH(QString, kind);
        const List list(kind);
        QPalette dark(QColor(53, 53, 53));
        dark.setColor(QPalette::Base, QColor(35, 35, 35));
        list.view->setPalette(dark);
        const QImage seen = list.view->viewport()->grab().toImage();
        const QPoint middle = list.box(1);
        int lightest = 0;
        for (int x = std::max(0, middle.x() - 12); x < middle.x(); ++x)
            lightest = std::max(lightest, seen.pixelColor(x, middle.y()).lightness());
        QVERIFY2(lightest > 90, qPrintable(QString::number(lightest)));
    }
    void box_ofADarkListOnly_isFramed_data() { kinds(); }
    void box_ofADarkListOnly_isFramed()
    {
        QFETCH(QString, kind);
        for (const auto& [base, framed] : {std::pair(127, true), {128, false}}) {
            const List list(kind);
            QPalette palette;
            palette.setColor(QPalette::Base, QColor(base, base, base));
            palette.setColor(QPalette::PlaceholderText, Qt::red);
            list.view->setPalette(palette);
            const QImage seen = list.view->viewport()->grab().toImage();
            const QPoint middle = list.box(1);
            int red = 0;
            for (int x = std::max(0, middle.x() - 12); x < middle.x(); ++x)
                red += seen.pixelColor(x, middle.y()) == QColor(Qt::red) ? 1 : 0;
            QCOMPARE(red > 0, framed);
        }
    }
    void space_ticksTheRow_whereverItWasClicked_data() { kinds(); }
    void space_ticksTheRow_whereverItWasClicked()
    {
        QFETCH(QString, kind);
        const List list(kind);
        for (int column = 0; column < kColumns; ++column) {
            list.click(list.middle(1, column));
            list.key(Qt::Key_Space);
            QCOMPARE(list.ticks(), column % 2 == 0 ? QString("-x---") : QString("-----"));
        }
    }

    void space_withoutACurrentRow_doesNothing_data() { kinds(); }
    void space_withoutACurrentRow_doesNothing()
    {
        QFETCH(QString, kind);
        const List list(kind);
        list.view->setCurrentIndex({});
        list.key(Qt::Key_Space);
        QCOMPARE(list.ticks(), QString("-----"));
    }

    void space_heldDown_ticksOnce()
    {
        const List list("table");
        list.view->setCurrentIndex(list.model.index(2, 0));
        list.key(Qt::Key_Space);
        QKeyEvent again(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", true);
        QApplication::sendEvent(list.view.get(), &again);
        QCOMPARE(list.ticks(), QString("--x--"));
    }

    void ctrlA_ticksAll_andTwiceDoesNoHarm_data() { kinds(); }
    void ctrlA_ticksAll_andTwiceDoesNoHarm()
    {
        QFETCH(QString, kind);
        const List list(kind);
        list.view->setCurrentIndex(list.model.index(2, 1));
        list.key(Qt::Key_Space);
        for (int time = 0; time < 2; ++time) {
            list.key(Qt::Key_A, Qt::ControlModifier);
            QCOMPARE(list.ticks(), QString("xxxxx"));
            QCOMPARE(list.row(), 2);
        }
    }

    void ctrlA_leavesRowsWithoutABox()
    {
        const List list("tree");
        list.model.item(1)->setCheckable(false);
        list.model.item(3)->setEnabled(false);
        list.key(Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(list.ticks(), QString("x-x-x"));
    }

    void homeAndEnd_goToTheEnds_data() { kinds(); }
    void homeAndEnd_goToTheEnds()
    {
        QFETCH(QString, kind);
        const List list(kind);
        for (const Qt::KeyboardModifiers with : {Qt::NoModifier, Qt::ControlModifier}) {
            list.view->setCurrentIndex(list.model.index(2, 1));
            list.key(Qt::Key_End, with);
            QCOMPARE(list.row(), kRows - 1);
            list.key(Qt::Key_Home, with);
            QCOMPARE(list.row(), 0);
        }
        QCOMPARE(list.ticks(), QString("-----"));
    }

    void keys_inAnEmptyList_doNothing_data() { kinds(); }
    void keys_inAnEmptyList_doNothing()
    {
        QFETCH(QString, kind);
        List list(kind);
        list.model.removeRows(0, kRows);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Home, Qt::Key_End})
            list.key(key);
        list.key(Qt::Key_A, Qt::ControlModifier);
        QVERIFY(!list.view->currentIndex().isValid());
    }

    void doubleClick_ticksTheRow_data() { kinds(); }
    void doubleClick_ticksTheRow()
    {
        QFETCH(QString, kind);
        const List list(kind);
        list.doubleClick(list.middle(3, 1));
        QCOMPARE(list.ticks(), QString("---x-"));
        list.doubleClick(list.middle(3, 2));
        QCOMPARE(list.ticks(), QString("-----"));
    }

    void doubleClick_onTheBox_staysTheViews_data() { kinds(); }
    void doubleClick_onTheBox_staysTheViews()
    {
        QFETCH(QString, kind);
        const List list(kind);
        list.click(list.box(2));
        QCOMPARE(list.ticks(), QString("--x--"));
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        list.doubleClick(list.box(2));
        const List bare(kind, BoxedRows::DoubleClick::IsTheOwners);
        bare.click(bare.box(2));
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        bare.doubleClick(bare.box(2));
        QCOMPARE(list.ticks(), bare.ticks());
    }

    void doubleClick_ofTheOwner_ticksNothing_data() { kinds(); }
    void doubleClick_ofTheOwner_ticksNothing()
    {
        QFETCH(QString, kind);
        const List list(kind, BoxedRows::DoubleClick::IsTheOwners);
        const QSignalSpy owners(list.view.get(), &QAbstractItemView::doubleClicked);
        list.doubleClick(list.middle(3, 1));
        QCOMPARE(list.ticks(), QString("-----"));
        QCOMPARE(owners.size(), 1);
    }

    void otherKeys_stayTheViews()
    {
        const List list("table");
        list.view->setCurrentIndex(list.model.index(1, 0));
        list.key(Qt::Key_Down);
        QCOMPARE(list.row(), 2);
        QCOMPARE(list.ticks(), QString("-----"));
    }
};

QTEST_MAIN(TestBoxedRows)
#include "tst_boxedrows.moc"
