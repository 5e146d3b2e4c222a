#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace zib {

/// Bytes of the formatted Q sub-channel as READ CD gives them (MMC-5, table 299).
inline constexpr int kQBytes = 16;

/// Where the Q sub-channel of a frame says that it is.
struct QPlace
{
    qint32 frame = 0; ///< By the disc's own count.
    int track = 0;
    int index = 0;

    bool operator==(const QPlace&) const = default;
};

/// The place that a Q sub-channel tells. Some drives give its numbers in BCD as the disc has them, some
/// converted; the frame that was asked for tells which, give or take the few by which drives miss it.
/// @param q kQBytes of it.
/// @returns nothing when it tells something else, such as a catalogue number, or is damaged.
std::optional<QPlace> placeIn(const QByteArray& q, qint32 askedFrame);

/// Looks for the beginning of a gap with few questions: gaps are short, and most are of two seconds.
class GapSearch
{
public:
    static constexpr int kMostQuestions = 20;
    /// Whether a frame lies in the gap; nothing where this cannot be told.
    using IsGap = std::function<std::optional<bool>(qint32 frame)>;

    explicit GapSearch(IsGap isGap) : m_isGap(std::move(isGap)) {}

    /// The length of the gap that ends before the frame @p end and begins behind @p first, which is no gap.
    /// @returns 0 when there is none, or it was not found.
    qint32 lengthBefore(qint32 end, qint32 first);

private:
    bool isGap(qint32 frame);
    std::optional<bool> ask(qint32 frame);

    IsGap m_isGap;
    int m_questions = 0;
    bool m_failed = false;
};

} // namespace zib
