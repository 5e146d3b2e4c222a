#pragma once

#include "common/Services.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmLabelBack;
}

/// The background dialog: edits the label's picture and colour, and writes them into the label document on
/// Apply and OK.
class frmLabelBack final : public QDialog
{
    Q_OBJECT
public:
    explicit frmLabelBack(const zib::Services& services, QWidget* parent = nullptr);
    ~frmLabelBack() override;

signals:
    /// The document has changed; the background is to be redrawn.
    void Applied();

private:
    void connectControls();
    void Form_Load();
    void cmdOpen_Click();
    void vsLeft_Change();
    void vsTop_Change();
    void cmdBackColor_Click();
    void OKButton_Click();
    void CancelButton_Click();
    void cmdApply_Click();
    void EnableBackControls();

    std::unique_ptr<Ui::frmLabelBack> ui;
    const zib::Services m_services;
};
