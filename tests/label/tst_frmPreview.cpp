#include "label/frmPreview.h"

#include "fakes/FakePrinter.h"
#include "fakes/FakeSeams.h"
#include "label/LabelMaker.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using LabelMaker::LabelDocument;

namespace {

/// What a preview needs around it.
struct Desk : zib::FakeDesk
{
    Desk()
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
    explicit Preview(const Desk& desk) : window(desk.services, {8250, 8250}) { window.show(); }
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
