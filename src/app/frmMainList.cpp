#include "app/frmMain.h"

#include "ui_frmMain.h"

#include "app/totals.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Texts.h"
#include "common/Windows.h"

#include <algorithm>

using zib::CompilationModel;

// The commands on the rows of the list, and its totals.

namespace {

const QString kAddSomeFiles = QStringLiteral("There are no files in the list!\nPlease add some files first!");
const QString kAtTop =
    QStringLiteral("The current selected row is already at the top,\nCan not move up any more!");
const QString kAtBottom =
    QStringLiteral("The current selected row is already at the bottom,\nCan not move down any more!");
const QString kNothingToPlay = QStringLiteral("There are no files in the list to play.");

} // namespace

void frmMain::RefreshTotals()
{
    m_list.renumber();
    double minutes = m_list.count() * zib::kGapSeconds / 60.0;
    for (const zib::CompilationRow& row : m_list.rows())
        minutes += DurationTextToMinutes(row.time).value_or(0);
    zib::setTotalMinutes(minutes);
    setPanel(ui->StatusBar1_1, QStringLiteral("Total Time: ") + zib::totalTimeText(TotalMinutes));
    setPanel(ui->StatusBar1_2, QStringLiteral("Total Files: %1").arg(m_list.count()));
    ui->picPanel->showTotal();
}

bool frmMain::refuseEmptyList(const QString& text)
{
    if (m_list.count() > 0)
        return false;
    m_services.messages.information(this, text);
    return true;
}

void frmMain::MoveSelectedUp()
{
    if (refuseEmptyList(kAddSomeFiles))
        return;
    const int row = ui->ListView1->selectedRow();
    if (row < 1)
        m_services.messages.information(this, kAtTop);
    else
        swapSelected(row, row - 1);
}

void frmMain::MoveSelectedDown()
{
    if (refuseEmptyList(kAddSomeFiles))
        return;
    const int row = ui->ListView1->selectedRow();
    if (row == m_list.count() - 1)
        m_services.messages.information(this, kAtBottom);
    else if (row >= 0)
        swapSelected(row, row + 1);
}

void frmMain::swapSelected(int from, int to)
{
    m_list.swapFiles(from, to);
    ui->ListView1->chooseRow(to);
}

void frmMain::SetAllChecked(bool on)
{
    m_list.setAllChecked(on);
}

void frmMain::RemoveCheckedTracks()
{
    if (refuseEmptyList(zib::kNoFilesInList))
        return;
    const int selected = ui->ListView1->selectedRow();
    int kept = 0; // Rows before the selected one that stay: its place afterwards, or its next neighbour's.
    for (int row = 0; row < selected; ++row)
        kept += m_list.isChecked(row) ? 0 : 1;
    if (m_list.removeChecked() == 0)
        m_services.messages.information(this, zib::kNothingChecked);
    else if (selected >= 0 && m_list.count() > 0)
        ui->ListView1->chooseRow(std::min(kept, m_list.count() - 1));
    RefreshTotals();
}

/// Totals and gauge keep showing the old list until its next change.
void frmMain::clearTracks()
{
    m_list.clear();
}

void frmMain::PlaySelected()
{
    if (refuseEmptyList(kNothingToPlay))
        return;
    const int row = ui->ListView1->selectedRow();
    if (row < 0)
        return;
    zib::setCurrentFile(m_list.rows().at(row).path());
    m_services.windows.showPlay(this);
}
