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
bool anyHanging();
/// The drives that are in use.
QStringList paths();

} // namespace DriveLedger

} // namespace zib
