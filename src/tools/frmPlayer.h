#pragma once

#include "common/Errands.h"
#include "tools/Playlist.h"
#include "tools/TransportWindow.h"

#include <QStringList>
#include <QTimer>

#include <memory>

namespace zib {
class PlaylistReader;
class WaitPointer;
} // namespace zib

namespace Ui {
class frmPlayer;
}

/// Plays files of a list, one after the other. Files come from the dialog or are dropped on the window.
class frmPlayer final : public zib::TransportWindow
{
    Q_OBJECT
public:
    explicit frmPlayer(const zib::Services& services, QWidget* parent = nullptr);
    ~frmPlayer() override;

protected:
    bool holdsWork() const override;

private:
    void setUpList();
    void connectControls();
    void Form_Load();
    void cmdOpen_Click();
    void cmdRemove_Click();
    void chkDown_Click();
    void cmdPlay_Click() override;
    void playbackEnded() override;
    void addFiles(const QStringList& paths);
    void AddFileToPlaylist(const zib::PlaylistRow& row);
    void showNewRows();
    void PlayNextTrack();
    void selectRow(int row);

    std::unique_ptr<Ui::frmPlayer> ui;
    const std::shared_ptr<zib::PlaylistReader> m_reader; // its reading is the errands' alone
    zib::Errands m_errands;
    zib::Playlist m_list;
    QTimer m_collecting; ///< Runs while files are being added.
    std::unique_ptr<zib::WaitPointer> m_wait;
    int ExpandedHeight = 0;  ///< Of the window with the list, in pixels.
    int CollapsedHeight = 0; ///< Without it.
};
