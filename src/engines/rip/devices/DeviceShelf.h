#pragma once

#include "common/Worker.h"
#include "engines/rip/devices/DeviceList.h"
#include "engines/rip/image/ImageFile.h"

#include <QElapsedTimer>

#include <chrono>
#include <memory>

namespace zib {

/// A device of the list, with what is wrong with it.
struct ListedDevice
{
    RipDevice device{};
    QString note{}; ///< Why it cannot be used, in words; empty while nothing is known against it.
};

/// The list of drives and disc images. Drives and folders are asked on threads of their own, so that nobody
/// waits for a slow one: what it tells late comes late. The owner's thread only.
class DeviceShelf
{
public:
    DeviceShelf(QString imagesFolder, MakeAudioFile makeSound);
    ~DeviceShelf();
    Q_DISABLE_COPY_MOVE(DeviceShelf)

    /// Looks for all devices anew, and waits a little for names and images.
    void look(std::chrono::milliseconds patience);
    /// Drives first, then images by name; entries keep their places until the next look().
    QList<ListedDevice> devices() const;
    /// Has the devices asked again that something was wrong with, unless that was a moment ago.
    void recheck();

private:
    struct Shared;

    std::shared_ptr<Shared> m_shared;
    QElapsedTimer m_checked;
    Worker m_drives;
    Worker m_images;
};

} // namespace zib
