#pragma once

#include "common/Services.h"

#include <QDialog>

#include <memory>
#include <optional>

class AudioFile;

namespace Ui {
class frmMP3ToWAV;
}

/// Converts one MP3 file into one WAV file in CD format. Closing the window ends a running conversion and
/// leaves no file.
class frmMP3ToWAV final : public QDialog
{
    Q_OBJECT
public:
    explicit frmMP3ToWAV(const zib::Services& services, QWidget* parent = nullptr);
    ~frmMP3ToWAV() override;
    void done(int result) override;

private:
    void connectControls();
    void Form_Load();
    void cmdOpen_Click();
    void cmdSave_Click();
    void cmdConvert_Click();
    void cmdOptions_Click();
    void CancelButton_Click();
    void SuggestWavName();
    void ConvertFile(const QString& source, const QString& target);
    /// @param request samples of a block.  @returns whether every block went over.
    bool pump(qint32 request);
    void showProgress(qint64 blockSamples);
    void setConverting(bool on);

    std::unique_ptr<Ui::frmMP3ToWAV> ui;
    const zib::Services m_services;
    const std::unique_ptr<AudioFile> m_FileR;
    const std::unique_ptr<AudioFile> m_FileW;
    bool IsConverting = false;
    bool m_unloaded = false;   ///< The window was closed in the middle of a conversion.
    qint64 SamplesDone = 0;    ///< In the reader's units of length.
    double ConvertPercent = 0; ///< 0 to 100.
};
