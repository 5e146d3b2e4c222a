#include "engines/audio/convert/SpeakerMix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

namespace zib {

namespace {

constexpr float kMinus3dB = 0.70710678F;

struct Share
{
    float left;
    float right;
};

// By bit of the channel mask.
constexpr std::array<Share, 18> kShares{{
    {1, 0},                 // front left
    {0, 1},                 // front right
    {kMinus3dB, kMinus3dB}, // front centre
    {0, 0},                 // low frequencies
    {kMinus3dB, 0},         // back left
    {0, kMinus3dB},         // back right
    {1, 0},                 // front left of centre
    {0, 1},                 // front right of centre
    {0.5F, 0.5F},           // back centre
    {kMinus3dB, 0},         // side left
    {0, kMinus3dB},         // side right
    {0.5F, 0.5F},           // top centre
    {kMinus3dB, 0},         // top front left
    {0.5F, 0.5F},           // top front centre
    {0, kMinus3dB},         // top front right
    {0.5F, 0},              // top back left
    {0.5F, 0.5F},           // top back centre
    {0, 0.5F},              // top back right
}};

// The layouts that writers mean when they give none: three fronts, quadraphonic, 5.0, 5.1, 6.1, 7.1.
quint32 usualSpeakers(int channels)
{
    constexpr std::array<quint32, 9> kUsual{0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};
    return channels < 9 ? kUsual[static_cast<size_t>(channels)] : 0x3FFFF;
}

void scaleToOne(std::vector<float>& shares)
{
    const float sum = std::accumulate(shares.begin(), shares.end(), 0.0F);
    if (sum > 1)
        std::for_each(shares.begin(), shares.end(), [sum](float& share) { share /= sum; });
}

} // namespace

void speakerShares(int channels, quint32 speakers, std::vector<float>& left, std::vector<float>& right)
{
    quint32 mask = std::popcount(speakers) == channels ? speakers : usualSpeakers(channels);
    left.assign(static_cast<size_t>(channels), 0.0F);
    right.assign(static_cast<size_t>(channels), 0.0F);
    for (size_t channel = 0; channel < left.size() && mask != 0; ++channel) {
        const auto bit = static_cast<size_t>(std::countr_zero(mask));
        mask &= mask - 1;
        if (bit >= kShares.size())
            continue;
        left[channel] = kShares[bit].left;
        right[channel] = kShares[bit].right;
    }
    scaleToOne(left);
    scaleToOne(right);
}

} // namespace zib
