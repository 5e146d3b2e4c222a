#pragma once

#include "common/Platform.h"

#include <QObject>
#include <QStringList>

#include <memory>

namespace zib {

/// Brings changes of settings into the settings file and the record. The window that asked may close while a
/// slow disk still works: the saver lives until it has its answer. GUI thread only.
class SettingsSaver final : public QObject, public std::enable_shared_from_this<SettingsSaver>
{
    Q_OBJECT
public:
    /// Writes the changes in one replacement of the file and loads the record. Until the disk answers the
    /// record shows what is on its way.
    /// @returns false when the disk refused at once; a refusal that comes later is told by takenBack and
    /// refused.
    bool save(const QList<IniChange>& changes);
    /// Tells what could not be stored. @param leftOut names of settings that no line of a file can hold.
    void tell(bool saved, const QStringList& leftOut);

signals:
    /// The record was loaded anew.
    void applied();
    /// The record was loaded anew, for the disk refused what had been applied.
    void takenBack();
    /// @param text what was not stored and what holds instead, for the user.
    void refused(const QString& text);

private:
    void load();
};

} // namespace zib
