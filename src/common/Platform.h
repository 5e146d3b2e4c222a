#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace zib {

class Messages;

/// One change to an INI file: no value deletes the key, no key deletes the section.
struct IniChange
{
    QByteArray section;
    std::optional<QByteArray> key;
    std::optional<QByteArray> value;
};

/// One value to read from an INI file: what GetPrivateProfileStringA takes.
struct IniQuery
{
    QByteArray section;
    QByteArray key;
    QByteArray fallback{};
    int size = 2048;
};

/// INI files with the documented behaviour of the calls named here. Texts are UTF-8.
class IniService
{
public:
    virtual ~IniService() = default;
    /// Reads a value into at most @p size bytes, terminating NUL included, never cutting a character in two.
    /// @returns the value read, or @p fallback when file, section or key is missing.
    virtual QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                                const QByteArray& fallback, int size,
                                                const QString& file) = 0;
    /// Sets a key; no value deletes the key, no key deletes the section. The file is replaced whole or not at
    /// all.
    /// @returns whether the file now holds the change.
    virtual bool WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                            const std::optional<QByteArray>& value, const QString& file) = 0;
    /// Reads many values. The platform's own service reads the file once for all of them; this plain version
    /// reads them one by one.
    /// @returns for each query, in their order, what GetPrivateProfileStringA gives.
    virtual QList<QByteArray> readAll(const QList<IniQuery>& queries, const QString& file);
    /// Makes many changes in order. The platform's own service makes all of them in one replacement of the
    /// file, or none; this plain version writes them one by one and stops at the first that fails.
    /// @returns whether the file now holds every change.
    virtual bool writeAll(const QList<IniChange>& changes, const QString& file);
    /// Makes changes as writeAll does, without keeping the caller waiting for a slow disk. They reach the
    /// disk in the order of the calls; every reading through this service sees them from now on. The plain
    /// version waits.
    /// @param done gets whether the file holds every change, on the caller's thread: before this returns when
    /// the disk answers at once, otherwise from the event loop. After a failure nothing is read of the
    /// changes any more.
    virtual void writeLater(const QList<IniChange>& changes, const QString& file,
                            const std::function<void(bool)>& done);
};

/// Hands things to the desktop. Calls return at once; failures are the desktop's own affair.
class Shell
{
public:
    virtual ~Shell() = default;
    /// @param verb "open" or "explore".  @returns whether something was started; callers may ignore it.
    virtual bool ShellExecuteA(const QString& verb, const QString& file, const QString& parameters = {},
                               const QString& folder = {}) = 0;
};

/// The folder picker.
class FolderPicker
{
public:
    virtual ~FolderPicker() = default;
    /// @param start where it opens; without one, or when it is not there, wherever the last one was.
    /// @returns the chosen folder, or an empty text when the user cancelled.
    virtual QString SHBrowseForFolderA(QWidget* owner, const QString& title, const QString& start) = 0;
};

/// A read-only registry under HKEY_LOCAL_MACHINE.
class Registry
{
public:
    virtual ~Registry() = default;
    /// @returns the text value, or nothing when key or value is missing.
    virtual std::optional<QString> value(const QString& key, const QString& name) const = 0;
};

/// Keeps the system awake while a job runs that a sleep or a shutdown would spoil.
class Inhibitor
{
public:
    virtual ~Inhibitor() = default;
    /// Asks that the system neither sleeps nor shuts down for as long as what is returned lives. Returns at
    /// once; a system that cannot be asked, or refuses, is no error and is not told. Holding for the same
    /// reason while it is held already lengthens the one hold. Any thread lets go.
    /// @param why in the user's words; the desktop shows it to whoever wants to shut down.
    virtual std::shared_ptr<void> hold(const QString& why) = 0;
};

/// The platform services that the common utilities call; main hands over the real ones, tests scripted ones.
struct Platform
{
    IniService* ini = nullptr;
    Shell* shell = nullptr;
    FolderPicker* folders = nullptr;
    Registry* registry = nullptr;
    Messages* messages = nullptr;
    Inhibitor* inhibitor = nullptr;
};

/// The services in use. A missing one does nothing and finds nothing.
const Platform& platform();
void setPlatform(const Platform& services);

/// What keeps the system awake while it lives; nothing where there is no such service.
/// @param why as for Inhibitor::hold.
std::shared_ptr<void> stayAwake(const QString& why);

} // namespace zib
