#include "common/GenralMacro.h"
#include "engines/rip/RipBench.h"
#include "engines/rip/StallingPlace.h"
#include "engines/rip/makers.h"
#include "fakes/FakeSeams.h"
#include "fakes/Heartbeat.h"
#include "tools/frmRip.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QElapsedTimer>
#include <QTreeWidget>

using namespace zib;

namespace {

/// The ripper's window on a folder with two images.
struct StallBench
{
    StallBench()
    {
        for (const QByteArray name : {"one", "two"}) {
            write(name + ".cue",
                  "FILE \"" + name + ".bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n");
            write(name + ".bin", discSound(4000, 1));
        }
        OptionsData options = gOptions;
        options.WAVOutput = folder.filePath("WAV");
        options.ExploreAfterRipping = false;
        setOptions(options);
        desk.components.makeRipper = [this] { return makeRipper(images()); };
    }
    QString images() const { return folder.filePath("Images"); }
    void write(const QString& name, const QByteArray& content) const
    {
        QDir().mkpath(images());
        QFile file(images() + '/' + name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("no image");
    }
    void open()
    {
        window = std::make_unique<frmRip>(desk.services);
        window->show();
    }
    template <typename Control>
    Control* control(const char* name) const
    {
        return window->findChild<Control*>(name);
    }
    QComboBox* drives() const { return control<QComboBox>("cboDevices"); }
    QTreeWidget* tracks() const { return control<QTreeWidget>("lvwTracks"); }
    int indexOf(const QString& image) const
    {
        return drives()->findText(image + ": Disc image", Qt::MatchStartsWith);
    }

    QTemporaryDir folder;
    FakeDesk desk;
    std::unique_ptr<frmRip> window;
};

/// The goal is a tenth of a second; a machine full of other work is given more.
void judge(const char* what, qint64 longestMs, qint64 restMs)
{
    std::printf("Longest freeze, %s: %lld ms (goal 100 ms, at rest %lld ms).\n", what,
                static_cast<long long>(longestMs), static_cast<long long>(restMs));
    QVERIFY2(longestMs < 1000 + 5 * restMs, what);
}

} // namespace

/// Images on a storage that does not answer: the windows go on.
class TestStalledImages : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        Heartbeat beat;
        QTest::qWait(1000);
        m_restMs = beat.longestMs();
    }

    void folder_thatHangs_bringsItsImagesLate()
    {
        StallBench bench;
        auto stall = std::make_unique<StallingPlace>(bench.images());
        bench.open();
        QVERIFY(QTest::qWaitForWindowExposed(bench.window.get()));
        Heartbeat beat;
        QTRY_VERIFY_WITH_TIMEOUT(StallingPlace::hanging() > 0, 20'000);
        QTest::qWait(700);
        QCOMPARE(bench.indexOf("one"), -1);
        stall.reset();
        QTRY_VERIFY_WITH_TIMEOUT(bench.indexOf("two") >= 0, 20'000);
        bench.drives()->setCurrentIndex(bench.indexOf("two"));
        QTRY_COMPARE_WITH_TIMEOUT(bench.tracks()->topLevelItemCount(), 1, 20'000);
        judge("a folder of images that hangs", beat.longestMs(), m_restMs);
    }

    void image_thatHangs_isLeftForAnother_andClosed()
    {
        StallBench bench;
        bench.open();
        QTRY_VERIFY_WITH_TIMEOUT(bench.indexOf("two") >= 0, 20'000);
        Heartbeat beat;
        auto stall = std::make_unique<StallingPlace>(bench.images() + "/one");
        bench.drives()->setCurrentIndex(bench.indexOf("one"));
        QTRY_VERIFY_WITH_TIMEOUT(StallingPlace::hanging() > 0, 20'000);
        bench.drives()->setCurrentIndex(bench.indexOf("two"));
        QTRY_COMPARE_WITH_TIMEOUT(bench.tracks()->topLevelItemCount(), 1, 20'000);
        bench.drives()->setCurrentIndex(bench.indexOf("one"));
        QTest::qWait(300);
        bench.window->close();
        bench.window.reset();
        judge("an image that hangs", beat.longestMs(), m_restMs);
        stall.reset();
    }

    void target_thatHangs_isNotWaitedFor()
    {
        StallBench bench;
        bench.open();
        QTRY_VERIFY_WITH_TIMEOUT(bench.indexOf("two") >= 0, 20'000);
        bench.drives()->setCurrentIndex(bench.indexOf("two"));
        QTRY_COMPARE_WITH_TIMEOUT(bench.tracks()->topLevelItemCount(), 1, 20'000);
        auto ripper = makeRipper(bench.images());
        RipBench rip(std::move(ripper));
        QVERIFY(rip.takeDisc("two"));
        Heartbeat beat;
        auto stall = std::make_unique<StallingPlace>(rip.folder.path());
        QVERIFY(rip.ripper->addTrack(1, rip.target(1)));
        QVERIFY(rip.ripper->start());
        QTest::qWait(300);
        rip.ripper->abort();
        QTest::qWait(1300);
        rip.ripper.reset();
        judge("a folder for files that hangs", beat.longestMs(), m_restMs);
        stall.reset();
    }

private:
    qint64 m_restMs = 0;
};

QTEST_MAIN(TestStalledImages)
#include "tst_stalledimages.moc"
