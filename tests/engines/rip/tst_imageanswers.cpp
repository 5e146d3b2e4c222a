#include "answers/Sweep.h"
#include "engines/audio/AudioKit.h"
#include "engines/audio/makers.h"
#include "engines/rip/image/ImageDisc.h"
#include "engines/rip/sheets/SheetFolder.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

constexpr int kFrame = 2352;

/// Sound of which every pair of samples tells where in its file it stands.
QByteArray counting(qsizetype bytes, int file, bool highFirst = false)
{
    QByteArray sound(bytes, '\0');
    for (qsizetype at = 0; at + 3 < bytes; at += 4) {
        const auto left = static_cast<quint16>(at / 4 % 10'000);
        const auto right = static_cast<quint16>(file);
        const auto put = [&](qsizetype place, quint16 value) {
            sound[place + (highFirst ? 1 : 0)] = static_cast<char>(value);
            sound[place + (highFirst ? 0 : 1)] = static_cast<char>(value >> 8);
        };
        put(at, left);
        put(at + 2, right);
    }
    return sound;
}

/// Sectors of 2448 bytes: sound, and behind it something that is none.
QByteArray withGraphics(int sectors, int file)
{
    const QByteArray sound = counting(sectors * kFrame, file);
    QByteArray bytes;
    for (int i = 0; i < sectors; ++i)
        bytes += sound.mid(i * kFrame, kFrame) + QByteArray(96, '\x55');
    return bytes;
}

QString pairAt(const QByteArray& frames, qsizetype at)
{
    const auto word = [&](qsizetype place) {
        return static_cast<uchar>(frames[place]) | static_cast<uchar>(frames[place + 1]) << 8;
    };
    const int left = word(at);
    const int right = word(at + 2);
    return left == 0 && right == 0 ? QString("silence") : QString("%1 of file %2").arg(left).arg(right);
}

/// A folder with a sheet and its files.
class Bench
{
public:
    Bench(const char* sheet, const QByteArray& text, const QList<std::pair<const char*, QByteArray>>& files)
    {
        for (const auto& [name, content] : files) {
            QDir().mkpath(QFileInfo(folder.filePath(name)).path());
            kit::write(folder.filePath(name), content);
        }
        kit::write(folder.filePath(sheet), text);
        const auto opened = ImageDisc::open(folder.filePath(sheet), makeAudioFile);
        if (opened)
            disc = *opened;
        else
            refused = opened.error().detail;
    }
    Answer contents() const
    {
        if (!disc)
            return {"refused: " + refused};
        Answer words;
        for (const TocTrack& track : disc->tracks())
            words << QString("track %1: %2 from %3, gap %4, behind it %5%6")
                         .arg(track.number)
                         .arg(track.frames)
                         .arg(track.start)
                         .arg(track.gap)
                         .arg(disc->gapBehind(track, m_stopped))
                         .arg(track.audio ? "" : ", data");
        return words << "remark: " + disc->remark();
    }
    /// Frames one by one: where they begin and end in which file.
    Answer frame(qint32 first) const
    {
        QByteArray sound(kFrame, '\x11');
        const qint32 got = disc->read(sound.data(), first, 1);
        return {QString("%1: %2 to %3, file '%4'")
                    .arg(got)
                    .arg(pairAt(sound, 0), pairAt(sound, kFrame - 4), disc->fileAt(first))};
    }
    /// Several at once.
    Answer frames(qint32 first, qint32 count) const
    {
        QByteArray all(count * kFrame, '\x11');
        const qint32 got = disc->read(all.data(), first, count);
        QByteArray single(kFrame, '\0');
        bool same = true;
        for (qint32 i = 0; i < got; ++i)
            same =
                same && disc->read(single.data(), first + i, 1) == 1 && single == all.mid(i * kFrame, kFrame);
        return {QString("%1%2").arg(got).arg(same ? "" : ", OTHERS than one by one")};
    }
    /// All that a reader gives of a track.
    Answer track(const TocTrack& track) const
    {
        const auto reader = disc->makeReader(m_stopped, {});
        reader->begin(track);
        bool same = true;
        for (qint32 i = 0; i < track.frames + 1; ++i) {
            const auto got = reader->next();
            if (!got)
                return {QString("%1 frames, then %2 at %3")
                            .arg(i)
                            .arg(got.error().detail)
                            .arg(reader->badFrame())};
            QByteArray single(kFrame, '\0');
            disc->read(single.data(), track.start + i, 1);
            same = same && single == QByteArray(*got, kFrame);
        }
        return {QString("%1 frames%2").arg(track.frames + 1).arg(same ? "" : ", OTHERS")};
    }

    QTemporaryDir folder;
    std::shared_ptr<ImageDisc> disc;
    QString refused;

private:
    std::atomic<bool> m_stopped = false;
};

void tell(Book& book, const QString& title, const Bench& bench)
{
    book.chapter(title);
    book.tell("contents", bench.contents());
    if (!bench.disc)
        return;
    const TocTrack last = bench.disc->tracks().last();
    for (qint32 frame = 0; frame < last.start + last.frames + 2; ++frame)
        book.tell(QString::number(frame), bench.frame(frame));
    for (const qint32 first : {0, 1, 5})
        for (const qint32 count : {0, 1, 2, 7, 40})
            book.tell(QString("%1 from %2").arg(count).arg(first), bench.frames(first, count));
    for (const TocTrack& track : bench.disc->tracks())
        book.tell(QString("track %1").arg(track.number), bench.track(track));
}

} // namespace

