#include "platform/ProgramFolder.h"

#include "common/GeneralAPI.h"
#include "common/NativeName.h"
#include "common/Texts.h"
#include "platform/AtomicFile.h"
#include "platform/IniFile.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>
#include <optional>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib {

namespace {

const QByteArray kSection = "Installed"; // What was laid out: name of a file = SHA-256 of its bytes.

QString recordOf(const QString& folder)
{
    return GeneralAPI::JoinPath(folder, QStringLiteral(".installed.ini"));
}

bool mayWrite(const QString& folder)
{
    return ::access(nativeName(folder).constData(), W_OK | X_OK) == 0;
}

/// The folders of installed programs in the file system's standard hierarchy: what changes lies elsewhere.
bool isSystemFolder(const QString& folder)
{
    static const QRegularExpression installed(QStringLiteral("^/usr/(local/)?(s?bin|lib(|32|64|exec))(/|$)"));
    return installed.match(folder).hasMatch();
}

/// Root may write everywhere, but a copy that is installed for all accounts keeps nothing of one of them.
bool isPortable(const QString& executableFolder)
{
    return !isSystemFolder(executableFolder) && mayWrite(executableFolder);
}

QByteArray homeFolder()
{
    if (const QByteArray home = qgetenv("HOME"); home.startsWith('/'))
        return home;
    const passwd* account = ::getpwuid(::getuid());
    return account && account->pw_dir ? account->pw_dir : "/";
}

QByteArray hashOf(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

/// Makes a folder for this account alone, with every missing parent. @returns whether it is there.
bool makePrivateFolders(const QString& folder)
{
    if (isFolder(folder))
        return true;
    const qsizetype slash = folder.lastIndexOf(u'/');
    if (slash > 0 && !makePrivateFolders(folder.left(slash)))
        return false;
    if (::mkdir(nativeName(folder).constData(), 0700) == 0)
        return true;
    const int error = errno;
    const bool made = isFolder(folder); // By another start of the program.
    errno = error;
    return made;
}

/// Where a data file of the program lies: beside the executable, or in the share folder of its prefix.
QString sourceOf(const QString& executableFolder, const QString& name)
{
    QString up;
    for (int level = 0; level < 4; ++level, up += QStringLiteral("/.."))
        for (const QString& below : {QString(), QStringLiteral("/share/zibcdburner")})
            if (const QString path = executableFolder + up + below + u'/' + name;
                (level == 0) == below.isEmpty() && isFile(path))
                return path;
    return {};
}

/// One data file of the program in the user's folder.
class DataFile
{
public:
    DataFile(const QString& source, const QString& folder, const QString& name)
        : m_target(GeneralAPI::JoinPath(folder, name)), m_name(name.toUtf8()), m_record(recordOf(folder)),
          m_source(source.isEmpty() ? std::nullopt : readSnapshot(source))
    {
    }

    /// Lays the file out when it is missing or older and as the program left it. @returns false, with errno
    /// set, when it could not be written.
    bool update()
    {
        IniFile ini;
        const QByteArray laidOut = ini.GetPrivateProfileStringA(kSection, m_name, {}, 100, m_record);
        if (!m_source || !m_source->exists || laidOut == hashOf(m_source->bytes))
            return true; // What differs now is the user's doing.
        if (!put(laidOut))
            return false;
        return ini.WritePrivateProfileStringA(kSection, m_name, hashOf(m_source->bytes), m_record);
    }

private:
    bool put(const QByteArray& laidOut)
    {
        const FolderLock lock(m_target);
        const auto there = readSnapshot(m_target);
        const bool changed = !there || (there->exists && hashOf(there->bytes) != laidOut);
        if (changed)
            return true;
        return replaceFile(m_target, m_source->bytes, *there, lock) != Replaced::Failed;
    }

    QString m_target;
    QByteArray m_name;
    QString m_record;
    std::optional<FileSnapshot> m_source;
};

/// @returns the number of the error that kept the user's folder from being made ready, or 0.
int makeReady(const QString& folder, const QString& executableFolder)
{
    if (!makePrivateFolders(folder))
        return errno;
    if (!mayWrite(folder))
        return errno;
    for (const QString& name :
         {QStringLiteral("TIPOFDAY.TXT"), QStringLiteral("zibburn.chm"), QStringLiteral("Sample1.jpg")}) {
        errno = 0;
        if (!DataFile(sourceOf(executableFolder, name), folder, name).update())
            return errno != 0 ? errno : EIO;
    }
    return 0;
}

QString troubleWith(const QString& folder, int error)
{
    return QCoreApplication::translate("ProgramFolder",
                                       "%1 keeps its settings and files in this folder, which cannot be made "
                                       "ready:\n\n%2\n%3\n\nUntil that is mended, settings are not kept, and "
                                       "files that must be converted cannot be prepared.")
        .arg(kApplicationTitle, folder, QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace

QString userProgramFolder()
{
    const QByteArray data = qgetenv("XDG_DATA_HOME");
    const QByteArray base = data.startsWith('/') ? data : homeFolder() + "/.local/share";
    return GeneralAPI::JoinPath(nativeText(base), QStringLiteral("ZibCDBurner"));
}

ProgramFolder findProgramFolder(const QString& executableFolder, const QString& userFolder)
{
    if (isPortable(executableFolder))
        return {executableFolder};
    if (const int error = makeReady(userFolder, executableFolder); error != 0)
        return {isFolder(userFolder) ? userFolder : executableFolder, troubleWith(userFolder, error)};
    return {userFolder};
}

ProgramFolder findProgramFolder()
{
    return findProgramFolder(executableFolder(), userProgramFolder());
}

} // namespace zib
