#pragma once

#include "common/Outcome.h"
#include "components/AudioFile.h"
#include "engines/rip/sheets/DiscSheet.h"

#include <QByteArray>

#include <functional>
#include <memory>

namespace zib {

/// Makes readers of sound files.
using MakeAudioFile = std::function<std::unique_ptr<AudioFile>()>;

/// A file of a disc image: raw sectors, or the decoded sound of a WAVE, AIFF or MP3 file as a disc would hold
/// it. May wait for the storage. One thread at a time.
class ImageFile
{
public:
    virtual ~ImageFile() = default;

    /// Whether these are the bytes of the file, and not its decoded sound.
    virtual bool isRaw() const = 0;
    virtual qint64 bytes() const = 0;
    /// @returns how many bytes from @p offset on were read; fewer than @p count at the end or where the
    /// file cannot be read.
    virtual qint64 read(char* data, qint64 offset, qint64 count) = 0;
};

/// Opens a file of an image. What calls itself raw but is a WAVE file is taken as that.
/// @param path as the system knows it.  @param name for the reason.
/// @returns UnreadableFile or NoPermission with the reason in words.
Outcome<std::shared_ptr<ImageFile>> openImageFile(const QByteArray& path, const QString& name,
                                                  SheetFile::Kind kind, const MakeAudioFile& makeSound);

} // namespace zib
