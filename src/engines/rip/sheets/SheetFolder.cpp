#include "engines/rip/sheets/SheetFolder.h"

#include "common/NativeName.h"
#include "engines/rip/sheets/SheetText.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <dirent.h>
#include <sys/stat.h>

namespace zib {

namespace {

bool exists(const QByteArray& path)
{
    struct stat info = {};
    return ::stat(path.constData(), &info) == 0;
}

/// What is left when letter case and the way of composing accents are taken away.
QString folded(const QString& name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

/// The ways to understand a name, each as a row of parts; the first one begins with an empty part where the
/// name is absolute.
QList<QStringList> understandings(const QString& name)
{
    static const QRegularExpression drive(QStringLiteral("^[A-Za-z]:"));
    QList<QStringList> ways{name.split(u'/')};
    QString slashed = name;
    slashed.replace(u'\\', u'/');
    const bool elsewhere = slashed.startsWith(u'/') || drive.match(name).hasMatch();
    if (slashed != name)
        ways << slashed.split(u'/');
    if (elsewhere) // the folder may have moved since: then the file lies beside its sheet
        ways << QStringList{slashed.mid(slashed.lastIndexOf(u'/') + 1).remove(drive)};
    return ways;
}

} // namespace

SheetFolder::SheetFolder(const QString& sheet, QByteArray encoding) : m_encoding(std::move(encoding))
{
    const QFileInfo info(sheet);
    m_folders << nativeName(info.absolutePath());
    const QString target = info.canonicalFilePath();
    if (const QByteArray other = nativeName(QFileInfo(target).path());
        !target.isEmpty() && other != m_folders[0])
        m_folders << other;
}

Outcome<QByteArray> SheetFolder::find(const QString& name) const
{
    for (const QStringList& parts : understandings(name)) {
        const bool absolute = parts.size() > 1 && parts[0].isEmpty();
        const QList<QByteArray> roots = absolute ? QList<QByteArray>{QByteArray()} : m_folders;
        for (const QByteArray& root : roots) {
            const Answer found = resolve(root, parts);
            if (found.several)
                return Failure{Failure::Kind::NotFound,
                               QStringLiteral("more than one file could be %1").arg(name)};
            if (!found.path.isEmpty())
                return found.path;
        }
    }
    return Failure{Failure::Kind::NotFound, QStringLiteral("the file %1 is missing").arg(name)};
}

SheetFolder::Answer SheetFolder::resolve(QByteArray from, const QStringList& parts) const
{
    for (const QString& part : parts) {
        if (part.isEmpty() || part == u".")
            continue;
        const QByteArray exact = from + '/' + part.toUtf8();
        if (part == u".." || exists(exact)) {
            from = exact;
            continue;
        }
        const Answer like = entryLike(from, part);
        if (like.path.isEmpty() || like.several)
            return like;
        from = like.path;
    }
    return {from};
}

SheetFolder::Answer SheetFolder::entryLike(const QByteArray& folder, const QString& name) const
{
    DIR* entries = ::opendir(folder.isEmpty() ? "/" : folder.constData());
    if (entries == nullptr)
        return {};
    const QString wanted = folded(name);
    Answer found;
    while (const dirent* entry = ::readdir(entries)) {
        if (!readsAs(entry->d_name, wanted) || !exists(folder + '/' + entry->d_name))
            continue;
        found.several = !found.path.isEmpty();
        found.path = folder + '/' + entry->d_name;
        if (found.several)
            break;
    }
    ::closedir(entries);
    return found;
}

/// A name on the storage that is no UTF-8 is read as the sheet was.
bool SheetFolder::readsAs(const QByteArray& entry, const QString& wanted) const
{
    if (const auto text = decoded(entry, QByteArrayLiteral("UTF-8")))
        return folded(*text) == wanted;
    const auto text = decoded(entry, m_encoding);
    return text && folded(*text) == wanted;
}

} // namespace zib
