#pragma once

#include "common/Services.h"

#include <QDialog>
#include <QList>

#include <memory>

namespace Ui {
class frmLabelList;
}

namespace zib {
class LineControl;
}

/// The track-list layout dialog: edits copies of the table's properties and writes them into the label
/// document on Apply and OK.
class frmLabelList final : public QDialog
{
    Q_OBJECT
public:
    explicit frmLabelList(const zib::Services& services, QWidget* parent = nullptr);
    ~frmLabelList() override;

signals:
    /// The document has changed; the table is to be redrawn.
    void Applied();

private:
    void connectControls();
    void Form_Load();
    void vsLeft_Change();
    void vsTop_Change();
    void vsCols_Change();
    void vsRows_Change();
    void cboCols_Click();
    void vsColWidth_Change();
    void vsRowHeight_Change();
    void vsLineWidth_Change();
    void cmdLineColor_Click();
    void cmdTextFont_Click();
    void cmdTextColor_Click();
    void vsPaddingLeft_Change();
    void vsPaddingTop_Change();
    void OKButton_Click();
    void CancelButton_Click();
    void cmdApply_Click();
    void loadList();
    void loadLines();
    void loadText();
    void showRowsInUse();
    void fillColumns(const QString& text, int columns);

    std::unique_ptr<Ui::frmLabelList> ui;
    const zib::Services m_services;
    QList<zib::LineControl*> m_lineSample;
    bool m_rowsChosen = false; ///< The user has set the rows; until then the table keeps its own.
};
