#include "engines/rip/devices/DeviceShelf.h"

#include "engines/rip/image/ImageDisc.h"

#include <QHash>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace zib {

namespace {

constexpr qint64 kRecheckMs = 1000;

} // namespace

/// Lives as long as the last task on the threads, which may be longer than the shelf.
struct DeviceShelf::Shared
{
    Shared(QString folder, MakeAudioFile make) : imagesFolder(std::move(folder)), makeSound(std::move(make))
    {
    }

    const QString imagesFolder;
    const MakeAudioFile makeSound;
    std::atomic<bool> stopped = false;

    std::mutex mutex;
    std::condition_variable changed;
    // Under the mutex.
    QList<RipDevice> drives;
    QList<RipDevice> images;
    QHash<QString, QString> notes; // by path
    bool askingDrives = false;
    bool listingImages = false;
    bool checkingImages = false;

    void askDrives(const QList<RipDevice>& which);
    void listImages();
    void checkImages(const QList<RipDevice>& which);
    void note(const RipDevice& device);
    QList<RipDevice> noted(const QList<RipDevice>& among) const;
};

void DeviceShelf::Shared::askDrives(const QList<RipDevice>& which)
{
    for (const RipDevice& drive : which) {
        const RipDevice identified = withIdentity(drive);
        note(drive);
        const std::lock_guard lock(mutex);
        for (RipDevice& listed : drives)
            if (listed == drive)
                listed = identified;
    }
    const std::lock_guard lock(mutex);
    askingDrives = false;
    changed.notify_all();
}

/// The names come first: what is wrong with an image may take longer to find out.
void DeviceShelf::Shared::listImages()
{
    const QList<RipDevice> found = findImages(imagesFolder);
    {
        const std::lock_guard lock(mutex);
        images = found;
        listingImages = false;
        changed.notify_all();
    }
    checkImages(found);
}

void DeviceShelf::Shared::checkImages(const QList<RipDevice>& which)
{
    for (const RipDevice& image : which)
        if (!stopped)
            note(image);
    const std::lock_guard lock(mutex);
    checkingImages = false;
}

void DeviceShelf::Shared::note(const RipDevice& device)
{
    QString words;
    if (device.isImage) {
        const auto opened = ImageDisc::open(device.path, makeSound);
        words = opened ? opened.value()->remark() : refusalWords(opened.error());
    } else if (const auto free = whetherFree(device.path); !free) {
        words = refusalWords(free.error());
    }
    const std::lock_guard lock(mutex);
    notes[device.path] = words;
}

/// Under the mutex.
QList<RipDevice> DeviceShelf::Shared::noted(const QList<RipDevice>& among) const
{
    QList<RipDevice> found;
    for (const RipDevice& device : among)
        if (!notes.value(device.path).isEmpty())
            found << device;
    return found;
}

DeviceShelf::DeviceShelf(QString imagesFolder, MakeAudioFile makeSound)
    : m_shared(std::make_shared<Shared>(std::move(imagesFolder), std::move(makeSound))),
      m_drives(std::chrono::milliseconds(0)), m_images(std::chrono::milliseconds(0))
{
}

DeviceShelf::~DeviceShelf()
{
    m_shared->stopped = true;
}

void DeviceShelf::look(std::chrono::milliseconds patience)
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->drives = findReaders();
    if (!std::exchange(m_shared->askingDrives, true))
        m_drives.post([shared = m_shared, drives = m_shared->drives] { shared->askDrives(drives); });
    if (!m_shared->checkingImages) {
        m_shared->listingImages = m_shared->checkingImages = true;
        m_images.post([shared = m_shared] { shared->listImages(); });
    }
    m_checked.start();
    m_shared->changed.wait_for(lock, patience,
                               [this] { return !m_shared->askingDrives && !m_shared->listingImages; });
}

QList<ListedDevice> DeviceShelf::devices() const
{
    const std::lock_guard lock(m_shared->mutex);
    QList<ListedDevice> all;
    for (const RipDevice& device : m_shared->drives + m_shared->images)
        all << ListedDevice{device, m_shared->notes.value(device.path)};
    return all;
}

void DeviceShelf::recheck()
{
    const std::lock_guard lock(m_shared->mutex);
    if (!m_checked.hasExpired(kRecheckMs))
        return;
    m_checked.start();
    const auto drives = m_shared->noted(m_shared->drives);
    if (!drives.isEmpty() && !std::exchange(m_shared->askingDrives, true))
        m_drives.post([shared = m_shared, drives] { shared->askDrives(drives); });
    const auto images = m_shared->noted(m_shared->images);
    if (!images.isEmpty() && !std::exchange(m_shared->checkingImages, true))
        m_images.post([shared = m_shared, images] { shared->checkImages(images); });
}

} // namespace zib
