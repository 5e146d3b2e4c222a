#include "answers/Sweep.h"
#include "platform/IniFile.h"
#include "platform/IniText.h"

#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

const QByteArray kSeed = "; list\n"
                         "[View]\r\n"
                         "Grid = \"on\" \n"
                         "Color=7\n"
                         "[ b\t]\n"
                         "k='x y'\n"
                         "odd line\n"
                         "= none\n"
                         ";k=2\n"
                         "k =3\n"
                         "[view]\r"
                         "Grid=late\n"
                         "New=1";

const QList<IniName> kNames{{"View", "Grid"}, {"VIEW", "color"}, {"View", "New"}, {"b", "k"},
                            {" b ", " k "},   {"b", ""},         {"", "k"},       {"view", "odd line"}};

QString told(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes);
}

Answer valuesAnswer(const QByteArray& bytes)
{
    const IniText text(bytes);
    Answer words;
    const auto values = text.values(kNames);
    for (qsizetype i = 0; i < kNames.size(); ++i)
        if (values[i])
            words
                << QString("%1/%2: '%3'").arg(told(kNames[i].section), told(kNames[i].key), told(*values[i]));
    return words;
}

/// What the seeds of other tests are asked for.
Answer seedAnswer(const QByteArray& bytes)
{
    IniText text(bytes);
    Answer words;
    for (const IniName& name :
         QList<IniName>{{"s", "k"}, {"t", "k"}, {"s", "l"}, {"View", "Grid Back Color"}, {"s t", "k l"}})
        if (const auto value = text.value(name.section, name.key))
            words << QString("%1/%2: '%3'").arg(told(name.section), told(name.key), told(*value));
    const bool done = text.set("s", "k", "v");
    return words << QString("set: %1%2").arg(done ? "" : "refused ", told(text.bytes()));
}

/// A change and the text that is left of it.
using Change = std::pair<const char*, bool (*)(IniText&)>;

const QList<Change> kChanges{
    {"set Grid", [](IniText& text) { return text.set("view", "grid", "off"); }},
    {"empty Grid", [](IniText& text) { return text.set("View", "Grid", ""); }},
    {"add to View", [](IniText& text) { return text.set("View", "More", " a b "); }},
    {"set two, add one",
     [](IniText& text) {
         return text.setAll("b", {{"k", "new"}, {" Other ", "5"}, {"Third", "6"}});
     }},
    {"add a section", [](IniText& text) { return text.set(" c ", "k", "v"); }},
    {"remove Grid", [](IniText& text) { return text.removeKey("View", "Grid"), true; }},
    {"remove k", [](IniText& text) { return text.removeKey("b", " K "), true; }},
    {"remove View", [](IniText& text) { return text.removeSection("View"), true; }},
    {"remove b", [](IniText& text) { return text.removeSection(" b"), true; }},
    {"remove nothing", [](IniText& text) { return text.removeSection(" "), true; }},
    {"remove key of nothing", [](IniText& text) { return text.removeKey("", "k"), true; }}};

Answer changedBy(const Change& change, const QByteArray& bytes)
{
    IniText text(bytes);
    const bool done = change.second(text);
    return {QString("%1: %2%3").arg(change.first, done ? "" : "refused ", told(text.bytes()))};
}

Answer changesAnswer(const QByteArray& bytes)
{
    Answer words;
    for (const Change& change : kChanges)
        words += changedBy(change, bytes);
    return words;
}

QByteArray inUtf16(const QByteArray& text, bool bigEndian)
{
    QStringEncoder encoder(bigEndian ? QStringEncoder::Utf16BE : QStringEncoder::Utf16LE);
    return QByteArray(bigEndian ? "\xFE\xFF" : "\xFF\xFE") + QByteArray(encoder(QString::fromUtf8(text)));
}

/// One place at a time of a small text, and every change made to what is left.
const QByteArray kSmall = "[View]\r\nGrid= 1 \n;x\n\n[b]\nk=2";

} // namespace

