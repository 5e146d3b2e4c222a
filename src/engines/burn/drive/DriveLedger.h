#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace zib {

/// Which drives this process has in its hands, whatever window or thread began it. Any thread.
namespace DriveLedger {

enum class Use
{
    None,
    Asked,   ///< A question about the drive or its disc is under way, perhaps for nobody any more.
    Writing, ///< A disc is being written, or finished for a window that has closed.
    Hanging  ///< A command has not come back.
};

/// Keeps a drive entered as long as it lives; the gravest use of a drive counts.
class Entry
{
public:
    Entry(QString path, Use use);
    ~Entry();
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

private:
    QString m_path;
    Use m_use;
};

Use useOf(const QString& path);
/// Enters a drive that this process has in no other use.  @returns nothing when it has.
std::unique_ptr<Entry> enterIfFree(const QString& path, Use use);
/// A drive that hangs, or nothing.
QString hanging();
inline bool anyHanging()
{
    return !hanging().isEmpty();
}
/// The drives that are in use.
QStringList paths();

} // namespace DriveLedger

} // namespace zib
