#include "label/LabelPictureFile.h"

#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray fromHex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// Two frames, 2 x 1 pixels: red, then blue.
QByteArray animatedGif()
{
    return fromHex("474946383961"
                   "02000100"
                   "910000"
                   "ff0000"
                   "0000ff"
                   "000000"
                   "ffffff"
                   "21f90400 0a000000"
                   "2c00000000 02000100 00"
                   "02028451 00"
                   "21f90400 0a000000"
                   "2c00000000 02000100 00"
                   "02028c53 00"
                   "3b");
}

/// A JPEG whose camera orientation is @p orientation (Exif 2.3, tag 0x0112).
QByteArray rotatedJpeg(const QString& plainPath, char orientation)
{
    QFile plain(plainPath);
    if (!plain.open(QIODevice::ReadOnly))
        return {};
    QByteArray jpeg = plain.readAll();
    QByteArray exif("Exif\0\0", 6);
    exif += QByteArray("MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 19) + orientation +
            QByteArray("\0\0\0\0\0\0", 6);
    const auto length = static_cast<quint16>(exif.size() + 2);
    const QByteArray head = QByteArray("\xff\xe1", 2) + char(length >> 8) + char(length & 0xff);
    return jpeg.insert(2, head + exif);
}

bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

/// Pictures as users have them.
class TestLabelPictureFile : public QObject
{
    Q_OBJECT
private slots:
    void read_aPlainPicture_keepsItsPixels()
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(path("plain.bmp")));
        const auto picture = zib::readPicture(path("plain.bmp"));
        QVERIFY(picture);
        QCOMPARE(picture->size, QSize(64, 48));
        QCOMPARE(picture->image.size(), QSize(64, 48));
        QCOMPARE(picture->image.pixelColor(5, 5), QColor(Qt::red));
    }
    void read_aWrongExtension_looksAtTheContent()
    {
        QImage image(4, 4, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(path("really.png")));
        QVERIFY(QFile::rename(path("really.png"), path("really.jpg")));
        QVERIFY(zib::readPicture(path("really.jpg")));
    }
    void read_aBrokenPicture_saysWhich_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("This is no picture.");
        QTest::newRow("header only") << fromHex("ffd8ffe000104a46494600010101");
        QTest::newRow("gif header") << QByteArray("GIF89a");
    }
    void read_aBrokenPicture_saysWhich()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(writeFile(path("broken.jpg"), bytes));
        const auto picture = zib::readPicture(path("broken.jpg"));
        QVERIFY(!picture);
        QCOMPARE(picture.error().kind, zib::Failure::Kind::UnreadableFile);
        QVERIFY(picture.error().detail.contains(path("broken.jpg")));
    }
    void read_anAnimation_givesTheFirstFrame()
    {
        QVERIFY(writeFile(path("moving.gif"), animatedGif()));
        const auto picture = zib::readPicture(path("moving.gif"));
        QVERIFY2(picture, qPrintable(picture ? QString() : picture.error().detail));
        QCOMPARE(picture->size, QSize(2, 1));
        QCOMPARE(picture->image.pixelColor(0, 0), QColor(255, 0, 0));
    }
    void read_aCameraRotation_isObeyed()
    {
        QImage image(40, 20, QImage::Format_RGB32);
        image.fill(Qt::red);
        for (int y = 0; y < 20; ++y)
            for (int x = 20; x < 40; ++x)
                image.setPixelColor(x, y, Qt::blue);
        QVERIFY(image.save(path("flat.jpg"), nullptr, 100));
        QVERIFY(writeFile(path("turned.jpg"), rotatedJpeg(path("flat.jpg"), 6)));
        const auto picture = zib::readPicture(path("turned.jpg"));
        QVERIFY(picture);
        QCOMPARE(picture->size, QSize(20, 40)); // Orientation 6: turned clockwise, the left side is on top.
        QVERIFY(picture->image.pixelColor(10, 5).red() > 200);
        QVERIFY(picture->image.pixelColor(10, 35).blue() > 200);
    }
    void read_aCmykJpeg_hasItsColours()
    {
        const auto picture = zib::readPicture(ZIB_SOURCE_DIR "/tests/label/cmyk.jpg");
        QVERIFY(picture);
        const QColor color = picture->image.pixelColor(8, 8);
        QVERIFY2(color.red() > 200 && color.green() < 80 && color.blue() < 80, qPrintable(color.name()));
    }
    void read_aJpegOfAnUnknownFormat_isRefusedInASentence()
    {
        const auto picture = zib::readPicture(ZIB_SOURCE_DIR "/tests/label/oddformat.jpg");
        QVERIFY(!picture);
        QVERIFY2(picture.error().detail.contains("cannot be shown"), qPrintable(picture.error().detail));
    }
    void read_aGifLargerThanItTells_keepsFewerPixels()
    {
        const auto picture = zib::readPicture(ZIB_SOURCE_DIR "/tests/label/screen.gif");
        QVERIFY(picture);
        QCOMPARE(picture->size.height(), 65280);
        QVERIFY(qint64{picture->image.width()} * picture->image.height() < zib::kMostPicturePixels * 1.01);
    }
    void read_aHugePicture_keepsItsSizeInFewerPixels_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QSize>("size");
        QTest::newRow("jpeg") << "jpg" << QSize(20000, 6000);
        QTest::newRow("png") << "png" << QSize(20000, 6000);
        QTest::newRow("narrow") << "png" << QSize(20000, 40);
        QTest::newRow("high") << "jpg" << QSize(100, 20000);
    }
    void read_aHugePicture_keepsItsSizeInFewerPixels()
    {
        QFETCH(QString, format);
        QFETCH(QSize, size);
        QImage image(size, QImage::Format_Grayscale8);
        image.fill(128);
        QVERIFY(image.save(path("huge." + format)));
        image = {};
        const auto picture = zib::readPicture(path("huge." + format));
        QVERIFY2(picture, qPrintable(picture ? QString() : picture.error().detail));
        QCOMPARE(picture->size, size);
        const QSize kept = picture->image.size();
        QVERIFY(qint64(kept.width()) * kept.height() <= zib::kMostPicturePixels + 20000);
        QVERIFY(qAbs(double(kept.width()) / kept.height() * size.height() / size.width() - 1) < 0.03);
        QCOMPARE(qGray(picture->image.pixel(3, 3)), 128);
    }
    void read_aPictureBeyondTheLimit_isRefusedInWords()
    {
        QImage image(21000, 20000, QImage::Format_Mono);
        image.fill(1);
        QVERIFY(image.save(path("wide.png")));
        const auto picture = zib::readPicture(path("wide.png"));
        QVERIFY(!picture);
        const QString words = picture.error().detail;
        for (const char* part : {"wide.png", "21,000 x 20,000 pixels", "1,525 MB"})
            QVERIFY2(words.contains(part), qPrintable(words));
    }
    void read_aBitmapThatClaimsTooMuch_isRefusedInWords_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<QString>("said");
        QTest::newRow("from bottom to top") << fromHex("a0860100 50c30000") << "100,000 x 50,000 pixels";
        QTest::newRow("from top to bottom") << fromHex("a0860100 b03cffff") << "100,000 x 50,000 pixels";
        QTest::newRow("all that can be said")
            << fromHex("ffffff7f 00000080") << "2,147,483,647 x 2,147,483,647 pixels";
    }
    void read_aBitmapThatClaimsTooMuch_isRefusedInWords()
    {
        QFETCH(QByteArray, size);
        QFETCH(QString, said);
        // 24 bits to the pixel.
        const QByteArray head = fromHex("424d 00000000 00000000 36000000 28000000") + size +
                                fromHex("0100 1800 00000000 00000000 130b0000 130b0000 00000000 00000000");
        QVERIFY(writeFile(path("claim.bmp"), head + QByteArray(5000, 'x')));
        const auto picture = zib::readPicture(path("claim.bmp"));
        QVERIFY(!picture);
        QVERIFY2(picture.error().detail.contains(said), qPrintable(picture.error().detail));
    }
    void shared_aPicture_isReadOnceWhileHeld()
    {
        QObject owner;
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(path("shared.bmp")));
        auto one = zib::sharedPicture(path("shared.bmp"), &owner);
        const auto other = zib::sharedPicture(path("shared.bmp"), &owner);
        QVERIFY(one && other);
        QCOMPARE(one->get(), other->get());
        QVERIFY(image.scaled(32, 24).save(path("shared.bmp")));
        const auto changed = zib::sharedPicture(path("shared.bmp"), &owner);
        QVERIFY(changed);
        QCOMPARE((*changed)->size, QSize(32, 24));
        const auto missing = zib::sharedPicture(path("none.bmp"), &owner);
        QVERIFY(!missing);
        QCOMPARE(missing.error().kind, zib::Failure::Kind::NotFound);
    }
    void read_anyPicture_leavesTheReadersLimitAlone()
    {
        const int before = QImageReader::allocationLimit();
        QVERIFY(!zib::readPicture(path("none.png")));
        QCOMPARE(QImageReader::allocationLimit(), before);
    }

private:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    QTemporaryDir m_folder;
};

QTEST_MAIN(TestLabelPictureFile)
#include "tst_LabelPictureFile.moc"
