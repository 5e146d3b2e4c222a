#include "tools/OutputPlace.h"

#include "common/Errands.h"
#include "common/GeneralAPI.h"
#include "common/NativeName.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zib::OutputPlace {

namespace {

constexpr int kMostLinks = 40;
constexpr mode_t kAnyWriting = S_IWUSR | S_IWGRP | S_IWOTH;

QString reasonOf(int error)
{
    switch (error) {
    case EACCES:
    case EPERM:
        return QStringLiteral("you may not write there");
    case EROFS:
        return QStringLiteral("nothing can be written there");
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("there is no room left");
    case ENOTDIR:
    case EEXIST:
        return QStringLiteral("a file of that name is in the way");
    case ENAMETOOLONG:
        return QStringLiteral("its name is too long");
    default:
        return QString::fromStdString(std::generic_category().message(error));
    }
}

/// Makes one folder after the other, as they are named.  @returns 0 or the error.
int makeFolders(const QString& path)
{
    for (qsizetype end = path.indexOf(u'/', 1);; end = path.indexOf(u'/', end + 1)) {
        const QByteArray name = nativeName(end < 0 ? path : path.first(end));
        struct stat found = {};
        if (::stat(name.constData(), &found) == 0) {
            if (!S_ISDIR(found.st_mode))
                return ENOTDIR;
        } else if (errno != ENOENT || (::mkdir(name.constData(), 0777) != 0 && errno != EEXIST)) {
            return errno;
        }
        if (end < 0)
            return 0;
    }
}

/// Writes a byte where the files are to be.  @returns 0 or the error.
int tryFile(const QString& folder)
{
    QByteArray name = nativeName(GeneralAPI::JoinPath(folder, QStringLiteral(".zib-XXXXXX.part")));
    const int file = ::mkostemps(name.data(), 5, O_CLOEXEC);
    if (file < 0)
        return errno;
    const int error = ::write(file, "z", 1) == 1 ? 0 : errno;
    ::close(file);
    ::unlink(name.constData());
    return error;
}

QString whyUnusable(const QString& folder)
{
    int error = makeFolders(folder);
    if (error == 0)
        error = tryFile(folder);
    return error == 0 ? QString() : reasonOf(error);
}

/// A name may really end in a blank; otherwise blanks at the ends are slips.
QString meant(const QString& typed, bool exists)
{
    return exists ? typed : typed.trimmed();
}

/// Where a chain of links leads, whether anything is there or not.
QString followed(QString path)
{
    for (int links = 0; links < kMostLinks && QFileInfo(path).isSymLink(); ++links)
        path = QFileInfo(path).symLinkTarget();
    return path;
}

bool isSame(const QString& a, const QString& b)
{
    struct stat first = {};
    struct stat second = {};
    if (::stat(nativeName(a).constData(), &first) != 0 || ::stat(nativeName(b).constData(), &second) != 0)
        return false;
    return (first.st_dev == second.st_dev && first.st_ino == second.st_ino) ||
           QFileInfo(a).canonicalFilePath() == QFileInfo(b).canonicalFilePath();
}

/// Whether a file is marked against writing, even for an account that may do everything.
bool isProtected(const QString& path)
{
    const QByteArray name = nativeName(path);
    struct stat found = {};
    return ::stat(name.constData(), &found) == 0 &&
           ((found.st_mode & kAnyWriting) == 0 || ::access(name.constData(), W_OK) != 0);
}

} // namespace

void makeFolder(Errands& errands, const QString& folder)
{
    errands.ask<bool>([folder] { return GeneralAPI::EnsureFolderPath(folder); },
                      [folder](bool made) {
                          if (!made)
                              GeneralAPI::TellFolderNotMade(folder);
                      });
}

Folder lookAtFolder(const QString& typed, const QStringList& names)
{
    Folder folder{.path = meant(typed, QFileInfo(typed).isDir()), .reason = {}, .taken = {}};
    if (folder.path.isEmpty())
        folder.reason = QStringLiteral("no folder is named");
    else if (!QDir::isAbsolutePath(folder.path))
        folder.reason = QStringLiteral("its name must begin with /");
    else
        folder.reason = whyUnusable(folder.path);
    for (const QString& name : names) {
        const NameBearer bearer = bearerOf(nativeName(GeneralAPI::JoinPath(folder.path, name)));
        folder.seen.insert(name, bearer);
        if (bearer.someone)
            folder.taken << name;
    }
    return folder;
}

QString refusal(const Folder& folder)
{
    return QStringLiteral("The WAV files cannot be saved in this folder: %1.\n%2")
        .arg(folder.reason, folder.path);
}

QString replaceQuestion(const Folder& folder)
{
    if (folder.taken.size() == 1)
        return QStringLiteral("The file %1 is in the folder already. Replace it?\n"
                              "No leaves it as it is and copies the other tracks only.")
            .arg(folder.taken.first());
    return QStringLiteral("%1 of the files are in the folder already. Replace them?\n"
                          "No leaves them as they are and copies the other tracks only.")
        .arg(folder.taken.size());
}

Target lookAtTarget(const QString& source, const QString& target)
{
    Target found{.source = meant(source, QFileInfo(source).isFile()), .path = followed(target.trimmed())};
    if (!QFileInfo(found.source).isFile()) {
        found.kind = Target::Kind::NoSource;
    } else if (isSame(found.source, found.path)) {
        found.kind = Target::Kind::IsSource;
    } else if (QFileInfo::exists(found.path)) {
        found.kind = isProtected(found.path) ? Target::Kind::Protected : Target::Kind::Taken;
    } else {
        found.reason = whyUnusable(QFileInfo(found.path).path());
        found.kind = found.reason.isEmpty() ? Target::Kind::Free : Target::Kind::NoFolder;
    }
    return found;
}

} // namespace zib::OutputPlace
