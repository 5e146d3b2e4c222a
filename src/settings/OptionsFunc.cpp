#include "settings/OptionsFunc.h"

#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Numbers.h"
#include "common/Platform.h"

#include <QList>
#include <QRegularExpression>
#include <QStringList>

#include <optional>
#include <variant>

namespace OptionsFunc {

namespace {

constexpr qsizetype kFolderCharacters = 1024;
constexpr qsizetype kShownCharacters = 80; // Of a bad value in the message.

template <typename T>
using Field = T OptionsData::*;

struct Setting
{
    QString section;
    QString key;
    std::variant<Field<qint32>, Field<qint16>, Field<bool>, Field<QString>> field;
};

/// Every setting in the order of reading.
const QList<Setting>& settings()
{
    const auto wave = QStringLiteral("Wave");
    const auto view = QStringLiteral("View");
    const auto folders = QStringLiteral("Folders");
    const auto misc = QStringLiteral("Misc");
    static const QList<Setting> list{
        {wave, QStringLiteral("WAV Frequency"), &OptionsData::WAVFrequency},
        {wave, QStringLiteral("WAV Channels"), &OptionsData::WAVChannels},
        {wave, QStringLiteral("WAV Bits"), &OptionsData::WAVBits},
        {view, QStringLiteral("Show ToolBar"), &OptionsData::ShowToolBar},
        {view, QStringLiteral("Toolbar Style 3D"), &OptionsData::ToolbarStyle3D},
        {view, QStringLiteral("Toolbar Style Flat"), &OptionsData::ToolbarStyleFlat},
        {view, QStringLiteral("Show Text On Toolbar"), &OptionsData::ShowTextOnToolbar},
        {view, QStringLiteral("Show Tips On Toolbar"), &OptionsData::ShowTipsOnToolbar},
        {view, QStringLiteral("Show Statusbar"), &OptionsData::ShowStatusbar},
        {view, QStringLiteral("Show Tips Of Day"), &OptionsData::ShowTipsOfDay},
        {view, QStringLiteral("Show Splash Screen"), &OptionsData::ShowSplashScreen},
        {view, QStringLiteral("Show Grid Lines"), &OptionsData::ShowGridLines},
        {view, QStringLiteral("Grid Back Color"), &OptionsData::GridBackColor},
        {view, QStringLiteral("Grid Text Color"), &OptionsData::GridTextColor},
        {folders, QStringLiteral("WAV Input"), &OptionsData::WAVInput},
        {folders, QStringLiteral("MP3 Input"), &OptionsData::MP3Input},
        {folders, QStringLiteral("WAV Output"), &OptionsData::WAVOutput},
        {folders, QStringLiteral("Temporary"), &OptionsData::Temporary},
        {misc, QStringLiteral("Buffer Protection"), &OptionsData::BufferProtection},
        {misc, QStringLiteral("Cache Files Locally"), &OptionsData::CacheFilesLocally},
        {misc, QStringLiteral("Explore After Converting"), &OptionsData::ExploreAfterConverting},
        {misc, QStringLiteral("Explore After Ripping"), &OptionsData::ExploreAfterRipping},
        {misc, QStringLiteral("Test Mode"), &OptionsData::TestMode},
        {misc, QStringLiteral("Verify After Writing"), &OptionsData::VerifyAfterWriting},
    };
    return list;
}

/// A folder as the record keeps it: left-aligned in 1024 characters.
QString padded(const QString& folder)
{
    QString text = folder.trimmed().left(kFolderCharacters);
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
    return text.leftJustified(kFolderCharacters);
}

/// A folder by a name that keeps the blanks at its end when it is trimmed.
QString endSafe(const QString& folder)
{
    return !folder.isEmpty() && folder.back().isSpace() ? folder + u'/' : folder;
}

QString textOf(qint32 number)
{
    return QString::number(number);
}

QString textOf(bool on)
{
    return on ? QStringLiteral("True") : QStringLiteral("False");
}

QString textOf(const QString& folder)
{
    return folder.trimmed();
}

/// Whole decimal numbers within the field.
template <typename Number>
std::optional<Number> converted(const QString& text, Number)
{
    static const QRegularExpression whole(QStringLiteral("^[+-]?[0-9]+$"));
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    if (!fits || !whole.match(text).hasMatch())
        return std::nullopt;
    return zib::narrowed<Number>(number);
}

/// The words, or a decimal number: zero is false.
std::optional<bool> converted(const QString& text, bool)
{
    static const QRegularExpression decimal(QStringLiteral("^[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)$"));
    if (text.compare(textOf(true), Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(textOf(false), Qt::CaseInsensitive) == 0)
        return false;
    if (!decimal.match(text).hasMatch())
        return std::nullopt;
    return text.contains(QRegularExpression(QStringLiteral("[1-9]")));
}

std::optional<QString> converted(const QString& text, const QString&)
{
    return padded(text);
}

/// Stores the text of one setting in the record. @returns whether it could be converted.
bool store(const Setting& setting, const QString& text, OptionsData& options)
{
    return std::visit(
        [&](auto field) {
            const auto value = converted(text, options.*field);
            if (value)
                options.*field = *value;
            return value.has_value();
        },
        setting.field);
}

/// The texts of all settings as they stand in the file, or their defaults, from one state of the file.
QStringList storedTexts(const OptionsData& fallbacks)
{
    QList<GeneralAPI::IniKey> keys;
    for (const Setting& setting : settings())
        keys.append({setting.section, setting.key,
                     std::visit([&](auto field) { return textOf(fallbacks.*field); }, setting.field)});
    return GeneralAPI::ReadIniStrings(keys, gSettingsFile);
}

QString badLine(const Setting& setting, const QString& value)
{
    const QString shown =
        value.size() > kShownCharacters ? value.left(kShownCharacters) + QStringLiteral("...") : value;
    return QStringLiteral("[%1] %2 = \"%3\"").arg(setting.section, setting.key, shown);
}

void tell(const QStringList& badLines)
{
    if (badLines.isEmpty() || !zib::platform().messages)
        return;
    const QString text = QStringLiteral("These settings cannot be read, so their defaults are used:\n\n") +
                         badLines.join(u'\n') + QStringLiteral("\n\nThey stand in the file\n") +
                         gSettingsFile;
    zib::platform().messages->critical(nullptr, text);
}

} // namespace

OptionsData defaults()
{
    const QString folder = zib::applicationFolder();
    OptionsData options;
    options.WAVInput = padded(endSafe(folder));
    options.WAVOutput = padded(GeneralAPI::JoinPath(folder, QStringLiteral("WAV")));
    options.MP3Input = padded(endSafe(folder));
    options.Temporary = padded(GeneralAPI::JoinPath(folder, QStringLiteral("Temp")));
    return options;
}

void SetDefaultSettings()
{
    zib::setOptions(defaults());
}

void LoadSettings()
{
    OptionsData options = defaults();
    QStringList badLines;
    const QStringList texts = storedTexts(options);
    for (qsizetype i = 0; i < texts.size(); ++i)
        if (!store(settings()[i], texts[i], options))
            badLines << badLine(settings()[i], texts[i]);
    zib::setOptions(options);
    tell(badLines);
}

} // namespace OptionsFunc
