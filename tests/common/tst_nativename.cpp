#include "common/NativeName.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// Names of bytes and the texts that stand for them, against real folders.
class TestNativeName : public QObject
{
    Q_OBJECT
private slots:
    void text_ofAnyBytes_givesThemBack_data();
    void text_ofAnyBytes_givesThemBack();
    void text_ofEveryPairOfBytes_givesItBack();
    void text_ofBytesThatAreNoUtf8_survivesUtf8();
    void text_ofAGoodName_isThatName();
    void files_ofAnyName_areFoundAndRead_data();
    void files_ofAnyName_areFoundAndRead();
    void name_withAReplacementCharacter_isTheOneEntryThatReadsSo();
    void name_withAReplacementCharacter_ofTwoAlike_isNeither();
    void name_thatTrulyHoldsSuchALetter_isFound();
    void url_ofABrokenName_keepsItsBytes();
    void folders_withEveryParent_areMade();
    void executableFolder_isThatOfThisTest();
};

namespace {

void nameRows()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("Song.mp3");
    QTest::newRow("utf-8") << QByteArray("Größe 音🎵.mp3");
    QTest::newRow("latin 1") << QByteArray("M\xFCll.wav");
    QTest::newRow("latin 1 before a letter that could follow") << QByteArray("\xC3\xC3\xA4");
    QTest::newRow("cut in the middle") << QByteArray("a\xE9\x9F");
    QTest::newRow("encoded surrogate") << QByteArray("\xED\xA0\x80");
    QTest::newRow("overlong") << QByteArray("\xC0\xAF\xE0\x80\x80");
    QTest::newRow("beyond Unicode") << QByteArray("\xF5\x80\x80\x80");
    QTest::newRow("a letter that serves as escape") << QByteArray("x\xEE\xBF\xBCy");
    QTest::newRow("escape next to its byte") << QByteArray("\xEE\xBE\x80\x80\xEE");
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBFx");
    QTest::newRow("two marks and a byte") << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBF\xFF\xEF\xBB\xBFy");
    QTest::newRow("blanks at the ends") << QByteArray("  a b ");
    QTest::newRow("line breaks") << QByteArray("a\nb\r\n");
    QTest::newRow("replacement character") << QByteArray("a\xEF\xBF\xBD");
    QTest::newRow("backslash") << QByteArray("a\\b");
}

/// A folder that goes with all in it, whatever its names.
class Folder
{
public:
    ~Folder() { std::filesystem::remove_all(m_folder.path().toStdString()); }
    QString path() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
};

bool put(const QByteArray& path, const QByteArray& content)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL, 0666);
    const bool written = fd >= 0 && ::write(fd, content.constData(), content.size()) == content.size();
    return fd >= 0 && ::close(fd) == 0 && written;
}

} // namespace

void TestNativeName::text_ofAnyBytes_givesThemBack_data()
{
    nameRows();
}

void TestNativeName::text_ofAnyBytes_givesThemBack()
{
    QFETCH(QByteArray, name);
    QCOMPARE(zib::nativeBytes(zib::nativeText(name)), name);
}

void TestNativeName::text_ofEveryPairOfBytes_givesItBack()
{
    for (int first = 1; first < 256; ++first)
        for (int second = 1; second < 256; ++second) {
            const QByteArray name{"/"};
            const QByteArray pair = name + static_cast<char>(first) + static_cast<char>(second);
            QCOMPARE(zib::nativeBytes(zib::nativeText(pair)), pair);
        }
}

void TestNativeName::text_ofBytesThatAreNoUtf8_survivesUtf8()
{
    const QString text = zib::nativeText("M\xFCll\xFF.wav");
    QVERIFY(text.isValidUtf16());
    QCOMPARE(QString::fromUtf8(text.toUtf8()), text);
    QVERIFY(!text.contains(QChar::ReplacementCharacter));
}

void TestNativeName::text_ofAGoodName_isThatName()
{
    QCOMPARE(zib::nativeText("Größe 音🎵"), QString("Größe 音🎵"));
    QCOMPARE(zib::nativeBytes("Größe 音🎵"), QByteArray("Größe 音🎵"));
}

void TestNativeName::files_ofAnyName_areFoundAndRead_data()
{
    nameRows();
}

