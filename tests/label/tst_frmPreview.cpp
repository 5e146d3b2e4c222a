#include "label/frmPreview.h"

#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"
#include "label/LabelSettings.h"
#include "platform/IniFile.h"

#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using LabelMaker::LabelDocument;

namespace {

/// What a preview needs around it.
struct Desk : zib::FakeDesk
{
    explicit Desk(zib::IniService* ini = nullptr) : FakeDesk(ini)
    {
        zib::setApplicationFolder("/nowhere");
        LabelMaker::InitLabelDocument({});
        components.makePrinter = [this] { return std::make_unique<zib::FakePrinter>(tray); };
    }
    zib::FakePrinter::Tray tray;
};

/// The preview on a desk, its timer ready to be hurried.
struct Preview
{
    explicit Preview(const Desk& desk, QSize area = {8250, 8250}) : window(desk.services, area)
    {
        window.show();
    }
    QTimer* timer() const { return window.findChild<QTimer*>("Timer1"); }
    QWidget* find(const QString& name) const { return window.findChild<QWidget*>(name); }
    void hurry() const { timer()->start(0); }

    frmPreview window;
};

void edit(const std::function<void(LabelMaker::Document&)>& change)
{
    LabelMaker::Document document = LabelDocument;
    change(document);
    LabelMaker::setLabelDocument(document);
}

} // namespace

