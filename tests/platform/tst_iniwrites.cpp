#include "platform/IniFile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/// What writing and deleting make of a file, byte for byte.
class TestIniWrites : public QObject
{
    Q_OBJECT
private slots:
    void write_ofAKey_leavesTheRestByteForByte_data();
    void write_ofAKey_leavesTheRestByteForByte();
    void delete_ofAKeyOrSection_leavesTheRestByteForByte_data();
    void delete_ofAKeyOrSection_leavesTheRestByteForByte();
    void write_ofWhatNoLineHolds_isRefused_data();
    void write_ofWhatNoLineHolds_isRefused();
    void write_intoAWideFile_staysWide_data();
    void write_intoAWideFile_staysWide();
    void write_ofBytesThatAreNoUtf8_intoAWideFile_isRefused();
    void write_thenRead_givesTheValueBack_data();
    void write_thenRead_givesTheValueBack();
    void writeAll_withOneBadChange_changesNothing();
    void writeAll_ofManyChanges_appliesThemInOrder();
    void writeAll_always_doesWhatTheChangesDoOneByOne_data();
    void writeAll_always_doesWhatTheChangesDoOneByOne();
    void writeAll_ofTenThousandKeys_isOnePass();

private:
    QByteArray after(const QByteArray& before, const QList<zib::IniChange>& changes, bool* done = nullptr);

    QTemporaryDir m_folder;
    zib::IniFile m_ini;
};

