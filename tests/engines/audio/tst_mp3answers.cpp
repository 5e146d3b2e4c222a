#include "answers/MemoryFile.h"
#include "answers/Sweep.h"
#include "engines/audio/mp3/Mp3LossCount.h"
#include "engines/audio/mp3/Mp3Tags.h"

#include <QTest>

#include <algorithm>
#include <array>

using namespace zib;
using answers::Answer;
using answers::Book;
using answers::Field;

namespace {

/// What a frame is made of; the numbers are those of the header's fields.
struct Kind
{
    int version = 3; // MPEG 1; 2 is MPEG 2, 0 is MPEG 2.5
    int bitrate = 1;
    int rate = 0;
    bool mono = false;
    bool padding = false;
    bool hasCheckSum = false;
};

const uchar* bytesOf(const QByteArray& content)
{
    return reinterpret_cast<const uchar*>(content.constData());
}

QByteArray headOf(const Kind& kind)
{
    const std::array<int, 4> bytes{0xFF, 0xE0 | kind.version << 3 | 2 | (kind.hasCheckSum ? 0 : 1),
                                   kind.bitrate << 4 | kind.rate << 2 | (kind.padding ? 2 : 0),
                                   kind.mono ? 0xC0 : 0};
    QByteArray head;
    for (const int byte : bytes)
        head += static_cast<char>(byte);
    return head;
}

/// A silent frame. @p freeBytes is its size in free format, @p begin what it takes from the frames before.
QByteArray frameOf(const Kind& kind, int begin = 0, int freeBytes = 0)
{
    const QByteArray head = headOf(kind);
    const auto told = Mp3Header::parse(bytesOf(head));
    QByteArray frame = head.leftJustified(told->frameBytes(freeBytes), '\0', true);
    const int at = told->sideInfoOffset();
    frame[at] = static_cast<char>(told->lowRate ? begin : begin >> 1);
    if (!told->lowRate)
        frame[at + 1] = static_cast<char>((begin & 1) << 7);
    return frame;
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

QByteArray littleEndian(quint32 number)
{
    QByteArray bytes = bigEndian(number);
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// A frame of 384 bytes at 128 kbit/s and 48 kHz with everything that an information frame may hold.
QByteArray infoFrame(const Kind& kind, quint32 frames, quint32 bytes, int delay, int padding)
{
    QByteArray frame = frameOf(kind);
    const QByteArray tag = "Xing" + bigEndian(15) + bigEndian(frames) + bigEndian(bytes) +
                           QByteArray(100, '\x55') + bigEndian(78) +
                           QByteArray("LAME3.100").leftJustified(21, '\0') +
                           bigEndian(static_cast<quint32>(delay << 20 | padding << 8)).first(3);
    const auto head = *Mp3Header::parse(bytesOf(frame));
    return frame.replace(4 + head.sideInfoBytes(), tag.size(), tag);
}

QString words(const Mp3Header& head)
{
    return QString("%1 Hz %2 kbit%3%4%5%6")
        .arg(head.rateHz)
        .arg(head.bitrateKbps)
        .arg(head.lowRate ? " low" : "", head.mono ? " mono" : "", head.padding ? " padded" : "",
             head.isProtected ? " with check sum" : "");
}

Answer headerAnswer(const QByteArray& bytes)
{
    const auto head = Mp3Header::parse(bytesOf(bytes));
    if (!head)
        return {"no header"};
    return {words(*head) + QString(", %1 bytes, side information %2 at %3, %4 samples, reservoir %5")
                               .arg(head->frameBytes(1000))
                               .arg(head->sideInfoBytes())
                               .arg(head->sideInfoOffset())
                               .arg(head->samples())
                               .arg(mostMainDataBegin(*head))};
}

Answer infoAnswer(const QByteArray& frame)
{
    if (frame.size() < 4 || !Mp3Header::parse(bytesOf(frame)))
        return {"no header"};
    const auto info =
        Mp3InfoFrame::parse(*Mp3Header::parse(bytesOf(frame)), {bytesOf(frame), size_t(frame.size())});
    if (!info)
        return {"no information"};
    return {QString("frames: %1").arg(info->frames), QString("bytes: %1").arg(info->bytes),
            QString("delay: %1").arg(info->delay), QString("padding: %1").arg(info->padding)};
}

Answer sideAnswer(const QByteArray& frame)
{
    const auto head = Mp3Header::parse(bytesOf(frame));
    return {QString("begin: %1").arg(mainDataBegin(*head, bytesOf(frame))),
            isPlausible(*head, bytesOf(frame), static_cast<int>(frame.size())) ? "plausible: yes"
                                                                               : "plausible: no"};
}

Answer wordsOf(const Mp3Layout& layout)
{
    Answer words{QString("stream: %1 Hz, %2 channels, skip %3, length %4%5")
                     .arg(layout.rateHz)
                     .arg(layout.channels)
                     .arg(layout.skip)
                     .arg(layout.length)
                     .arg(layout.isRegular ? ", regular" : "")};
    for (const Mp3Run& run : layout.runs)
        words << QString("run of %1: %2 at %3, %4 bytes, %5, free %6")
                     .arg(run.firstFrame)
                     .arg(run.frames)
                     .arg(run.offset)
                     .arg(run.bytes)
                     .arg(::words(run.head))
                     .arg(run.freeBytes);
    QStringList entries;
    for (const Mp3Entry& entry : layout.entries)
        entries << QString("%1 at %2").arg(entry.frame).arg(entry.offset);
    words << "entries: " + entries.join(", ");
    for (const Mp3Loss& loss : layout.losses)
        words << QString("loss at %1: %2%3")
                     .arg(loss.frame)
                     .arg(loss.frames)
                     .arg(loss.isSilent ? " silent" : " missing");
    const AudioLoss all = Mp3LossCount(layout).loss();
    return words << QString("lost: %1 from %2").arg(all.frames).arg(all.first);
}

Answer walkAnswer(const QByteArray& stream)
{
    const answers::MemoryFile memory(stream);
    const auto file = SourceFile::open(memory.path());
    const auto layout = walkMp3(file, 0, file->size());
    return layout ? wordsOf(*layout) : Answer{"no stream"};
}

Answer tagsAnswer(const QByteArray& content)
{
    const answers::MemoryFile memory(content);
    const auto file = SourceFile::open(memory.path());
    const QByteArray head = content.leftJustified(kTagHead, '\0');
    return {QString("at the front: %1").arg(leadingTagBytes(bytesOf(head))),
            QString("ID3v2: %1").arg(id3v2Bytes(bytesOf(head))),
            QString("at the end: %1").arg(trailingTagBytes(*file, 0, file->size()))};
}

const Kind kSmall{.bitrate = 1, .rate = 0};                // 104 bytes
const Kind kLow{.version = 2, .bitrate = 1, .mono = true}; // 26 bytes, one channel at 22050 Hz

QByteArray id3v2(const QByteArray& content)
{
    return QByteArray("ID3\x03\0\0\0\0\0", 9) + static_cast<char>(content.size()) + content;
}

QByteArray apeTag(int items, bool withHeader)
{
    const auto part = [&](quint32 flags) {
        return "APETAGEX" + littleEndian(2000) + littleEndian(static_cast<quint32>(items) + 32) +
               littleEndian(0) + littleEndian(flags | (withHeader ? 0x80000000U : 0U)) + QByteArray(8, '\0');
    };
    return (withHeader ? part(0x20000000U) : QByteArray()) + QByteArray(items, '\x11') + part(0);
}

QByteArray lyricsTag(int content)
{
    return QByteArray(content, 'L') + QByteArray::number(content).rightJustified(6, '0') + "LYRICS200";
}

const QByteArray kOldTag = "TAG" + QByteArray(125, ' ');

} // namespace

/// What the readers of MPEG layer III streams make of frames and what stands between them, recorded.
class TestMp3Answers : public QObject
{
    Q_OBJECT
private slots:
    void headers()
    {
        Book book("engines/audio/answers/mp3header");
        for (int byte = 0; byte < 4; ++byte) {
            book.chapter(QString("FB 92 40 behind FF, byte %1 of any value").arg(byte));
            for (int value = 0; value < 256; ++value)
                book.tell(QString::number(value),
                          headerAnswer(QByteArray("\xFF\xFB\x92\x40")
                                           .replace(byte, 1, QByteArray(1, static_cast<char>(value)))));
        }
        for (const int version : {0, 2, 3})
            tellRates(book, version);
        tellContinuing(book);
        ZIB_COMPARE_ANSWERS(book);
    }
    void informationFrames()
    {
        Book book("engines/audio/answers/mp3info");
        for (const Kind& kind : {Kind{3, 9}, Kind{3, 9, 0, true}, Kind{2, 13}, Kind{0, 13, 0, true}}) {
            const QByteArray frame = infoFrame(kind, 0x01020304, 0x05060708, 0x9AB, 0xCDE);
            const auto head = *Mp3Header::parse(bytesOf(frame));
            const QString title = words(head);
            answers::everyLength(book, title, frame, infoAnswer);
            answers::everyByte(book, title, frame, infoAnswer, 4 + head.sideInfoBytes(), 16);
            answers::everyByte(book, title + " behind", frame, infoAnswer, 4 + head.sideInfoBytes() + 120,
                               25);
            answers::everyLength(book, title + ", 2 bytes later",
                                 frame.first(4) + QByteArray(2, '\0') + frame.sliced(4), infoAnswer);
        }
        const QByteArray vbri = frameOf({3, 9}).first(36) + "VBRI" + QByteArray(6, '\1') +
                                bigEndian(0x01020304) + bigEndian(0x05060708) + QByteArray(40, '\0');
        answers::everyLength(book, "VBRI", vbri, infoAnswer);
        answers::everyByte(book, "VBRI", vbri, infoAnswer, 34, 22);
        ZIB_COMPARE_ANSWERS(book);
    }
    void sideInformation()
    {
        Book book("engines/audio/answers/mp3side");
        for (const Kind& kind : {Kind{3, 9}, Kind{3, 9, 0, true}, Kind{2, 13}, Kind{0, 13, 0, true},
                                 Kind{3, 1, 0, false, false, true}}) {
            const QByteArray frame = frameOf(kind, 0x93);
            const auto head = *Mp3Header::parse(bytesOf(frame));
            answers::everyByte(book, words(head), frame, sideAnswer, 4, head.sideInfoBytes() + 2);
            book.chapter(words(head) + ", shorter");
            for (int bytes = 0; bytes < 50; ++bytes)
                book.tell(QString::number(bytes),
                          {isPlausible(head, bytesOf(frame), bytes) ? "plausible" : "not"});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void tags()
    {
        Book book("engines/audio/answers/mp3tags");
        const QByteArray front = id3v2(QByteArray(20, 'x')) + QByteArray(10, '\0');
        answers::everyByte(book, "ID3v2", front, tagsAnswer, 0, 11);
        answers::everyByte(book, "APE", apeTag(7, true), tagsAnswer, 0, 32);
        for (const QByteArray& content :
             {apeTag(7, false), apeTag(7, true), lyricsTag(21), kOldTag,
              QByteArray(30, '\2') + "3DI" + QByteArray("\x03\0\0\0\0\0\x0A", 7)}) {
            const QByteArray file = QByteArray(60, '\1') + content;
            const QString title = QString::number(content.size()) + " bytes at the end";
            answers::everyLength(book, title, content, tagsAnswer);
            answers::everyByte(book, title, file, tagsAnswer, file.size() - 40, 40);
            book.chapter(title + ", so many bytes of it and before it");
            for (qsizetype bytes = 0; bytes <= file.size(); ++bytes)
                book.tell(QString::number(bytes), tagsAnswer(file.last(bytes)));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void streams()
    {
        Book book("engines/audio/answers/mp3streams");
        const QByteArray frame = frameOf(kSmall);
        const QByteArray seed = id3v2(QByteArray(20, 'x')) + frame.repeated(7) + kOldTag;
        book.chapter("The stream as it is");
        book.tell("all", walkAnswer(seed));
        answers::everyLength(book, "Seven frames of 104 between tags", seed, walkAnswer);
        for (const int number : {0, 1, 6})
            answers::everyByte(book, QString("The same, frame %1").arg(number), seed, walkAnswer,
                               30 + 104 * number, 7);
        tellGaps(book);
        tellInformed(book);
        tellBeginnings(book);
        tellReservoir(book);
        answers::everySeed(book, "mp3", walkAnswer);
        ZIB_COMPARE_ANSWERS(book);
    }
    void freeFormat()
    {
        Book book("engines/audio/answers/mp3free");
        for (const int frames : {2, 3, 4, 8}) {
            book.chapter(QString("%1 frames of free format, by their size").arg(frames));
            for (const int bytes : {22, 23, 24, 25, 26, 40, 104, 1000, 3455, 3456, 3457})
                for (const bool padding : {false, true}) {
                    const Kind kind{.bitrate = 0, .mono = bytes < 40, .padding = padding};
                    book.tell(QString("%1%2").arg(bytes).arg(padding ? " padded" : ""),
                              walkAnswer(frameOf(kind, 0, bytes).repeated(frames)));
                }
        }
        const QByteArray padded = frameOf({.bitrate = 0, .padding = true}, 0, 90);
        const QByteArray plain = frameOf({.bitrate = 0}, 0, 90);
        const QByteArray seed = padded + plain + plain + padded + plain;
        answers::everyLength(book, "Padded now and then", seed, walkAnswer);
        answers::everyByte(book, "Padded now and then, the second", seed, walkAnswer, 91, 4);
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static void tellRates(Book& book, int version)
    {
        book.chapter(QString("Version %1, by rate and bit rate").arg(version));
        for (int rate = 0; rate < 4; ++rate)
            for (int bitrate = 0; bitrate < 16; ++bitrate)
                book.tell(QString("%1.%2").arg(rate).arg(bitrate),
                          headerAnswer(headOf({version, bitrate, rate})));
    }
    static void tellContinuing(Book& book)
    {
        book.chapter("Which headers go on with which");
        const QList<Kind> kinds{{3, 1},          {3, 2}, {3, 0},          {3, 1, 1},
                                {3, 1, 0, true}, {2, 1}, {2, 1, 0, true}, {0, 1}};
        for (const Kind& one : kinds) {
            QStringList on;
            const auto head = *Mp3Header::parse(bytesOf(headOf(one)));
            for (const Kind& other : kinds)
                if (const auto next = *Mp3Header::parse(bytesOf(headOf(other))); next.continues(head))
                    on << words(next);
            book.tell(words(head), on);
        }
    }
    /// So many bytes of nothing between two stretches of frames, and tags there.
    static void tellGaps(Book& book)
    {
        const QByteArray frame = frameOf(kSmall);
        const QByteArray odd = frameOf({.bitrate = 3}, 0) + frame.repeated(4);
        book.chapter("A gap of so many bytes", walkAnswer(frame.repeated(10)));
        for (const int frames : {0, 1, 2, 3})
            for (const int bytes : {0, 1, 4, 51, 52, 53, 103})
                book.tell(QString::number(104 * frames + bytes),
                          walkAnswer(frame.repeated(5) + QByteArray(104 * frames + bytes, 'x') +
                                     frame.repeated(5)));
        book.chapter("A gap behind frames of two sizes");
        for (const int bytes : {56, 57, 58, 171, 172, 300})
            book.tell(QString::number(bytes), walkAnswer(odd + QByteArray(bytes, 'x') + frame.repeated(3)));
        book.chapter("So many bytes behind the last frame");
        for (int bytes = 0; bytes < 104; ++bytes)
            book.tell(QString::number(bytes), walkAnswer(frame.repeated(6) + frame.first(bytes)));
        book.chapter("Frames behind a gap");
        for (int frames = 0; frames < 4; ++frames)
            for (const int more : {0, 1, 3, 4, 5, 103})
                book.tell(QString("%1 and %2 bytes").arg(frames).arg(more),
                          walkAnswer(frame.repeated(5) + QByteArray(50, 'x') + frame.repeated(frames) +
                                     frame.first(more)));
        book.chapter("Tags in a gap", walkAnswer(frame.repeated(10)));
        const QList<QByteArray> tags{kOldTag,          id3v2(QByteArray(20, 'y')), apeTag(7, true),
                                     apeTag(7, false), id3v2("") + kOldTag,        lyricsTag(21)};
        for (qsizetype i = 0; i < tags.size(); ++i)
            for (const int more : {0, 51, 52, 53, 104})
                book.tell(
                    QString("%1 and %2 bytes").arg(i).arg(more),
                    walkAnswer(frame.repeated(5) + tags[i] + QByteArray(more, 'x') + frame.repeated(5)));
        book.chapter("Other formats behind");
        const QByteArray low = frameOf(kLow);
        book.tell("a low one", walkAnswer(frame.repeated(5) + low.repeated(7)));
        book.tell("a low one between", walkAnswer(frame.repeated(5) + low.repeated(7) + frame.repeated(3)));
        book.tell("a gap too", walkAnswer(low.repeated(5) + QByteArray(65, 'x') + frame.repeated(5) +
                                          QByteArray(155, 'x') + low.repeated(7) + QByteArray(13, 'x') +
                                          frameOf({2, 1, 1}).repeated(5)));
        book.tell("mono behind stereo", walkAnswer(frame.repeated(5) + frameOf({3, 1, 0, true}).repeated(5)));
        book.tell("three rates", walkAnswer(frameOf({3, 1, 1}).repeated(5) + frameOf({3, 1, 2}).repeated(4) +
                                            frameOf({0, 1, 2}).repeated(3)));
    }
    /// A stream whose information frame tells more or less than there is.
    static void tellInformed(Book& book)
    {
        const QByteArray frame = frameOf(kSmall);
        const QByteArray info = infoFrame({3, 9}, 7, 417 + 7 * 104, 576, 1000);
        const QByteArray seed = info + frame.repeated(7);
        book.chapter("Behind an information frame");
        book.tell("all", walkAnswer(seed));
        answers::everyValue(book, "Informed", seed, walkAnswer, {"frames told", 44, 4, true},
                            {0, 1, 7, 9, 12, 0xFFFFFFF0});
        answers::everyValue(book, "Informed", seed, walkAnswer, {"bytes told", 48, 4, true},
                            {0, 1, 417 + 7 * 104, 0xFFFFFFF0});
        const QByteArray more =
            info.sliced(0, 44) + bigEndian(10) + bigEndian(417 + 10 * 104) + info.sliced(52);
        answers::everyValue(book, "Four of ten frames told", more + frame.repeated(4), walkAnswer,
                            {"bytes told", 48, 4, true}, {1, 417, 417 + 4 * 104, 417 + 10 * 104, 0xFFFFFFF0});
        book.chapter("Six frames and so many bytes of the next, so many frames told");
        for (const int bytes : {0, 50})
            for (quint32 told = 5; told < 10; ++told)
                book.tell(QString("%1, %2").arg(bytes).arg(told),
                          walkAnswer(infoFrame({3, 9}, told, 417 + told * 104, 576, 1000) +
                                     frame.repeated(6) + frame.first(bytes)));
        book.chapter("Ten frames told, so many there, a gap of so many bytes behind three of them");
        for (int frames = 4; frames < 12; ++frames)
            for (const int gap : {0, 51, 52, 104, 260, 520})
                book.tell(
                    QString("%1 and %2 bytes").arg(frames).arg(gap),
                    walkAnswer(more + frame.repeated(3) + QByteArray(gap, 'x') + frame.repeated(frames - 3)));
        book.chapter("Delay and padding, of 8064 samples", walkAnswer(seed));
        for (const int delay : {0, 1, 576, 4095})
            for (const int padding : {0, 1, 528, 529, 530, 1152, 4095})
                for (const int frames : {1, 7})
                    book.tell(QString("%1, %2, %3 frames").arg(delay).arg(padding).arg(frames),
                              walkAnswer(infoFrame({3, 9}, static_cast<quint32>(frames), 0, delay, padding) +
                                         frame.repeated(frames)));
        book.chapter("Information before other frames");
        book.tell("one channel before two",
                  walkAnswer(infoFrame({3, 9, 0, true}, 7, 0, 576, 0) + frame.repeated(7)));
        book.tell("nothing behind", walkAnswer(infoFrame({3, 9}, 7, 0, 576, 0)));
        book.tell("low", walkAnswer(infoFrame({2, 13}, 7, 0, 576, 0) + frameOf({2, 1}).repeated(7)));
    }
    /// Where the first frame may stand, and how many it takes to be believed.
    static void tellBeginnings(Book& book)
    {
        const QByteArray frame = frameOf(kSmall);
        for (const int junk : {0, 1, 50}) {
            book.chapter(QString("Frames and bytes behind %1 others").arg(junk));
            for (int frames = 1; frames < 6; ++frames)
                for (const int more : {0, 1, 3, 4, 5})
                    for (const char filling : {'x', '\xFF'})
                        book.tell(QString("%1 and %2 of %3")
                                      .arg(frames)
                                      .arg(more)
                                      .arg(QString(QChar(uchar(filling)))),
                                  walkAnswer(QByteArray(junk, 'x') + frame.repeated(frames) +
                                             QByteArray(more, filling)));
        }
        book.chapter("Behind so many bytes of something else");
        for (const int junk : {65535, 65536, 65537, 1048573, 1048575, 1048576, 1048577})
            book.tell(QString::number(junk), walkAnswer(QByteArray(junk, 'x') + frame.repeated(5)));
        book.chapter("So many frames");
        for (const int frames : {1, 63, 64, 65, 128, 129, 630, 700})
            book.tell(QString::number(frames), walkAnswer(frame.repeated(frames)));
        book.chapter("Sizes of frames");
        for (const Kind& kind : {Kind{2, 1, 1}, Kind{2, 1}, Kind{0, 1, 1, true}, Kind{3, 14, 2, false, true},
                                 Kind{2, 14, 2, false, true}, Kind{0, 14, 2, false, true}})
            book.tell(words(*Mp3Header::parse(bytesOf(headOf(kind)))),
                      walkAnswer(frameOf(kind).repeated(40)));
        book.chapter("Tags before the frames");
        const QByteArray tag = id3v2(QByteArray(20, 'x'));
        for (const int told : {0, 19, 20, 21, 104, 127})
            for (const int tags : {1, 2})
                book.tell(QString("%1 of them, told size %2").arg(tags).arg(told),
                          walkAnswer(QByteArray(tag).replace(9, 1, QByteArray(1, char(told))).repeated(tags) +
                                     frame.repeated(5)));
    }
    /// Frames that take data from those before.
    static void tellReservoir(Book& book)
    {
        for (const Kind& kind : {kSmall, Kind{3, 14}, kLow, Kind{2, 14}, Kind{3, 1, 0, true, false, true}}) {
            const QByteArray frame = frameOf(kind);
            const auto head = *Mp3Header::parse(bytesOf(frame));
            const int own = static_cast<int>(frame.size()) - head.sideInfoOffset() - head.sideInfoBytes();
            book.chapter("What a frame takes from before, " + words(head), walkAnswer(frame.repeated(9)));
            const int most = mostMainDataBegin(head);
            QList<int> begins{1, most - 1, most};
            for (const int frames : {1, 2, 3})
                for (const int beside : {-1, 0, 1})
                    if (frames * own + beside <= most)
                        begins << frames * own + beside;
            for (const int begin : std::as_const(begins))
                for (const int at : {0, 1, 2, 3, 8})
                    book.tell(QString("%1 by frame %2").arg(begin).arg(at),
                              walkAnswer(frame.repeated(at) + frameOf(kind, begin) + frame.repeated(8 - at)));
            book.tell("the first two, and one later",
                      walkAnswer(frameOf(kind, 200).repeated(2) + frame.repeated(4) + frameOf(kind, most) +
                                 frame.repeated(2)));
        }
    }
};

QTEST_APPLESS_MAIN(TestMp3Answers)
#include "tst_mp3answers.moc"
