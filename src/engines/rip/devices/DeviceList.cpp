#include "engines/rip/devices/DeviceList.h"

#include "common/NativeName.h"
#include "engines/rip/drive/CdioDisc.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace zib {

namespace {

constexpr int kMostDrives = 64;

/// What the kernel noted of a drive when it was plugged in.
QString noted(const QString& drive, const QString& what)
{
    QFile file(QStringLiteral("/sys/block/%1/device/%2").arg(drive, what));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()).simplified() : QString();
}

int openForOurselves(const QString& device)
{
    return ::open(QFile::encodeName(device).constData(), O_RDONLY | O_NONBLOCK | O_EXCL | O_CLOEXEC);
}

bool isMounted(const QString& device)
{
    const QByteArray node = QFile::encodeName(device);
    const auto mounts = QStorageInfo::mountedVolumes();
    return std::any_of(mounts.cbegin(), mounts.cend(),
                       [&node](const QStorageInfo& mount) { return mount.device() == node; });
}

} // namespace

QList<RipDevice> findReaders()
{
    QList<RipDevice> found;
    for (int n = 0; n < kMostDrives; ++n) {
        const QString name = QStringLiteral("sr%1").arg(n);
        const QString path = QStringLiteral("/dev/") + name;
        if (::access(QFile::encodeName(path).constData(), F_OK) == 0)
            found << RipDevice{path, path, noted(name, QStringLiteral("vendor")),
                               noted(name, QStringLiteral("model"))};
    }
    return found;
}

QList<RipDevice> findImages(const QString& folder)
{
    QList<RipDevice> found;
    QSet<QString> names;
    QStringList entries = folderEntries(folder);
    entries.sort();
    for (const QString& ending : {QStringLiteral(".cue"), QStringLiteral(".toc")})
        for (const QString& entry : entries) {
            const QString sheet = QDir(folder).filePath(entry);
            if (entry.startsWith(u'.') || !entry.endsWith(ending, Qt::CaseInsensitive) || !isFile(sheet))
                continue;
            const QString name = entry.chopped(ending.size());
            found << RipDevice{sheet, names.contains(name) ? entry : name, QStringLiteral("Disc"),
                               QStringLiteral("image"), true};
            names << name;
        }
    std::stable_sort(found.begin(), found.end(),
                     [](const RipDevice& a, const RipDevice& b) { return a.text1 < b.text1; });
    return found;
}

QString refusalWords(const Failure& why)
{
    switch (why.kind) {
    case Failure::Kind::Busy:
        return QStringLiteral("used by another program");
    case Failure::Kind::NoPermission:
        return QFileInfo(why.detail).isAbsolute() ? QStringLiteral("no permission") : why.detail;
    case Failure::Kind::UnreadableFile:
    case Failure::Kind::BadValue:
        return why.detail;
    default:
        return why.detail.startsWith(u'/') ? QString() : why.detail;
    }
}

Outcome<> whetherFree(const QString& device)
{
    const int node = openForOurselves(device);
    if (node >= 0) {
        ::close(node);
        return {};
    }
    switch (errno) {
    case EBUSY:
        if (isMounted(device))
            return {};
        return Failure{Failure::Kind::Busy, device};
    case EACCES:
    case EPERM:
        return Failure{Failure::Kind::NoPermission, device};
    default:
        return Failure{Failure::Kind::NotFound, device};
    }
}

RipDevice withIdentity(RipDevice device)
{
    const auto free = whetherFree(device.path);
    if (device.text2.isEmpty() && (free || free.error().kind == Failure::Kind::Busy))
        if (const auto disc = CdioDisc::openDrive(device.path)) {
            const DriveIdentity identity = disc.value()->identity();
            device.text2 = identity.maker;
            device.text3 = identity.model;
        }
    if (device.text2.isEmpty())
        device.text2 = QStringLiteral("Drive");
    return device;
}

DriveHold::DriveHold(const QString& device) : m_node(openForOurselves(device)) {}

DriveHold::~DriveHold()
{
    if (m_node >= 0)
        ::close(m_node);
}

} // namespace zib
