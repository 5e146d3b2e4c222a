#pragma once

#include "engines/burn/compare/DiscSamples.h"

#include <QFile>

namespace zib {

/// The sound of a disc image: frames one behind the other from the file's first byte on.
class ImageSound final : public DiscSamples
{
public:
    explicit ImageSound(const QString& path);

    Outcome<> read(qint64 frame, int count, char* buffer) override;
    qint64 leadOut() const override { return m_frames; }
    /// Its open file; -1 where there is none.
    int handle() const { return m_file.handle(); }

private:
    QFile m_file;
    qint64 m_frames = 0;
};

} // namespace zib
