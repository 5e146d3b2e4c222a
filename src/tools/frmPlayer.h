#pragma once

#include "tools/Playlist.h"
#include "tools/TransportWindow.h"

#include <QStringList>

#include <memory>

class AudioInformation;

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
    void AddFileToPlaylist(const QString& path);
    void PlayNextTrack();
    void showNewRows();
    void selectRow(int row);

    std::unique_ptr<Ui::frmPlayer> ui;
    std::unique_ptr<AudioInformation> m_AInfo;
    zib::Playlist m_list;
    bool m_adding = false;
    int ExpandedHeight = 0;  ///< Of the window with the list, in pixels.
    int CollapsedHeight = 0; ///< Without it.
};
