#include "engines/burn/mmc/DiscLook.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace zib {

namespace {

constexpr int kCapabilitiesPage = 0x2A;
/// Speed of sound in kB/s of 1000 bytes: 75 frames of 2352 bytes a second.
constexpr double kSingleSpeed = 176.4;

/// The factor as drives are sold by: 1411 kB/s is 8x. Mode page 2A and GET PERFORMANCE round differently.
double speedFactor(int value)
{
    const double exact = value / kSingleSpeed;
    const double whole = std::round(exact);
    return std::abs(exact - whole) < 0.06 * std::max(1.0, whole / 8) ? whole : std::round(exact * 10) / 10;
}

void add(QList<WriteSpeed>& speeds, int value)
{
    const WriteSpeed speed{speedFactor(value), value};
    const auto same = [&speed](const WriteSpeed& known) { return known.factor == speed.factor; };
    if (value > 0 && std::none_of(speeds.cbegin(), speeds.cend(), same))
        speeds << speed;
}

/// The page of abilities and speeds (MMC-3, 6.3.11), without what comes before it.
DriveAnswer capabilities(DriveLine& line)
{
    constexpr int kBytes = 255;
    constexpr int kHeaderBytes = 8;
    DriveAnswer answer;
    for (int tries = 0; tries < 3 && !answer.good(); ++tries)
        answer = line.read({0x5A, 0x08, kCapabilitiesPage, 0, 0, 0, 0, 0, kBytes, 0}, kBytes);
    answer.data.remove(0, kHeaderBytes + answer.word(6));
    return answer;
}

/// First byte of a feature's data, or nothing when the drive does not have the feature (MMC-5, 5.3).
std::optional<int> featureByte(DriveLine& line, int feature)
{
    constexpr int kBytes = 32;
    constexpr int kHeaderBytes = 8;
    const DriveAnswer answer =
        line.read({0x46, 2, feature >> 8, feature & 0xFF, 0, 0, 0, 0, kBytes, 0}, kBytes);
    if (!answer.good() || answer.data.size() < kHeaderBytes + 4 || answer.word(kHeaderBytes) != feature)
        return std::nullopt;
    return answer.byte(kHeaderBytes + 4);
}

/// Drives older than features are taken to write sessions at once, as all of them did.
bool tellsFeatures(DriveLine& line)
{
    constexpr int kCoreFeature = 0x0001;
    return featureByte(line, kCoreFeature).has_value();
}

QString text(const DriveAnswer& answer, int at, int bytes)
{
    return QString::fromLatin1(answer.data.mid(at, bytes)).trimmed();
}

} // namespace

QList<WriteSpeed> speedsOf(DriveLine& line)
{
    constexpr int kDescriptors = 32;
    constexpr int kPerformanceBytes = 8 + 16 * 32;
    QList<WriteSpeed> speeds;
    const DriveAnswer page = capabilities(line);
    for (int i = 0; i < page.word(30) && kDescriptors + 4 * i + 4 <= page.data.size(); ++i)
        add(speeds, page.word(kDescriptors + 4 * i + 2));
    const DriveAnswer performance = line.read({0xAC, 0, 0, 0, 0, 0, 0, 0, 0, 32, 3, 0}, kPerformanceBytes);
    for (qsizetype at = 8; at + 16 <= performance.data.size(); at += 16)
        add(speeds, static_cast<int>(performance.quad(at + 12)));
    std::sort(speeds.begin(), speeds.end(),
              [](const WriteSpeed& a, const WriteSpeed& b) { return a.value > b.value; });
    return speeds;
}

std::optional<DriveAbilities> abilitiesOf(DriveLine& line)
{
    constexpr int kInquiryBytes = 36;
    constexpr int kDiscDrive = 5;
    constexpr int kTrackAtOnce = 0x2D;
    constexpr int kMastering = 0x2E;
    constexpr int kSessionAtOnceBit = 0x20;
    const DriveAnswer identity = line.read({0x12, 0, 0, 0, kInquiryBytes, 0}, kInquiryBytes);
    if (!identity.good())
        return std::nullopt;
    const DriveAnswer page = capabilities(line);
    const bool asked = tellsFeatures(line);
    return DriveAbilities{.isDisc = (identity.byte(0) & 0x1F) == kDiscDrive,
                          .maker = text(identity, 8, 8),
                          .model = text(identity, 16, 16),
                          .writesCdR = (page.byte(3) & 1) != 0,
                          .writesCdRw = (page.byte(3) & 2) != 0,
                          .sessionAtOnce =
                              !asked || (featureByte(line, kMastering).value_or(0) & kSessionAtOnceBit),
                          .trackAtOnce = !asked || featureByte(line, kTrackAtOnce).has_value(),
                          .simulates = (page.byte(3) & 4) != 0,
                          .bufferProtection = (page.byte(4) & 0x80) != 0};
}

} // namespace zib
