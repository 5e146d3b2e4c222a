#include "Commands.h"

#include <algorithm>
#include <string>

namespace zib::drive {
namespace {

void appendPadded(Bytes& bytes, const std::string& text, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i < text.size() ? text[i] : ' '));
    }
}

std::uint16_t currentProfile(const Station& station)
{
    if (station.disc == nullptr) {
        return 0;
    }
    switch (station.disc->state().kind) {
    case DiscKind::CdR:
        return 0x0009;
    case DiscKind::CdRw:
        return 0x000A;
    default:
        return 0x0008;
    }
}

/// Gathers the feature descriptors that the host asked for.
class FeatureList
{
public:
    FeatureList(std::uint8_t wanted, std::uint32_t first) : m_wanted(wanted), m_first(first) {}

    void add(std::uint16_t code, std::uint8_t version, bool persistent, bool current, const Bytes& data)
    {
        const bool asked = m_wanted == 2 ? code == m_first : code >= m_first;
        if (!asked || (m_wanted == 1 && !current)) {
            return;
        }
        appendBigEndian(m_bytes, 2, code);
        m_bytes.push_back(
            static_cast<std::uint8_t>(version << 2U | (persistent ? 2U : 0U) | (current ? 1U : 0U)));
        m_bytes.push_back(static_cast<std::uint8_t>(data.size()));
        m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    }

    [[nodiscard]] const Bytes& bytes() const { return m_bytes; }

private:
    std::uint8_t m_wanted;
    std::uint32_t m_first;
    Bytes m_bytes;
};

Bytes profileList(const Station& station)
{
    const auto current = currentProfile(station);
    Bytes list;
    for (const std::uint16_t profile : {0x000A, 0x0009, 0x0008}) {
        const bool able = profile == 0x0008 || (profile == 0x0009 && station.config.writesCdR) ||
                          (profile == 0x000A && station.config.writesCdRw);
        if (able) {
            appendBigEndian(list, 2, profile);
            list.push_back(profile == current ? 1 : 0);
            list.push_back(0);
        }
    }
    return list;
}

void addWritingFeatures(FeatureList& features, const Station& station)
{
    const DriveConfig& config = station.config;
    const bool writable = station.writable();
    const auto common =
        static_cast<std::uint8_t>((config.bufferProtection ? 0x40U : 0U) | (config.simulation ? 0x04U : 0U) |
                                  (config.writesCdRw ? 0x02U : 0U));
    if (config.tao) {
        features.add(0x002D, 2, false, writable, {common, 0, 0, 0});
    }
    if (config.sao) {
        const auto mastering = static_cast<std::uint8_t>(common | 0x20U);
        features.add(0x002E, 0, false, writable, {mastering, 0, kMaxCueBytes >> 8U, 0});
    }
}

Bytes performanceOfReading(const Station& station)
{
    const auto speed = static_cast<std::uint32_t>(kilobytesPerSecond(station.config.readSpeed));
    Bytes descriptor;
    appendBigEndian(descriptor, 4, 0);
    appendBigEndian(descriptor, 4, speed);
    appendBigEndian(descriptor, 4, 359999);
    appendBigEndian(descriptor, 4, speed);
    return descriptor;
}

Bytes writeSpeedDescriptors(const Station& station)
{
    Bytes list;
    for (const int speed : station.config.writeSpeeds) {
        appendBigEndian(list, 4, 0);
        appendBigEndian(list, 4, 359999);
        appendBigEndian(list, 4, static_cast<std::uint32_t>(kilobytesPerSecond(station.config.readSpeed)));
        appendBigEndian(list, 4, static_cast<std::uint32_t>(kilobytesPerSecond(speed)));
    }
    return list;
}

} // namespace

Answer inquiry(Station& station, const Request& request)
{
    if ((request.cdb[1] & 1U) != 0) {
        return kInvalidField;
    }
    Bytes reply{0x05, 0x80, 0x05, 0x32, 31, 0, 0, 0};
    appendPadded(reply, station.config.vendor, 8);
    appendPadded(reply, station.config.product, 16);
    appendPadded(reply, station.config.revision, 4);
    return reply;
}

Answer requestSense(Station& station, const Request&)
{
    const Sense sense = station.state.lastSense;
    station.state.lastSense = kGood;
    Bytes reply(18);
    reply[0] = 0x70;
    reply[2] = sense.key;
    reply[7] = 10;
    reply[12] = sense.asc;
    reply[13] = sense.ascq;
    return reply;
}

Answer getConfiguration(Station& station, const Request& request)
{
    const DriveConfig& config = station.config;
    const bool present = station.disc != nullptr;
    FeatureList features{static_cast<std::uint8_t>(request.cdb[1] & 3U), bigEndian(request.cdb, 2, 2)};
    features.add(0x0000, 0, true, true, profileList(station));
    features.add(0x0001, 1, true, true, {0, 0, 0, 2, 0, 0, 0, 0});
    features.add(0x0002, 1, true, true, {0x02, 0, 0, 0});
    features.add(0x0003, 0, true, true, {0x29, 0, 0, 0});
    features.add(0x0010, 0, false, present, {0, 0, 0x08, 0, 0, 1, 1, 0});
    features.add(0x001D, 0, true, present, {});
    const auto reading = (config.c2Pointers ? 2U : 0U) | (config.cdText ? 1U : 0U);
    features.add(0x001E, 2, false, present, {static_cast<std::uint8_t>(reading), 0, 0, 0});
    addWritingFeatures(features, station);
    features.add(0x0100, 0, true, true, {});
    features.add(0x0105, 1, true, true, {0, 0, 0, 0});
    features.add(0x0107, 3, true, present, {0x0E, 0, 0, 0});
    Bytes reply;
    appendBigEndian(reply, 4, static_cast<std::uint32_t>(features.bytes().size() + 4));
    appendBigEndian(reply, 2, 0);
    appendBigEndian(reply, 2, currentProfile(station));
    reply.insert(reply.end(), features.bytes().begin(), features.bytes().end());
    return reply;
}

Answer getPerformance(Station& station, const Request& request)
{
    const std::uint8_t type = request.cdb[10];
    if (type != 0 && type != 3) {
        return kInvalidField;
    }
    const Bytes list = type == 3 ? writeSpeedDescriptors(station) : performanceOfReading(station);
    const std::size_t room = 16 * bigEndian(request.cdb, 8, 2);
    Bytes reply;
    appendBigEndian(reply, 4, static_cast<std::uint32_t>(list.size() + 4));
    appendBigEndian(reply, 4, 0);
    reply.insert(reply.end(), list.begin(),
                 list.begin() + static_cast<std::ptrdiff_t>(std::min(room, list.size())));
    return reply;
}

} // namespace zib::drive
