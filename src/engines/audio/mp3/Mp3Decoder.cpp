#include "engines/audio/mp3/Mp3Decoder.h"

#include <mpg123.h>

#include <algorithm>
#include <array>
#include <optional>

namespace zib {

namespace {

// Old versions of the library want to be initialised once; new ones do nothing.
bool libraryReady()
{
    static const bool ready = mpg123_init() == MPG123_OK;
    return ready;
}

} // namespace

void Mp3Decoder::Closer::operator()(mpg123_handle_struct* handle) const
{
    mpg123_delete(handle);
}

Mp3Decoder::Mp3Decoder(const std::shared_ptr<const SourceFile>& file, int channels, SampleKind kind)
    : m_window(file, file->size(), 64 * 1024), m_channels(channels), m_kind(kind)
{
    if (libraryReady())
        m_handle.reset(mpg123_new(nullptr, nullptr));
    if (m_handle && !configure())
        m_handle.reset();
}

Mp3Decoder::~Mp3Decoder() = default;

// Whole frames are fed, so the library neither looks ahead nor cuts delay nor searches for a header.
bool Mp3Decoder::configure()
{
    auto* handle = m_handle.get();
    constexpr long kFlags = MPG123_QUIET | MPG123_NO_READAHEAD | MPG123_IGNORE_INFOFRAME | MPG123_SKIP_ID3V2;
    const int encoding = m_kind == SampleKind::Narrow ? MPG123_ENC_SIGNED_16 : MPG123_ENC_FLOAT_32;
    bool ok =
        mpg123_param(handle, MPG123_ADD_FLAGS, kFlags, 0) == MPG123_OK &&
        mpg123_param(handle, MPG123_REMOVE_FLAGS, MPG123_GAPLESS | MPG123_AUTO_RESAMPLE, 0) == MPG123_OK &&
        mpg123_param(handle, MPG123_RESYNC_LIMIT, -1, 0) == MPG123_OK &&
        mpg123_format_none(handle) == MPG123_OK;
    constexpr std::array<long, 9> kRates{8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
    for (const long rate : kRates)
        ok = ok && mpg123_format(handle, rate, m_channels == 1 ? MPG123_MONO : MPG123_STEREO, encoding) ==
                       MPG123_OK;
    return ok;
}

void Mp3Decoder::start(const Mp3Run& run)
{
    begin(run, run.offset);
    m_isSettling = false; // what a cut stream lacks at its start is the library's to judge
}

void Mp3Decoder::start(const Mp3Run& run, const Mp3Entry& entry)
{
    begin(run, entry.offset);
    m_isSettling = entry.frame > 0;
    m_reservoir = 0;
}

// The reservoir is full again at the lowest bit rate (58 bytes a frame of 511, or 3 of 255), and the filters,
// which reach back one frame, have run through.
qint64 Mp3Decoder::settlingFrames(const Mp3Run& run)
{
    return run.head.lowRate ? 96 : 16;
}

void Mp3Decoder::begin(const Mp3Run& run, qint64 offset)
{
    m_run = run;
    m_offset = offset;
    m_silence = QByteArray(run.head.samples() * frameBytes(), '\0');
    if (!m_handle)
        return;
    // the library counts a free frame without its header
    mpg123_param(m_handle.get(), MPG123_FREEFORMAT_SIZE, run.freeBytes > 0 ? run.freeBytes - 4 : -1, 0);
    if (mpg123_open_feed(m_handle.get()) != MPG123_OK)
        m_handle.reset();
}

std::span<const uchar> Mp3Decoder::next()
{
    const qint64 end = m_run.offset + m_run.bytes;
    if (!m_handle || m_offset + 4 > end)
        return {};
    const uchar* start = m_window.at(m_offset, 4);
    const auto head = start != nullptr ? Mp3Header::parse(start) : std::nullopt;
    if (!head)
        return {};
    const int bytes = head->frameBytes(m_run.freeBytes);
    const uchar* frame = m_offset + bytes <= end ? m_window.at(m_offset, bytes) : nullptr;
    if (frame == nullptr)
        return {};
    m_offset += bytes;
    return decode(m_isSettling ? settled(*head, frame, bytes) : frame, bytes);
}

// A frame whose sound data is not all there is emptied of it but kept otherwise: a decoder that fails in the
// middle of a frame would leave its filter in another phase.
const uchar* Mp3Decoder::settled(const Mp3Header& head, const uchar* frame, int bytes)
{
    const int begin = mainDataBegin(head, frame);
    const int own = bytes - head.sideInfoOffset() - head.sideInfoBytes();
    const bool isMissing = begin > m_reservoir;
    m_reservoir += own;
    m_isSettling = m_reservoir < mostMainDataBegin(head);
    if (!isMissing)
        return frame;
    m_muted = QByteArray(reinterpret_cast<const char*>(frame), bytes);
    char* side = m_muted.data() + head.sideInfoOffset();
    const char lastBit = head.lowRate ? '\0' : static_cast<char>(side[1] & 0x80);
    std::fill_n(side + 1, head.sideInfoBytes() - 1, '\0');
    side[1] = lastBit; // main_data_begin stays: later frames reach back through this one
    return reinterpret_cast<const uchar*>(m_muted.constData());
}

std::span<const uchar> Mp3Decoder::decode(const uchar* frame, int bytes)
{
    m_isSilent = false;
    if (mpg123_feed(m_handle.get(), frame, static_cast<size_t>(bytes)) != MPG123_OK)
        return silence();
    unsigned char* audio = nullptr;
    size_t got = 0;
    off_t number = 0;
    int result = mpg123_decode_frame(m_handle.get(), &number, &audio, &got);
    for (int changes = 0; result == MPG123_NEW_FORMAT && got == 0 && changes < 2; ++changes)
        result = mpg123_decode_frame(m_handle.get(), &number, &audio, &got);
    if (static_cast<qsizetype>(got) != m_silence.size())
        return silence();
    return {audio, got};
}

std::span<const uchar> Mp3Decoder::silence()
{
    m_isSilent = true;
    return {reinterpret_cast<const uchar*>(m_silence.constData()), static_cast<size_t>(m_silence.size())};
}

} // namespace zib
