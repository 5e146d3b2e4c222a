#pragma once

#include "common/CommonDialogs.h"
#include "platform/ToolkitSettings.h"

namespace zib {

/// The common dialogs on the screen.
class DesktopDialogs final : public CommonDialogs
{
public:
    DesktopDialogs() { keepToolkitSettingsApart(); }
    Outcome<QString> openFile(QWidget* owner, const FileDialogRequest& request) override;
    Outcome<QString> saveFile(QWidget* owner, const FileDialogRequest& request) override;
    Outcome<QColor> chooseColor(QWidget* owner, const QString& title, const QColor& current) override;
    Outcome<QFont> chooseFont(QWidget* owner, const QString& title, const QFont& current) override;

private:
    QString startFolder(const FileDialogRequest& request) const;
    Outcome<QString> answer(const QStringList& files, const FileDialogRequest& request);

    QString m_lastFolder;
};

} // namespace zib
