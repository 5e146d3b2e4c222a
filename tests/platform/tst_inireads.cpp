#include "platform/IniFile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// What reading a value gives, case by case: one file, one question, one answer.
class TestIniReads : public QObject
{
    Q_OBJECT
private slots:
    void read_ofAFile_givesTheDocumentedValue_data();
    void read_ofAFile_givesTheDocumentedValue();
    void read_intoABuffer_cutsToItsBytes_data();
    void read_intoABuffer_cutsToItsBytes();
    void read_ofAWideFile_givesUtf8_data();
    void read_ofAWideFile_givesUtf8();
    void read_never_changesTheFile();
    void readAll_ofManyKeys_givesEachItsOwnAnswer();
    void readAll_ofABigFile_costsAsMuchAsOneReading();

private:
    QByteArray ask(const QByteArray& content, const QByteArray& section, const QByteArray& key,
                   const QByteArray& fallback = "DEF", int size = 2048);

    QTemporaryDir m_folder;
    zib::IniFile m_ini;
};

namespace {

void row(const char* name, const QByteArray& content, const QByteArray& section, const QByteArray& key,
         const QByteArray& expected)
{
    QTest::newRow(name) << content << section << key << expected;
}

void namesRows()
{
    const QByteArray plain = "[Wave]\nBits=16\nRate=44100\n[View]\nBits=8\n";
    row("plain", plain, "Wave", "Bits", "16");
    row("second key", plain, "Wave", "Rate", "44100");
    row("second section", plain, "View", "Bits", "8");
    row("section in capitals", plain, "WAVE", "Bits", "16");
    row("section in small letters", plain, "wave", "Bits", "16");
    row("key in capitals", plain, "Wave", "BITS", "16");
    row("key in small letters", plain, "Wave", "bits", "16");
    row("key of another section", plain, "View", "Rate", "DEF");
    row("missing key", plain, "Wave", "Channels", "DEF");
    row("missing section", plain, "Misc", "Bits", "DEF");
    row("beginning of a section name", plain, "Wav", "Bits", "DEF");
    row("longer than the section name", plain, "Waves", "Bits", "DEF");
    row("beginning of a key", plain, "Wave", "Bit", "DEF");
    row("longer than the key", plain, "Wave", "Bits2", "DEF");
    row("value asked as key", plain, "Wave", "16", "DEF");
    row("section asked as key", plain, "Wave", "[View]", "DEF");
    row("empty section", plain, "", "Bits", "DEF");
    row("empty key", plain, "Wave", "", "DEF");
    row("blank section", plain, "  ", "Bits", "DEF");
    row("blank key", plain, "Wave", "  ", "DEF");
    row("blanks round the asked section", plain, " Wave ", "Bits", "16");
    row("blanks round the asked key", plain, "Wave", " Bits\t", "16");
    row("blanks in names", "[My Section]\nMy Key=1\n", "My Section", "My Key", "1");
    row("other blanks in names", "[My Section]\nMy Key=1\n", "MySection", "My Key", "DEF");
    row("non-ascii section without case", "[Größe]\nk=1\n", "GRÖSSE", "k", "DEF");
    row("non-ascii section in capitals", "[Müll]\nk=1\n", "MÜLL", "k", "1");
    row("non-ascii key in capitals", "[s]\näöü=1\n", "s", "ÄÖÜ", "1");
    row("greek key in capitals", "[s]\nαβγ=1\n", "s", "ΑΒΓ", "1");
    row("umlaut is not its letter", "[s]\nä=1\n", "s", "a", "DEF");
    row("bytes that are no utf-8 as key", "[s]\n\xE4=1\n", "s", "\xE4", "1");
    row("other bytes that are no utf-8", "[s]\n\xE4=1\n", "s", "\xF6", "DEF");
    row("no utf-8, ascii without case", "[s]\nK\xE4=1\n", "s", "k\xE4", "1");
    row("digits as names", "[1]\n2=3\n", "1", "2", "3");
    row("punctuation in names", "[a.b/c]\nd-e!f=1\n", "A.B/C", "D-E!F", "1");
}

void layoutRows()
{
    row("empty file", "", "s", "k", "DEF");
    row("only line ends", "\n\n\r\n\r", "s", "k", "DEF");
    row("only a section", "[s]", "s", "k", "DEF");
    row("no section before the key", "k=1\n[s]\n", "s", "k", "DEF");
    row("key before any section", "k=1\n", "", "k", "DEF");
    row("no final line end", "[s]\nk=1", "s", "k", "1");
    row("no final line end, empty value", "[s]\nk=", "s", "k", "");
    row("cr lf", "[s]\r\nk=1\r\nl=2\r\n", "s", "l", "2");
    row("cr", "[s]\rk=1\rl=2\r", "s", "l", "2");
    row("mixed line ends", "[s]\r\nk=1\nl=2\rm=3\r\n", "s", "m", "3");
    row("cr cr lf is an empty line", "[s]\r\r\nk=1\r\r\nl=2", "s", "l", "2");
    row("lf cr is an empty line", "[s]\n\rk=1\n\r", "s", "k", "1");
    row("value without its cr", "[s]\r\nk=a b\r\n", "s", "k", "a b");
    row("blank lines between", "\n\n[s]\n\n\nk=1\n\n", "s", "k", "1");
    row("blanks in blank lines", "  \n\t\n[s]\n \t \nk=1\n", "s", "k", "1");
    row("indented section", "   [s]\nk=1\n", "s", "k", "1");
    row("indented by tab", "\t[s]\n\tk=1\n", "s", "k", "1");
    row("indented key", "[s]\n    k=1\n", "s", "k", "1");
    row("blanks behind the section", "[s]   \nk=1\n", "s", "k", "1");
    row("text behind the section", "[s] and more\nk=1\n", "s", "k", "1");
    row("comment behind the section", "[s] ; mine\nk=1\n", "s", "k", "1");
    row("blanks in the brackets", "[ s ]\nk=1\n", "s", "k", "1");
    row("first bracket ends the name", "[s]t]\nk=1\n", "s", "k", "1");
    row("second opening bracket is in the name", "[[s]\nk=1\n", "[s", "k", "1");
    row("no closing bracket is no section", "[s]\n[t\nk=1\n", "s", "k", "1");
    row("no closing bracket names nothing", "[t\nk=1\n", "t", "k", "DEF");
    row("empty brackets end a section", "[s]\n[]\nk=1\n", "s", "k", "DEF");
    row("section without keys", "[s]\n[t]\nk=1\n", "s", "k", "DEF");
    row("line without equals sign", "[s]\nk\nl=1\n", "s", "k", "DEF");
    row("line without equals sign is passed over", "[s]\nk\nk=1\n", "s", "k", "1");
    row("line that begins with the equals sign", "[s]\n=1\nk=2\n", "s", "k", "2");
    row("mark at the beginning", "\xEF\xBB\xBF[s]\nk=1\n", "s", "k", "1");
    row("mark and a comment", "\xEF\xBB\xBF;c\n[s]\nk=1\n", "s", "k", "1");
    row("only a mark", "\xEF\xBB\xBF", "s", "k", "DEF");
    row("mark in the middle is a letter", "[s]\n\xEF\xBB\xBFk=1\n", "s", "k", "DEF");
    row("nul is a letter", QByteArray("[s]\nk=a\0b\n", 10), "s", "k", QByteArray("a\0b", 3));
    row("very long line before", "[s]\nx=" + QByteArray(100000, 'y') + "\nk=1\n", "s", "k", "1");
}

void commentRows()
{
    row("comment line", "[s]\n;k=0\nk=1\n", "s", "k", "1");
    row("only commented", "[s]\n;k=0\n", "s", "k", "DEF");
    row("indented comment", "[s]\n  ;k=0\n", "s", "k", "DEF");
    row("comment is no key", "[s]\n;k=0\n", "s", ";k", "DEF");
    row("commented section", ";[s]\nk=1\n", "s", "k", "DEF");
    row("commented section does not end one", "[s]\n;[t]\nk=1\n", "s", "k", "1");
    row("comment before everything", "; mine\n[s]\nk=1\n", "s", "k", "1");
    row("semicolon in a value", "[s]\nk=a;b\n", "s", "k", "a;b");
    row("semicolon behind blanks", "[s]\nk=a ; b\n", "s", "k", "a ; b");
    row("semicolon as value", "[s]\nk=;\n", "s", "k", ";");
    row("semicolon in a key", "[s]\na;b=1\n", "s", "a;b", "1");
    row("number sign is no comment", "[s]\n#k=1\n", "s", "#k", "1");
    row("number sign in a value", "[s]\nk=a # b\n", "s", "k", "a # b");
    row("slashes are no comment", "[s]\n//k=1\n", "s", "//k", "1");
}

void duplicateRows()
{
    row("first key counts", "[s]\nk=1\nk=2\n", "s", "k", "1");
    row("first key counts in any case", "[s]\nK=1\nk=2\n", "s", "k", "1");
    row("first key counts when empty", "[s]\nk=\nk=2\n", "s", "k", "");
    row("first section counts", "[s]\nk=1\n[t]\n[s]\nk=2\n", "s", "k", "1");
    row("first section counts in any case", "[S]\nk=1\n[s]\nk=2\n", "s", "k", "1");
    row("second section of the name is not looked at", "[s]\nl=1\n[t]\n[s]\nk=2\n", "s", "k", "DEF");
    row("same key in two sections", "[t]\nk=1\n[s]\nk=2\n", "s", "k", "2");
}

void valueRows()
{
    const auto value = [](const char* name, const QByteArray& written, const QByteArray& read) {
        row(name, "[s]\nk=" + written + "\n", "s", "k", read);
    };
    value("empty value", "", "");
    value("blank value", "   ", "");
    value("tabs only", "\t\t", "");
    value("blanks before", "   a", "a");
    value("blanks behind", "a   ", "a");
    value("tabs round", "\ta\t", "a");
    value("blanks inside", "a  b", "a  b");
    value("equals sign inside", "a=b", "a=b");
    value("only an equals sign", "=", "=");
    value("equals sign at the end", "a=", "a=");
    value("brackets", "[t]", "[t]");
    value("double quotes", "\"a\"", "a");
    value("single quotes", "'a'", "a");
    value("blanks in quotes stay", "\"  a  \"", "  a  ");
    value("blanks in single quotes stay", "'  a  '", "  a  ");
    value("blanks round quotes", "  \"a\"  ", "a");
    value("quotes round nothing", "\"\"", "");
    value("single quotes round nothing", "''", "");
    value("only a blank in quotes", "\" \"", " ");
    value("one quote", "\"", "\"");
    value("one single quote", "'", "'");
    value("quote only before", "\"a", "\"a");
    value("quote only behind", "a\"", "a\"");
    value("unlike quotes", "\"a'", "\"a'");
    value("unlike quotes, turned", "'a\"", "'a\"");
    value("quotes in quotes", "\"\"a\"\"", "\"a\"");
    value("single in double", "\"'a'\"", "'a'");
    value("double in single", "'\"a\"'", "\"a\"");
    value("quotes inside", "a\"b\"c", "a\"b\"c");
    value("two quoted words", "\"a\" \"b\"", "a\" \"b");
    value("semicolon in quotes", "\"a;b\"", "a;b");
    value("backslashes", "C:\\Music\\", "C:\\Music\\");
    value("backslash n stays", "a\\nb", "a\\nb");
    value("percent signs", "%PATH%", "%PATH%");
    value("dollar", "$HOME", "$HOME");
    value("utf-8", "Größe 音", "Größe 音");
    value("no-break space stays",
          "\xC2\xA0"
          "a\xC2\xA0",
          "\xC2\xA0"
          "a\xC2\xA0");
    value("latin-1 bytes stay",
          "Gr\xF6\xDF"
          "e",
          "Gr\xF6\xDF"
          "e");
    value("control letters stay",
          "a\x01\x1A\x7F"
          "b",
          "a\x01\x1A\x7F"
          "b");
    value("vertical tab stays", "\va\f", "\va\f");
    row("blanks before the equals sign", "[s]\nk   =1\n", "s", "k", "1");
    row("tab before the equals sign", "[s]\nk\t=1\n", "s", "k", "1");
    row("blanks on both sides", "[s]\nk   =   1   \n", "s", "k", "1");
    row("quoted key keeps its quotes", "[s]\n\"k\"=1\n", "s", "k", "DEF");
    row("quoted key by its quotes", "[s]\n\"k\"=1\n", "s", "\"k\"", "1");
}

} // namespace

