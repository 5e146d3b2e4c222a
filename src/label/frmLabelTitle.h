#pragma once

#include "common/Services.h"

#include <QDialog>

#include <memory>

namespace Ui {
class frmLabelTitle;
}

/// The title dialog: edits the label's title on a live sample, and writes it into the label document on Apply
/// and OK.
class frmLabelTitle final : public QDialog
{
    Q_OBJECT
public:
    explicit frmLabelTitle(const zib::Services& services, QWidget* parent = nullptr);
    ~frmLabelTitle() override;

signals:
    /// The document has changed; the title is to be redrawn.
    void Applied();

private:
    void connectControls();
    void Form_Load();
    void txtTitle_Change();
    void cmdFont_Click();
    void cmdColor_Click();
    void vsLeft_Change();
    void vsTop_Change();
    void OKButton_Click();
    void CancelButton_Click();
    void cmdApply_Click();

    std::unique_ptr<Ui::frmLabelTitle> ui;
    const zib::Services m_services;
};
