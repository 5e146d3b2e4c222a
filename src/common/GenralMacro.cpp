#include "common/GenralMacro.h"

#include "common/NativeName.h"

namespace {

struct SharedState
{
    OptionsData options;
    QString settingsFile;
    double totalMinutes = 0;
    QString currentFile;
    QString applicationFolder;
};

SharedState& state()
{
    static SharedState shared;
    return shared;
}

} // namespace

const OptionsData& gOptions = state().options;
const QString& gSettingsFile = state().settingsFile;
const double& TotalMinutes = state().totalMinutes;
const QString& CurrentFile = state().currentFile;

namespace zib {

void setOptions(const OptionsData& options)
{
    state().options = options;
}

void setSettingsFile(const QString& path)
{
    state().settingsFile = path;
}

void setTotalMinutes(double minutes)
{
    state().totalMinutes = minutes;
}

void setCurrentFile(const QString& path)
{
    state().currentFile = path;
}

QString applicationFolder()
{
    if (state().applicationFolder.isEmpty())
        state().applicationFolder = executableFolder();
    return state().applicationFolder;
}

void setApplicationFolder(const QString& folder)
{
    state().applicationFolder = folder;
}

GlobalsScope::GlobalsScope()
    : m_options(gOptions), m_settingsFile(gSettingsFile), m_totalMinutes(TotalMinutes),
      m_currentFile(::CurrentFile), m_applicationFolder(applicationFolder())
{
}

GlobalsScope::~GlobalsScope()
{
    setOptions(m_options);
    setSettingsFile(m_settingsFile);
    setTotalMinutes(m_totalMinutes);
    setCurrentFile(m_currentFile);
    setApplicationFolder(m_applicationFolder);
}

} // namespace zib
