#pragma once

#include "common/Platform.h"

namespace zib {

/// The folder picker on the screen.
class DesktopFolderPicker final : public FolderPicker
{
public:
    QString SHBrowseForFolderA(QWidget* owner, const QString& title, const QString& start) override;

private:
    QString m_lastFolder;
};

} // namespace zib
