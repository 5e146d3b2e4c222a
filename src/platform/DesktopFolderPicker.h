#pragma once

#include "common/Platform.h"
#include "platform/ToolkitSettings.h"

namespace zib {

/// The folder picker on the screen.
class DesktopFolderPicker final : public FolderPicker
{
public:
    DesktopFolderPicker() { keepToolkitSettingsApart(); }
    QString SHBrowseForFolderA(QWidget* owner, const QString& title, const QString& start) override;

private:
    QString m_lastFolder;
};

} // namespace zib
