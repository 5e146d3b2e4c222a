#include "engines/rip/StallingPlace.h"
#include "label/LabelPictureFile.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace std::chrono_literals;

/// Pictures on places that stop answering.
class TestStalledPicture : public QObject
{
    Q_OBJECT
private slots:
    void shared_onAPlaceThatHangs_isGivenUpInWords()
    {
        QVERIFY(makePicture("far.bmp"));
        QObject owner;
        int beats = 0;
        QTimer heart;
        connect(&heart, &QTimer::timeout, [&] { ++beats; });
        heart.start(20);
        const zib::StallingPlace place(m_folder.path());
        QElapsedTimer clock;
        clock.start();
        const auto picture = zib::sharedPicture(path("far.bmp"), &owner, 400ms);
        qInfo("given up after %lld ms, %d beats of the window meanwhile", clock.elapsed(), beats);
        QVERIFY(!picture);
        QVERIFY2(picture.error().detail.contains("far.bmp") &&
                     picture.error().detail.contains("does not answer"),
                 qPrintable(picture.error().detail));
        QVERIFY(beats > 3);
    }
    void shared_whenThePlaceHangsLater_isTheOneThatIsHeld()
    {
        QVERIFY(makePicture("held.bmp"));
        QObject owner;
        const auto first = zib::sharedPicture(path("held.bmp"), &owner);
        QVERIFY(first);
        const zib::StallingPlace place(m_folder.path());
        const auto again = zib::sharedPicture(path("held.bmp"), &owner, 100ms);
        QVERIFY(again);
        QCOMPARE(again->get(), first->get());
    }
    void shared_whenTheOwnerGoesMeanwhile_isCancelled()
    {
        QVERIFY(makePicture("left.bmp"));
        auto owner = std::make_unique<QObject>();
        QTimer::singleShot(50, [&] { owner.reset(); });
        const zib::StallingPlace place(m_folder.path());
        const auto picture = zib::sharedPicture(path("left.bmp"), owner.get(), 20s);
        QVERIFY(!picture);
        QCOMPARE(picture.error().kind, zib::Failure::Kind::Cancelled);
    }

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }
    bool makePicture(const QString& name) const
    {
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::red);
        return image.save(path(name));
    }

    QTemporaryDir m_folder;
};

QTEST_MAIN(TestStalledPicture)
#include "tst_stalledpicture.moc"
