#pragma once

#include "common/Errands.h"
#include "common/Services.h"
#include "tools/Conversion.h"
#include "tools/OutputPlace.h"

#include <QDialog>
#include <QTimer>

#include <memory>

namespace Ui {
class frmMP3ToWAV;
}

namespace zib {
struct FileDialogRequest;
class WaitPointer;
} // namespace zib

/// Converts one MP3 file into one WAV file in CD format. Closing the window ends a running conversion and
/// leaves no file. No place that a file stands in can hold the window up.
class frmMP3ToWAV final : public QDialog
{
    Q_OBJECT
public:
    explicit frmMP3ToWAV(const zib::Services& services, QWidget* parent = nullptr);
    ~frmMP3ToWAV() override;
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectControls();
    void Form_Load();
    void cmdOpen_Click();
    void cmdSave_Click();
    void cmdConvert_Click();
    void cmdOptions_Click();
    void CancelButton_Click();
    void SuggestWavName();
    zib::FileDialogRequest requestFor(const QString& title, const QString& filter,
                                      const QString& folderSetting);
    void beginUnlessRefused(const zib::OutputPlace::Target& place);
    QString refusal(const zib::OutputPlace::Target& place) const;
    bool mayReplace(const QString& path);
    void ConvertFile(const QString& source, const QString& target);
    void conversionEnded(zib::Conversion::End end, const QString& source);
    void showProgress();
    void setConverting(bool on);

    std::unique_ptr<Ui::frmMP3ToWAV> ui;
    const zib::Services m_services;
    const std::shared_ptr<zib::Conversion> m_conversion; // its converting is the errands' alone
    zib::Errands m_errands;
    std::unique_ptr<zib::WaitPointer> m_wait;
    std::shared_ptr<void> m_awake; ///< While a file is converted.
    QTimer m_progress;
    QString m_chosenTarget; ///< As the save dialog gave it: what is there may be replaced.
    bool IsConverting = false;
};
