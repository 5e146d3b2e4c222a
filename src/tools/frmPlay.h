#pragma once

#include "tools/TransportWindow.h"

#include <memory>

namespace Ui {
class frmPlay;
}

/// Plays the shared CurrentFile, at once and again when told to repeat.
class frmPlay final : public zib::TransportWindow
{
    Q_OBJECT
public:
    explicit frmPlay(const zib::Services& services, QWidget* parent = nullptr);
    ~frmPlay() override;

private:
    void connectControls();
    void Form_Load();
    void cmdPlay_Click() override;
    void playbackEnded() override;

    std::unique_ptr<Ui::frmPlay> ui;
};
