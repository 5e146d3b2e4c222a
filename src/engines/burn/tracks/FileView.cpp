#include "engines/burn/tracks/FileView.h"

#include <atomic>
#include <mutex>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

/// The system maps, and gives back, whole pieces of this size at once where it can.
constexpr std::size_t kBigPage = std::size_t{2} << 20;

struct sigaction g_before = {};
thread_local constinit FileView* t_views = nullptr;

} // namespace

FileView::~FileView()
{
    close();
}

void FileView::close()
{
    if (!m_pages)
        return;
    FileView** link = &t_views;
    while (*link != this)
        link = &(*link)->m_next;
    *link = m_next;
    ::munmap(m_pages, m_length);
    m_pages = nullptr;
}

bool FileView::show(int file, qint64 offset, qint64 size)
{
    static std::once_flag installed;
    std::call_once(installed, &FileView::install);
    close();
    m_lead = offset % ::sysconf(_SC_PAGESIZE);
    m_length = static_cast<std::size_t>(m_lead + size);
    void* pages = ::mmap(nullptr, m_length, PROT_READ, MAP_SHARED, file, offset - m_lead);
    if (pages == MAP_FAILED)
        return false;
    m_pages = static_cast<char*>(pages);
    m_file = file;
    m_end = offset + size;
    m_forgotten = 0;
    m_torn = 0;
    m_next = t_views;
    t_views = this;
    return true;
}

void FileView::forget(qint64 offset)
{
    const auto address = reinterpret_cast<std::size_t>(m_pages);
    const std::size_t until = (address + static_cast<std::size_t>(m_lead + offset)) / kBigPage * kBigPage;
    if (until <= address + m_forgotten)
        return;
    ::madvise(m_pages + m_forgotten, until - address - m_forgotten, MADV_DONTNEED);
    m_forgotten = until - address;
}

/// What is cut off within the last page shows as zeros without a word, so the size is asked too.
bool FileView::isWhole() const
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
    struct stat s = {};
    return m_torn == 0 && ::fstat(m_file, &s) == 0 && s.st_size >= m_end;
}

bool FileView::covers(const void* place) const
{
    return place >= m_pages && place < m_pages + m_length;
}

/// Zeros in place of the file, so that whoever looks can go on. Called within a signal: system calls only.
/// @returns false where the system has no room even for them.
bool FileView::tear()
{
    m_torn = 1;
    return ::mmap(m_pages, m_length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
}

/// Stays for good: other threads may look while one has ended.
void FileView::install()
{
    struct sigaction action = {};
    action.sa_sigaction = &FileView::fault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigaction(SIGBUS, &action, &g_before);
}

/// A place that no view of this thread shows is somebody else's matter: he gets the signal as if there were
/// no views.
void FileView::fault(int signal, siginfo_t* info, void*)
{
    for (FileView* view = t_views; view && info->si_code > 0; view = view->m_next)
        if (view->covers(info->si_addr) && view->tear())
            return;
    ::sigaction(signal, &g_before, nullptr);
    if (info->si_code <= 0)
        ::raise(signal);
}

} // namespace zib
