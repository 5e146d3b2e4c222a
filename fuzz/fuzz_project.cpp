// A project file of any bytes: what is opened are files that exist, at most as many as a project takes; and
// what is written of them opens as the same list.

#include "app/ProjectFile.h"
#include "common/NativeName.h"
#include "common/Platform.h"
#include "input.h"
#include "platform/IniFile.h"

#include <QFile>
#include <QTemporaryDir>

using zib::fuzz::check;

namespace {

void checkList(const QStringList& files)
{
    check(files.size() <= zib::ProjectFile::kMostFiles, "a project has an end");
    for (const QString& file : files)
        check(zib::isFile(file), "only files that exist are opened");
}

/// A folder in memory, for the files of this run.
QString folder()
{
    static const QTemporaryDir made(QStringLiteral("/dev/shm/zib-XXXXXX"));
    check(made.isValid(), "there is a folder in memory");
    return made.path();
}

void put(const QString& path, const std::uint8_t* data, std::size_t size)
{
    QFile file(path);
    check(file.open(QIODevice::WriteOnly) &&
              file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size)) >= 0,
          "the input fits into memory");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static zib::IniFile ini;
    zib::Platform platform;
    platform.ini = &ini;
    zib::setPlatform(platform);
    const QString path = folder() + QStringLiteral("/project.zcp");
    put(path, data, size);
    const zib::ProjectFile project(path);
    const auto files = project.read();
    if (!files)
        return 0;
    checkList(*files);
    const auto refused = project.write(*files);
    check(refused && refused->isEmpty(), "what was opened can be written");
    const auto again = project.read();
    check(files->isEmpty() || (again && *again == *files), "what was written opens as the same list");
    return 0;
}
