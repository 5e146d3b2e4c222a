#include "answers/Sweep.h"
#include "engines/burn/compare/DiscPiece.h"
#include "engines/burn/drive/DriveWords.h"
#include "engines/burn/ScriptedDrive.h"

#include <QTest>

#include <array>
#include <cerrno>

#include <libburn/libburn.h>

using namespace zib;
using answers::Answer;
using answers::Book;

namespace {

using Phase = WritePhases::Phase;

BurnJob jobOf(const QList<qint64>& lengths)
{
    BurnJob job;
    for (const qint64 frames : lengths)
        job.tracks << BurnTrack{.path = "a", .name = "a", .length = CdTime::fromFrames(frames)};
    return job;
}

Answer wordsOf(const BurnError& error)
{
    return {QString("error: %1, %2 %3").arg(error.error).arg(error.sense).arg(error.senseData),
            QString("words: ") + error.description};
}

/// All that is told of a write.
struct Listener final : BurnObserver
{
    void readingTrack(int track) override { told << QString("reading %1").arg(track); }
    void progress(int track, qint64 done, qint64 size) override
    {
        told << QString("%1: %2 of %3").arg(track).arg(done).arg(size);
    }
    void closingTrack(int track) override { told << QString("closing %1").arg(track); }
    void closingDisc() override { told << "closing disc"; }
    void readingBack() override { told << "reading back"; }

    QStringList told;
};

const char* nameOf(Phase phase)
{
    constexpr std::array kNames{"preparing", "writing", "closing a track", "closing the disc",
                                "reading back"};
    return kNames.at(static_cast<size_t>(phase));
}

Answer phasesAnswer(const QList<LibraryView>& views, bool sessionAtOnce)
{
    const BurnJob job = jobOf({400, 300});
    Listener listener;
    WritePhases phases(job, sessionAtOnce, listener);
    for (const LibraryView& view : views)
        phases.see(view);
    return {listener.told.join(", "), QString("%1 %2%3")
                                          .arg(nameOf(phases.phase()))
                                          .arg(phases.track())
                                          .arg(phases.handedOver() ? ", handed over" : "")};
}

struct Message
{
    const char* severity;
    const char* text;
};

/// What is made of messages of the library.
Answer messagesAnswer(const QList<Message>& messages)
{
    LibburnMessages collected;
    collected.clear();
    for (const Message& message : messages)
        burn::burn_msgs_submit(0x10000, const_cast<char*>(message.text), 0,
                               const_cast<char*>(message.severity), nullptr);
    collected.collect();
    const char* steps[] = {"other", "layout", "place", "write", "flush", "close"};
    return {QString("%1 %2, track %3, address %4%5%6%7, reason '%8'")
                .arg(steps[static_cast<int>(collected.step())],
                     collected.sense() ? collected.sense()->toText() : QString("no sense"))
                .arg(collected.track())
                .arg(collected.address())
                .arg(collected.failed() ? ", failed" : "",
                     collected.transportFailed() ? ", lost on its way" : "",
                     collected.connectionLost() ? ", gone" : "", collected.reason())};
}

/// Every kind of message in words of the library's own.
const QList<Message> kMessages{
    {"FATAL", "SCSI error on write(1234,16): [3 0C 00] Medium error. Write error."},
    {"FATAL", "SCSI error on write(-150,16): [5 21 02]"},
    {"SORRY", "SCSI command 5Dh SEND CUE SHEET yielded host problem: 0x3"},
    {"FATAL", "Failed to synchronize drive cache. SCSI error : [3 73 03]"},
    {"FATAL", "Drive refused CLOSE TRACK"},
    {"FAILURE", "Cannot close session"},
    {"FATAL", "Problem with WRITE(10)"},
    {"FATAL", "Lost connection to drive"},
    {"FATAL", "host_status=3 [0 00 00]"},
    {"FATAL", "Burn run failed"},
    {"WARNING", "write(1,2) [3 0C 00]"},
    {"NOTE", "SCSI error on command 52h: [5 24 00]"},
    {"DEBUG", "TAO pre-track 3 : get_nwa(-1)=0, d=0"},
    {"DEBUG", "TAO pre-track 3 : get_nwa(-1)=-150"},
    {"DEBUG", "TAO pre-track 3 : get_nwa(-1)=500"},
    {"SORRY", "Something else [2 04 08]"}};

QString wordsOf(const QList<DiscPiece>& pieces)
{
    QStringList words;
    for (const DiscPiece& piece : pieces)
        words << QString("%1%2 at %3, %4 long, from %5")
                     .arg(piece.silent ? "silence " : "")
                     .arg(piece.track)
                     .arg(piece.start)
                     .arg(piece.length.frames())
                     .arg(piece.first);
    return words.join("; ");
}

} // namespace

