#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

/// What "cmake --install" puts into a prefix, and what is packed beside the program.
class TestPackaging : public QObject
{
    Q_OBJECT
private slots:
    void install_intoAPrefixWithBlanks_isWhole();
    void release_hasOneNumber();
    void mimeType_isWellFormed_andNamesTheProject();
    void samples_haveTheirFormats_data();
    void samples_haveTheirFormats();

private:
    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

void TestPackaging::install_intoAPrefixWithBlanks_isWhole()
{
    if (!QFile::exists(ZIB_PROGRAM_DIR "/ZibCDBurner")) {
        QSKIP("The program itself has not been built here.");
    }
    QTemporaryDir folder;
    const QString prefix = folder.filePath("my programs");
    QProcess install;
    install.start("cmake", {"--install", ZIB_BINARY_DIR, "--prefix", prefix});
    QVERIFY(install.waitForFinished(120000));
    QVERIFY2(install.exitCode() == 0, install.readAllStandardError());

    const QString entry = QString::fromUtf8(contents(prefix + "/share/applications/zibcdburner.desktop"));
    QVERIFY(entry.startsWith("[Desktop Entry]\n"));
    const auto exec = QRegularExpression("^Exec=\"(.*)\"$", QRegularExpression::MultilineOption).match(entry);
    const QFileInfo program(exec.captured(1));
    QVERIFY2(program.isExecutable(), qPrintable(entry));
    QVERIFY(!entry.contains('@'));
    for (const QString name : {"TIPOFDAY.TXT", "Sample1.jpg", "zibburn.chm"}) {
        QVERIFY2(program.dir().exists(name), qPrintable(name));
    }
    for (int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        const QString icon =
            QString("%1/share/icons/hicolor/%2x%2/apps/zibcdburner.png").arg(prefix).arg(size);
        QCOMPARE(QImage(icon).size(), QSize(size, size));
    }
    QVERIFY(QFile::exists(prefix + "/share/icons/hicolor/scalable/apps/zibcdburner.svg"));
    QVERIFY(QFile::exists(prefix + "/share/mime/packages/zibcdburner.xml"));
    for (const char* const file :
         {"metainfo/example.zibcdburner.ZibCDBurner.metainfo.xml", "man/man1/zibcdburner.1.gz",
          "doc/zibcdburner/copyright", "doc/zibcdburner/changelog.gz",
          "icons/hicolor/scalable/mimetypes/application-x-zib-project.svg"})
        QVERIFY2(QFile::exists(prefix + "/share/" + file), file);
    QCOMPARE(QFileInfo(prefix + "/bin/zibcdburner").canonicalFilePath(), program.canonicalFilePath());
}

void TestPackaging::release_hasOneNumber()
{
    const auto newest = QRegularExpression("\n## ([0-9.]+) \\(([0-9-]+)\\)")
                            .match(QString::fromUtf8(contents(ZIB_SOURCE_DIR "/CHANGELOG.md")));
    QVERIFY(newest.hasMatch());
    const QString made = ZIB_BINARY_DIR "/packaging/";
    const QString metadata =
        QString::fromUtf8(contents(made + "example.zibcdburner.ZibCDBurner.metainfo.xml"));
    QVERIFY(
        metadata.contains(QString("version=\"%1\" date=\"%2\"").arg(newest.captured(1), newest.captured(2))));
    QVERIFY(contents(made + "changelog").startsWith("zibcdburner (" + newest.captured(1).toUtf8() + ") "));
    QVERIFY(contents(made + "zibcdburner.1").contains("Zib CD Burner " + newest.captured(1).toUtf8()));
}

void TestPackaging::mimeType_isWellFormed_andNamesTheProject()
{
    QXmlStreamReader xml(contents(ZIB_SOURCE_DIR "/packaging/zibcdburner.xml"));
    QString type;
    QString pattern;
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement) {
            type += xml.attributes().value("type").toString();
            pattern += xml.attributes().value("pattern").toString();
        }
    }
    QVERIFY2(!xml.hasError(), qPrintable(xml.errorString()));
    QVERIFY(type.startsWith("application/x-zib-project"));
    QCOMPARE(pattern, QString("*.zibp"));
}

void TestPackaging::samples_haveTheirFormats_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("probe"); // sampling rate and channels as ffprobe writes them
    QTest::addColumn<QStringList>("tags");
    QTest::newRow("MP3") << "Morning Light.mp3"
                         << "mp3,44100,2" << QStringList{"Morning Light", "Zoë Ångström"};
    QTest::newRow("24 bits") << "Night Train.wav"
                             << "pcm_s24le,48000,1" << QStringList{"Night Train", "The Sleepers"};
    QTest::newRow("mono") << "Short Wave.wav"
                          << "pcm_s16le,22050,1" << QStringList{"Short Wave", "Radio Nord"};
}

void TestPackaging::samples_haveTheirFormats()
{
    QFETCH(QString, name);
    QFETCH(QString, probe);
    QFETCH(QStringList, tags);
    const QString path = ZIB_SOURCE_DIR "/data/samples/" + name;
    QProcess reader;
    reader.start("ffprobe",
                 {"-v", "error", "-show_entries",
                  "stream=codec_name,sample_rate,channels:format_tags=title,artist", "-of", "csv=p=0", path});
    if (!reader.waitForStarted()) {
        QSKIP("No ffprobe is installed (ffmpeg).");
    }
    QVERIFY(reader.waitForFinished(120000));
    const QStringList lines = QString::fromUtf8(reader.readAllStandardOutput()).trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines[0], probe);
    for (const QString& tag : tags) {
        QVERIFY2(lines[1].split(',').contains(tag), qPrintable(lines[1]));
    }
    QVERIFY(QFileInfo(path).size() < 1000000);
}

QTEST_MAIN(TestPackaging)
#include "tst_packaging.moc"
