#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <span>

namespace zib {

/// A regular file opened for reading, whatever else its name might have turned out to be.
///
/// Opening never waits: devices, pipes, sockets and folders are refused at once. Reading is by position, so
/// one object may serve several threads.
class SourceFile
{
public:
    /// What tells one state of one file from another.
    struct Stamp
    {
        quint64 device = 0;
        quint64 inode = 0;
        qint64 bytes = 0;
        qint64 changedNs = 0;

        bool operator==(const Stamp&) const = default;
    };

    /// Opens @p path.  @returns nothing when it is missing, unreadable or no regular file.
    static std::shared_ptr<const SourceFile> open(const QString& path);
    ~SourceFile();
    SourceFile(const SourceFile&) = delete;
    SourceFile& operator=(const SourceFile&) = delete;

    /// Length in bytes at the time of opening.
    qint64 size() const { return m_stamp.bytes; }
    const Stamp& stamp() const { return m_stamp; }
    /// Reads up to @p into's size bytes at @p offset.  @returns the bytes read, fewer only at the end of the
    /// file, -1 on a read error.
    qint64 read(qint64 offset, std::span<uchar> into) const;
    /// Up to @p count bytes at @p offset; what cannot be read is missing.
    QByteArray bytes(qint64 offset, qint64 count) const;
    /// The descriptor, for libraries that read by themselves; it stays ours.
    int descriptor() const { return m_descriptor; }

private:
    SourceFile(int descriptor, const Stamp& stamp) : m_descriptor(descriptor), m_stamp(stamp) {}

    int m_descriptor;
    Stamp m_stamp;
};

/// A moving window onto a range of a file: cheap for many small looks that mostly go forward.
class FileWindow
{
public:
    /// Looks at the bytes from 0 to @p end of @p file through @p windowBytes of memory.
    FileWindow(std::shared_ptr<const SourceFile> file, qint64 end, qint64 windowBytes);

    /// @p count bytes (at most a quarter of the window) at @p offset, valid until the next call; nullptr when
    /// they reach beyond the end or cannot be read.
    const uchar* at(qint64 offset, qint64 count);
    /// The bytes the window holds at @p offset and beyond, at least one unless the end is reached.
    std::span<const uchar> rest(qint64 offset);
    qint64 end() const { return m_end; }
    /// Whether a read failed; everything beyond it looks like the end.
    bool failed() const { return m_failed; }

private:
    void fill(qint64 offset);

    std::shared_ptr<const SourceFile> m_file;
    qint64 m_end;
    qint64 m_capacity;
    qint64 m_start = 0;
    qint64 m_filled = 0;
    bool m_failed = false;
    std::unique_ptr<uchar[]> m_bytes;
};

} // namespace zib
