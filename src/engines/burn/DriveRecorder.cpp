#include "engines/burn/DriveRecorder.h"

#include "engines/burn/DriveBurn.h"
#include "engines/burn/GrabbedDrive.h"
#include "engines/burn/LibburnSession.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include <libburn/libburn.h>
#include <sys/stat.h>

namespace zib {

namespace {

// Profiles of the discs that an audio CD is made of (MMC-5, 5.3.1).
constexpr int kProfileCdR = 0x09;
constexpr int kProfileCdRw = 0x0A;
/// Speed of sound in kB/s of 1000 bytes: 75 frames of 2352 bytes a second.
constexpr double kSingleSpeed = 176.4;
constexpr int kReadSpeedSource = 3;

QString identity(const char* field)
{
    return QString::fromLatin1(field).trimmed();
}

/// The factor as drives are sold by: 1411 kB/s is 8x. Mode page 2A and GET PERFORMANCE round differently.
double speedFactor(int value)
{
    const double exact = value / kSingleSpeed;
    const double whole = std::round(exact);
    return std::abs(exact - whole) < 0.06 * std::max(1.0, whole / 8) ? whole : std::round(exact * 10) / 10;
}

QList<WriteSpeed> speedsOf(burn::burn_drive* drive)
{
    QList<WriteSpeed> speeds;
    burn::burn_speed_descriptor* list = nullptr;
    if (burn::burn_drive_get_speedlist(drive, &list) <= 0)
        return speeds;
    for (const auto* entry = list; entry; entry = entry->next) {
        if (entry->source == kReadSpeedSource || entry->write_speed <= 0)
            continue;
        const WriteSpeed speed{speedFactor(entry->write_speed), entry->write_speed};
        const auto same = [&speed](const WriteSpeed& known) { return known.factor == speed.factor; };
        if (std::none_of(speeds.cbegin(), speeds.cend(), same))
            speeds << speed;
    }
    burn::burn_drive_free_speedlist(&list);
    std::sort(speeds.begin(), speeds.end(),
              [](const WriteSpeed& a, const WriteSpeed& b) { return a.value > b.value; });
    return speeds;
}

/// What the disc's kind allows, told apart as the writing window asks.
int statusOf(burn::burn_disc_status state, int profile)
{
    if (state == burn::BURN_DISC_EMPTY)
        return DVDWriterPro::kNoDisc;
    const bool recordable = profile == kProfileCdR || profile == kProfileCdRw;
    if (!recordable)
        return DVDWriterPro::kUnusableDisc;
    if (state == burn::BURN_DISC_BLANK)
        return DVDWriterPro::kBlankDisc;
    if (state == burn::BURN_DISC_APPENDABLE)
        return DVDWriterPro::kAppendableDisc;
    // A rewritable disc that is full could be used again once erased; it is told as holding data.
    if (state == burn::BURN_DISC_FULL && profile == kProfileCdRw)
        return DVDWriterPro::kAppendableDisc;
    return DVDWriterPro::kUnusableDisc;
}

/// The disc's state once the drive has made up its mind about it, within its patience. The drive may be lost
/// meanwhile.
burn::burn_disc_status settledStatus(GrabbedDrive& grabbed, const DrivePatience& patience)
{
    QElapsedTimer waiting;
    waiting.start();
    burn::burn_disc_status state = burn::burn_disc_get_status(grabbed.drive());
    while (state == burn::BURN_DISC_UNREADY && waiting.elapsed() < patience.readyMs) {
        QThread::msleep(static_cast<unsigned long>(patience.pollMs));
        grabbed.reassess();
        if (!grabbed)
            break;
        state = burn::burn_disc_get_status(grabbed.drive());
    }
    return state;
}

Outcome<Medium> mediumIn(GrabbedDrive& grabbed, const DrivePatience& patience)
{
    Medium medium;
    const burn::burn_disc_status state = settledStatus(grabbed, patience);
    if (!grabbed)
        return grabbed.failure();
    burn::burn_drive* drive = grabbed.drive();
    int profile = 0;
    char profileName[80] = {};
    burn::burn_disc_get_profile(drive, &profile, profileName);
    medium.status = statusOf(state, profile);
    medium.holdsData = state == burn::BURN_DISC_FULL || state == burn::BURN_DISC_APPENDABLE;
    if (medium.status == DVDWriterPro::kBlankDisc)
        medium.capacity = capacityOf(drive);
    medium.speeds = speedsOf(drive);
    return medium;
}

/// First byte of a feature's data, or nothing when the drive does not have the feature (MMC-5, 5.3).
std::optional<int> featureByte(burn::burn_drive* drive, unsigned feature)
{
    unsigned char flags = 0;
    unsigned char length = 0;
    unsigned char* data = nullptr;
    if (burn::burn_drive_get_feature(drive, feature, &flags, &length, &data, nullptr) <= 0)
        return std::nullopt;
    const int byte = data && length > 0 ? data[0] : 0;
    std::free(data);
    return byte;
}

/// Drives older than features are taken to write sessions at once, as all of them did.
bool tellsFeatures(burn::burn_drive* drive)
{
    int count = 0;
    unsigned* codes = nullptr;
    burn::burn_drive_get_feature_codes(drive, &count, &codes);
    std::free(codes);
    return count > 0;
}

DriveRecorder::Traits traitsOf(const QString& path, const burn::burn_drive_info* info)
{
    constexpr unsigned kTrackAtOnce = 0x2D;
    constexpr unsigned kMastering = 0x2E;
    constexpr int kSessionAtOnceBit = 0x20;
    DriveRecorder::Traits traits{path, identity(info->vendor), identity(info->product)};
    traits.writesCdR = info->write_cdr;
    traits.writesCdRw = info->write_cdrw;
    traits.simulates = info->write_simulate;
    const bool asked = tellsFeatures(info->drive);
    traits.sessionAtOnce = !asked || (featureByte(info->drive, kMastering).value_or(0) & kSessionAtOnceBit);
    traits.trackAtOnce = !asked || featureByte(info->drive, kTrackAtOnce).has_value();
    burn::burn_write_opts* options = burn::burn_write_opts_new(info->drive);
    if (options) {
        traits.bufferProtection = burn::burn_write_opts_set_underrun_proof(options, 1) == 1;
        burn::burn_write_opts_free(options);
    }
    return traits;
}

/// Device files of the machine's optical drives, in order, as the kernel numbers them.
QStringList opticalDevices()
{
    constexpr int kMostDrives = 32;
    QStringList devices;
    for (int number = 0; number < kMostDrives; ++number) {
        const QString path = QStringLiteral("/dev/sr%1").arg(number);
        struct stat status = {};
        if (::stat(QFile::encodeName(path).constData(), &status) == 0 && S_ISBLK(status.st_mode))
            devices << path;
    }
    return devices;
}

} // namespace

DriveRecorder::DriveRecorder(Traits traits, DrivePatience patience)
    : m_traits(std::move(traits)), m_patience(patience)
{
}

Outcome<Medium> DriveRecorder::inspect()
{
    LibburnSession session;
    LibburnMessages messages;
    messages.clear();
    GrabbedDrive grabbed(session, path(), m_patience.callMs);
    if (!grabbed)
        return grabbed.failure();
    const Outcome<Medium> medium = mediumIn(grabbed, m_patience);
    messages.collect();
    if (messages.connectionLost())
        return Failure{Failure::Kind::DeviceGone, path()};
    return medium;
}

std::optional<BurnError> DriveRecorder::write(const BurnJob& job, BurnObserver& observer)
{
    LibburnSession session;
    GrabbedDrive grabbed(session, path(), m_patience.callMs);
    if (!grabbed)
        return BurnError::from(grabbed.failure());
    DriveBurn burning(grabbed, m_traits, m_patience, job, observer);
    return burning.run();
}

void DriveRecorder::eject()
{
    LibburnSession session;
    GrabbedDrive grabbed(session, path(), m_patience.callMs);
    if (grabbed)
        grabbed.releaseEjecting();
}

FoundRecorders findDrives(const DrivePatience& patience)
{
    FoundRecorders found;
    LibburnSession session;
    for (const QString& path : opticalDevices()) {
        GrabbedDrive grabbed(session, path, patience.callMs);
        if (!grabbed) {
            found.allUsable = found.allUsable && grabbed.failure().kind == Failure::Kind::NotFound;
            continue;
        }
        const DriveRecorder::Traits traits = traitsOf(path, grabbed.info());
        if (traits.writesCdR || traits.writesCdRw)
            found.recorders.push_back(std::make_shared<DriveRecorder>(traits, patience));
    }
    return found;
}

} // namespace zib
