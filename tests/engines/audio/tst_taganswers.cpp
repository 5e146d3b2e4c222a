#include "answers/MemoryFile.h"
#include "answers/Sweep.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/TagReader.h"

#include <QTest>

#include <array>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

Answer wordsOf(const Tag& tag)
{
    const auto told = [](const QString& text) {
        return text.size() > 60 ? QString("%1 letters").arg(text.size()) : "'" + text + "'";
    };
    return {"title: " + told(tag.title), "artist: " + told(tag.artist)};
}

Answer oldTagAnswer(const QByteArray& content)
{
    const answers::MemoryFile memory(content);
    return wordsOf(readId3v1(*SourceFile::open(memory.path())));
}

Answer newTagAnswer(const QByteArray& content)
{
    const answers::MemoryFile memory(content);
    return wordsOf(readId3v2(*SourceFile::open(memory.path())));
}

QByteArray sevenBits(qsizetype size)
{
    QByteArray bytes;
    for (const int shift : {21, 14, 7, 0})
        bytes += static_cast<char>(size >> shift & 0x7F);
    return bytes;
}

/// An ID3v2.3 tag with texts in UTF-8 that calls itself Latin-1, as many do.
QByteArray id3v2(const QByteArray& title, const QByteArray& artist)
{
    const auto frame = [](const char* name, const QByteArray& text) {
        const QByteArray content = '\0' + text;
        QByteArray size;
        for (const int shift : {24, 16, 8, 0})
            size += static_cast<char>(content.size() >> shift);
        return name + size + QByteArray(2, '\0') + content;
    };
    const QByteArray frames = frame("TIT2", title) + frame("TPE1", artist);
    return QByteArray("ID3\x03\0\0", 6) + sevenBits(frames.size()) + frames;
}

QByteArray id3v1(const QByteArray& title, const QByteArray& artist)
{
    return "TAG" + title.leftJustified(30, '\0') + artist.leftJustified(30, '\0') + QByteArray(65, '\0');
}

} // namespace

/// What titles and artists are read in tags, as far as it is not the library's, recorded.
class TestTagAnswers : public QObject
{
    Q_OBJECT
private slots:
    void plainTexts()
    {
        Book book("engines/audio/answers/tagtexts");
        book.chapter("One byte, alone and between two letters");
        for (int byte = 0; byte < 256; ++byte) {
            book.tell(QString::number(byte, 16), {plainTagText(QByteArray(1, char(byte)))});
            book.tell(QString::number(byte, 16) + " between",
                      {plainTagText(QByteArray("a") + char(byte) + "b")});
        }
        book.chapter("Several bytes");
        for (const char* bytes :
             {"", "c3a4", "c3", "61c3", "c3a4c3", "61e282", "e282", "e282ac", "c3a4e282", "e4c3a4", "c3a4e4",
              "61006263", "2061 20", "efbbbf61", "f09f98", "c3a4f09f98", "8182"})
            book.tell(bytes, {plainTagText(QByteArray::fromHex(bytes))});
        ZIB_COMPARE_ANSWERS(book);
    }
    void tags()
    {
        Book book("engines/audio/answers/tags");
        const QByteArray old = QByteArray(20, 'x') + id3v1("Title", QByteArray(30, 'A'));
        answers::everyLength(book, "ID3v1", old.sliced(20), oldTagAnswer, 125);
        answers::everyByte(book, "ID3v1", old, oldTagAnswer, 18, 8);
        answers::everyByte(book, "ID3v1 around the artist", old, oldTagAnswer, 51, 4);
        answers::everyByte(book, "ID3v1 behind the artist", old, oldTagAnswer, 81, 4);
        book.chapter("Sizes of a file with an ID3v2 tag");
        const QByteArray tag = id3v2("Title", "Artist");
        for (const int bytes : {0, 1, 9, 10})
            book.tell(QString("%1 of the tag").arg(bytes), newTagAnswer(tag.first(bytes)));
        for (const int bytes : {0, 1, 100})
            book.tell(QString("%1 behind").arg(bytes), newTagAnswer(tag + QByteArray(bytes, 'x')));
        answers::everyByte(book, "ID3v2", tag + QByteArray(600, '\0'), newTagAnswer, 0, 3);
        tellLines(book);
        tellWav(book);
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    /// Of a title the first line counts, and so many letters of it.
    static void tellLines(Book& book)
    {
        book.chapter("Titles of several lines");
        for (const char* text : {"a\nb", "\na", "a\rb", "a\tb",
                                 "a\x0B"
                                 "b",
                                 "a\x0C"
                                 "b",
                                 "a\x08"
                                 "b",
                                 "a\x0E"
                                 "b",
                                 "a\xC2\x85"
                                 "b",
                                 "a\xE2\x80\xA8"
                                 "b",
                                 "a\xE2\x80\xA9"
                                 "b",
                                 "a\xE2\x80\xA7"
                                 "b",
                                 " a \nb", " "})
            book.tell(QByteArray(text).toHex(), newTagAnswer(id3v2(text, "x")));
        book.chapter("Titles of so many letters");
        for (const int letters : {998, 999, 1'000, 1'001})
            for (const char* end : {"", "\xC3\xA4", "\xF0\x9F\x98\x80", " "})
                book.tell(QString("%1 and %2").arg(letters).arg(QString::fromUtf8(end)),
                          newTagAnswer(id3v2(QByteArray(letters, 'q') + end, "x")));
    }
    static void tellWav(Book& book)
    {
        book.chapter("Names of a WAVE file: in a list, in a tag, in both");
        const QByteArray tag = id3v2("Tag title", "Tag artist");
        for (const char* title : {"", "List title", " "})
            for (const char* artist : {"", "List artist"})
                for (const qint64 offset : {0, 7})
                    for (const qint64 bytes :
                         {qint64{0}, qint64{9}, qint64{10}, qint64{tag.size()}, qint64{1'000}}) {
                        const answers::MemoryFile memory(QByteArray(7, 'x') + tag + QByteArray(200, '\0'));
                        WavHeader header;
                        header.title = title;
                        header.artist = artist;
                        header.id3Offset = offset;
                        header.id3Bytes = bytes;
                        if (bytes > 10 || offset == 0 || bytes < 10)
                            book.tell(
                                QString("'%1', '%2', %3 at %4").arg(title, artist).arg(bytes).arg(offset),
                                wordsOf(readWavTag(*SourceFile::open(memory.path()), header)));
                    }
    }
};

QTEST_APPLESS_MAIN(TestTagAnswers)
#include "tst_taganswers.moc"