/// What is copied of disc images: which bytes of which file make a frame, recorded.
class TestImageAnswers : public QObject
{
    Q_OBJECT
private slots:
    void discs()
    {
        Book book("engines/rip/answers/images");
        tell(book, "One file, gaps, and a file that ends within a frame",
             Bench("a.cue",
                   "FILE a.bin BINARY\nTRACK 1 AUDIO\nPREGAP 0:0:2\nINDEX 1 0:0:1\nTRACK 2 AUDIO\nINDEX 0 "
                   "0:0:5\nINDEX 1 "
                   "0:0:7\nPOSTGAP 0:0:1\nTRACK 3 AUDIO\nINDEX 1 0:0:9\n",
                   {{"a.bin", counting(12 * kFrame + 1000, 1)}}));
        tell(book, "Sectors with graphics, a swapped file, a WAVE file",
             Bench("a.cue",
                   "FILE a.bin BINARY\nTRACK 1 CDG\nINDEX 1 0:0:0\nFILE b.bin MOTOROLA\nTRACK 2 AUDIO\nINDEX "
                   "0 0:0:0\nINDEX 1 "
                   "0:0:2\nFILE c.wav WAVE\nTRACK 3 AUDIO\nINDEX 1 0:0:0\n",
                   {{"a.bin", withGraphics(4, 1)},
                    {"b.bin", counting(5 * kFrame, 2, true)},
                    {"c.wav", kit::riff(kit::chunk("fmt ", kit::format(1, 2, 44100, 16)) +
                                        kit::chunk("data", counting(3 * kFrame + 200, 3)))}}));
        tell(book, "Parts of files put together",
             Bench("a.toc",
                   "CD_DA\nTRACK AUDIO\nSILENCE 600\nFILE \"a.raw\" SWAP 10 1000\nFILE \"a.raw\" SWAP #8 "
                   "0:0:1 700\n"
                   "TRACK AUDIO\nPREGAP 0:0:1\nFILE \"b.raw\" 0\nTRACK AUDIO\nFILE \"a.raw\" SWAP "
                   "0:0:3\nSTART 0:0:1\n",
                   {{"a.raw", counting(6 * kFrame, 1)}, {"b.raw", counting(2 * kFrame + 40, 2, true)}}));
        tell(book, "A file that is cut short",
             Bench("a.cue", "FILE a.bin BINARY\nTRACK 1 AUDIO\nINDEX 1 0:0:0\nTRACK 2 AUDIO\nINDEX 1 0:0:6\n",
                   {{"a.bin", counting(3 * kFrame + 10, 1)}}));
        tell(book, "Many frames",
             Bench("a.cue",
                   "FILE a.bin BINARY\nTRACK 1 AUDIO\nINDEX 1 0:0:0\nTRACK 2 AUDIO\nINDEX 1 0:1:56\n",
                   {{"a.bin", counting(200 * kFrame, 1)}}));
        ZIB_COMPARE_ANSWERS(book);
    }
    void folders()
    {
        Book book("engines/rip/answers/sheetfolders");
        const QTemporaryDir folder;
        for (const char* name : {"a.bin", "B.Bin", "sub/c.bin", "SUB2/D.bin", "two", "TWO", "e f.bin"}) {
            QDir().mkpath(QFileInfo(folder.filePath(name)).path());
            kit::write(folder.filePath(name), "x");
        }
        const SheetFolder found(folder.filePath("a.cue"), "windows-1252");
        book.chapter("Names in a sheet");
        for (const char* name : {"a.bin",
                                 "A.BIN",
                                 "b.bin",
                                 "./a.bin",
                                 "sub/../a.bin",
                                 "sub/c.bin",
                                 "SUB/C.BIN",
                                 "sub\\c.bin",
                                 "sub2\\d.bin",
                                 "two",
                                 "Two",
                                 "TWO",
                                 "x.bin",
                                 "C:\\music\\a.bin",
                                 "c:a.bin",
                                 "\\\\host\\a.bin",
                                 "/nowhere/a.bin",
                                 "/nowhere/B.BIN",
                                 "~/a.bin",
                                 "~/A.bin",
                                 "sub",
                                 "",
                                 "/",
                                 "e f.bin",
                                 "E F.BIN",
                                 "sub//c.bin",
                                 "a.bin/",
                                 "C:\\music\\sub\\c.bin",
                                 "nowhere/a.bin"}) {
            const QString wanted = QString(name).replace("~", folder.path());
            const auto path = found.find(wanted);
            const QString words = path ? QString::fromLocal8Bit(*path) : path.error().detail;
            book.tell(QString("'%1'").arg(name), {QString(words).replace(folder.path(), "~")});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
};

QTEST_GUILESS_MAIN(TestImageAnswers)
#include "tst_imageanswers.moc"
