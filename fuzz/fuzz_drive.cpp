// A drive that answers every command with any bytes, any sense data of both formats and any status: its
// abilities, its disc and its write page are read. Nothing that the drive did not say is taken for proof.

#include "engines/burn/compare/DriveText.h"
#include "engines/burn/mmc/DiscLook.h"
#include "engines/burn/mmc/SenseTable.h"
#include "engines/burn/mmc/WritePage.h"
#include "input.h"

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include <scsi/sg.h>

using zib::fuzz::check;

namespace {

/// The drive: what it answers comes off the input.
zib::fuzz::Input* g_input = nullptr;
QByteArray g_lastData;

int answer(sg_io_hdr_t& header)
{
    const int mood = g_input->byte();
    if (mood >= 0xF8) {
        errno = mood & 1 ? EIO : ENODEV;
        return -1;
    }
    if (mood >= 0xE0) {
        const QByteArray sense = g_input->bytes(g_input->byte() % 33);
        std::memcpy(header.sbp, sense.constData(), static_cast<std::size_t>(sense.size()));
        header.status = static_cast<unsigned char>(mood & 8 ? g_input->byte() : 2);
        header.host_status = static_cast<unsigned short>(mood & 4 ? g_input->byte() : 0);
    }
    g_lastData.clear();
    if (header.dxfer_direction != SG_DXFER_FROM_DEV)
        return 0;
    const int room = static_cast<int>(header.dxfer_len);
    const int length = mood & 1 ? g_input->word() % 1024 : 64;
    g_lastData = g_input->bytes(std::min(length, room));
    header.resid = mood & 2 ? g_input->word() - 0x4000 : room - static_cast<int>(g_lastData.size());
    std::memcpy(header.dxferp, g_lastData.constData(), static_cast<std::size_t>(g_lastData.size()));
    g_lastData.resize(room, '\0');
    g_lastData.truncate(std::clamp(room - header.resid, 0, room));
    return 0;
}

void checkSense(const zib::DriveAnswer& refusal)
{
    const int code = zib::writerErrorCode(refusal.sense);
    check(code >= 1000 && code <= 1055, "every sense leads to a code of the writer's");
    check(zib::Sense::inText("x" + refusal.sense.toText()) == refusal.sense, "sense data reads back");
}

void checkDisc(zib::DriveLine& line)
{
    zib::DriveAnswer refusal;
    if (const auto facts = zib::factsOf(line, refusal))
        check(facts->capacity.frames() >= 0, "no capacity is negative");
    if (const auto contents = zib::contentsOf(line, refusal))
        check(contents->tracks.size() <= 100, "a table of contents has an end");
    checkSense(refusal);
    const auto packs = zib::textPacksOf(line);
    check(!packs || packs->size() % 18 == 0, "packs come whole");
}

void checkAbilities(zib::DriveLine& line)
{
    if (const auto abilities = zib::abilitiesOf(line))
        check(abilities->maker.size() <= 8 && abilities->model.size() <= 16, "names have their fields");
    const QList<zib::WriteSpeed> speeds = zib::speedsOf(line);
    for (qsizetype i = 0; i < speeds.size(); ++i)
        check(speeds[i].value > 0 && (i == 0 || speeds[i].value <= speeds[i - 1].value),
              "speeds, fastest first");
}

/// Whether the last answer is a write page with these modes; by the standard's own table, past the reader.
bool says(const zib::WritePlan& wanted)
{
    const auto byte = [](qsizetype at) {
        return at < g_lastData.size() ? static_cast<uchar>(g_lastData[at]) : 0;
    };
    const int at = 8 + (byte(6) << 8 | byte(7));
    return (byte(at) & 0x3F) == 5 && ((byte(at + 2) & 0x10) != 0) == wanted.simulate &&
           (byte(at + 2) & 0x0F) == (wanted.sessionAtOnce ? 2 : 1);
}

void checkProof(zib::DriveLine& line, int bits)
{
    const zib::WritePlan wanted{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
    if (!zib::prove(line, wanted))
        check(says(wanted), "only a page that says so is a proof");
    if (!zib::plan(line, wanted))
        check(says(wanted), "a plan is taken when the drive says so");
}

} // namespace

// These stand before the C library's own: no drive is asked, and none waited for.
extern "C" int ioctl(int, unsigned long request, ...) noexcept
{
    if (request != SG_IO) {
        errno = ENOTTY;
        return -1;
    }
    std::va_list arguments;
    va_start(arguments, request);
    auto* header = va_arg(arguments, sg_io_hdr_t*);
    va_end(arguments);
    return answer(*header);
}

extern "C" int nanosleep(const timespec*, timespec*)
{
    return 0;
}

extern "C" int clock_nanosleep(clockid_t, int, const timespec*, timespec*)
{
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zib::fuzz::Input input(data, size);
    g_input = &input;
    const auto line = zib::DriveLine::open(QStringLiteral("/dev/null"), zib::DriveLine::Hold::Shared);
    check(static_cast<bool>(line), "there is a way to the drive");
    switch (const int bits = input.byte(); bits & 3) {
    case 0:
        checkDisc(**line);
        break;
    case 1:
        checkAbilities(**line);
        break;
    default:
        checkProof(**line, bits >> 2);
    }
    return 0;
}
