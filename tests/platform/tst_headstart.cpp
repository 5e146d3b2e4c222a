#include "platform/HeadStart.h"

#include <QFontDatabase>
#include <QImageReader>
#include <QtTest>

class TestHeadStart : public QObject
{
    Q_OBJECT
private slots:
    void withoutApplication_endsAtOnce();
    void fonts_areThere_onceAwaited();
    void unawaited_endsWhenFinished();
};

/// Where the toolkit ends the program, or the caller never comes so far.
void TestHeadStart::withoutApplication_endsAtOnce()
{
    const zib::HeadStart none;
}

void TestHeadStart::fonts_areThere_onceAwaited()
{
    zib::HeadStart headStart;
    headStart.applicationIsThere();
    headStart.awaitFonts();
    headStart.awaitFonts();
    QVERIFY(QFontMetrics(QFont()).height() > 0);
    QVERIFY(QImageReader::supportedImageFormats().contains("png"));
}

void TestHeadStart::unawaited_endsWhenFinished()
{
    zib::HeadStart headStart;
    headStart.applicationIsThere();
    headStart.finish();
    headStart.finish();
    zib::HeadStart another;
    another.applicationIsThere();
}

QTEST_MAIN(TestHeadStart)
#include "tst_headstart.moc"