QByteArray TestIniReads::ask(const QByteArray& content, const QByteArray& section, const QByteArray& key,
                             const QByteArray& fallback, int size)
{
    QFile file(m_folder.filePath("a.ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write the file");
    file.close();
    return m_ini.GetPrivateProfileStringA(section, key, fallback, size, file.fileName());
}

void TestIniReads::read_ofAFile_givesTheDocumentedValue_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("expected");
    namesRows();
    layoutRows();
    commentRows();
    duplicateRows();
    valueRows();
}

void TestIniReads::read_ofAFile_givesTheDocumentedValue()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, key);
    QTEST(ask(content, section, key), "expected");
}

void TestIniReads::read_intoABuffer_cutsToItsBytes_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("fallback");
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("expected");
    const auto cut = [](const char* name, const QByteArray& value, int size, const QByteArray& expected) {
        QTest::newRow(name) << "k=" + value + "\n" << QByteArray("DEF") << size << expected;
    };
    const auto miss = [](const char* name, const QByteArray& fallback, int size, const QByteArray& expected) {
        QTest::newRow(name) << QByteArray("l=1\n") << fallback << size << expected;
    };
    cut("fits with its nul", "abc", 4, "abc");
    cut("one byte short", "abc", 3, "ab");
    cut("two bytes", "abc", 2, "a");
    cut("one byte", "abc", 1, "");
    cut("no byte", "abc", 0, "");
    cut("negative", "abc", -5, "");
    cut("2047 bytes in 2048", QByteArray(2047, 'x'), 2048, QByteArray(2047, 'x'));
    cut("2048 bytes in 2048", QByteArray(2048, 'x'), 2048, QByteArray(2047, 'x'));
    cut("100000 bytes in 2048", QByteArray(100000, 'x'), 2048, QByteArray(2047, 'x'));
    cut("100000 bytes in 100001", QByteArray(100000, 'x'), 100001, QByteArray(100000, 'x'));
    cut("two-byte letter does not fit", "aö", 3, "a");
    cut("two-byte letter fits", "aö", 4, "aö");
    cut("three-byte letter, two bytes of it", "a音", 4, "a");
    cut("three-byte letter, one byte of it", "a音", 3, "a");
    cut("four-byte letter, three bytes of it", "a🎵", 5, "a");
    cut("four-byte letter fits", "a🎵", 6, "a🎵");
    cut("bytes that are no utf-8", "\x80\x80\x80\x80\x80\x80", 4, "\x80\x80\x80");
    cut("quotes are dropped before cutting", "\"abc\"", 4, "abc");
    miss("default fits", "abc", 4, "abc");
    miss("default is cut", "abc", 3, "ab");
    miss("default empty", "", 100, "");
    miss("default loses its last blanks", "abc  ", 100, "abc");
    miss("default keeps its first blanks", "  abc", 100, "  abc");
    miss("default of blanks", "   ", 100, "");
    miss("default keeps its quotes", "\"a\"", 100, "\"a\"");
    miss("default letter does not fit", "aö", 3, "a");
}

