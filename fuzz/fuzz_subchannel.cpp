// The Q sub-channel of any bytes, and drives that answer anything of where a gap lies: a gap is found with
// few questions, and never reaches beyond the track that it ends.

#include "engines/rip/drive/GapSearch.h"
#include "input.h"

using zib::fuzz::check;

namespace {

constexpr qint32 kMostFrames = 450'000;

void checkPlace(const QByteArray& q, qint32 asked)
{
    const auto place = zib::placeIn(q, asked);
    check(!place || (place->track >= 0 && place->track <= 99 && place->index >= 0 && place->index <= 99),
          "a place has numbers that a disc can have");
    check(zib::placeIn(q, asked) == place, "the same bytes tell the same place");
}

void checkSearch(zib::fuzz::Input& input)
{
    const qint32 first = input.word() % kMostFrames;
    const qint32 end = first + 1 + input.word();
    int questions = 0;
    zib::GapSearch search([&](qint32 frame) -> std::optional<bool> {
        ++questions;
        check(frame >= first && frame < end, "only the track's own frames are asked for");
        const int told = input.byte();
        return told > 0xF0 ? std::nullopt : std::optional(told % 2 == 1);
    });
    const qint32 length = search.lengthBefore(end, first);
    check(length >= 0 && length <= end - first, "a gap lies within the track");
    check(questions <= zib::GapSearch::kMostQuestions, "the search is bounded");
}

/// A drive that tells the truth of one gap.
void checkTruth(qint32 track, qint32 gap)
{
    const qint32 end = 1'000 + track;
    zib::GapSearch search([&](qint32 frame) { return frame >= end - gap; });
    const qint32 found = search.lengthBefore(end, 1'000);
    check(found == 0 || found == gap, "a gap is found as it is, or not at all");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zib::fuzz::Input input(data, size);
    const qint32 asked = input.word() * 7;
    checkPlace(input.bytes(input.byte() & 1 ? zib::kQBytes : input.byte() % 20), asked);
    const qint32 track = 2 + input.word() % 30'000;
    checkTruth(track, input.word() % track);
    checkSearch(input);
    return 0;
}