QByteArray TestIniWrites::after(const QByteArray& before, const QList<zib::IniChange>& changes, bool* done)
{
    QFile file(m_folder.filePath("a.ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(before) != before.size())
        qFatal("Cannot write the file");
    file.close();
    const bool result = m_ini.writeAll(changes, file.fileName());
    if (done)
        *done = result;
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestIniWrites::write_ofAKey_leavesTheRestByteForByte_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char* name, const QByteArray& before, const QByteArray& value,
                        const QByteArray& expected, const QByteArray& key = "k",
                        const QByteArray& section = "s") {
        QTest::newRow(name) << before << section << key << value << expected;
    };
    row("into an empty file", "", "1", "[s]\nk=1\n");
    row("into a file with only a mark", "\xEF\xBB\xBF", "1", "\xEF\xBB\xBF[s]\nk=1\n");
    row("replace", "[s]\nk=0\nl=2\n", "1", "[s]\nk=1\nl=2\n");
    row("replace by a longer one", "[s]\nk=0\nl=2\n", "1000", "[s]\nk=1000\nl=2\n");
    row("replace by an empty one", "[s]\nk=0\nl=2\n", "", "[s]\nk=\nl=2\n");
    row("replace an empty one", "[s]\nk=\nl=2\n", "1", "[s]\nk=1\nl=2\n");
    row("replace a blank one", "[s]\nk=  \nl=2\n", "1", "[s]\nk=1\nl=2\n");
    row("replace by the same", "[s]\nk = 1 \n", "1", "[s]\nk = 1\n");
    row("file's own case stays", "[S]\nKey=0\n", "1", "[S]\nKey=1\n", "KEY");
    row("blanks round the equals sign stay", "[s]\nk  =  0\n", "1", "[s]\nk  =  1\n");
    row("indent stays", "[s]\n   k=0\n", "1", "[s]\n   k=1\n");
    row("blanks behind the value go", "[s]\nk=0  \nl=1 \n", "1", "[s]\nk=1\nl=1 \n");
    row("quoted value goes with its quotes", "[s]\nk=\"0\"\n", "1", "[s]\nk=1\n");
    row("quotes are written as given", "[s]\nk=0\n", "\" 1 \"", "[s]\nk=\" 1 \"\n");
    row("blanks round the value are no part of it", "[s]\nk=0\n", " 1\t", "[s]\nk=1\n");
    row("equals sign in the value", "[s]\n", "a=b", "[s]\nk=a=b\n");
    row("semicolon in the value", "[s]\n", ";a", "[s]\nk=;a\n");
    row("bracket in the value", "[s]\n", "[t]", "[s]\nk=[t]\n");
    row("blanks round the given names", "[s]\nk=0\n", "1", "[s]\nk=1\n", " k ", "\ts ");
    row("blanks round new names", "", "1", "[s]\nk=1\n", " k ", "\ts ");
    row("only the first of two keys", "[s]\nk=0\nk=9\n", "1", "[s]\nk=1\nk=9\n");
    row("only the first of two sections", "[s]\nk=0\n[s]\nk=9\n", "1", "[s]\nk=1\n[s]\nk=9\n");
    row("new key in the first of two sections", "[s]\nl=0\n[s]\nk=9\n", "1", "[s]\nl=0\nk=1\n[s]\nk=9\n");
    row("not in another section", "[t]\nk=0\n[s]\nk=0\n", "1", "[t]\nk=0\n[s]\nk=1\n");
    row("new key at the section's end", "[s]\na=1\n[t]\nb=2\n", "1", "[s]\na=1\nk=1\n[t]\nb=2\n");
    row("new key before the blank lines", "[s]\na=1\n\n\n[t]\nb=2\n", "1", "[s]\na=1\nk=1\n\n\n[t]\nb=2\n");
    row("new key before the next section's comment", "[s]\na=1\n\n; b\n[t]\n", "1",
        "[s]\na=1\nk=1\n\n; b\n[t]\n");
    row("new key behind comments between keys", "[s]\n; a\na=1\n; b\nb=1\n", "1",
        "[s]\n; a\na=1\n; b\nb=1\nk=1\n");
    row("new key behind unknown lines", "[s]\nwhat\n[t]\n", "1", "[s]\nwhat\nk=1\n[t]\n");
    row("new key in an empty section", "[s]\n\n[t]\nb=1\n", "1", "[s]\nk=1\n\n[t]\nb=1\n");
    row("new key in the last section", "[t]\nb=1\n[s]\na=1\n", "1", "[t]\nb=1\n[s]\na=1\nk=1\n");
    row("new key behind an open line", "[s]\na=1", "1", "[s]\na=1\nk=1\n");
    row("new key behind an open header", "[s]", "1", "[s]\nk=1\n");
    row("replace in an open line", "[s]\nk=0", "1", "[s]\nk=1");
    row("new section at the end", "[t]\nb=1\n", "1", "[t]\nb=1\n[s]\nk=1\n");
    row("new section behind an open line", "[t]\nb=1", "1", "[t]\nb=1\n[s]\nk=1\n");
    row("new section behind blank lines", "[t]\nb=1\n\n", "1", "[t]\nb=1\n\n[s]\nk=1\n");
    row("new section behind a comment", "; mine\n", "1", "; mine\n[s]\nk=1\n");
    row("commented key is no key", "[s]\n;k=0\n", "1", "[s]\nk=1\n;k=0\n");
    row("commented section is no section", ";[s]\n", "1", ";[s]\n[s]\nk=1\n");
    row("line without equals sign is no key", "[s]\nk\n", "1", "[s]\nk\nk=1\n");
    row("open bracket is no section", "[s\nk=0\n", "1", "[s\nk=0\n[s]\nk=1\n");
    row("keys before any section stay", "k=0\n", "1", "k=0\n[s]\nk=1\n");
    row("cr lf", "[t]\r\nb=1\r\n", "1", "[t]\r\nb=1\r\n[s]\r\nk=1\r\n");
    row("cr lf, replace", "[s]\r\nk=0\r\nb=1\r\n", "1", "[s]\r\nk=1\r\nb=1\r\n");
    row("cr lf, open line", "[s]\r\na=1", "1", "[s]\r\na=1\r\nk=1\r\n");
    row("cr", "[s]\ra=1\r[t]\r", "1", "[s]\ra=1\rk=1\r[t]\r");
    row("mixed line ends take the first kind", "[s]\r\na=1\nb=2\r", "1", "[s]\r\na=1\nb=2\rk=1\r\n");
    row("mark stays", "\xEF\xBB\xBF[s]\nk=0\n", "1", "\xEF\xBB\xBF[s]\nk=1\n");
    row("latin-1 stays",
        "; Gr\xF6\xDF"
        "e\n[s]\nk=\xE4\nl=\xF6\n",
        "1",
        "; Gr\xF6\xDF"
        "e\n[s]\nk=1\nl=\xF6\n");
    row("utf-8 value", "[s]\nk=0\n", "Größe 音🎵", "[s]\nk=Größe 音🎵\n");
    row("utf-8 names without case", "[MÜLL]\nÄ=0\n", "1", "[MÜLL]\nÄ=1\n", "ä", "müll");
    row("bytes that are no utf-8", "[s]\nk=0\n", "\xFF\xFE", "[s]\nk=\xFF\xFE\n");
    row("nul elsewhere stays", QByteArray("[s]\na=\0\n", 8), "1", QByteArray("[s]\na=\0\nk=1\n", 12));
    row("control letters stay", "[s]\na=\x01\x1A\nk=0\n", "1", "[s]\na=\x01\x1A\nk=1\n");
    row("100000 bytes", "[s]\nk=0\nl=1\n", QByteArray(100000, 'x'),
        "[s]\nk=" + QByteArray(100000, 'x') + "\nl=1\n");
}

void TestIniWrites::write_ofAKey_leavesTheRestByteForByte()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    bool done = false;
    QTEST(after(before, {{section, key, value}}, &done), "expected");
    QVERIFY(done);
}