void TestIniReads::read_intoABuffer_cutsToItsBytes()
{
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, fallback);
    QFETCH(int, size);
    QTEST(ask("[s]\n" + value, "s", "k", fallback, size), "expected");
}

void TestIniReads::read_ofAWideFile_givesUtf8_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("expected");
    const QString text = "; Größe\r\n[Sé]\r\nkö = \"音🎵\" \r\nl=2\r\n";
    QByteArray little(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    QByteArray big = little;
    for (qsizetype i = 0; i < big.size(); i += 2)
        std::swap(big[i], big[i + 1]);
    QTest::newRow("little endian") << QByteArray("\xFF\xFE", 2) + little << QByteArray("音🎵");
    QTest::newRow("big endian") << QByteArray("\xFE\xFF", 2) + big << QByteArray("音🎵");
    QTest::newRow("an odd byte at the end") << QByteArray("\xFF\xFE", 2) + little + "x" << QByteArray("音🎵");
    QTest::newRow("half a pair") << QByteArray("\xFF\xFE[\0S\0\xE9\0]\0\n\0k\0\xF6\0=\0\x3C\xD8x\0", 22)
                                 << QByteArray("?x");
    QTest::newRow("only a mark") << QByteArray("\xFF\xFE", 2) << QByteArray("DEF");
}