void TestNativeName::files_ofAnyName_areFoundAndRead()
{
    QFETCH(QByteArray, name);
    Folder folder;
    const QByteArray inside = folder.path().toUtf8() + "/" + name;
    QCOMPARE(::mkdir(inside.constData(), 0777), 0);
    QVERIFY(put(inside + "/" + name, "content"));
    const QString text = zib::nativeText(inside);
    QVERIFY(zib::isFolder(text));
    QVERIFY(!zib::isFile(text));
    QCOMPARE(zib::folderEntries(text), QStringList{zib::nativeText(name)});
    const QString path = text + "/" + zib::nativeText(name);
    QVERIFY(zib::isFile(path));
    QVERIFY(zib::pathExists(path));
    QCOMPARE(zib::fileSize(path), 7);
    QFile file;
    QVERIFY(zib::openForReading(file, path));
    QCOMPARE(file.readAll(), QByteArray("content"));
    QVERIFY(zib::removeFile(path));
    QVERIFY(!zib::pathExists(path));
    QCOMPARE(zib::fileSize(path), -1);
    QVERIFY(!zib::openForReading(file, path));
}

void TestNativeName::name_withAReplacementCharacter_isTheOneEntryThatReadsSo()
{
    Folder folder;
    const QByteArray name = folder.path().toUtf8() + "/M\xFCll.wav";
    QVERIFY(put(name, "x"));
    const QString read = folder.path() + "/M" + QChar(QChar::ReplacementCharacter) + "ll.wav";
    QCOMPARE(zib::nativeName(read), name);
    QVERIFY(zib::isFile(read));
}

void TestNativeName::name_withAReplacementCharacter_ofTwoAlike_isNeither()
{
    Folder folder;
    QVERIFY(put(folder.path().toUtf8() + "/M\xFCll.wav", "x"));
    QVERIFY(put(folder.path().toUtf8() + "/M\xE4ll.wav", "y"));
    const QString read = folder.path() + "/M" + QChar(QChar::ReplacementCharacter) + "ll.wav";
    QVERIFY(!zib::pathExists(read)); // Better no file than another one's sound.
}

void TestNativeName::name_thatTrulyHoldsSuchALetter_isFound()
{
    Folder folder;
    const QByteArray name = folder.path().toUtf8() + "/x\xEE\xBF\xBCy";
    QVERIFY(put(name, "x"));
    QVERIFY(zib::isFile(QString::fromUtf8(name))); // As the toolkit's own classes give it.
    QVERIFY(zib::isFile(zib::nativeText(name)));
}

void TestNativeName::url_ofABrokenName_keepsItsBytes()
{
    const auto bytesOf = [](const char* url) {
        return zib::nativeBytes(zib::pathOfUrl(QUrl::fromEncoded(url)));
    };
    QCOMPARE(bytesOf("file:///music/M%FCll%20%231.wav"), QByteArray("/music/M\xFCll #1.wav"));
    QCOMPARE(bytesOf("file:///a%25b%0Ac%3F/%C3%A4%20"), QByteArray("/a%b\nc?/ä "));
    QCOMPARE(bytesOf("file:///music/\xE9\x9F\xB3.wav"), QByteArray("/music/音.wav"));
    QCOMPARE(zib::pathOfUrl(QUrl::fromLocalFile("/a%20b/ä#?.wav")), QString("/a%20b/ä#?.wav"));
    QCOMPARE(bytesOf("https://example.org/a"), QByteArray());
}

void TestNativeName::folders_withEveryParent_areMade()
{
    Folder folder;
    const QString path = folder.path() + "/a \n/" + zib::nativeText("\xFF") + "/c//";
    QVERIFY(zib::makeFolders(path));
    QVERIFY(zib::isFolder(folder.path() + "/a \n/" + zib::nativeText("\xFF") + "/c"));
    QVERIFY(zib::makeFolders(path));
    QVERIFY(put(folder.path().toUtf8() + "/file", ""));
    QVERIFY(!zib::makeFolders(folder.path() + "/file/x"));
}

void TestNativeName::executableFolder_isThatOfThisTest()
{
    QCOMPARE(zib::executableFolder(), QCoreApplication::applicationDirPath());
}

QTEST_GUILESS_MAIN(TestNativeName)
#include "tst_nativename.moc"
