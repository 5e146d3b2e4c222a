#include "engines/burn/mmc/WritePage.h"

#include <QThread>

#include <algorithm>

namespace zib {

namespace {

constexpr int kPage = 0x05;
constexpr int kHeaderBytes = 8;
constexpr int kShortestPage = 16; ///< All fields that matter stand within.
constexpr int kMostBytes = 255;
constexpr int kTrackAtOnce = 1;
constexpr int kSessionAtOnce = 2;
constexpr int kTestBit = 0x10;
constexpr int kProtectionBit = 0x40;
constexpr int kMultiSessionBits = 0xC0;
constexpr int kRawAudioBlocks = 0;
constexpr int kPauseFrames = 150;

/// Asks again while the drive has something to announce or becomes ready.
template <typename Ask>
DriveAnswer patiently(const Ask& ask)
{
    constexpr int kTries = 10;
    constexpr unsigned long kPauseMs = 200;
    DriveAnswer answer = ask();
    for (int tries = 1; tries < kTries && answer.passing(); ++tries) {
        QThread::msleep(kPauseMs);
        answer = ask();
    }
    return answer;
}

PlanFault refusal(const DriveAnswer& answer)
{
    if (answer.kind == DriveAnswer::Kind::Refused)
        return {PlanFault::Kind::Refused, answer.sense};
    return {answer.good() ? PlanFault::Kind::Untold : PlanFault::Kind::Lost};
}

/// The page as it stands in the drive, without what comes before it; in @c data, empty when it is no such
/// page.
DriveAnswer currentPage(DriveLine& line)
{
    constexpr int kNoBlockDescriptors = 0x08;
    DriveAnswer answer = patiently([&line] {
        return line.read({0x5A, kNoBlockDescriptors, kPage, 0, 0, 0, 0, 0, kMostBytes, 0}, kMostBytes);
    });
    if (!answer.good())
        return answer;
    answer.data.remove(0, kHeaderBytes + answer.word(6));
    const bool whole = answer.data.size() >= kShortestPage && (answer.byte(0) & 0x3F) == kPage;
    return whole ? answer : DriveAnswer{.kind = DriveAnswer::Kind::Good};
}

int modeByte(const WritePlan& wanted)
{
    return (wanted.bufferProtection ? kProtectionBit : 0) | (wanted.simulate ? kTestBit : 0) |
           (wanted.sessionAtOnce ? kSessionAtOnce : kTrackAtOnce);
}

/// A page for sound, of the length that the drive uses.
QByteArray pageFor(const WritePlan& wanted, int bytes)
{
    QByteArray page(bytes, '\0');
    page[0] = kPage;
    page[1] = static_cast<char>(bytes - 2);
    page[2] = static_cast<char>(modeByte(wanted));
    page[3] = static_cast<char>(wanted.multiSession ? kMultiSessionBits : 0);
    page[4] = kRawAudioBlocks;
    page[14] = 0;
    page[15] = static_cast<char>(kPauseFrames);
    return page;
}

} // namespace

std::optional<PlanFault> plan(DriveLine& line, const WritePlan& wanted)
{
    constexpr int kPageFormat = 0x10;
    const DriveAnswer current = currentPage(line);
    if (current.data.isEmpty())
        return refusal(current);
    const int told = std::min<int>(current.byte(1) + 2, static_cast<int>(current.data.size()));
    const QByteArray list = QByteArray(kHeaderBytes, '\0') + pageFor(wanted, std::max(told, kShortestPage));
    const int bytes = static_cast<int>(list.size());
    const DriveAnswer taken = patiently([&] {
        return line.send({0x55, kPageFormat, 0, 0, 0, 0, 0, bytes >> 8, bytes & 0xFF, 0}, list);
    });
    if (!taken.good())
        return refusal(taken);
    return prove(line, wanted);
}

std::optional<PlanFault> prove(DriveLine& line, const WritePlan& wanted)
{
    const DriveAnswer page = currentPage(line);
    if (page.data.isEmpty())
        return refusal(page);
    const int differs = page.byte(2) ^ modeByte(wanted);
    if (differs & kTestBit)
        return PlanFault{PlanFault::Kind::TestMode};
    if (differs & 0x0F)
        return PlanFault{PlanFault::Kind::WriteType};
    if (differs & kProtectionBit)
        return PlanFault{PlanFault::Kind::BufferProtection};
    if (((page.byte(3) & kMultiSessionBits) == kMultiSessionBits) != wanted.multiSession)
        return PlanFault{PlanFault::Kind::Closing};
    return std::nullopt;
}

} // namespace zib