void TestIniWrites::delete_ofAKeyOrSection_leavesTheRestByteForByte_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<bool>("wholeSection");
    QTest::addColumn<QByteArray>("expected");
    const auto key = [](const char* name, const QByteArray& before, const QByteArray& expected) {
        QTest::newRow(qPrintable(QString("key: %1").arg(name)))
            << before << QByteArray("s") << false << expected;
    };
    const auto section = [](const char* name, const QByteArray& before, const QByteArray& expected) {
        QTest::newRow(qPrintable(QString("section: %1").arg(name)))
            << before << QByteArray("s") << true << expected;
    };
    key("plain", "[s]\nk=1\nl=2\n", "[s]\nl=2\n");
    key("any case", "[S]\nK=1\nl=2\n", "[S]\nl=2\n");
    key("last one leaves the section", "[s]\nk=1\n", "[s]\n");
    key("missing", "[s]\nl=2\n", "[s]\nl=2\n");
    key("missing section", "[t]\nk=1\n", "[t]\nk=1\n");
    key("only in its section", "[t]\nk=1\n[s]\nk=1\n[u]\nk=1\n", "[t]\nk=1\n[s]\n[u]\nk=1\n");
    key("lines before any section stay", "k=0\n[s]\nk=1\n", "k=0\n[s]\n");
    key("duplicates go too", "[s]\nk=1\nl=2\nK=3\n", "[s]\nl=2\n");
    key("in every section of the name", "[s]\nk=1\n[t]\n[S]\nk=2\n", "[s]\n[t]\n[S]\n");
    key("comments stay", "[s]\n; about k\nk=1 ; x\n", "[s]\n; about k\n");
    key("commented one stays", "[s]\n;k=1\n", "[s]\n;k=1\n");
    key("line without equals sign stays", "[s]\nk\n", "[s]\nk\n");
    key("open line", "[s]\nl=2\nk=1", "[s]\nl=2\n");
    key("cr lf", "[s]\r\nk=1\r\nl=2\r\n", "[s]\r\nl=2\r\n");
    key("empty file", "", "");
    section("plain", "[s]\nk=1\n[t]\nk=2\n", "[t]\nk=2\n");
    section("last", "[t]\nk=2\n[s]\nk=1\n", "[t]\nk=2\n");
    section("only", "[s]\nk=1", "");
    section("any case", "[S]\nk=1\n", "");
    section("missing", "[t]\nk=2\n", "[t]\nk=2\n");
    section("all of the name", "[s]\nk=1\n[t]\nk=2\n[s]\nk=3\n", "[t]\nk=2\n");
    section("unknown lines and comments go", "[s]\nwhat\n; c\nk=1\n\n[t]\n", "[t]\n");
    section("comment above the next header stays", "[s]\nk=1\n\n; about t\n; more\n[t]\n",
            "; about t\n; more\n[t]\n");
    section("lines before any section stay", "; mine\nk=0\n[s]\nk=1\n", "; mine\nk=0\n");
    section("mark stays", "\xEF\xBB\xBF[s]\nk=1\n", "\xEF\xBB\xBF");
}