/// The preview: shows the document, prints it once, waits for a double-click.
class TestFrmPreview : public QObject
{
    Q_OBJECT
private slots:
    void load_always_showsTheDocumentAtTheLabelsSize()
    {
        const Desk desk;
        edit([](auto& d) { d.TitleText = "Road Songs", d.TableRows = 2; });
        const Preview preview(desk);
        QVERIFY(preview.window.loaded());
        QCOMPARE(preview.window.size(), QSize(550, 550));
        QCOMPARE(qobject_cast<QLabel*>(preview.find("cdTitle"))->text(), QString("Road Songs"));
        QVERIFY(preview.find("labels_8"));
        QVERIFY(!preview.find("labels_9"));
        QCOMPARE(preview.timer()->interval(), 1000);
        QVERIFY(preview.timer()->isActive());
        QVERIFY(desk.tray.jobs.isEmpty());
    }
    void load_onAScreenTooSmall_scrollsAndStillClosesAndPrints()
    {
        const Desk desk;
        const QSize screen = QGuiApplication::primaryScreen()->availableSize();
        const QSize area = 15 * QSize(screen.width() / 2, screen.height() + 50);
        Preview preview(desk, area);
        QVERIFY(preview.window.height() < screen.height());
        auto* scroller = preview.window.findChild<QScrollArea*>();
        QVERIFY(scroller);
        QCOMPARE(scroller->widget()->size(), area / 15);
        QCOMPARE(scroller->frameShape(), QFrame::NoFrame);
        QVERIFY(!scroller->horizontalScrollBar()->isVisible()); // Wide enough, so only the height scrolls.
        QTRY_COMPARE(QApplication::focusWidget(), scroller);
        QTest::keyClick(scroller, Qt::Key_PageDown);
        QVERIFY(scroller->verticalScrollBar()->value() > 0);
        preview.hurry();
        QTRY_COMPARE(desk.tray.jobs.size(), 1);
        QTest::mouseDClick(scroller->viewport(), Qt::LeftButton);
        QVERIFY(!preview.window.isVisible());
    }
    void load_ofATitleOfBlanks_showsItSo()
    {
        const Desk desk;
        edit([](auto& d) { d.TitleText = QString(10, ' '); });
        const Preview preview(desk);
        QCOMPARE(qobject_cast<QLabel*>(preview.find("cdTitle"))->text(), QString(10, ' '));
    }
    void load_withABrokenPicture_failsAndPrintsNothing()
    {
        const QTemporaryDir folder;
        QFile broken(folder.filePath("broken.jpg"));
        QVERIFY(broken.open(QIODevice::WriteOnly) && broken.write("nothing") > 0);
        broken.close();
        const Desk desk;
        edit([&](auto& d) { d.BackImagePath = broken.fileName(); });
        const Preview preview(desk);
        QVERIFY(!preview.window.loaded());
        QVERIFY(preview.window.loaded().error().detail.contains("broken.jpg"));
        QVERIFY(!preview.timer()->isActive());
    }
    void load_whenThePictureHasVanished_keepsTheDesigners()
    {
        QImage red(10, 10, QImage::Format_RGB32);
        red.fill(Qt::red);
        const zib::LabelImage standing{QRect(300, 600, 1500, 1500), {red, red.size()}};
        const Desk desk;
        edit([](auto& d) { d.BackImagePath = "/nowhere/vanished.jpg"; });
        const frmPreview preview(desk.services, {8250, 8250}, nullptr, standing);
        QVERIFY(preview.loaded());
        preview.findChild<QTimer*>("Timer1")->start(0);
        QTRY_COMPARE(desk.tray.jobs.size(), 1);
        QCOMPARE(desk.tray.jobs[0].paper.pixelColor(60, 60), QColor(Qt::red));
        QCOMPARE(desk.tray.jobs[0].paper.pixelColor(15, 60), QColor(Qt::white));
    }
    void timer_printsOnce_namedAfterTheProgram()
    {
        const Desk desk;
        const Preview preview(desk);
        preview.hurry();
        QTRY_COMPARE(desk.tray.jobs.size(), 1);
        QVERIFY(!preview.timer()->isActive());
        QCOMPARE(desk.tray.jobs[0].name, QString("Zib CD Burner"));
        QCOMPARE(desk.tray.jobs[0].paper.pixelColor(515, 100), QColor(255, 0, 0));
        QVERIFY(preview.window.isVisible());
        QVERIFY(desk.messages.shown.isEmpty());
    }
    void timer_afterItsDelay_printsByItself()
    {
        const Desk desk;
        const Preview preview(desk);
        QTRY_COMPARE_WITH_TIMEOUT(desk.tray.jobs.size(), 1, 30000);
    }
    void printing_thatSucceeds_isSaid()
    {
        const Desk desk;
        const Preview preview(desk);
        QSignalSpy sent(&preview.window, &frmPreview::Sent);
        preview.hurry();
        QTRY_COMPARE(sent.count(), 1);
        QCOMPARE(sent[0][0].toString(), QString("paper"));
        QCOMPARE(preview.window.windowTitle(), QString("Sent to paper - Zib CD Burner"));
        QCOMPARE(preview.window.accessibleName(), QString("Sent to paper"));
        QVERIFY(desk.messages.shown.isEmpty());
    }
    void printing_onPaperThatIsTooSmall_isAskedFirst_data()
    {
        QTest::addColumn<zib::Messages::Answer>("answer");
        QTest::addColumn<int>("jobs");
        QTest::newRow("yes") << zib::Messages::Answer::Yes << 1;
        QTest::newRow("no") << zib::Messages::Answer::No << 0;
        QTest::newRow("closed") << zib::Messages::Answer::Cancel << 0;
    }
    void printing_onPaperThatIsTooSmall_isAskedFirst()
    {
        QFETCH(zib::Messages::Answer, answer);
        QFETCH(int, jobs);
        Desk desk;
        desk.tray.printable = QSizeF(7670, 11180); // A5.
        desk.messages.answer = answer;
        desk.messages.onShow = [&](const QString&) { QVERIFY(desk.tray.jobs.isEmpty()); };
        const Preview preview(desk);
        preview.hurry();
        QTRY_COMPARE(desk.messages.shown.size(), 1);
        QVERIFY(desk.messages.shown[0].startsWith("q: The label is 145.5 x 145.5 mm"));
        QVERIFY(desk.messages.shown[0].contains("135.3 x 197.2 mm"));
        QTRY_COMPARE(desk.tray.jobs.size(), jobs);
    }
    void printing_withACalibration_followsItsNumbers()
    {
        zib::IniFile ini;
        Desk desk(&ini);
        const QTemporaryDir folder;
        zib::setSettingsFile(folder.filePath("settings.ini"));
        QVERIFY(zib::storeCalibration("paper", "210x297", {10, 5, 95, 105}));
        edit([](auto& d) { d.ShowTableText = false, d.TitleText = " ", d.LineWidth = 3; });
        const Preview preview(desk);
        preview.hurry();
        QTRY_COMPARE(desk.tray.jobs.size(), 1);
        QRect red;
        const QImage paper = desk.tray.jobs[0].paper;
        for (int y = 0; y < paper.height(); ++y)
            for (int x = 0; x < paper.width(); ++x)
                if (paper.pixelColor(x, y) == QColor(255, 0, 0))
                    red |= QRect(x, y, 1, 1);
        // From the paper's corner, which is 24 dots away: 59 and 104 dots, stretched, then shifted.
        QVERIFY2(qAbs(red.left() - ((35 - 1.5 + 24) * 0.95 + 37.8 - 24)) < 1.5,
                 qPrintable(QString::number(red.left())));
        QVERIFY2(qAbs(red.top() - ((80 - 1.5 + 24) * 1.05 + 18.9 - 24)) < 1.5,
                 qPrintable(QString::number(red.top())));
        QVERIFY(qAbs(red.width() - 483 * 0.95) < 2);
        QVERIFY(qAbs(red.height() - 323 * 1.05) < 2);
    }
    void calibrationKey_printsThePageThenOpensItsDialog()
    {
        Desk desk;
        Preview preview(desk);
        preview.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&preview.window));
        QTest::keyClick(&preview.window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(desk.tray.jobs.size(), 1);
        QCOMPARE(desk.windows.shown, QStringList{"calibrate"});
        // Across from the cross at 30 mm: the ruler, 100 mm long.
        const QImage paper = desk.tray.jobs[0].paper;
        const int y = qRound(30 / 25.4 * 96 - 24);
        QVERIFY(qGray(paper.pixel(qRound(80 / 25.4 * 96 - 24), y)) < 200);
        QVERIFY(qGray(paper.pixel(qRound(129 / 25.4 * 96 - 24), y)) < 200);
        QCOMPARE(paper.pixelColor(qRound(132 / 25.4 * 96 - 24), y), QColor(Qt::white));
        QTRY_COMPARE_WITH_TIMEOUT(desk.tray.jobs.size(), 2, 30000); // And the label all the same.
    }
    void calibrationKey_withoutAPrinter_tellsWhy()
    {
        Desk desk;
        desk.tray.answer = zib::Failure{zib::Failure::Kind::NotFound, "There is no default printer."};
        Preview preview(desk);
        preview.timer()->stop();
        preview.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&preview.window));
        QTest::keyClick(&preview.window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(desk.messages.shown, QStringList{"c: There is no default printer."});
        QVERIFY(desk.windows.shown.isEmpty());
    }
    void calibrationKey_whoseDialogCannotCome_tellsWhy()
    {
        Desk desk;
        desk.windows.calibrateAnswer = zib::Failure{zib::Failure::Kind::NotFound, "The printer has gone."};
        Preview preview(desk);
        preview.timer()->stop();
        preview.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&preview.window));
        QTest::keyClick(&preview.window, Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(desk.tray.jobs.size(), 1);
        QCOMPARE(desk.windows.shown, QStringList{"calibrate"});
        QCOMPARE(desk.messages.shown, QStringList{"c: The printer has gone."});
        QCOMPARE(desk.messages.owners[0].data(), &preview.window);
    }
    void printing_thatFails_isToldAndTheWindowStays()
    {
        Desk desk;
        desk.tray.answer = zib::Failure{zib::Failure::Kind::NotFound, "There is no default printer."};
        const Preview preview(desk);
        preview.hurry();
        QTRY_COMPARE(desk.messages.shown, QStringList{"c: There is no default printer."});
        QCOMPARE(desk.messages.owners[0].data(), &preview.window);
        QVERIFY(preview.window.isVisible());
        QTest::qWait(20);
        QCOMPARE(desk.messages.shown.size(), 1);
    }
    void doubleClick_closes_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<bool>("closes");
        QTest::newRow("window") << "" << true;
        QTest::newRow("picture") << "Image1" << true;
        QTest::newRow("cell") << "labels_1" << false;
        QTest::newRow("title") << "cdTitle" << false;
    }
    void doubleClick_closes()
    {
        QFETCH(QString, where);
        QFETCH(bool, closes);
        const Desk desk;
        Preview preview(desk);
        QSignalSpy finished(&preview.window, &QDialog::finished);
        QTest::mouseDClick(where.isEmpty() ? &preview.window : preview.find(where), Qt::LeftButton);
        QCOMPARE(!preview.window.isVisible(), closes);
        QCOMPARE(finished.count(), closes ? 1 : 0);
    }
    void cellEditedInPlace_doesNotReachThePaper()
    {
        const Desk desk;
        edit([](auto& d) { d.ShowTableLines = false; });
        const Preview preview(desk);
        QCOMPARE(qobject_cast<QLabel*>(preview.find("labels_6"))->text(), QString(10, ' '));
    }
    void colour_whenUnused_isThePaperWhite()
    {
        const Desk desk;
        edit([](auto& d) { d.UseBackColor = false, d.BackColor = Qt::black; });
        const Preview preview(desk);
        preview.hurry();
        QTRY_COMPARE(desk.tray.jobs.size(), 1);
        QCOMPARE(desk.tray.jobs[0].paper.pixelColor(5, 5), QColor(Qt::white));
    }
};

QTEST_MAIN(TestFrmPreview)
#include "tst_frmPreview.moc"
