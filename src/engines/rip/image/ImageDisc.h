#pragma once

#include "engines/rip/Disc.h"
#include "engines/rip/image/ImageFile.h"
#include "engines/rip/image/ImageLayout.h"

#include <QHash>
#include <QList>

#include <atomic>
#include <memory>

namespace zib {

class SheetFolder;

/// A disc image: a CUE sheet or a TOC file, and the files that it names. An image has no jitter, so plain
/// reads are exact. Everything may wait for the storage. One thread at a time.
class ImageDisc final : public Disc
{
public:
    /// @param sheet path of the CUE sheet, or of the TOC file by its ending.
    /// @param makeSound for WAVE, AIFF and MP3 files; without it they cannot be read.
    /// @returns why the image cannot be read, in words.
    static Outcome<std::shared_ptr<ImageDisc>> open(const QString& sheet, const MakeAudioFile& makeSound);

    QList<TocTrack> tracks() const override { return m_layout.tracks; }
    DiscNames names() const override { return m_names; }
    qint32 gapBehind(const TocTrack& track, const std::atomic<bool>& stopped) const override;
    std::unique_ptr<FrameReader> makeReader(const std::atomic<bool>& stopped,
                                            Progress progress) const override;
    /// What is amiss although tracks can be read, in words; empty when all is well.
    QString remark() const { return m_layout.remark; }
    /// Whether sheet and files are still those that were opened.
    bool isCurrent() const;

    /// Reads frames of sound.  @returns how many of them, from the first on, were read whole.
    qint32 read(char* data, qint32 first, qint32 count) const;
    /// The name of the file that holds a frame; empty where there is silence.
    QString fileAt(qint32 frame) const;

private:
    /// How a file is told from another, or from what it was.
    struct Stamp
    {
        QByteArray path{};
        quint64 device = 0;
        quint64 node = 0;
        qint64 bytes = -1;
        qint64 changedNs = 0;

        bool operator==(const Stamp&) const = default;
    };
    /// A file of the image.
    struct Part
    {
        QString name{};
        std::shared_ptr<ImageFile> file{};
        bool swapped = false; ///< As the sheet tells.
    };

    ImageDisc() = default;
    static Stamp stampOf(const QByteArray& path);
    Outcome<> openParts(const DiscSheet& sheet, const SheetFolder& folder, const MakeAudioFile& makeSound);
    Outcome<> arrange(const DiscSheet& sheet);
    qint64 readRun(char* data, const DiscRun& run, qint64 from, qint64 bytes) const;
    bool isSwapped(int part) const;
    bool listen(int part) const;

    QList<Stamp> m_stamps;
    QList<Part> m_parts;
    ImageLayout m_layout;
    DiscNames m_names;
    mutable QHash<int, bool> m_swapped; ///< By part, once it was listened to.
};

} // namespace zib
