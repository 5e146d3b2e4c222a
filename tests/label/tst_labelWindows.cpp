#include "app/WindowBook.h"
#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"
#include "label/frmLabelDesigner.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using LabelMaker::LabelDocument;

namespace {

/// The label maker's windows as the program opens them, each modal in turn.
struct Desk : zib::FakeDesk
{
    Desk()
    {
        zib::setApplicationFolder("/nowhere");
        components.makePrinter = [this] { return std::make_unique<zib::FakePrinter>(tray); };
        designer = std::make_unique<frmLabelDesigner>(book.services(), QList<zib::CompilationRow>{});
        designer->show();
    }
    /// Presses a button of the designer and works in the window that it opens, which must be named @p window.
    bool work(const QString& button, const QString& window, const std::function<void(QDialog*)>& deed)
    {
        bool worked = false;
        QTimer opened;
        QObject::connect(&opened, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            opened.stop();
            worked = dialog->objectName() == window;
            deed(dialog);
            dialog->close();
        });
        opened.start(5);
        designer->findChild<QAbstractButton*>(button)->click();
        return worked;
    }
    QLabel* label(int n) const { return designer->findChild<QLabel*>(QString("labels_%1").arg(n)); }

    zib::FakePrinter::Tray tray;
    zib::WindowBook book{messages, dialogs, components};
    std::unique_ptr<frmLabelDesigner> designer;
};

void press(QDialog* dialog, const char* button)
{
    dialog->findChild<QAbstractButton*>(button)->click();
}

} // namespace

/// The designer with its real dialogs: what one applies, the other shows at once.
class TestLabelWindows : public QObject
{
    Q_OBJECT
private slots:
    void print_ofAPictureThatHasVanished_printsWhatTheDesignerShows()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("cover.bmp");
        QImage red(10, 10, QImage::Format_RGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(path));
        Desk desk;
        QVERIFY(desk.work("cmdBack", "frmLabelBack", [&](QDialog* dialog) {
            dialog->findChild<QLineEdit*>("txtOpen")->setText(path);
            press(dialog, "cmdApply");
        }));
        QVERIFY(QFile::remove(path));
        QVERIFY(desk.work("cmdPrint", "frmPreview", [&](QDialog* dialog) {
            dialog->findChild<QTimer*>("Timer1")->start(0);
            QTRY_COMPARE(desk.tray.jobs.size(), 1);
        }));
        QCOMPARE(desk.tray.jobs[0].paper.pixelColor(5, 5), QColor(Qt::red));
    }
    void list_applied_redrawsTheTableAndForgetsCellEdits()
    {
        Desk desk;
        QTest::mouseClick(desk.label(2), Qt::LeftButton);
        QTest::keyClicks(desk.designer->findChild<QLineEdit*>("txtCursor"), "Song");
        QVERIFY(desk.work("cmdList", "frmLabelList", [&](QDialog* dialog) {
            QCOMPARE(desk.label(2)->text(), QString("Song"));
            press(dialog, "chkLines");
            press(dialog, "cmdApply");
            QCOMPARE(desk.label(2)->text(), QString("Title"));
            QVERIFY(!desk.designer->findChild<QWidget*>("lines_1"));
        }));
    }
    void title_applied_redrawsTheTitleAndKeepsCellEdits()
    {
        Desk desk;
        QTest::mouseClick(desk.label(2), Qt::LeftButton);
        QTest::keyClicks(desk.designer->findChild<QLineEdit*>("txtCursor"), "Song");
        QVERIFY(desk.work("Title", "frmLabelTitle", [&](QDialog* dialog) {
            dialog->findChild<QLineEdit*>("txtTitle")->setText("Mine");
            press(dialog, "cmdApply");
            QCOMPARE(desk.designer->findChild<QLabel*>("cdTitle")->text(), QString("Mine"));
            QCOMPARE(desk.label(2)->text(), QString("Song"));
        }));
    }
    void background_applied_redrawsTheBackground()
    {
        const QTemporaryDir folder;
        QImage image(30, 20, QImage::Format_RGB32);
        image.fill(Qt::green);
        QVERIFY(image.save(folder.filePath("a.bmp")));
        Desk desk;
        QVERIFY(desk.work("cmdBack", "frmLabelBack", [&](QDialog* dialog) {
            dialog->findChild<QLineEdit*>("txtOpen")->setText(folder.filePath("a.bmp"));
            press(dialog, "optImage_1");
            press(dialog, "cmdApply");
            QCOMPARE(desk.designer->findChild<QWidget*>("Image1")->geometry(), QRect(100, 20, 30, 20));
            press(dialog, "chkBackImage");
            press(dialog, "cmdApply");
            QVERIFY(!desk.designer->findChild<QWidget*>("Image1")->isVisible());
        }));
        QVERIFY(desk.messages.shown.isEmpty());
    }
    void preview_showsPrintsAndCloses()
    {
        Desk desk;
        QVERIFY(desk.work("cmdPrint", "frmPreview", [&](QDialog* preview) {
            preview->findChild<QTimer*>("Timer1")->start(0);
            QTRY_COMPARE(desk.tray.jobs.size(), 1);
            QVERIFY(preview->isVisible());
        }));
        QVERIFY(desk.messages.shown.isEmpty());
    }
    void preview_ofABrokenPicture_isToldAndNotShown()
    {
        const QTemporaryDir folder;
        QFile broken(folder.filePath("broken.jpg"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("nothing") > 0);
        broken.close();
        Desk desk;
        LabelMaker::Document document = LabelDocument;
        document.BackImagePath = broken.fileName();
        LabelMaker::setLabelDocument(document);
        desk.designer->findChild<QAbstractButton*>("cmdPrint")->click();
        QCOMPARE(desk.messages.shown.size(), 1);
        QVERIFY(desk.messages.shown[0].contains("broken.jpg"));
        QVERIFY(desk.tray.jobs.isEmpty());
    }
    void designer_openedByTheBook_isFilledFromTheRows()
    {
        Desk desk;
        QString text;
        QTimer opened;
        connect(&opened, &QTimer::timeout, [&] {
            auto* designer = QApplication::activeModalWidget();
            if (!designer)
                return;
            opened.stop();
            text = designer->findChild<QLabel*>("labels_6")->text();
            designer->close();
        });
        opened.start(5);
        desk.book.showLabelDesigner(nullptr, {{"1", "a.mp3", "One", "Me", "01:02:03", "1 KB", "/m/"}});
        QCOMPARE(text, QString("One"));
    }
};

QTEST_MAIN(TestLabelWindows)
#include "tst_labelWindows.moc"
