#pragma once

#include <QString>

/// Declarations and state that every window shares. Read anywhere in windows; engines, components and the
/// platform never name them. Each value has one writer, named beside it.

/// The user's settings, one field for each key of settings.ini, named after the key without its blanks.
struct OptionsData
{
    qint32 WAVFrequency = 44100; ///< Hz.
    qint16 WAVChannels = 2;
    qint16 WAVBits = 16;
    bool ShowToolBar = true;
    bool ToolbarStyle3D = false;
    bool ToolbarStyleFlat = true;
    bool ShowTextOnToolbar = true;
    bool ShowTipsOnToolbar = true;
    bool ShowStatusbar = true;
    bool ShowTipsOfDay = true;
    bool ShowSplashScreen = true;
    bool ShowGridLines = true;
    qint32 GridBackColor = 0x00FFFFFF; ///< Red in the low byte.
    qint32 GridTextColor = 0;          ///< Red in the low byte.
    QString WAVInput;                  ///< Folder texts are padded with blanks to 1024 characters;
    QString WAVOutput;                 ///< whoever reads one trims it.
    QString MP3Input;
    QString Temporary;
    bool CacheFilesLocally = true;
    bool TestMode = false;
    bool BufferProtection = false;
    bool ExploreAfterConverting = true;
    bool ExploreAfterRipping = true;
    bool VerifyAfterWriting = false;

    bool operator==(const OptionsData&) const = default;
};

extern const OptionsData& gOptions;  ///< Written by OptionsFunc through zib::setOptions.
extern const QString& gSettingsFile; ///< Full path of settings.ini; written by the main window at load.
extern const double& TotalMinutes;   ///< Running time of the compilation; written by RefreshTotals.
extern const QString& CurrentFile;   ///< The file the players play; written by frmMain and the players.

namespace zib {

void setOptions(const OptionsData& options);
void setSettingsFile(const QString& path);
void setTotalMinutes(double minutes);
void setCurrentFile(const QString& path);

/// The folder that holds the program's files and the user's, without a trailing separator (a root keeps it):
/// what setApplicationFolder stored, otherwise executableFolder.
QString applicationFolder();
void setApplicationFolder(const QString& folder);

/// Puts every shared value back when a test ends.
class GlobalsScope
{
public:
    GlobalsScope();
    ~GlobalsScope();
    Q_DISABLE_COPY_MOVE(GlobalsScope)

private:
    OptionsData m_options;
    QString m_settingsFile;
    double m_totalMinutes;
    QString m_currentFile;
    QString m_applicationFolder;
};

} // namespace zib