void TestIniReads::read_ofAWideFile_givesUtf8()
{
    QFETCH(QByteArray, content);
    QTEST(ask(content, "SÉ", "KÖ"), "expected");
}

void TestIniReads::read_never_changesTheFile()
{
    const QByteArray content = "[s]\r\nk = 1\nbroken\xFF\r[t";
    QCOMPARE(ask(content, "s", "k"), QByteArray("1"));
    QFile file(m_folder.filePath("a.ini"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), content);
}

void TestIniReads::readAll_ofManyKeys_givesEachItsOwnAnswer()
{
    const QByteArray content =
        "k=0\n[Files]\nFile1 = a \nfile2='b'\nFILE1=c\nbroken\n;File3=d\nk\xC3\xB6=e\n\xE4=f\n"
        "File4=\n[Other]\nk=1\n[FILES]\nFile3=late\n[other]\nl=2\n[M\xC3\x9Cll]\nx=3\n";
    const QList<zib::IniQuery> queries{
        {"files", "FILE1"},
        {"Files", "File2"},
        {"FILES", "File3", "none"},
        {"Files", "K\xC3\x96", "none"},
        {"Files", "\xE4"},
        {"Files", "File4", "x"},
        {"Other", "k"},
        {"other", "L", "none"},
        {"m\xC3\xBCLL", "X"},
        {"", "k", "none"},
        {"Files", "", "none"},
        {"No", "k", "none "},
        {" Files ", "\tFile1 "},
        {"Files", "File1", {}, 1},
    };
    ask(content, "s", "k");
    const QList<QByteArray> expected{"a",    "b", "none", "e",    "f",    "",  "1",
                                     "none", "3", "none", "none", "none", "a", ""};
    QCOMPARE(m_ini.readAll(queries, m_folder.filePath("a.ini")), expected);
    QList<QByteArray> singly;
    for (const zib::IniQuery& query : queries)
        singly << ask(content, query.section, query.key, query.fallback, query.size);
    QCOMPARE(singly, expected);
    QCOMPARE(m_ini.readAll({}, m_folder.filePath("a.ini")), QList<QByteArray>());
    QCOMPARE(m_ini.readAll({{"s", "k", "DEF"}}, m_folder.filePath("missing.ini")), QList<QByteArray>{"DEF"});
}

