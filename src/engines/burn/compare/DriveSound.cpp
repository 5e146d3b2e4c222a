#include "engines/burn/compare/DriveSound.h"

#include "common/CdTime.h"

#include <QThread>

#include <algorithm>
#include <utility>

namespace zib {

namespace {

/// So many frames fit into what every way to a drive carries at once: 64 KiB.
constexpr int kMostFramesAtOnce = 27;
constexpr int kPatienceMs = 20'000;
constexpr int kSoundPauseMs = 100;
constexpr std::chrono::milliseconds kSoon{1500};
/// A drive that loses so many commands in a row does not come back.
constexpr int kMostLostCommands = 4;
constexpr int kNotReady = 2;
constexpr int kNoMediumCode = 0x3A;
constexpr int kIllegalRequest = 5;
constexpr int kAnySound = 1 << 2; ///< Expected sector type: CD-DA.
constexpr int kUserData = 0x10;

/// Whether a refusal is about the command and not about a place: no such command, no such field of it.
bool isOfTheCommand(int asc)
{
    return asc == 0x20 || asc == 0x24;
}

bool tellsOfAnotherDisc(const DriveAnswer& answer)
{
    constexpr int kUnitAttention = 6;
    constexpr int kMediumMayHaveChanged = 0x28;
    return answer.sense.key == kUnitAttention && answer.sense.asc == kMediumMayHaveChanged;
}

int byteOf(qint64 number, int place)
{
    return static_cast<int>(number >> (8 * place) & 0xFF);
}

} // namespace

DriveSound::DriveSound(std::shared_ptr<DriveLine> line, qint64 leadOut, const std::atomic<bool>* cancelled,
                       std::function<void()> slow)
    : m_line(std::move(line)), m_leadOut(leadOut), m_cancelled(cancelled), m_longWait(std::move(slow), kSoon)
{
}

DriveAnswer DriveSound::ask(qint64 frame, int count)
{
    m_longWait.begin();
    DriveAnswer answer = m_line->read({0xBE, kAnySound, byteOf(frame, 3), byteOf(frame, 2), byteOf(frame, 1),
                                       byteOf(frame, 0), 0, 0, count, kUserData, 0, 0},
                                      count * kBytesPerFrame, DriveLine::kLongMs);
    m_longWait.end();
    return answer;
}

/// A drive that is becoming ready is asked again for a while.
Outcome<DriveAnswer> DriveSound::settled(qint64 frame, int count)
{
    DriveAnswer answer = ask(frame, count);
    for (int waited = 0; answer.passing() && waited < kPatienceMs; waited += kSoundPauseMs) {
        if (m_hasRead && tellsOfAnotherDisc(answer))
            return Failure{Failure::Kind::WrongMedium, m_line->path()};
        if (m_cancelled && m_cancelled->load())
            return Failure{Failure::Kind::Cancelled};
        QThread::msleep(kSoundPauseMs);
        answer = ask(frame, count);
    }
    return answer;
}

Outcome<> DriveSound::read(qint64 frame, int count, char* buffer)
{
    while (count > 0) {
        const int now = std::min(count, kMostFramesAtOnce);
        const auto answer = settled(frame, now);
        if (!answer)
            return answer.error();
        if (auto told = judge(*answer); !told)
            return told;
        if (answer->data.size() < qsizetype{now} * kBytesPerFrame)
            return Failure{Failure::Kind::UnreadableFile};
        buffer = std::copy(answer->data.cbegin(), answer->data.cend(), buffer);
        frame += now;
        count -= now;
    }
    return {};
}

Outcome<> DriveSound::judge(const DriveAnswer& answer)
{
    m_lostCommands = answer.kind == DriveAnswer::Kind::Broken ? m_lostCommands + 1 : 0;
    switch (answer.kind) {
    case DriveAnswer::Kind::Good:
        m_hasRead = true;
        return {};
    case DriveAnswer::Kind::Refused:
        if (answer.sense.key == kNotReady && answer.sense.asc == kNoMediumCode)
            return Failure{Failure::Kind::NoMedium, m_line->path()};
        if (answer.sense.key == kIllegalRequest && isOfTheCommand(answer.sense.asc))
            return Failure{Failure::Kind::Unsupported, m_line->path()};
        return Failure{Failure::Kind::UnreadableFile, answer.sense.toText()};
    case DriveAnswer::Kind::Broken:
        if (m_lostCommands < kMostLostCommands)
            return Failure{Failure::Kind::UnreadableFile};
        break;
    case DriveAnswer::Kind::Gone:
        break;
    }
    return Failure{Failure::Kind::DeviceGone, m_line->path()};
}

} // namespace zib