/// What is made of a write under way, and told of it: looks at the library, its messages, discs afterwards,
/// recorded.
class TestWriteAnswers : public QObject
{
    Q_OBJECT
private slots:
    void phases()
    {
        Book book("engines/burn/answers/phases");
        for (const bool sessionAtOnce : {true, false}) {
            book.chapter(sessionAtOnce ? "One look, a session at once" : "One look, tracks one by one");
            for (const int begun : {0, 2})
                for (const bool atTrack : {false, true})
                    for (const int track : {-1, 0, 1, 2, 3})
                        for (const int sector : {-1, 0, 1, 299, 300, 399, 400, 401})
                            book.tell(
                                QString("%1 begun, %2 at %3 of track %4")
                                    .arg(begun)
                                    .arg(atTrack ? "writing" : "not")
                                    .arg(sector)
                                    .arg(track),
                                phasesAnswer({{begun, atTrack, false, track, sector, track == 2 ? 300 : 400}},
                                             sessionAtOnce));
            book.chapter(sessionAtOnce ? "Looks one after the other"
                                       : "Looks one after the other, tracks one by one");
            const QList<LibraryView> looks{{1, true, false, 1, 200, 400}, {1, true, false, 1, 400, 400},
                                           {2, true, false, 2, 100, 300}, {2, true, false, 2, 300, 300},
                                           {1, false, true, 1, 0, 0},     {2, false, true, 2, 0, 0},
                                           {1, true, false, 1, 0, 0},     {2, true, false, 2, 1, 0}};
            for (qsizetype one = 0; one < looks.size(); ++one)
                for (qsizetype two = 0; two < looks.size(); ++two)
                    book.tell(QString("%1, %2").arg(one).arg(two),
                              phasesAnswer({looks[one], looks[two]}, sessionAtOnce));
            book.tell("all", phasesAnswer(looks.first(4), sessionAtOnce));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void messages()
    {
        const LibburnSession session;
        Book book("engines/burn/answers/messages");
        book.chapter("Messages by themselves");
        for (const Message& message : kMessages)
            book.tell(message.text, messagesAnswer({message}));
        book.chapter("Messages by severity");
        for (const char* severity :
             {"DEBUG", "UPDATE", "NOTE", "HINT", "WARNING", "SORRY", "MISHAP", "FAILURE", "FATAL"})
            book.tell(severity, messagesAnswer({{severity, "SCSI error on write(7,1): [3 0C 00]"}}));
        book.chapter("Two messages");
        for (qsizetype one = 0; one < kMessages.size(); ++one)
            for (qsizetype two = 0; two < kMessages.size(); ++two)
                book.tell(QString("%1, %2").arg(one).arg(two),
                          messagesAnswer({kMessages[one], kMessages[two]}));
        book.chapter("What a drive was doing when it failed");
        for (const Message& message : kMessages) {
            LibburnMessages collected;
            collected.clear();
            burn::burn_msgs_submit(0x10000, const_cast<char*>(message.text), 0,
                                   const_cast<char*>(message.severity), nullptr);
            collected.collect();
            for (const Phase phase : {Phase::Preparing, Phase::Writing, Phase::ClosingTrack,
                                      Phase::ClosingDisc, Phase::ReadingBack})
                for (const int track : {0, 2})
                    for (const bool sessionAtOnce : {true, false})
                        book.tell(QString("%1, %2 %3, %4")
                                      .arg(message.text, nameOf(phase))
                                      .arg(track)
                                      .arg(sessionAtOnce ? "session" : "tracks"),
                                  {failedStep(collected, phase, track, sessionAtOnce)});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void words()
    {
        Book book("engines/burn/answers/writewords");
        book.chapter("Advice by sense key");
        for (int key = 0; key < 16; ++key)
            for (const int asc : {0x04, 0x3A})
                book.tell(QString("%1 %2").arg(key).arg(asc), {adviceOn({key, asc, 0})});
        book.chapter("Plans that fail");
        for (int kind = 0; kind < 7; ++kind)
            for (int bits = 0; bits < 4; ++bits)
                book.tell(QString("%1, %2").arg(kind).arg(bits),
                          wordsOf(planError({static_cast<PlanFault::Kind>(kind), Sense{5, 0x26, 2}},
                                            {true, (bits & 1) != 0, (bits & 2) != 0, false}, "/dev/sr9")));
        book.chapter("Answers");
        const QList<std::pair<const char*, DriveAnswer>> given{
            {"good", {DriveAnswer::Kind::Good, {}, {}}},
            {"becoming ready", {DriveAnswer::Kind::Refused, {2, 4, 1}, {}}},
            {"otherwise not ready", {DriveAnswer::Kind::Refused, {2, 4, 2}, {}}},
            {"changed", {DriveAnswer::Kind::Refused, {6, 0x28, 1}, {}}},
            {"no disc", {DriveAnswer::Kind::Refused, {2, 0x3A, 0}, {}}},
            {"broken", {DriveAnswer::Kind::Broken, {2, 4, 1}, {}}},
            {"gone", {DriveAnswer::Kind::Gone, {}, {}}}};
        for (const auto& [name, answer] : given) {
            book.tell(name,
                      Answer{waitingWords(answer)} + wordsOf(answerError(answer, "/dev/sr9", "It failed.")));
            for (int truth = 0; truth < 4; ++truth) {
                const DiscVerdict verdict{static_cast<DiscVerdict::Truth>(truth), answer};
                book.tell(QString("%1 with verdict %2").arg(name).arg(truth),
                          Answer{verdict.sentence()} + wordsOf(notBlank(verdict, "/dev/sr9")));
            }
        }
        book.chapter("Others");
        book.tell("too long", wordsOf(tooLong(CdTime::fromFrames(360'001), CdTime::fromFrames(359'849))));
        book.tell("without a reason", wordsOf(withoutSense("It failed.", {})));
        book.tell("with one", wordsOf(withoutSense("It failed.", "no idea")));
        for (int phase = 0; phase < 5; ++phase)
            book.tell(nameOf(static_cast<Phase>(phase)), {waitingWords(static_cast<Phase>(phase))});
        book.chapter("Tracks by address");
        for (int address = -200; address < 1'500; ++address)
            book.tell(QString::number(address), {QString::number(trackAt(address, jobOf({400, 300, 350})))});
        ZIB_COMPARE_ANSWERS(book);
    }
    void verdicts()
    {
        Book book("engines/burn/answers/verdicts");
        book.chapter("Discs of two tracks after a write");
        for (const int status : {0, 1, 2, 3})
            for (const int sessions : {0, 1, 2})
                for (const int surplus : {-1, 0, 1, 9, 10})
                    for (const bool closeDisc : {true, false})
                        for (const bool trackAtOnce : {false, true})
                            book.tell(
                                QString("status %1, %2 sessions, %3 too long%4%5")
                                    .arg(status)
                                    .arg(sessions)
                                    .arg(surplus)
                                    .arg(closeDisc ? ", to be closed" : "", trackAtOnce ? ", tracks" : ""),
                                {judged(status, sessions, surplus, closeDisc, trackAtOnce)});
        book.chapter("Drives that do not tell");
        for (const char* command : {"\x51", "\x46", "\x43"})
            for (const DriveReply& reply :
                 {DriveReply::refusal({2, 0x3A, 0}), DriveReply{.error = ENODEV}, DriveReply{.error = EIO}}) {
                ScriptedDrive drive;
                prepare(drive, 2, 1, 0);
                drive.answer(command, {reply});
                const DiscVerdict verdict = judgeDisc(drive.line(), jobOf({400, 300}), false, 60'000);
                book.tell(QString("%1, %2").arg(QByteArray(command).toHex().constData()).arg(reply.error),
                          {QString::number(static_cast<int>(verdict.truth)), verdict.sentence(),
                           verdict.refusal.sense.toText()});
            }
        ZIB_COMPARE_ANSWERS(book);
    }
    void pieces()
    {
        Book book("engines/burn/answers/pieces");
        const QList<DiscPiece> all = piecesOf(jobOf({400, 300, 350}).tracks);
        book.chapter("Three tracks");
        book.tell("at once", {wordsOf(all)});
        for (const qint64 gap : {149, 150, 151})
            book.tell(QString("%1 apart").arg(gap),
                      {wordsOf(piecesAt(jobOf({400, 300}).tracks, {5, 405 + gap}))});
        book.chapter("In parts of so many frames");
        for (const qint64 frames : {75, 149, 150, 151, 399, 400, 401, 10'000})
            book.tell(QString::number(frames), {wordsOf(inParts(all, frames))});
        book.chapter("Between addresses");
        for (const qint64 from : {-5, 0, 1, 399, 400, 549, 550, 851})
            for (const qint64 to : {0, 1, 400, 401, 550, 551, 2'000})
                book.tell(QString("%1 and %2").arg(from).arg(to), {wordsOf(between(all, from, to))});
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static QByteArray bigEndian(qint64 number)
    {
        QByteArray bytes;
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(number >> shift);
        return bytes;
    }
    static void prepare(ScriptedDrive& drive, int status, int sessions, int surplus)
    {
        QByteArray information(34, '\0');
        information[2] = static_cast<char>(status);
        information[4] = static_cast<char>(sessions);
        const QByteArray audio = QByteArray::fromHex("00100100");
        const QByteArray toc = QByteArray::fromHex("001a0102") + audio + bigEndian(0) + audio +
                               bigEndian(550) + QByteArray::fromHex("0010aa00") + bigEndian(850 + surplus);
        drive.answer(QByteArray(1, '\0'), {{}});
        drive.answer("\x51", {{.data = information}});
        drive.answer("\x46", {{.data = QByteArray::fromHex("0000000000000009")}});
        drive.answer("\x43", {{.data = toc}});
    }
    static QString judged(int status, int sessions, int surplus, bool closeDisc, bool trackAtOnce)
    {
        ScriptedDrive drive;
        prepare(drive, status, sessions, surplus);
        BurnJob job = jobOf({400, 300});
        job.closeDisc = closeDisc;
        const DiscVerdict verdict = judgeDisc(drive.line(), job, trackAtOnce, 60'000);
        return QString("%1 after %2 questions")
            .arg(static_cast<int>(verdict.truth))
            .arg(drive.takeJournal().size());
    }
};

QTEST_APPLESS_MAIN(TestWriteAnswers)
#include "tst_writeanswers.moc"
