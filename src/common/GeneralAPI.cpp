#include "common/GeneralAPI.h"

#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/NativeName.h"
#include "common/Platform.h"
#include "common/Texts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QFileInfo>

#include <initializer_list>

using zib::nativeBytes;
using zib::nativeText;
using zib::platform;

namespace GeneralAPI {

namespace {

constexpr int kIniBufferBytes = 2048;
const QString kBrowseTitle = QStringLiteral("Please choose a folder to save the output files");

/// The separator that a path's own style uses.
QChar separatorOf(const QString& path)
{
    const bool drive = path.size() > 1 && path[1] == u':' && path[0].isLetter() && path[0].unicode() < 128;
    const bool backslashes = path.contains(u'\\') && !path.contains(u'/');
    return drive || backslashes ? u'\\' : u'/';
}

/// Without its outer spaces; other white space belongs to the text.
QString trimmedSpaces(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.mid(begin, end - begin);
}

QString cleaned(QString text)
{
    return trimmedSpaces(text.remove(QChar::Null));
}

QString iniPath(const QString& file)
{
    static QString defaultPath;
    if (!file.isEmpty())
        return file;
    if (defaultPath.isEmpty()) {
        const QString base = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
        defaultPath = JoinPath(zib::applicationFolder(), base + QStringLiteral(".ini"));
    }
    return defaultPath;
}

/// Makes one folder if it is missing. @returns whether it is there now.
bool ensureFolder(const QString& folder)
{
    return zib::isFolder(folder) || zib::makeOneFolder(folder) || zib::isFolder(folder);
}

/// A part of a path behind what was made of it so far: as it stands when such a folder is there, else
/// trimmed.
QString folderPart(const QString& made, const QString& part, QChar separator)
{
    const QString trimmed = trimmedSpaces(part);
    return (trimmed != part && zib::isFolder(made + part + separator) ? part : trimmed) + separator;
}

struct ListEntry
{
    const char* text;
    int number;
};

void fillList(QComboBox* combo, std::initializer_list<ListEntry> entries, int index)
{
    combo->clear();
    for (const ListEntry& entry : entries)
        combo->addItem(QString::fromLatin1(entry.text), entry.number);
    combo->setCurrentIndex(index);
}

} // namespace

QString ReadIniString(const QString& section, const QString& key, const QString& fallback,
                      const QString& file)
{
    if (!platform().ini)
        return cleaned(fallback);
    const QByteArray value = platform().ini->GetPrivateProfileStringA(
        nativeBytes(section), nativeBytes(key), nativeBytes(fallback), kIniBufferBytes, iniPath(file));
    return cleaned(nativeText(value));
}

QStringList ReadIniStrings(const QList<IniKey>& keys, const QString& file)
{
    QList<zib::IniQuery> queries;
    QStringList texts;
    for (const IniKey& key : keys) {
        queries << zib::IniQuery{nativeBytes(key.section), nativeBytes(key.key), nativeBytes(key.fallback),
                                 kIniBufferBytes};
        texts << cleaned(key.fallback);
    }
    if (!platform().ini)
        return texts;
    const QList<QByteArray> values = platform().ini->readAll(queries, iniPath(file));
    for (qsizetype i = 0; i < values.size(); ++i)
        texts[i] = cleaned(nativeText(values[i]));
    return texts;
}

bool WriteIniString(const QString& section, const QString& key, const QString& value, const QString& file)
{
    if (!platform().ini)
        return false;
    const zib::IniChange change = IniChangeOf(section, key, value);
    return platform().ini->WritePrivateProfileStringA(change.section, change.key, change.value,
                                                      iniPath(file));
}

void WriteIniStringLater(const QString& section, const QString& key, const QString& value,
                         const QString& file)
{
    if (platform().ini)
        platform().ini->writeLater({IniChangeOf(section, key, value)}, iniPath(file), {});
}

zib::IniChange IniChangeOf(const QString& section, const QString& key, const QString& value)
{
    const QByteArray text = nativeBytes(cleaned(value));
    zib::IniChange change{nativeBytes(section), {}, {}};
    if (!key.isEmpty())
        change.key = nativeBytes(key);
    if (!key.isEmpty() && !text.isEmpty())
        change.value = text;
    return change;
}

QString JoinPath(const QString& folder, const QString& name)
{
    if (trimmedSpaces(folder).isEmpty())
        return name;
    const QChar separator = separatorOf(folder);
    return folder.endsWith(separator) ? folder + name : folder + separator + name;
}

QString GetFolderOfPath(const QString& path)
{
    return path.left(path.lastIndexOf(separatorOf(path)) + 1);
}

QString GetFileNameOfPath(const QString& path)
{
    return path.mid(path.lastIndexOf(separatorOf(path)) + 1);
}

bool EnsureFolderPath(const QString& path)
{
    const QChar separator = separatorOf(path);
    QString made = separator == u'/' && path.startsWith(u'/') ? QStringLiteral("/") : QString();
    for (const QString& part : path.split(separator)) {
        if (trimmedSpaces(part).isEmpty())
            continue;
        made += folderPart(made, part, separator);
        if (!ensureFolder(made))
            return false;
    }
    return true;
}

void MakeFolderPath(const QString& path)
{
    if (!EnsureFolderPath(path))
        TellFolderNotMade(path);
}

void TellFolderNotMade(const QString& path)
{
    if (platform().messages)
        platform().messages->critical(nullptr, QStringLiteral("Create directory error: ") + path,
                                      QStringLiteral("Error"));
}

QString BrowseForFolder(QWidget* owner, const QString& start)
{
    if (!platform().folders)
        return {};
    return platform().folders->SHBrowseForFolderA(owner, kBrowseTitle, SettingFolder(start));
}

QString SettingFolder(const QString& setting)
{
    const QString folder = setting.trimmed();
    const bool relative = !folder.isEmpty() && separatorOf(folder) == u'/' && !folder.startsWith(u'/');
    return relative ? JoinPath(zib::applicationFolder(), folder) : folder;
}

QString FormatDuration(qint32 milliseconds)
{
    const auto two = [](qint32 n) {
        return (n < 0 ? QStringLiteral("-") : QString()) + QString::number(qAbs(n)).rightJustified(2, u'0');
    };
    return two(milliseconds / 60000) + u':' + two(milliseconds % 60000 / 1000) + u':' +
           two(milliseconds % 1000 / 10);
}

void OpenHelpFile()
{
    if (platform().shell)
        platform().shell->ShellExecuteA(QStringLiteral("open"),
                                        JoinPath(zib::applicationFolder(), QStringLiteral("zibburn.chm")));
}

void OpenHomePage()
{
    if (platform().shell)
        platform().shell->ShellExecuteA(QStringLiteral("open"), QStringLiteral("IExplore.exe"),
                                        zib::kHomePage);
}

void ExploreFolder(const QString& folder)
{
    if (platform().shell)
        platform().shell->ShellExecuteA(QStringLiteral("explore"), folder);
}

std::optional<int> GetComboItemData(const QComboBox* combo)
{
    if (combo->currentIndex() < 0)
        return std::nullopt;
    return combo->currentData().toInt();
}

void SelectComboItemData(QComboBox* combo, int number)
{
    const int index = combo->findData(number);
    if (index >= 0)
        combo->setCurrentIndex(index);
}

void SetCheckValue(QCheckBox* box, bool on)
{
    box->setCheckState(on ? Qt::Checked : Qt::Unchecked);
}

bool IsChecked(const QCheckBox* box)
{
    return box->checkState() == Qt::Checked;
}

void FillFrequencyList(QComboBox* combo, int index)
{
    fillList(combo,
             {{"96,000 Hz", 96000},
              {"88,200 Hz", 88200},
              {"48,000 Hz", 48000},
              {"44,100 Hz", 44100},
              {"32,000 Hz", 32000},
              {"24,000 Hz", 24000},
              {"22,050 Hz", 22050},
              {"16,000 Hz", 16000},
              {"12,000 Hz", 12000},
              {"11,025 Hz", 11025},
              {"8,000 Hz", 8000},
              {"6,000 Hz", 6000}},
             index);
}

void FillChannelsList(QComboBox* combo, int index)
{
    fillList(combo, {{"Mono", 1}, {"Stereo", 2}}, index);
}

void FillBitsList(QComboBox* combo, int index)
{
    fillList(combo,
             {{"2 Bits", 2}, {"3 Bits", 3}, {"4 Bits", 4}, {"5 Bits", 5}, {"8 Bits", 8}, {"16 Bits", 16}},
             index);
}

} // namespace GeneralAPI
