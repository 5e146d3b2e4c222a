#include "engines/audio/wav/SndfileReader.h"

#include "engines/audio/wav/SndfileLibrary.h"

#include <algorithm>
#include <cstdio>

namespace zib {

namespace {

constexpr qint64 kStep = 65'536;

} // namespace

void SndfileReader::Closer::operator()(sf_private_tag* handle) const
{
    sf_close(handle);
}

std::unique_ptr<SndfileReader> SndfileReader::open(const std::shared_ptr<const SourceFile>& file,
                                                   qint64 length)
{
    std::unique_ptr<SndfileReader> reader(new SndfileReader(file, length));
    const bool isUsable = reader->m_handle && (reader->m_channels == 1 || reader->m_channels == 2);
    return isUsable ? std::move(reader) : nullptr;
}

qint64 SndfileReader::measure()
{
    while (!read(kStep).isEmpty()) {
    }
    return m_next;
}

SndfileReader::SndfileReader(const std::shared_ptr<const SourceFile>& file, qint64 length)
    : m_stream{file}, m_length(length)
{
    begin();
}

void SndfileReader::begin()
{
    m_stream.position = 0;
    m_next = 0;
    SF_VIRTUAL_IO io = {};
    io.get_filelen = [](void* user) -> sf_count_t { return static_cast<Stream*>(user)->file->size(); };
    io.tell = [](void* user) -> sf_count_t { return static_cast<Stream*>(user)->position; };
    io.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        auto* stream = static_cast<Stream*>(user);
        const qint64 from = whence == SEEK_SET   ? 0
                            : whence == SEEK_CUR ? stream->position
                                                 : stream->file->size();
        const qint64 far = stream->file->size();
        return stream->position = std::clamp<qint64>(from + std::clamp<qint64>(offset, -far, far), 0, far);
    };
    io.read = [](void* into, sf_count_t count, void* user) -> sf_count_t {
        auto* stream = static_cast<Stream*>(user);
        const qint64 got =
            stream->file->read(stream->position, {static_cast<uchar*>(into), static_cast<size_t>(count)});
        stream->position += std::max<qint64>(got, 0);
        return std::max<qint64>(got, 0);
    };
    SF_INFO info = {};
    m_handle.reset(sf_open_virtual(&io, SFM_READ, &info, &m_stream));
    if (!m_handle)
        return;
    m_rateHz = info.samplerate;
    m_channels = info.channels;
}

SndfileReader::~SndfileReader() = default;

AudioBlock SndfileReader::read(qint64 frames)
{
    const qint64 wanted = std::min(frames, m_length - m_next);
    if (wanted <= 0 || m_failed)
        return {};
    QList<qint16> samples(wanted * m_channels);
    const qint64 got = std::clamp<qint64>(sf_readf_short(m_handle.get(), samples.data(), wanted), 0, wanted);
    m_failed = got < wanted;
    m_next += got;
    samples.resize(got * m_channels);
    return AudioBlock(std::move(samples));
}

// The library's jumps are not exact in every coding: everything before the target is decoded again.
void SndfileReader::seek(qint64 frame)
{
    begin();
    m_failed = !m_handle;
    while (m_next < frame && !m_failed)
        read(std::min(kStep, frame - m_next));
}

} // namespace zib
