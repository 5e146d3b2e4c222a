#pragma once

#include "app/TipList.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmTip;
}

/// The tip-of-the-day window.
class frmTip final : public QDialog
{
    Q_OBJECT
public:
    explicit frmTip(QWidget* parent = nullptr);
    ~frmTip() override;

protected:
    void changeEvent(QEvent* event) override;

private:
    void connectControls();
    void Form_Load();
    void chkLoadTipsAtStartup_Click();
    void cmdNextTip_Click();
    void cmdOK_Click();
    bool loadTips(const QString& path);
    void showLook();

    std::unique_ptr<Ui::frmTip> ui;
    zib::TipList m_tips;
};