/// What is read in INI files, and what changes leave of them, byte for byte, recorded.
class TestIniAnswers : public QObject
{
    Q_OBJECT
private slots:
    void values()
    {
        Book book("platform/answers/inivalues");
        book.chapter("The text as it is");
        book.tell("all", valuesAnswer(kSeed));
        answers::everyLength(book, "Values", kSeed, valuesAnswer);
        answers::everyLine(book, "Values", kSeed, valuesAnswer);
        answers::everyLetter(book, "Values", kSeed, valuesAnswer,
                             {" ", "\t", "=", "[", "]", ";", "\"", "'", "\n", "\r", "A"});
        for (const bool bigEndian : {false, true})
            answers::everyLength(book, bigEndian ? "16 bits, high first" : "16 bits, low first",
                                 inUtf16("[View]\nGrid=\xC3\xA4 b\r\n[b]\nk=\"2\"\n", bigEndian),
                                 valuesAnswer);
        answers::everySeed(book, "ini", seedAnswer);
        answers::everyByte(book, "Marked", "\xEF\xBB\xBF[View]\nGrid=1\n", valuesAnswer, 0, 4);
        ZIB_COMPARE_ANSWERS(book);
    }
    void changes()
    {
        Book book("platform/answers/inichanges");
        book.chapter("Changes of a long text", {});
        for (const Change& change : kChanges)
            book.tell(change.first, changedBy(change, kSeed));
        book.chapter("Changes of a text that begins without a section");
        for (const Change& change : kChanges)
            book.tell(
                change.first,
                changedBy(change, "k=0\nGrid=0\n\n[x]\nk=1\n[View]\nGrid=2\n[b]\nk=3\n[y]\nk=4\n[b]\nk=5"));
        answers::everyLength(book, "Changes", kSmall, changesAnswer);
        answers::everyLetter(book, "Changes", kSmall, changesAnswer, {";", "\n"});
        for (const bool bigEndian : {false, true}) {
            book.chapter(bigEndian ? "16 bits, high first" : "16 bits, low first");
            for (const Change& change : kChanges)
                book.tell(change.first, changedBy(change, inUtf16(kSmall, bigEndian)));
            book.tell("an odd byte behind", changedBy(kChanges[3], inUtf16(kSmall, bigEndian) + 'x'));
        }
        book.chapter("Marked");
        for (const Change& change : kChanges)
            book.tell(change.first, changedBy(change, "\xEF\xBB\xBF" + kSmall));
        ZIB_COMPARE_ANSWERS(book);
    }
    void names()
    {
        Book book("platform/answers/ininames");
        const QList<QByteArray> odd{"",
                                    " ",
                                    "a",
                                    "a]",
                                    "]a",
                                    "[a",
                                    "a[",
                                    ";a",
                                    "a;",
                                    "a=b",
                                    "=",
                                    "a\n",
                                    "a\rb",
                                    "\t a",
                                    QByteArray("a\0b", 3),
                                    "\xEF\xBB\xBF"
                                    "a",
                                    "\xC3\xA4",
                                    "\xE4",
                                    "\"a\""};
        for (const bool wide : {false, true}) {
            book.chapter(wide ? "Odd names and values, 16 bits" : "Odd names and values");
            const QByteArray begun = wide ? inUtf16("[s]\nk=1", false) : "[s]\nk=1";
            for (const QByteArray& name : odd) {
                IniText section(begun);
                IniText key(begun);
                IniText value(begun);
                const bool first = section.set(name, "k", "2");
                const bool second = key.set("s", name, "2");
                const bool third = value.set("s", "k", name);
                book.tell("'" + told(name) + "'",
                          {QString("as section: %1 %2").arg(first).arg(told(section.bytes())),
                           QString("as key: %1 %2").arg(second).arg(told(key.bytes())),
                           QString("as value: %1 %2").arg(third).arg(told(value.bytes()))});
            }
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    /// Values that are cut where a buffer ends, and lists of changes.
    void files()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("a.ini");
        const auto put = [&](const QByteArray& content) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        };
        put("[s]\nplain=abcdef\nwide=a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80z\nbroken=a\x80\x80\x80\x80\x80"
            "b\nnone=\n");
        IniFile ini;
        Book book("platform/answers/inifiles");
        for (const char* key : {"plain", "wide", "broken", "none", "missing"}) {
            book.chapter(QString("The key '%1' in so many bytes").arg(key));
            for (int size = -1; size < 16; ++size)
                book.tell(QString::number(size),
                          {told(ini.GetPrivateProfileStringA("s", key, "else \t ", size, path))});
        }
        book.chapter("Lists of changes");
        const QList<QList<IniChange>> lists{{{"s", "a", "1"}, {"s", "b", "2"}, {"t", "a", "3"}},
                                            {{"s", "A", "1"}, {"s", "a ", "2"}},
                                            {{"s", "a", "1"}, {"s", "a", std::nullopt}, {"s", "b", "2"}},
                                            {{"s", std::nullopt, std::nullopt}, {"s", "a", "1"}},
                                            {{"s", "a", "1"}, {"s", "=", "2"}},
                                            {{"s", "\xC3\xA4", "1"}, {"s", "b", "2"}, {"S", "c", "3"}},
                                            {}};
        for (qsizetype i = 0; i < lists.size(); ++i) {
            put("[s]\nk=0\n");
            const bool done = ini.writeAll(lists[i], path);
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            book.tell(QString::number(i),
                      {QString("%1: %2").arg(done ? "done" : "not").arg(told(file.readAll()))});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_APPLESS_MAIN(TestIniAnswers)
#include "tst_inianswers.moc"