void TestIniReads::readAll_ofABigFile_costsAsMuchAsOneReading()
{
    QByteArray content = "[Files]\n";
    while (content.size() < 2'000'000)
        content += "; a comment that fills the file\nother=1\n";
    QList<zib::IniQuery> queries;
    for (int i = 1; i <= 200; ++i) {
        queries.append({"Files", "File" + QByteArray::number(i)});
        content += "File" + QByteArray::number(i) + "=" + QByteArray::number(i) + "\n";
    }
    ask(content, "s", "k");
    QElapsedTimer time;
    time.start();
    for (int i = 0; i < 5; ++i)
        m_ini.GetPrivateProfileStringA("Files", "File200", {}, 100, m_folder.filePath("a.ini"));
    const qint64 oneUs = time.nsecsElapsed() / 5000;
    time.restart();
    const QList<QByteArray> values = m_ini.readAll(queries, m_folder.filePath("a.ini"));
    const qint64 allUs = time.nsecsElapsed() / 1000;
    qInfo("one key of 2 MB: %lld us, 200 keys: %lld us", static_cast<long long>(oneUs),
          static_cast<long long>(allUs));
    QCOMPARE(values.last(), QByteArray("200"));
    QVERIFY(allUs < 40 * oneUs); // One by one: 200 times.
}

QTEST_APPLESS_MAIN(TestIniReads)
#include "tst_inireads.moc"
