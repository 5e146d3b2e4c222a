#include "components/Printer.h"
#include "engines/print/makers.h"
#include "fakes/FakePrinter.h"
#include "print/PrintSystem.h"

#include <QPainter>
#include <QTest>

#include <memory>

namespace {

/// The stand-in or the engine, each with a printer that takes jobs and a way to take it away.
struct World
{
    explicit World(bool real)
    {
        if (!real) {
            printer = std::make_unique<zib::FakePrinter>(tray);
            return;
        }
        system = std::make_unique<PrintSystem>();
        problem = system->problem();
        if (problem.isEmpty()) {
            system->addFileQueue("paper");
            system->setDefault("paper");
        }
        printer = zib::makePrinter();
    }
    void takePrinterAway()
    {
        tray.answer = zib::Failure{zib::Failure::Kind::NotFound, "There is no default printer."};
        if (system)
            system->run("lpadmin", {"-x", "paper"});
    }

    QString problem;
    zib::FakePrinter::Tray tray;
    std::unique_ptr<PrintSystem> system;
    std::unique_ptr<Printer> printer;
};

} // namespace

/// What every printer keeps to.
class TestPrinterContract : public QObject
{
    Q_OBJECT
private slots:
    void print_paintsOnceInTwips_data() { worlds(); }
    void print_paintsOnceInTwips()
    {
        QFETCH(bool, real);
        World world(real);
        if (!world.problem.isEmpty())
            QSKIP(qPrintable(world.problem));
        int painted = 0;
        double dotsPerTwip = 0;
        const zib::Outcome<> printed = world.printer->print("Contract", [&](QPainter& painter) {
            ++painted;
            QVERIFY(painter.isActive());
            dotsPerTwip = painter.deviceTransform().m11() / painter.device()->logicalDpiX();
            painter.fillRect(0, 0, 1440, 1440, Qt::black);
        });
        QVERIFY2(printed, qPrintable(printed ? QString() : printed.error().detail));
        QCOMPARE(painted, 1);
        QVERIFY(qAbs(dotsPerTwip * 1440 - 1) < 0.002);
        QVERIFY(world.printer->print("Again", [&](QPainter&) { ++painted; }));
        QCOMPARE(painted, 2);
    }
    void target_namesPrinterPaperAndWhereItPrints_data() { worlds(); }
    void target_namesPrinterPaperAndWhereItPrints()
    {
        QFETCH(bool, real);
        World world(real);
        if (!world.problem.isEmpty())
            QSKIP(qPrintable(world.problem));
        const auto target = world.printer->target();
        QVERIFY(target);
        QCOMPARE(target->printer, QString("paper"));
        QVERIFY(target->paper == "210x297" || target->paper == "216x279");
        QVERIFY(target->corner.x() >= 0 && target->corner.y() >= 0);
        QVERIFY(target->printable.width() > 8250 && target->printable.height() > 8250);
        QVERIFY(target->corner.x() + target->printable.width() < target->paperSize.width() + 1);
        QVERIFY(target->corner.y() + target->printable.height() < target->paperSize.height() + 1);
    }
    void target_withoutAPrinter_failsInWords_data() { worlds(); }
    void target_withoutAPrinter_failsInWords()
    {
        QFETCH(bool, real);
        World world(real);
        if (!world.problem.isEmpty())
            QSKIP(qPrintable(world.problem));
        world.takePrinterAway();
        const auto target = world.printer->target();
        QVERIFY(!target && !target.error().detail.isEmpty());
    }
    void print_withoutAPrinter_failsInWords_data() { worlds(); }
    void print_withoutAPrinter_failsInWords()
    {
        QFETCH(bool, real);
        World world(real);
        if (!world.problem.isEmpty())
            QSKIP(qPrintable(world.problem));
        world.takePrinterAway();
        int painted = 0;
        const zib::Outcome<> printed = world.printer->print("Contract", [&](QPainter&) { ++painted; });
        QVERIFY(!printed);
        QVERIFY(!printed.error().detail.isEmpty());
        QCOMPARE(painted, 0);
    }

private:
    static void worlds()
    {
        QTest::addColumn<bool>("real");
        QTest::newRow("stand-in") << false;
        QTest::newRow("engine") << true;
    }
};

QTEST_MAIN(TestPrinterContract)
#include "tst_printer_contract.moc"
