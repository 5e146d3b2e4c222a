#pragma once

#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <fcntl.h>
#include <unistd.h>

#include <new>
#include <string>
#include <type_traits>

namespace zib::drive {

/// A plain record kept in a mapped file, so that every process sees the same one and a killed process loses
/// nothing. The record must be valid as all zero bytes until its first user fills it; `fresh` tells that
/// user.
template <typename Record>
class SharedFile
{
    static_assert(std::is_standard_layout_v<Record>);

public:
    SharedFile() = default;
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;
    ~SharedFile() { unmap(); }

    /// Opens or makes @p path and calls @p fill(record) once in the life of the file.
    /// @returns false when the file cannot be made or mapped.
    template <typename Fill>
    bool map(const std::string& path, Fill fill)
    {
        unmap();
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            return false;
        }
        ::flock(fd, LOCK_EX);
        struct ::stat info
        {
        };
        ::fstat(fd, &info);
        const bool fresh = info.st_size < static_cast<off_t>(sizeof(Record));
        if (!fresh || ::ftruncate(fd, sizeof(Record)) == 0) {
            void* memory = ::mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
            m_record = memory == MAP_FAILED ? nullptr : static_cast<Record*>(memory);
        }
        if (m_record != nullptr && fresh) {
            fill(*m_record);
        }
        // The mapping keeps the open file, and with it the lock, alive.
        ::flock(fd, LOCK_UN);
        ::close(fd);
        return m_record != nullptr;
    }

    void unmap()
    {
        if (m_record != nullptr) {
            ::munmap(m_record, sizeof(Record));
            m_record = nullptr;
        }
    }

    [[nodiscard]] bool mapped() const { return m_record != nullptr; }
    Record& operator*() { return *m_record; }
    const Record& operator*() const { return *m_record; }
    Record* operator->() { return m_record; }
    const Record* operator->() const { return m_record; }

private:
    Record* m_record = nullptr;
};

} // namespace zib::drive
