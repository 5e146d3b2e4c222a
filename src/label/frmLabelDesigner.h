#pragma once

#include "common/CompilationRow.h"
#include "common/Services.h"
#include "label/LabelItems.h"

#include <QDialog>
#include <QList>

#include <memory>

namespace Ui {
class frmLabelDesigner;
}

namespace zib {
class LabelSurface;
class TextControl;
} // namespace zib

/// The label designer: shows the label, edits its title and cells in place, opens the layout dialogs and
/// prints. A click on a text opens the editor, any other click closes it. F2 opens it on the title, Tab walks
/// on to the cells, Enter closes it, Escape puts it away without a change. Beside the label it says how many
/// tracks fit when not all do, and what was sent to which printer.
class frmLabelDesigner final : public QDialog
{
    Q_OBJECT
public:
    /// Makes a new label document from @p rows.
    frmLabelDesigner(const zib::Services& services, const QList<zib::CompilationRow>& rows,
                     QWidget* parent = nullptr);
    ~frmLabelDesigner() override;

    /// @returns the width and height of the label area, in twips.
    QSize labelArea() const;
    /// The background picture as the label shows it.
    zib::LabelImage image() const;
    /// What a dialog's applied changes call for; the document has changed. A picture that cannot be shown is
    /// told in a box.
    void RedrawTable();
    void RedrawTitle();
    void RedrawBackground();
    /// The preview has sent the label to the printer of that name.
    void showSent(const QString& printer);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    static constexpr int kNothing = -2;
    static constexpr int kTitle = -1;

    void connectControls();
    void Form_Load(const QList<zib::CompilationRow>& rows);
    void Form_Click();
    void cdTitle_Click();
    void labels_Click(int n);
    void txtCursor_Change();
    void Title_Click();
    void cmdBack_Click();
    void cmdList_Click();
    void cmdPrint_Click();
    void cmdCalibrate_Click();
    void cmdFit_Click();
    void cmdClose_Click();
    void showFit();
    bool editNext(bool forward);
    static int behind(int target);
    static int before(int target);
    int neighbourOf(int target, bool forward) const;
    void edit(int target);
    zib::TextControl* targetLabel() const;
    QRect editorPlace(const zib::TextControl* label) const;
    void BeginCellEdit(const zib::TextControl* label);
    void EndCellEdit();
    void hideEditor();

    std::unique_ptr<Ui::frmLabelDesigner> ui;
    const zib::Services m_services;
    std::unique_ptr<zib::LabelSurface> m_surface;
    int EditTarget = kNothing; ///< Or kTitle; a positive number is that member of labels.
};
