#include "engines/burn/compare/DriveText.h"

#include <QThread>

#include <algorithm>

namespace zib {

namespace {

constexpr int kAnswerHeader = 4;
constexpr int kPackBytes = 18;
constexpr int kMostTextBytes = kAnswerHeader + 2048 * kPackBytes;
constexpr int kTextTries = 50;
constexpr int kTextPauseMs = 100;
constexpr int kFormat = 5;

DriveAnswer ask(DriveLine& line, int bytes)
{
    for (int tried = 1;; ++tried) {
        DriveAnswer answer =
            line.read({0x43, 0, kFormat, 0, 0, 0, 0, bytes >> 8, bytes & 0xFF, 0}, bytes, DriveLine::kLongMs);
        if (!answer.passing() || tried == kTextTries)
            return answer;
        QThread::msleep(kTextPauseMs);
    }
}

} // namespace

Outcome<QByteArray> textPacksOf(DriveLine& line)
{
    // Many drives have only as many bytes to give as they are asked for, so the length is asked for first.
    DriveAnswer answer = ask(line, kAnswerHeader);
    if (answer.good())
        answer = ask(line, std::clamp(answer.word(0) + 2, kAnswerHeader, kMostTextBytes));
    if (answer.kind == DriveAnswer::Kind::Gone)
        return Failure{Failure::Kind::DeviceGone, line.path()};
    if (!answer.good())
        return Failure{Failure::Kind::Unsupported, line.path()};
    const QByteArray packs = answer.data.mid(kAnswerHeader, std::max(0, answer.word(0) - 2));
    return packs.left(packs.size() / kPackBytes * kPackBytes);
}

} // namespace zib