void TestIniWrites::delete_ofAKeyOrSection_leavesTheRestByteForByte()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, section);
    QFETCH(bool, wholeSection);
    zib::IniChange change{section, {}, {}};
    if (!wholeSection)
        change.key = "k";
    bool done = false;
    QTEST(after(before, {change}, &done), "expected");
    QVERIFY(done);
    QCOMPARE(m_ini.GetPrivateProfileStringA("s", "k", "DEF", 100, m_folder.filePath("a.ini")),
             QByteArray("DEF"));
}

void TestIniWrites::write_ofWhatNoLineHolds_isRefused_data()
{
    QTest::addColumn<QByteArray>("section");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("value");
    const auto row = [](const char* name, const QByteArray& section, const QByteArray& key,
                        const QByteArray& value) { QTest::newRow(name) << section << key << value; };
    row("line feed in the value", "s", "k", "a\n[t]");
    row("carriage return in the value", "s", "k", "a\rb");
    row("nul in the value", "s", "k", QByteArray("a\0b", 3));
    row("line feed in the key", "s", "k\nl", "1");
    row("equals sign in the key", "s", "k=l", "1");
    row("key that reads as a comment", "s", ";k", "1");
    row("key that reads as a section", "s", "[k", "1");
    row("key that reads as a mark", "s", "\xEF\xBB\xBFk", "1");
    row("empty key", "s", "", "1");
    row("blank key", "s", " \t", "1");
    row("line feed in the section", "s\nt", "k", "1");
    row("bracket in the section", "s]t", "k", "1");
    row("empty section", "", "k", "1");
    row("blank section", "  ", "k", "1");
}

void TestIniWrites::write_ofWhatNoLineHolds_isRefused()
{
    QFETCH(QByteArray, section);
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, value);
    bool done = true;
    QCOMPARE(after("[s]\nk=0\n", {{section, key, value}}, &done), QByteArray("[s]\nk=0\n"));
    QVERIFY(!done);
}

void TestIniWrites::write_intoAWideFile_staysWide_data()
{
    QTest::addColumn<bool>("bigEndian");
    QTest::newRow("little endian") << false;
    QTest::newRow("big endian") << true;
}

void TestIniWrites::write_intoAWideFile_staysWide()
{
    QFETCH(bool, bigEndian);
    const auto wide = [bigEndian](const QString& text) {
        QByteArray bytes(bigEndian ? "\xFE\xFF" : "\xFF\xFE", 2);
        for (const QChar letter : text) {
            const char low = static_cast<char>(letter.unicode() & 0xFF);
            const char high = static_cast<char>(letter.unicode() >> 8);
            bytes += bigEndian ? high : low;
            bytes += bigEndian ? low : high;
        }
        return bytes;
    };
    const QString half(QChar(0xD83C)); // Half a pair, which no conversion would bring back.
    const QString before = "; " + half + "Größe\r\n[S]\r\nk = 0 \r\n\r\n[T]\r\n";
    QCOMPARE(after(wide(before), {{"s", "K", "音🎵"}}),
             wide("; " + half + "Größe\r\n[S]\r\nk = 音🎵\r\n\r\n[T]\r\n"));
    QCOMPARE(after(wide(before), {{"s", "l", "1"}, {"ü", "m", "2"}}),
             wide("; " + half + "Größe\r\n[S]\r\nk = 0 \r\nl=1\r\n\r\n[T]\r\n[ü]\r\nm=2\r\n"));
    QCOMPARE(after(wide(before), {{"s", "k", {}}}), wide("; " + half + "Größe\r\n[S]\r\n\r\n[T]\r\n"));
    QCOMPARE(after(wide(before), {{"s", {}, {}}}), wide("; " + half + "Größe\r\n[T]\r\n"));
    QCOMPARE(after(wide("[s]\r\na=1") + "x", {{"s", "k", "1"}}), wide("[s]\r\na=1\r\nk=1\r\n") + "x");
    QCOMPARE(after(wide(""), {{"s", "k", "1"}}), wide("[s]\nk=1\n"));
}

void TestIniWrites::write_ofBytesThatAreNoUtf8_intoAWideFile_isRefused()
{
    const QByteArray before("\xFF\xFE[\0s\0]\0\n\0k\0=\0", 14);
    for (const char* key : {"k", "l"}) {
        bool done = true;
        QCOMPARE(after(before, {{"s", key, "\xFF\xFE"}}, &done), before);
        QVERIFY(!done);
    }
}

