#pragma once

#include <QDialog>

#include <memory>

namespace zib {
class Messages;
}

namespace Ui {
class frmAbout;
}

/// The about box, which also starts the system's information tool.
class frmAbout final : public QDialog
{
    Q_OBJECT
public:
    explicit frmAbout(zib::Messages& messages, QWidget* parent = nullptr);
    ~frmAbout() override;

    /// @returns for example "Version 1.3.1".
    static QString versionText(int major, int minor, int revision);

private:
    void connectControls();
    void Form_Load();
    void cmdSysInfo_Click();
    void cmdOK_Click();
    void showLook();

    std::unique_ptr<Ui::frmAbout> ui;
    zib::Messages& m_messages;
};
