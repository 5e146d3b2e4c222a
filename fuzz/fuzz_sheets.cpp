// A CUE sheet or a TOC file of any bytes: what is taken for a disc has tracks in order that lie behind each
// other, and reads its files nowhere but where they say; what is not has a reason in words.

#include "common/CdTime.h"
#include "engines/rip/image/ImageLayout.h"
#include "engines/rip/sheets/CueParser.h"
#include "engines/rip/sheets/SheetText.h"
#include "engines/rip/sheets/TocParser.h"
#include "rules.h"

#include <cstdint>

using zib::fuzz::check;

namespace {

void checkLayout(const zib::ImageLayout& layout, const zib::DiscSheet& sheet)
{
    check(layout.tracks.size() == sheet.tracks.size(), "every track of the sheet is on the disc");
    for (qsizetype i = 0; i < layout.tracks.size(); ++i) {
        const zib::TocTrack& track = layout.tracks[i];
        check(track.start >= 0 && track.frames >= 0 && track.gap >= 0, "no length is negative");
        check(track.frames > 0 || !layout.remark.isEmpty(), "an empty track is remarked on");
        check(i == 0 || track.number == layout.tracks[i - 1].number + 1, "numbers follow each other");
        check(track.number >= 1 && track.number <= zib::kMostTracks, "a disc has tracks 1 to 99");
    }
    qint64 end = 0;
    for (const zib::DiscRun& run : layout.runs) {
        check(run.at >= end && run.bytes > 0 && run.offset >= 0, "runs lie one behind the other");
        check(run.file >= 0 && run.file < sheet.files.size(), "a run stands in a file of the sheet");
        end = run.at + run.bytes;
    }
}

void checkSheet(const zib::Outcome<zib::DiscSheet>& parsed)
{
    if (!parsed)
        return check(!parsed.error().detail.isEmpty(), "a refusal has a reason");
    for (const qint64 bytes : {qint64{0}, qint64{1'000'000}, qint64{700'000'000}}) {
        const auto layout = zib::layOut(*parsed, QList<qint64>(parsed->files.size(), bytes));
        if (layout)
            checkLayout(*layout, *parsed);
        else
            check(!layout.error().detail.isEmpty(), "a refusal has a reason");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto readings = zib::readingsOf(bytes);
    check(!readings.isEmpty(), "any bytes can be read somehow");
    for (const zib::SheetReading& reading : readings) {
        checkSheet(zib::parseCueSheet(reading.text));
        checkSheet(zib::parseTocSheet(reading.text));
    }
    return 0;
}
