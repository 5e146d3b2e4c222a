#include "answers/Sweep.h"
#include "engines/cdtext/CdText.h"
#include "engines/cdtext/Latin1Text.h"

#include <QTest>

#include <algorithm>
#include <array>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

QByteArray withGoodCrc(QByteArray packs)
{
    for (qsizetype at = 0; at + kCdTextPackBytes <= packs.size(); at += kCdTextPackBytes) {
        const quint16 crc = cdTextCrc(packs.constData() + at);
        packs[at + 16] = static_cast<char>(crc >> 8);
        packs[at + 17] = static_cast<char>(crc & 0xFF);
    }
    return packs;
}

/// Texts of one kind, for the disc and each track from @p first on, as packs of one block.
QByteArray packsOf(int type, const QList<QByteArray>& texts, int block = 0, int first = 1, int unit = 1)
{
    QByteArray stream;
    QList<std::pair<int, int>> places; // of each byte: its track, and its character's number within the text
    for (qsizetype i = 0; i < texts.size(); ++i) {
        const QByteArray text = texts[i] + QByteArray(unit, '\0');
        for (qsizetype at = 0; at < text.size(); ++at)
            places.append({i == 0 ? 0 : first + static_cast<int>(i) - 1, static_cast<int>(at) / unit});
        stream += text;
    }
    QByteArray packs;
    for (qsizetype at = 0; at < stream.size(); at += 12) {
        const auto [track, character] = places[at];
        packs += static_cast<char>(type);
        packs += static_cast<char>(track);
        packs += static_cast<char>(at / 12);
        packs += static_cast<char>((unit == 2 ? 0x80 : 0) | block << 4 | std::min(character, 15));
        packs += stream.mid(at, 12).leftJustified(12, '\0') + QByteArray(2, '\0');
    }
    return withGoodCrc(packs);
}

const QList<QByteArray> kTitles{"Disc", "A title that goes through three packs", "B", "\t", "", "Last"};
const QList<QByteArray> kArtists{"Band", "Band", "\t", "Some one", "\t", "\t"};

/// The size pack of a block in MS-JIS.
QByteArray sizesOf(int letters, int block)
{
    const std::array<int, 4> head{0x8F, 0, 0, block << 4};
    QByteArray pack;
    for (const int byte : head)
        pack += static_cast<char>(byte);
    return withGoodCrc(pack + static_cast<char>(letters) + QByteArray(13, '\0'));
}

Answer wordsOf(const std::optional<DiscNames>& names)
{
    if (!names)
        return {"no names"};
    Answer words{QString("disc: '%1' by '%2'").arg(names->title, names->artist)};
    for (qsizetype i = 0; i < names->tracks.size(); ++i)
        words
            << QString("track %1: '%2' by '%3'").arg(i).arg(names->tracks[i].title, names->tracks[i].artist);
    return words;
}

Answer packsAnswer(const QByteArray& packs)
{
    return wordsOf(namesInPacks(packs, 1, 5));
}

/// A first track and a number of tracks stand before the packs; they are read as they are and repaired.
Answer keptAnswer(const QByteArray& input)
{
    if (input.size() < 2)
        return {"nothing"};
    const int first = 1 + static_cast<uchar>(input[0]) % 99;
    const int count = std::min(1 + static_cast<uchar>(input[1]) % 99, 100 - first);
    const QByteArray packs = input.sliced(2);
    Answer words = wordsOf(namesInPacks(packs, first, count)) + Answer{"repaired"} +
                   wordsOf(namesInPacks(withGoodCrc(packs), first, count));
    words.removeIf([](const QString& line) { return line.endsWith(": '' by ''"); });
    return words;
}

Answer repairedAnswer(const QByteArray& packs)
{
    return packsAnswer(withGoodCrc(packs));
}

QString sizesIn(const QList<QByteArray>& texts)
{
    QStringList sizes;
    for (const QByteArray& text : texts)
        sizes << QString::number(text.size());
    return sizes.join(' ');
}

