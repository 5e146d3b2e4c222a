#include "answers/Sweep.h"
#include "common/Colors.h"
#include "common/GeneralAPI.h"
#include "common/NativeName.h"
#include "common/Numbers.h"
#include "common/Twips.h"

#include <QTest>
#include <QUrl>

#include <limits>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

const QStringList kPaths{
    "",     " ",    "a",      "/",   "/a",   "/a/",      "a/b",      "/a/b/c", "\\",      "\\a",
    "a\\b", "a\\",  "a\\b/c", "C:",  "C:a",  "C:\\",     "C:\\a\\b", "C:/a/b", "c:\\a b", "1:\\a",
    ":\\a", " /a ", "/a\\b",  "//a", "/a//", "\\\\a\\b", "C:\\a/b",  "/ a",    "a ",      "\xC3\xA4:\\a"};

QString hexOf(const QString& text)
{
    QStringList codes;
    for (const QChar letter : text)
        codes << QString::number(letter.unicode(), 16);
    return codes.join(' ');
}

} // namespace

/// What the common utilities make of texts and numbers, recorded.
class TestTextAnswers : public QObject
{
    Q_OBJECT
private slots:
    void paths()
    {
        Book book("common/answers/paths");
        book.chapter("Folder and name");
        for (const QString& path : kPaths)
            book.tell("'" + path + "'",
                      {"folder '" + GeneralAPI::GetFolderOfPath(path) + "'",
                       "name '" + GeneralAPI::GetFileNameOfPath(path) + "'",
                       "joined '" + GeneralAPI::JoinPath(path, "x") + "'",
                       "setting '" + GeneralAPI::SettingFolder(path).replace(executableFolder(), "~") + "'"});
        book.chapter("Local addresses");
        for (const char* url :
             {"file:///a%20b", "file:///%E4", "file:///%C3%A4", "file://localhost/a", "file://host/a",
              "http://a/b", "file:a", "", "/a", "file:///a%00b", "file:///%EE%BE%80", "file:///a%2Fb"})
            book.tell(url, {hexOf(pathOfUrl(QUrl::fromEncoded(url)))});
        ZIB_COMPARE_ANSWERS(book);
    }
    void names()
    {
        Book book("common/answers/nativenames");
        book.chapter("Bytes as texts, one byte between two letters");
        for (int byte = 0; byte < 256; ++byte)
            book.tell(QString::number(byte, 16), there(QByteArray("a") + char(byte) + "b"));
        book.chapter("Two and more bytes");
        for (const char* bytes :
             {"c3a4",     "c3",     "c3a4a4", "e282ac",   "e282",   "e2",       "f09f9880",
              "f09f98",   "f09f",   "f0",     "f4908080", "eda080", "c080",     "eebdbf",
              "eebe7f",   "eebe80", "eebebf", "eebfbf",   "eebfc0", "ef8080",   "efbbbf",
              "efbbbf41", "ef41",   "ee",     "eebe",     "fffe",   "80c3a480", "e4c3a4"})
            book.tell(bytes, there(QByteArray::fromHex(bytes)));
        book.chapter("Texts as bytes, one letter between two others");
        for (const char16_t code :
             {u'\x1', u'\x7F', u'\x80', u'\xFF', u'\x20AC', u'\xEF7F', u'\xEF80', u'\xEF81', u'\xEFFE',
              u'\xEFFF', u'\xF000', u'\xD800', u'\xDC00', u'\xFEFF', u'\xFFFD'})
            book.tell(QString::number(code, 16),
                      {QString::fromLatin1(nativeBytes(QString("a") + QChar(code) + "b").toHex(' '))});
        ZIB_COMPARE_ANSWERS(book);
    }
    void numbers()
    {
        Book book("common/answers/numbers");
        book.chapter("Rounding");
        constexpr double kInfinite = std::numeric_limits<double>::infinity();
        for (const double value : {0.0,       0.25,       0.5,
                                   0.75,      1.0,        1.5,
                                   2.5,       2.4999999,  2.5000001,
                                   -0.5,      -1.5,       -2.5,
                                   -0.4,      -0.6,       1e15 + 0.5,
                                   9.1e18,    9.3e18,     -9.3e18,
                                   kInfinite, -kInfinite, std::numeric_limits<double>::quiet_NaN()})
            book.tell(QString::number(value, 'g', 17), {QString::number(roundHalfEven(value))});
        book.chapter("Twips as pixels");
        for (const qint64 twips : {0, 1, 7, 8, 15, 22, 23, 37, 38, -7, -8, -22, -23})
            book.tell(QString::number(twips), {QString::number(wholePixels(twips))});
        book.tell("7 pixels", {QString::number(twipsFromPixels(7))});
        book.chapter("Narrow numbers");
        for (const qint64 number : {0LL, 32'767LL, 32'768LL, -32'768LL, -32'769LL, 2'147'483'647LL,
                                    2'147'483'648LL, -2'147'483'648LL, -2'147'483'649LL})
            book.tell(QString::number(number), {narrowed<qint16>(number) ? "16 bits" : "-",
                                                narrowed<qint32>(number) ? "32 bits" : "-"});
        book.chapter("Colours");
        for (const qint32 number : {0, 1, 0xFF, 0x100, 0x123456, 0xFF0000, 0xFFFFFF, 0x1000000, -1}) {
            const QColor color = colorFromNumber(number);
            book.tell(QString::number(number), {color.name(), QString::number(numberFromColor(color))});
        }
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    /// A name as a text, and whether it comes back as the same bytes.
    static Answer there(const QByteArray& bytes)
    {
        const QString text = nativeText(bytes);
        return {hexOf(text) + (nativeBytes(text) == bytes ? ", and back" : ", OTHER bytes back")};
    }
};

QTEST_APPLESS_MAIN(TestTextAnswers)
#include "tst_textanswers.moc"
