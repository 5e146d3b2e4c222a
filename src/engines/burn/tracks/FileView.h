#pragma once

#include <QtGlobal>

#include <csignal>
#include <cstddef>

namespace zib {

/// A stretch of an open file as it stands in memory, without a copy. Where the file is cut short or cannot be
/// read while somebody looks, zeros are shown from then on, and isWhole() says so: what was seen is worth
/// something only after that question. One thread.
class FileView
{
public:
    FileView() = default;
    ~FileView();
    Q_DISABLE_COPY_MOVE(FileView)

    /// Shows @p size bytes from @p offset on; what was shown before goes. The file stays open until this view
    /// is gone, or shows another.
    /// @returns false where the system does not show files of that kind, or has no room.
    bool show(int file, qint64 offset, qint64 size);
    /// From so many bytes behind the beginning of the stretch up to its end.
    const char* at(qint64 offset) const { return m_pages + m_lead + offset; }
    /// Gives memory back: what stands before this place is not looked at any more.
    void forget(qint64 offset);
    /// Whether everything that was seen since show() stands in the file.
    bool isWhole() const;

private:
    void close();
    bool covers(const void* place) const;
    bool tear();
    static void install();
    static void fault(int signal, siginfo_t* info, void* context);

    int m_file = -1;
    char* m_pages = nullptr;
    std::size_t m_length = 0;
    qint64 m_lead = 0; ///< Bytes of the first page before the stretch.
    qint64 m_end = 0;  ///< Of the stretch, in the file.
    std::size_t m_forgotten = 0;
    volatile std::sig_atomic_t m_torn = 0;
    FileView* m_next = nullptr; ///< Of those that this thread looks at.
};

} // namespace zib