void TestIniWrites::write_thenRead_givesTheValueBack_data()
{
    QTest::addColumn<QByteArray>("value");
    const QByteArrayList values{"a",
                                "a b",
                                "a=b",
                                "[s]",
                                ";",
                                "\"",
                                "'",
                                "a\"",
                                "\"a'",
                                "=",
                                "Größe",
                                "音🎵",
                                "\xFF\xFE",
                                "C:\\a\\",
                                "%d",
                                "\x01\x02",
                                "a\tb",
                                "\\n",
                                QByteArray(5000, 'y')};
    for (const QByteArray& value : values)
        QTest::newRow(value.left(20).toPercentEncoding().constData()) << value;
}

void TestIniWrites::write_thenRead_givesTheValueBack()
{
    QFETCH(QByteArray, value);
    const QString path = m_folder.filePath("round.ini");
    QFile::remove(path);
    QVERIFY(m_ini.WritePrivateProfileStringA("s", QByteArray("k"), value, path));
    QCOMPARE(m_ini.GetPrivateProfileStringA("S", "K", "DEF", 10000, path), value);
    QVERIFY(m_ini.WritePrivateProfileStringA("s", QByteArray("k"), std::nullopt, path));
    QCOMPARE(m_ini.GetPrivateProfileStringA("S", "K", "DEF", 10000, path), QByteArray("DEF"));
}

void TestIniWrites::writeAll_withOneBadChange_changesNothing()
{
    bool done = true;
    QCOMPARE(after("[s]\nk=0\n", {{"s", "k", "1"}, {"s", "l", "a\nb"}, {"s", "m", "1"}}, &done),
             QByteArray("[s]\nk=0\n"));
    QVERIFY(!done);
}

void TestIniWrites::writeAll_ofManyChanges_appliesThemInOrder()
{
    QCOMPARE(after("[s]\nk=0\n",
                   {{"s", "k", "1"}, {"s", "k", "2"}, {"t", "a", "1"}, {"s", {}, {}}, {"t", "b", "2"}}),
             QByteArray("[t]\na=1\nb=2\n"));
    QCOMPARE(after("[s]\nk=0\n", {}), QByteArray("[s]\nk=0\n"));
}

void TestIniWrites::writeAll_always_doesWhatTheChangesDoOneByOne_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("other section") << QByteArray("[t]\na=1");
    QTest::newRow("some keys") << QByteArray("[s]\r\n B = old \r\nz=26\r\n; end\r\n\r\n[t]\r\nb=2\r\n");
    QTest::newRow("keys twice") << QByteArray("[s]\nA=\na=2\nb=\"x\"\n[S]\nc=3");
    QTest::newRow("open last line") << QByteArray("; top\n[S]\nc=1\nnonsense\nd");
    QTest::newRow("wide") << QByteArray("\xFF\xFE[\0s\0]\0\n\0b\0=\0x\0", 16);
}

void TestIniWrites::writeAll_always_doesWhatTheChangesDoOneByOne()
{
    QFETCH(QByteArray, before);
    const QList<zib::IniChange> changes{
        {"s", "a", "1"},      {"s", "b", ""},  {"s", "c", " long value "},
        {"s", "A", "again"},  {"s", "D", "4"}, {"s", "\u00C4", "5"},
        {"s", "\u00E4", "6"}, {"s", "b", {}},  {"s", "e", "\""},
        {"S", "f", "\u20AC"}, {"t", "a", "7"}, {"t", "b", "8"},
    };
    QByteArray oneByOne = before;
    for (const zib::IniChange& change : changes)
        oneByOne = after(oneByOne, {change});
    QCOMPARE(after(before, changes), oneByOne);
}

void TestIniWrites::writeAll_ofTenThousandKeys_isOnePass()
{
    QList<zib::IniChange> changes;
    QByteArray expected = "[Files]\n";
    for (int i = 1; i <= 10'000; ++i) {
        const QByteArray number = QByteArray::number(i);
        changes.append({"Files", "File" + number, "/music/" + number + ".wav"});
        expected += "File" + number + "=/music/" + number + ".wav\n";
    }
    const QByteArray written = after({}, changes);
    QCOMPARE(written, expected);
    QCOMPARE(after(written, changes), expected);
}

QTEST_APPLESS_MAIN(TestIniWrites)
#include "tst_iniwrites.moc"
