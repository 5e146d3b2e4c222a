#include "tools/frmPlay.h"
#include "ui_frmPlay.h"

#include "common/GenralMacro.h"

frmPlay::frmPlay(const zib::Services& services, QWidget* parent)
    : TransportWindow(services, parent), ui(std::make_unique<Ui::frmPlay>())
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmPlay::~frmPlay() = default;

void frmPlay::connectControls()
{
    connectTransport({.cmdPlay = ui->cmdPlay,
                      .chkPause = ui->chkPause,
                      .cmdStop = ui->cmdStop,
                      .cmdTop = ui->cmdTop,
                      .cmdBackward = ui->cmdBackward,
                      .cmdForward = ui->cmdForward,
                      .cmdEnd = ui->cmdEnd,
                      .cmdVol = ui->cmdVol,
                      .Slider1 = ui->Slider1});
}

void frmPlay::Form_Load()
{
    if (!CurrentFile.isEmpty())
        PlayFile(CurrentFile);
}

void frmPlay::cmdPlay_Click()
{
    StopPlaying();
    if (!CurrentFile.isEmpty())
        PlayFile(CurrentFile);
}

void frmPlay::playbackEnded()
{
    if (ui->chkRpt->isChecked())
        cmdPlay_Click();
}
