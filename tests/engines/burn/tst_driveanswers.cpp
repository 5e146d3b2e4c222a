#include "answers/Sweep.h"
#include "engines/burn/compare/DriveText.h"
#include "engines/burn/mmc/DiscLook.h"
#include "engines/burn/mmc/WritePage.h"
#include "engines/burn/ScriptedDrive.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <cerrno>

using namespace zib;
using answers::Answer;
using answers::Book;
using answers::Reader;

namespace {

QString nameOf(DriveAnswer::Kind kind)
{
    switch (kind) {
    case DriveAnswer::Kind::Good:
        return "good";
    case DriveAnswer::Kind::Refused:
        return "refused";
    case DriveAnswer::Kind::Broken:
        return "broken";
    default:
        return "gone";
    }
}

Answer wordsOf(const DriveAnswer& answer)
{
    return {QString("answer: %1 %2%3%4, code %5")
                .arg(nameOf(answer.kind), answer.sense.toText(), answer.passing() ? " passing" : "",
                     answer.hasNoDisc() ? " no disc" : "")
                .arg(writerErrorCode(answer.sense)),
            QString("data: ") + QString::fromLatin1(answer.data.toHex())};
}

QString wordsOf(DiscFacts::Status status)
{
    switch (status) {
    case DiscFacts::Status::Blank:
        return "blank";
    case DiscFacts::Status::Appendable:
        return "appendable";
    case DiscFacts::Status::Complete:
        return "complete";
    default:
        return "other";
    }
}

Answer factsAnswer(ScriptedDrive& drive)
{
    DriveAnswer refusal{.kind = DriveAnswer::Kind::Good};
    const auto facts = factsOf(drive.line(), refusal);
    const Answer asked{"asked: " + drive.takeJournal().join(", ")};
    if (!facts)
        return Answer{"disc: not told"} + wordsOf(refusal) + asked;
    return Answer{QString("disc: %1, profile %2, %3 sessions, %4 frames")
                      .arg(wordsOf(facts->status))
                      .arg(facts->profile.value_or(-1))
                      .arg(facts->sessions)
                      .arg(facts->capacity.frames())} +
           wordsOf(refusal) + asked;
}

Answer contentsAnswer(ScriptedDrive& drive)
{
    DriveAnswer refusal{.kind = DriveAnswer::Kind::Good};
    const auto contents = contentsOf(drive.line(), refusal);
    const Answer asked{"asked: " + drive.takeJournal().join(", ")};
    if (!contents)
        return Answer{"contents: not told"} + wordsOf(refusal) + asked;
    Answer words{QString("lead-out: %1").arg(contents->leadOut)};
    for (qsizetype i = 0; i < contents->tracks.size(); ++i)
        words << QString("track %1: %2%3")
                     .arg(i)
                     .arg(contents->tracks[i].start)
                     .arg(contents->tracks[i].audio ? " sound" : " data");
    return words + asked;
}

Answer speedsAnswer(ScriptedDrive& drive)
{
    Answer words;
    for (const WriteSpeed& speed : speedsOf(drive.line()))
        words << QString("%1x: %2").arg(speed.factor).arg(speed.value);
    return words << "asked: " + drive.takeJournal().join(", ");
}

Answer abilitiesAnswer(ScriptedDrive& drive)
{
    const auto abilities = abilitiesOf(drive.line());
    const QString asked = "asked: " + drive.takeJournal().join(", ");
    if (!abilities)
        return {"drive: not told", asked};
    QStringList can;
    const auto add = [&can](bool is, const char* word) {
        if (is)
            can << word;
    };
    add(abilities->isDisc, "disc");
    add(abilities->writesCdR, "CD-R");
    add(abilities->writesCdRw, "CD-RW");
    add(abilities->sessionAtOnce, "session at once");
    add(abilities->trackAtOnce, "track at once");
    add(abilities->simulates, "simulates");
    add(abilities->bufferProtection, "protection");
    return {QString("drive: '%1' '%2'").arg(abilities->maker, abilities->model), "can: " + can.join(", "),
            asked};
}

QString wordsOf(const std::optional<PlanFault>& fault)
{
    if (!fault)
        return "as planned";
    const std::array<const char*, 7> kinds{"refused", "test mode", "write type", "protection",
                                           "closing", "untold",    "lost"};
    return QString(kinds[static_cast<size_t>(fault->kind)]) +
           (fault->sense ? " " + fault->sense->toText() : "");
}

WritePlan planOf(int bits)
{
    return {(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// The same answer of another drive, made anew for each of the bytes that it sends to @p command.
Reader readerOf(const QByteArray& command, Answer (*ask)(ScriptedDrive&),
                void (*prepare)(ScriptedDrive&) = nullptr)
{
    return [=](const QByteArray& data) {
        ScriptedDrive drive;
        if (prepare)
            prepare(drive);
        drive.answer(command, {{.data = data}});
        return ask(drive);
    };
}

const QByteArray kInformation = hex("002009010203040506070809") + QByteArray(8, '\0') + hex("004f3b4a") +
                                QByteArray(10, '\0'); // lead-out at 79:59:74
const QByteArray kProfile = hex("0000000000000009");
const QByteArray kToc =
    hex("001a0103") + hex("0010010000000000") + hex("0014020000001234") + hex("0010aa0000012345");
const QByteArray kPage2A = hex("0000000000000000") + hex("2a1e0307f100000000000000000000000000000000000000") +
                           hex("000000000000") + hex("0003") + hex("00001b90") + hex("00000dc8") +
                           hex("000002c2");
const QByteArray kPerformance =
    QByteArray(8, '\0') + QByteArray(12, '\0') + hex("00001b90") + QByteArray(12, '\0') + hex("00000583");
const QByteArray kIdentity = hex("05800532") + QByteArray(4, '\0') + "MAKER   MODEL NAME  16  1.00";
const QByteArray kWritePage =
    hex("003a000000000000") + hex("05320200") + QByteArray(12, '\0') + QByteArray(36, '\x11');

QByteArray featureOf(int feature, int byte)
{
    return hex("0000000000000009") + QByteArray(1, char(feature >> 8)) + QByteArray(1, char(feature)) +
           hex("0304") + QByteArray(1, char(byte)) + QByteArray(3, '\0');
}

void withDisc(ScriptedDrive& drive)
{
    drive.answer("\x51", {{.data = kInformation}});
    drive.answer("\x46", {{.data = kProfile}});
}

void withSpeeds(ScriptedDrive& drive)
{
    drive.answer("\x5A", {{.data = kPage2A}});
    drive.answer("\xAC", {{.data = kPerformance}});
}

void withAbilities(ScriptedDrive& drive)
{
    drive.answer("\x12", {{.data = kIdentity}});
    drive.answer("\x5A", {{.data = kPage2A}});
    drive.answer(hex("46020001"), {{.data = featureOf(1, 0)}});
    drive.answer(hex("4602002d"), {{.data = featureOf(0x2D, 0)}});
    drive.answer(hex("4602002e"), {{.data = featureOf(0x2E, 0x20)}});
}

/// Replies that are no data: what a drive may say first, or for ever.
const QList<std::pair<const char*, DriveReply>> kMoods{{"becoming ready", DriveReply::refusal({2, 4, 1})},
                                                       {"changed", DriveReply::refusal({6, 0x28, 0})},
                                                       {"illegal", DriveReply::refusal({5, 0x20, 0})},
                                                       {"bad field", DriveReply::refusal({5, 0x24, 0})},
                                                       {"no disc", DriveReply::refusal({2, 0x3A, 0})},
                                                       {"broken", {.error = EIO}},
                                                       {"gone", {.error = ENODEV}},
                                                       {"interrupted", {.error = EINTR}},
                                                       {"host", {.host = 3}}};

/// What comes of it when a drive is in a mood so many times before it answers @p command.
void tellMoods(Book& book, const QString& title, const QByteArray& command, const QByteArray& data,
               Answer (*ask)(ScriptedDrive&), void (*prepare)(ScriptedDrive&) = nullptr)
{
    book.chapter(title + ", what a drive may say first, and how often");
    for (const auto& [name, reply] : kMoods)
        for (const int times : {1, 2, 3, 9, 10, 11}) {
            ScriptedDrive drive;
            if (prepare)
                prepare(drive);
            drive.answer(command, QList<DriveReply>(times, reply) << DriveReply{.data = data});
            Answer words = ask(drive);
            const QStringList journal = words.last().section("asked: ", -1).split(", ");
            const auto asked = std::count_if(journal.cbegin(), journal.cend(), [&](const QString& line) {
                return line.startsWith(QString::fromLatin1(command.toHex()));
            });
            const QStringList waits = journal.filter("pause");
            QStringList questions = journal;
            questions.removeDuplicates();
            words.last() = QString("asked %1 times, %2 times %3: %4")
                               .arg(asked)
                               .arg(waits.size())
                               .arg(waits.value(0, "no pause"), questions.filter("within").join(", "));
            book.tell(QString("%1 %2").arg(name).arg(times), words);
        }
}

} // namespace

/// What is made of all that a drive may answer, and what it is asked, recorded.
class TestDriveAnswers : public QObject
{
    Q_OBJECT
private slots:
    void senses()
    {
        Book book("engines/burn/answers/senses");
        book.chapter("Writer error codes by additional sense code, qualifiers and keys");
        for (int asc = 0; asc < 256; ++asc)
            for (int ascq = 0; ascq < 256; ++ascq)
                book.tell(QString("%1.%2").arg(asc).arg(ascq), codesOf(asc, ascq));
        const auto inText = [](const QByteArray& text) {
            const auto sense = Sense::inText(QString::fromLatin1(text));
            return Answer{sense ? sense->toText() : QString("none")};
        };
        answers::everyLetter(book, "In a text", "x [3 0C 9f] [4 01 02]", inText,
                             {"0", "f", "G", " ", "[", "]"});
        ZIB_COMPARE_ANSWERS(book);
    }
    void answers()
    {
        Book book("engines/burn/answers/driveanswers");
        const auto senseAnswer = [](const QByteArray& sense) {
            ScriptedDrive drive;
            drive.answer(QByteArray(1, '\0'), {{.status = 2, .sense = sense}});
            return wordsOf(drive.line().send({0, 0, 0, 0, 0, 0}));
        };
        const QByteArray fixed = DriveReply::refusal({3, 0x11, 5}).sense;
        answers::everyByte(book, "Fixed sense data", fixed, senseAnswer, 0, fixed.size());
        const QByteArray described = hex("7203110500000000") + QByteArray(10, '\x11');
        answers::everyByte(book, "Descriptor sense data", described, senseAnswer, 0, described.size());
        tellStatus(book);
        tellData(book);
        ZIB_COMPARE_ANSWERS(book);
    }
    void discs()
    {
        Book book("engines/burn/answers/discs");
        book.chapter("A disc");
        book.tell("all", readerOf("\x51", factsAnswer, withDisc)(kInformation));
        sweep(book, "Disc information", kInformation, readerOf("\x51", factsAnswer, withDisc));
        sweep(book, "Profile", kProfile, readerOf("\x46", factsAnswer, withDisc));
        tellMoods(book, "Disc information", "\x51", kInformation, factsAnswer, withDisc);
        tellMoods(book, "Profile", "\x46", kProfile, factsAnswer, withDisc);
        book.chapter("A drive older than profiles");
        for (const int bits : {0x00, 0x0E, 0x10, 0x1E}) {
            ScriptedDrive drive;
            drive.answer("\x51",
                         {{.data = QByteArray(kInformation).replace(2, 1, QByteArray(1, char(bits)))}});
            book.tell(QString::number(bits), factsAnswer(drive));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void contents()
    {
        Book book("engines/burn/answers/contents");
        const auto read = readerOf("\x43", contentsAnswer);
        book.chapter("A table of contents");
        book.tell("all", read(kToc));
        sweep(book, "Contents", kToc, read);
        tellMoods(book, "Contents", "\x43", kToc, contentsAnswer);
        book.chapter("Asked otherwise");
        ScriptedDrive drive;
        drive.answer("\x52", {{.data = hex("0102")}});
        book.tell("next track", wordsOf(nextTrackOf(drive.line())) + drive.takeJournal());
        ZIB_COMPARE_ANSWERS(book);
    }
    void abilities()
    {
        Book book("engines/burn/answers/abilities");
        const auto identity = readerOf("\x12", abilitiesAnswer, withAbilities);
        book.chapter("A drive");
        book.tell("all", identity(kIdentity));
        sweep(book, "Identity", kIdentity, identity);
        sweep(book, "Page of abilities", kPage2A, readerOf("\x5A", abilitiesAnswer, withAbilities));
        for (const int feature : {0x01, 0x2D, 0x2E})
            sweep(book, QString("Feature %1").arg(feature), featureOf(feature, feature == 0x2E ? 0x20 : 0),
                  readerOf(hex("460200") + char(feature), abilitiesAnswer, withAbilities));
        tellMoods(book, "Identity", "\x12", kIdentity, abilitiesAnswer, withAbilities);
        tellMoods(book, "Page of abilities", "\x5A", kPage2A, abilitiesAnswer, withAbilities);
        ZIB_COMPARE_ANSWERS(book);
    }
    void speeds()
    {
        Book book("engines/burn/answers/speeds");
        const auto page = readerOf("\x5A", speedsAnswer, withSpeeds);
        book.chapter("Speeds");
        book.tell("all", page(kPage2A));
        sweep(book, "Page of speeds", kPage2A, page);
        sweep(book, "Performance", kPerformance, readerOf("\xAC", speedsAnswer, withSpeeds));
        book.chapter("Factors of the speeds in kB/s");
        for (int value = 0; value <= 10'000; ++value) {
            ScriptedDrive drive;
            drive.answer("\xAC", {{.data = QByteArray(22, '\0') + char(value >> 8) + char(value)}});
            const QList<WriteSpeed> speeds = speedsOf(drive.line());
            book.tell(QString::number(value),
                      {speeds.isEmpty() ? "none" : QString::number(speeds[0].factor)});
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void writePages()
    {
        Book book("engines/burn/answers/writepage");
        for (int bits = 0; bits < 16; ++bits)
            tellPlan(book, bits);
        const auto proof = [](const QByteArray& page) {
            ScriptedDrive drive;
            drive.answer("\x5A", {{.data = page}});
            return Answer{wordsOf(prove(drive.line(), planOf(1)))} + drive.takeJournal();
        };
        sweep(book, "Proof", kWritePage, proof);
        book.chapter("Pages of so many bytes, planned", {});
        for (int bytes = 0; bytes <= kWritePage.size(); ++bytes) {
            ScriptedDrive drive;
            drive.answer("\x5A", {{.data = kWritePage.first(bytes)}});
            drive.answer("\x55", {{}});
            book.tell(QString::number(bytes),
                      {wordsOf(plan(drive.line(), planOf(1))), drive.takeJournal().join(", ")});
        }
        book.chapter("Pages that tell so many bytes");
        for (const int bytes : {0, 1, 13, 14, 15, 16, 49, 50, 51, 255}) {
            ScriptedDrive drive;
            drive.answer("\x5A",
                         {{.data = QByteArray(kWritePage).replace(9, 1, QByteArray(1, char(bytes)))}});
            drive.answer("\x55", {{}});
            book.tell(QString::number(bytes),
                      {wordsOf(plan(drive.line(), planOf(1))), drive.takeJournal().join(", ")});
        }
        const auto proved = [](ScriptedDrive& drive) {
            return Answer{wordsOf(prove(drive.line(), planOf(1))), drive.takeJournal().join(", ")};
        };
        const auto planned = [](ScriptedDrive& drive) {
            return Answer{wordsOf(plan(drive.line(), planOf(1))), drive.takeJournal().join(", ")};
        };
        tellMoods(book, "Proof", "\x5A", kWritePage, proved);
        tellMoods(book, "Plan", "\x55", {}, planned,
                  [](ScriptedDrive& drive) { drive.answer("\x5A", {{.data = kWritePage}}); });
        ZIB_COMPARE_ANSWERS(book);
    }
    void texts()
    {
        Book book("engines/burn/answers/drivetexts");
        const QByteArray seed = hex("00260000") + QByteArray(18, '\x55') + QByteArray(18, '\x66');
        const auto ask = [](ScriptedDrive& drive) {
            const auto packs = textPacksOf(drive.line());
            const QString words = packs ? "packs: " + QString::fromLatin1(packs->toHex())
                                  : packs.error().kind == Failure::Kind::DeviceGone ? QString("gone")
                                                                                    : QString("unsupported");
            return Answer{words, "asked: " + drive.takeJournal().join(", ")};
        };
        const auto read = readerOf("\x43", ask);
        book.chapter("Packs");
        book.tell("all", read(seed));
        answers::everyLength(book, "Packs", seed, read);
        answers::everyByte(book, "Packs", seed, read, 0, 5);
        answers::everyValue(book, "Packs", seed, read, {"told size", 0, 2, true},
                            {2, 20, 38, 36864, 36866, 65535});
        tellMoods(book, "Packs", "\x43", seed, ask);
        for (const int times : {48, 49, 50}) {
            ScriptedDrive drive;
            drive.answer("\x43", QList<DriveReply>(times, DriveReply::refusal({2, 4, 1}))
                                     << DriveReply{.data = seed});
            book.tell(QString("becoming ready %1").arg(times), ask(drive).first(1));
        }
        ZIB_COMPARE_ANSWERS(book);
    }
    void waiting()
    {
        Book book("engines/burn/answers/drivewaits");
        const auto ready = [](ScriptedDrive& drive) {
            int asked = 0;
            const DriveAnswer answer =
                awaitReady(drive.line(), 60'000, [&](const DriveAnswer&) { return ++asked < 7; });
            return wordsOf(answer) << QString("asked %1 times").arg(asked) << drive.takeJournal().join(", ");
        };
        const auto door = [](ScriptedDrive& drive) {
            const bool agreed = unlockDoor(drive.line());
            return Answer{agreed ? "unlocked" : "not", drive.takeJournal().join(", ")};
        };
        tellMoods(book, "Ready", QByteArray(1, '\0'), {}, ready);
        tellMoods(book, "Door", "\x1E", {}, door);
        book.chapter("No patience");
        ScriptedDrive drive;
        drive.answer(QByteArray(1, '\0'), {DriveReply::refusal({2, 4, 1})});
        book.tell("at all", wordsOf(awaitReady(drive.line(), 0)) + drive.takeJournal());
        ZIB_COMPARE_ANSWERS(book);
    }
    void readback()
    {
        Book book("engines/burn/answers/readback");
        for (const bool trackAtOnce : {false, true}) {
            book.chapter(QString("A first and a last track so many frames too long") +
                         (trackAtOnce ? ", written one at a time" : ""));
            for (int first = -2; first < 12; ++first)
                for (int last = -2; last < 12; ++last)
                    book.tell(QString("%1 and %2").arg(first).arg(last), {showing(first, last, trackAtOnce)});
        }
        book.chapter("Other discs");
        const BurnJob job = jobOf({400, 500});
        book.tell("a track fewer", {shows({{{0, true}}, 400}, job, false) ? "shown" : "not"});
        book.tell("a track more",
                  {shows({{{0, true}, {550, true}, {1200, true}}, 1500}, job, false) ? "shown" : "not"});
        book.tell("first of data", {shows({{{0, false}, {550, true}}, 1050}, job, false) ? "shown" : "not"});
        book.tell("last of data", {shows({{{0, true}, {550, false}}, 1050}, job, false) ? "shown" : "not"});
        book.tell("nothing", {shows({}, jobOf({}), false) ? "shown" : "not"});
        ZIB_COMPARE_ANSWERS(book);
    }

private:
    static Answer codesOf(int asc, int ascq)
    {
        QList<std::pair<int, QString>> codes;
        for (int key = 0; key < 16; ++key) {
            const int code = writerErrorCode({key, asc, ascq});
            const QString digit = QString::number(key, 16).toUpper();
            if (codes.isEmpty() || codes.last().first != code)
                codes.append({code, digit});
            else
                codes.last().second += digit;
        }
        QStringList words;
        for (const auto& [code, keys] : codes)
            words << QString("%1 (%2)").arg(code).arg(keys);
        return {words.join(", ")};
    }
    static void sweep(Book& book, const QString& title, const QByteArray& seed, const Reader& read)
    {
        answers::everyLength(book, title, seed, read);
        answers::everyByte(book, title, seed, read, 0, seed.size());
    }
    static void tellStatus(Book& book)
    {
        book.chapter("Status of the drive and of the way to it");
        for (const int status : {0, 1, 2, 3, 4, 8, 0x18, 0x28, 0x40})
            for (const int host : {0, 1, 3})
                for (const int key : {0, 1, 2}) {
                    ScriptedDrive drive;
                    DriveReply reply = DriveReply::refusal({key, 4, 1});
                    reply.status = status;
                    reply.host = host;
                    reply.data = "abcd";
                    drive.answer("\x12", {reply});
                    book.tell(
                        QString("%1 of the drive, %2 of the way, key %3").arg(status).arg(host).arg(key),
                        wordsOf(drive.line().read({0x12, 0, 0, 0, 4, 0}, 4)));
                }
        for (const int error : {EIO, ENODEV, ENXIO, EINVAL, ENOMEM}) {
            ScriptedDrive drive;
            drive.answer("\x12", {{.error = EINTR}, {.error = EINTR}, {.error = error}});
            book.tell(QString("error %1").arg(error),
                      wordsOf(drive.line().read({0x12, 0, 0, 0, 4, 0}, 4)) + drive.takeJournal());
        }
    }
    static void tellData(Book& book)
    {
        book.chapter("Of six bytes asked for, bytes sent and told not to be sent");
        for (const int sent : {0, 1, 5, 6, 7})
            for (const int unsent : {-9, -1, 0, 1, 5, 6, 7}) {
                ScriptedDrive drive;
                drive.answer("\x12", {{.data = QByteArray("abcdefgh").first(sent), .unsentBytes = unsent}});
                book.tell(QString("%1 and %2").arg(sent).arg(unsent),
                          wordsOf(drive.line().read({0x12, 0, 0, 0, 6, 0}, 6)) + drive.takeJournal());
            }
        book.chapter("Whose a descriptor is");
        int descriptor = -1;
        {
            ScriptedDrive open;
            descriptor = open.line().descriptor();
            book.tell("open", {DriveLine::isOurs(descriptor) ? "ours" : "not"});
        }
        book.tell("closed", {DriveLine::isOurs(descriptor) ? "ours" : "not"});
        book.chapter("Bytes sent to a drive");
        ScriptedDrive drive;
        drive.answer("\x15", {{}});
        book.tell("three",
                  wordsOf(drive.line().send({0x15, 0, 0, 0, 3, 0}, "abc", 77)) + drive.takeJournal());
        book.tell("none", wordsOf(drive.line().send({0x15, 0, 0, 0, 0, 0})) + drive.takeJournal());
    }
    /// What every mode byte of a drive is taken for by one plan.
    static void tellPlan(Book& book, int bits)
    {
        const WritePlan wanted = planOf(bits);
        book.chapter(QString("Planned:%1%2%3%4")
                         .arg(wanted.sessionAtOnce ? " session at once" : " tracks",
                              wanted.simulate ? ", test" : "", wanted.bufferProtection ? ", protected" : "",
                              wanted.multiSession ? ", open" : ""));
        ScriptedDrive taking;
        taking.answer("\x5A", {{.data = kWritePage}});
        taking.answer("\x55", {{}});
        book.tell("sent", {wordsOf(plan(taking.line(), wanted)), taking.takeJournal().join(", ")});
        for (int place = 10; place < 12; ++place)
            for (int value = 0; value < 256; ++value) {
                QByteArray page = kWritePage;
                page[10] = static_cast<char>((wanted.bufferProtection ? 0x40 : 0) |
                                             (wanted.simulate ? 0x10 : 0) | (wanted.sessionAtOnce ? 2 : 1));
                page[11] = static_cast<char>(wanted.multiSession ? 0xC0 : 0);
                page[place] = static_cast<char>(value);
                ScriptedDrive drive;
                drive.answer("\x5A", {{.data = page}});
                book.tell(QString("%1.%2").arg(place).arg(value), {wordsOf(prove(drive.line(), wanted))});
            }
    }
    static BurnJob jobOf(const QList<qint64>& lengths)
    {
        BurnJob job;
        for (const qint64 frames : lengths)
            job.tracks << BurnTrack{.path = "a", .name = "a", .length = CdTime::fromFrames(frames)};
        return job;
    }
    static QString showing(int first, int last, bool trackAtOnce)
    {
        const BurnJob job = jobOf({400, 500});
        const qint64 second = 400 + first + 150;
        return shows({{{0, true}, {second, true}}, second + 500 + last}, job, trackAtOnce) ? "shown" : "not";
    }
};

QTEST_APPLESS_MAIN(TestDriveAnswers)
#include "tst_driveanswers.moc"
