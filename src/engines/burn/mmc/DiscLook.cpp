#include "engines/burn/mmc/DiscLook.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>

namespace zib {

namespace {

constexpr unsigned long kLookPauseMs = 200;
constexpr int kControlData = 0x04;
constexpr int kLeadOut = 0xAA;

/// A question that a drive may refuse once for reasons of its own, and some times while it has something to
/// announce first.
template <typename Ask>
DriveAnswer insistently(const Ask& ask)
{
    constexpr int kTries = 3;
    constexpr int kPassingTries = 10;
    DriveAnswer answer = ask();
    for (int tries = 1; !answer.good() && answer.kind != DriveAnswer::Kind::Gone &&
                        tries < (answer.passing() ? kPassingTries : kTries);
         ++tries) {
        QThread::msleep(kLookPauseMs);
        answer = ask();
    }
    return answer;
}

/// The disc's profile. A drive that does not know the question is older than profiles and has no other
/// recordable discs than two; one that knows it and does not answer leaves us without.
std::optional<int> profileOf(DriveLine& line, const DriveAnswer& information, DriveAnswer& refusal)
{
    constexpr int kHeaderBytes = 8;
    constexpr int kErasable = 0x10;
    constexpr int kUnknownCommand = 0x20;
    const DriveAnswer answer = insistently([&line] {
        return line.read({0x46, 2, 0, 0, 0, 0, 0, 0, kHeaderBytes, 0}, kHeaderBytes);
    });
    if (answer.good() && answer.data.size() >= kHeaderBytes)
        return answer.word(6);
    if (answer.kind == DriveAnswer::Kind::Refused && answer.sense.asc == kUnknownCommand)
        return information.byte(2) & kErasable ? DiscFacts::kCdRw : DiscFacts::kCdR;
    refusal = answer;
    return std::nullopt;
}

DiscFacts::Status statusOf(int bits)
{
    switch (bits) {
    case 0:
        return DiscFacts::Status::Blank;
    case 1:
        return DiscFacts::Status::Appendable;
    case 2:
        return DiscFacts::Status::Complete;
    default:
        return DiscFacts::Status::Other;
    }
}

/// The last possible start of the lead-out is what a disc holds, and the first pregap stands before address
/// 0.
CdTime capacityIn(const DriveAnswer& information)
{
    constexpr int kUnknown = 0xFF;
    const int minutes = information.byte(21);
    const int seconds = information.byte(22);
    const int frames = information.byte(23);
    if (information.data.size() < 24 || minutes == kUnknown || seconds >= 60 || frames >= kFramesPerSecond)
        return {};
    return CdTime::fromFrames((minutes * 60 + seconds) * kFramesPerSecond + frames);
}

} // namespace

DriveAnswer awaitReady(DriveLine& line, int patienceMs, const WhileWaiting& going)
{
    QElapsedTimer waiting;
    waiting.start();
    DriveAnswer answer = line.send({0, 0, 0, 0, 0, 0});
    int broken = 0;
    while (waiting.elapsed() < patienceMs) {
        broken += answer.kind == DriveAnswer::Kind::Broken ? 1 : 0;
        const bool again = answer.passing() || (answer.kind == DriveAnswer::Kind::Broken && broken < 3);
        if (!again || (going && !going(answer)))
            break;
        QThread::msleep(kLookPauseMs);
        answer = line.send({0, 0, 0, 0, 0, 0});
    }
    return answer;
}

std::optional<DiscFacts> factsOf(DriveLine& line, DriveAnswer& refusal)
{
    constexpr int kBytes = 34;
    const DriveAnswer information = insistently([&line] {
        return line.read({0x51, 0, 0, 0, 0, 0, 0, 0, kBytes, 0}, kBytes);
    });
    if (!information.good() || information.data.size() < 5) {
        refusal = information;
        return std::nullopt;
    }
    return DiscFacts{.status = statusOf(information.byte(2) & 3),
                     .profile = profileOf(line, information, refusal),
                     .sessions = information.byte(4),
                     .capacity = capacityIn(information)};
}

DriveAnswer nextTrackOf(DriveLine& line)
{
    constexpr int kInvisibleTrack = 0xFF;
    constexpr int kBytes = 36;
    return insistently([&line] {
        return line.read({0x52, 1, 0, 0, 0, kInvisibleTrack, 0, 0, kBytes, 0}, kBytes);
    });
}

std::optional<DiscContents> contentsOf(DriveLine& line, DriveAnswer& refusal)
{
    constexpr int kHeaderBytes = 4;
    constexpr int kEntryBytes = 8;
    constexpr int kBytes = kHeaderBytes + kEntryBytes * 100;
    const DriveAnswer toc = insistently([&line] {
        return line.read({0x43, 0, 0, 0, 0, 0, 1, kBytes >> 8, kBytes & 0xFF, 0}, kBytes);
    });
    if (!toc.good()) {
        refusal = toc;
        return std::nullopt;
    }
    DiscContents contents;
    const qsizetype end = std::min<qsizetype>(toc.data.size(), toc.word(0) + 2);
    for (qsizetype at = kHeaderBytes; at + kEntryBytes <= end; at += kEntryBytes) {
        const auto address = static_cast<qint32>(toc.quad(at + 4));
        if (toc.byte(at + 2) == kLeadOut)
            contents.leadOut = address;
        else
            contents.tracks << DiscContents::Track{address, (toc.byte(at + 1) & kControlData) == 0};
    }
    // Cut short, it says nothing about the disc.
    if (toc.data.size() >= toc.word(0) + 2 && contents.leadOut > 0)
        return contents;
    refusal = toc;
    return std::nullopt;
}

} // namespace zib
