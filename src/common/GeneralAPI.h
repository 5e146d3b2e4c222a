#pragma once

#include "common/Platform.h"

#include <QString>
#include <QStringList>

#include <optional>

class QCheckBox;
class QComboBox;
class QWidget;

/// Small stateless procedures that every window uses. A path that starts with a drive letter, or holds "\"
/// and no "/", is in the backslash style; every other path is native and "/" takes the part of "\".
namespace GeneralAPI {

/// @returns the value with NULs and outer blanks removed, or @p fallback when it is missing. At most 2047
/// bytes. An empty @p file means the program's own default INI file.
QString ReadIniString(const QString& section, const QString& key, const QString& fallback,
                      const QString& file = {});
/// A key of an INI file and the text that stands for it while it is missing.
struct IniKey
{
    QString section;
    QString key;
    QString fallback{};
};
/// @returns what ReadIniString gives for each of these keys, from one reading of the file.
QStringList ReadIniStrings(const QList<IniKey>& keys, const QString& file = {});
/// Writes the trimmed value; an empty one deletes the key, an empty key deletes the section.
/// @returns whether the file holds the change.
bool WriteIniString(const QString& section, const QString& key, const QString& value,
                    const QString& file = {});
/// Does so without keeping the caller waiting for a slow disk; a failure is passed over.
void WriteIniStringLater(const QString& section, const QString& key, const QString& value,
                         const QString& file = {});
/// @returns what WriteIniString would write, for a service that makes many changes at once.
zib::IniChange IniChangeOf(const QString& section, const QString& key, const QString& value);

/// @returns folder and name with exactly one separator between; a blank folder gives the name alone.
QString JoinPath(const QString& folder, const QString& name);
/// @returns the part up to and including the last separator, or nothing.
QString GetFolderOfPath(const QString& path);
/// @returns the part behind the last separator.
QString GetFileNameOfPath(const QString& path);
/// Creates a folder with every missing parent; a failure is told in a box and ends it. The parts of the path
/// are trimmed, but for those that are there with their blanks.
void MakeFolderPath(const QString& path);
/// The two halves of MakeFolderPath, for callers that may not wait for a slow place: the first, on any
/// thread, makes the folders without a box.  @returns whether they are there now.
bool EnsureFolderPath(const QString& path);
void TellFolderNotMade(const QString& path);
/// @param start the folder that the picker opens in; a relative one is taken from the application folder.
/// @returns the folder the user chose, or an empty text.
QString BrowseForFolder(QWidget* owner, const QString& start = {});
/// @returns the folder that a setting of the record names: trimmed, a relative one from the application
/// folder.
QString SettingFolder(const QString& setting);
/// @returns "mm:ss:hh" from milliseconds, truncated; minutes grow beyond two digits.
QString FormatDuration(qint32 milliseconds);

void OpenHelpFile();
void OpenHomePage();
void ExploreFolder(const QString& folder);

/// @returns the number stored with the selected entry, or nothing when none is selected.
std::optional<int> GetComboItemData(const QComboBox* combo);
/// Selects the first entry that stores @p number; without one the selection stays.
void SelectComboItemData(QComboBox* combo, int number);
void SetCheckValue(QCheckBox* box, bool on);
/// True exactly when the box is checked; a greyed box reads false.
bool IsChecked(const QCheckBox* box);

/// Fill the format lists: entries with their numbers as item data, then the entry at @p index is selected.
void FillFrequencyList(QComboBox* combo, int index);
void FillChannelsList(QComboBox* combo, int index);
void FillBitsList(QComboBox* combo, int index);

} // namespace GeneralAPI
