#include "Journal.h"

#include <fcntl.h>
#include <unistd.h>

namespace zib::drive {

void appendToJournal(const std::string& path, std::string line)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        return;
    }
    line += '\n';
    [[maybe_unused]] const auto written = ::write(fd, line.data(), line.size());
    ::close(fd);
}

} // namespace zib::drive