/// The longest text of each kind and the packs that are filled.
Answer tableAnswer(const DiscNames& names)
{
    const CdTextTable table = cdTextOf(names);
    const auto longest = [](const QList<QByteArray>& texts) {
        qsizetype size = 0;
        for (const QByteArray& text : texts)
            size = std::max(size, text.size());
        return size;
    };
    return {QString("%1 titles up to %2, %3 performers up to %4, %5 packs")
                .arg(table.titles.size())
                .arg(longest(table.titles))
                .arg(table.performers.size())
                .arg(longest(table.performers))
                .arg(textPackCount(table))};
}

DiscNames namesOf(int tracks, int titleLetters, int artistLetters, bool alike = false)
{
    DiscNames names{QString(titleLetters, 'd'), QString(artistLetters, 'b'), {}};
    for (int i = 0; i < tracks; ++i) {
        const QChar letter = alike ? QChar('a') : QChar('a' + i % 26);
        names.tracks << TrackNames{QString(titleLetters, letter), QString(artistLetters, letter)};
    }
    return names;
}

} // namespace

/// CD-TEXT both ways: what is read in packs, and what names are made into, recorded.
class TestCdTextAnswers : public QObject
{
    Q_OBJECT
private slots:
    void packs()
    {
        Book book("engines/cdtext/answers/packs");
        const QByteArray seed = packsOf(0x80, kTitles) + packsOf(0x81, kArtists);
        book.chapter("Packs as they are");
        book.tell("all", packsAnswer(seed));
        answers::everyLength(book, "Packs", seed, packsAnswer);
        answers::everyByte(book, "Packs with a wrong check sum", seed, packsAnswer, 0, 18);
        for (qsizetype at = 0; at < seed.size(); at += kCdTextPackBytes)
            answers::everyByte(book, QString("Pack %1, its check sum made right").arg(at / kCdTextPackBytes),
                               seed, repairedAnswer, at, 6);
        tellBlocks(book);
        tellTracks(book, seed);
        tellOrder(book, seed);
        answers::everyKept(book, "engines/cdtext/packs", keptAnswer);
        ZIB_COMPARE_ANSWERS(book);
    }
    void checkSums()
    {
        Book book("engines/cdtext/answers/checksums");
        book.chapter("Check sums of one bit");
        for (int bit = 0; bit < 128; ++bit) {
            QByteArray pack(18, '\0');
            pack[bit / 8] = static_cast<char>(0x80 >> bit % 8);
            book.tell(QString::number(bit), {QString::number(cdTextCrc(pack.constData()), 16)});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void tables()
    {
        Book book("engines/cdtext/answers/tables");
        for (const bool alike : {false, true})
            for (const int letters : {1, 20, 29, 30, 31, 159, 160, 161, 300}) {
                book.chapter(QString("Tracks of %1 letters%2").arg(letters).arg(alike ? ", all alike" : ""));
                for (const int tracks : {0, 1, 2, 7, 8, 9, 10, 17, 18, 19, 40, 97, 98, 99})
                    book.tell(QString::number(tracks), tableAnswer(namesOf(tracks, letters, 0, alike)));
            }
        book.chapter("Titles and artists of 99 tracks");
        for (int letters = 0; letters < 40; ++letters)
            book.tell(QString::number(letters), tableAnswer(namesOf(99, letters, 12)));
        tellSharing(book);
        ZIB_COMPARE_ANSWERS(book);
    }
    void letters()
    {
        Book book("engines/cdtext/answers/letters");
        book.chapter("Letters of the set between two others");
        for (int code = 0; code < 256; ++code)
            book.tell(QString::number(code, 16),
                      {QString::fromLatin1(nearestLatin1(QString("a") + QChar(code) + "b"))});
        book.chapter("Blanks");
        for (const char* text :
             {"", " ", " a", "a ", "a  b", "a\tb", "a\x01 b", "a \x01 b", "\x01", "a\xADz", "\x7F"})
            book.tell(QString::fromLatin1(text),
                      {QString::fromLatin1(nearestLatin1(QString::fromLatin1(text)))});
        book.chapter("Bytes of a disc between two others");
        for (int code = 0; code < 256; ++code)
            book.tell(QString::number(code, 16), {textFromLatin1(QByteArray("a") + char(code) + "b")});
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static void tellBlocks(Book& book)
    {
        book.chapter("Blocks");
        const QList<QByteArray> empty{"", "", "", "", "", ""};
        for (const int block : {0, 1, 6, 7}) {
            book.tell(QString("only in %1").arg(block), packsAnswer(packsOf(0x80, kTitles, block)));
            book.tell(QString("behind an empty one, in %1").arg(block),
                      packsAnswer(packsOf(0x80, empty, 0) + packsOf(0x80, kTitles, block)));
        }
        book.tell("artists in another", packsAnswer(packsOf(0x80, kTitles, 0) + packsOf(0x81, kArtists, 1)));
        const QList<QByteArray> wide{QByteArray::fromHex("8341"),
                                     QByteArray::fromHex("83418342834383448345834683478348"),
                                     QByteArray::fromHex("0909"), "", QByteArray::fromHex("4141")};
        for (const int unit : {1, 2})
            for (const int letters : {0x00, 0x01, 0x7F, 0x80, 0x81})
                book.tell(QString("letters %1 in units of %2").arg(letters).arg(unit),
                          packsAnswer(packsOf(0x80, wide, 0, 1, unit) + sizesOf(letters, 0)));
        book.tell("sizes of another block", packsAnswer(packsOf(0x80, wide, 0, 1, 1) + sizesOf(0x80, 1)));
        book.tell("wide packs of another kind",
                  packsAnswer(packsOf(0x80, kTitles) + packsOf(0x82, wide, 0, 1, 2)));
    }
    static void tellTracks(Book& book, const QByteArray& seed)
    {
        book.chapter("First track and count of a disc");
        for (const int first : {0, 1, 2, 5, 6, 99})
            for (const int count : {0, 1, 2, 5, 6})
                book.tell(QString("%1 and %2").arg(first).arg(count),
                          wordsOf(namesInPacks(seed, first, count)));
        book.tell("begins with track 7", wordsOf(namesInPacks(packsOf(0x80, kTitles, 0, 7), 7, 5)));
    }
    /// Packs that are missing, come twice, or in another order.
    static void tellOrder(Book& book, const QByteArray& seed)
    {
        book.chapter("Packs in another order", packsAnswer(seed));
        for (qsizetype at = 0; at < seed.size(); at += kCdTextPackBytes) {
            const QByteArray pack = seed.mid(at, kCdTextPackBytes);
            QByteArray gone = seed;
            gone.remove(at, kCdTextPackBytes);
            QByteArray twice = seed;
            twice.insert(at, pack);
            QByteArray later = gone;
            later.insert(std::min(at + kCdTextPackBytes, later.size()), pack);
            book.tellAll(
                QString::number(at / kCdTextPackBytes),
                {{"gone", packsAnswer(gone)}, {"twice", packsAnswer(twice)}, {"later", packsAnswer(later)}});
        }
    }
    /// A few long texts among short ones are cut first, all to one length.
    static void tellSharing(Book& book)
    {
        book.chapter("Among 98 texts of 20 letters, so many of 160");
        for (const int count : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 20, 30, 60, 98}) {
            DiscNames names = namesOf(98, 20, 0);
            for (int i = 0; i < count; ++i)
                names.tracks[i].title = QString(160, QChar('a' + i % 26));
            book.tell(QString::number(count), tableAnswer(names));
        }
        book.chapter("Sizes of all texts");
        DiscNames names{
            "  A title ", {}, {{"a", "x"}, {"a", "x"}, {"", ""}, {"", "y"}, {QString(200, 'z') + " b", {}}}};
        const CdTextTable table = cdTextOf(names);
        book.tell("titles", {sizesIn(table.titles)});
        book.tell("performers", {sizesIn(table.performers), QString::number(textPackCount(table))});
        names.tracks[4].title = QString(159, 'z') + " b";
        book.tell("a blank where it is cut", {sizesIn(cdTextOf(names).titles)});
    }
};

QTEST_APPLESS_MAIN(TestCdTextAnswers)
#include "tst_cdtextanswers.moc"
