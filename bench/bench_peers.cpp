// What the jobs cost a program of a few lines on another library: the measure that our conversions are held
// against. It does less than they do: no dither, the resampler's own short filter, no flush, no name that
// comes last.
//
//   bench_peers libav SOURCE TARGET        libavformat, libavcodec, libswresample: to 44.1 kHz, 16 bits,
//   stereo bench_peers libsndfile SOURCE TARGET   libsndfile: to 16 bits
#include <sndfile.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int kRate = 44100;
constexpr int kBlockFrames = 65'536;

template <typename T, auto free>
struct Freed
{
    void operator()(T* what) const { free(&what); }
};
using Input = std::unique_ptr<AVFormatContext, Freed<AVFormatContext, avformat_close_input>>;
using Decoder = std::unique_ptr<AVCodecContext, Freed<AVCodecContext, avcodec_free_context>>;
using Resampler = std::unique_ptr<SwrContext, Freed<SwrContext, swr_free>>;
using Packet = std::unique_ptr<AVPacket, Freed<AVPacket, av_packet_free>>;
using Frame = std::unique_ptr<AVFrame, Freed<AVFrame, av_frame_free>>;

/// A WAV file whose sizes are left at "to the end"; written through the standard library's buffer.
class Target
{
public:
    explicit Target(const char* path) : m_file(std::fopen(path, "wb"))
    {
        constexpr std::array<unsigned char, 44> kHeader{
            'R', 'I', 'F', 'F', 255, 255, 255, 255, 'W', 'A', 'V', 'E', 'f', 'm', 't',
            ' ', 16,  0,   0,   0,   1,   0,   2,   0,   68,  172, 0,   0,   16,  177,
            2,   0,   4,   0,   16,  0,   'd', 'a', 't', 'a', 255, 255, 255, 255};
        if (m_file != nullptr)
            std::fwrite(kHeader.data(), 1, kHeader.size(), m_file);
    }
    ~Target()
    {
        if (m_file != nullptr)
            std::fclose(m_file);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    bool write(const std::vector<int16_t>& samples, int frames)
    {
        const auto count = static_cast<size_t>(frames) * 2;
        return m_file != nullptr && std::fwrite(samples.data(), 2, count, m_file) == count;
    }

private:
    std::FILE* m_file;
};

Input opened(const char* source)
{
    AVFormatContext* input = nullptr;
    if (avformat_open_input(&input, source, nullptr, nullptr) < 0)
        return nullptr;
    Input owned(input);
    return avformat_find_stream_info(input, nullptr) < 0 ? nullptr : std::move(owned);
}

Decoder decoderFor(const AVStream& stream)
{
    Decoder decoder(avcodec_alloc_context3(avcodec_find_decoder(stream.codecpar->codec_id)));
    const bool good = decoder && avcodec_parameters_to_context(decoder.get(), stream.codecpar) >= 0 &&
                      avcodec_open2(decoder.get(), nullptr, nullptr) >= 0;
    return good ? std::move(decoder) : nullptr;
}

Resampler resamplerFor(const AVCodecContext& decoder)
{
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout from = {};
    av_channel_layout_default(&from, decoder.ch_layout.nb_channels);
    SwrContext* resampler = nullptr;
    const bool good = swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_S16, kRate, &from,
                                          decoder.sample_fmt, decoder.sample_rate, 0, nullptr) >= 0 &&
                      swr_init(resampler) >= 0;
    Resampler owned(resampler);
    return good ? std::move(owned) : nullptr;
}

/// Resamples @p frame, or what is left without one, into the file.
bool pass(SwrContext& resampler, const AVFrame* frame, std::vector<int16_t>& samples, Target& target)
{
    const int count = frame != nullptr ? frame->nb_samples : 0;
    const int room = swr_get_out_samples(&resampler, count);
    samples.resize(static_cast<size_t>(room) * 2);
    auto* out = reinterpret_cast<uint8_t*>(samples.data());
    const auto* const* in = frame != nullptr ? const_cast<const uint8_t**>(frame->extended_data) : nullptr;
    const int got = swr_convert(&resampler, &out, room, const_cast<const uint8_t**>(in), count);
    return got >= 0 && target.write(samples, got);
}

int libav(const char* source, const char* path)
{
    const Input input = opened(source);
    const Decoder decoder = input ? decoderFor(*input->streams[0]) : nullptr;
    const Resampler resampler = decoder ? resamplerFor(*decoder) : nullptr;
    if (!resampler)
        return 1;
    Target target(path);
    std::vector<int16_t> samples;
    const Packet packet(av_packet_alloc());
    const Frame frame(av_frame_alloc());
    bool good = true;
    for (bool more = true; more;) {
        more = av_read_frame(input.get(), packet.get()) >= 0;
        avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0)
            good = pass(*resampler, frame.get(), samples, target) && good;
    }
    return good && pass(*resampler, nullptr, samples, target) ? 0 : 1;
}

int libsndfile(const char* source, const char* path)
{
    SF_INFO info = {};
    SNDFILE* from = sf_open(source, SFM_READ, &info);
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* to = from != nullptr ? sf_open(path, SFM_WRITE, &info) : nullptr;
    if (to == nullptr)
        return 1;
    std::vector<int16_t> samples(static_cast<size_t>(kBlockFrames * info.channels));
    bool good = true;
    while (const sf_count_t got = sf_readf_short(from, samples.data(), kBlockFrames))
        good = sf_writef_short(to, samples.data(), got) == got && good;
    sf_close(from);
    return sf_close(to) == 0 && good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view library = argc == 4 ? argv[1] : "";
    if (library == "libav")
        return libav(argv[2], argv[3]);
    if (library == "libsndfile")
        return libsndfile(argv[2], argv[3]);
    std::fputs("usage: bench_peers libav|libsndfile SOURCE TARGET\n", stderr);
    return 2;
}
