#pragma once

#include "burn/TrackList.h"
#include "common/Services.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>

#include <memory>

class AudioFile;
class AudioInformation;
namespace Ui {
class frmPrepare;
}

/// Turns the compilation into files that can go onto a disc: what is in CD format already stays where it is,
/// everything else is converted into the "Temp" folder. Works by itself once it is shown, takes no input and
/// closes when it is done.
class frmPrepare final : public QDialog
{
    Q_OBJECT
public:
    frmPrepare(const zib::Services& services, const QList<zib::CompilationRow>& rows,
               QWidget* parent = nullptr);
    ~frmPrepare() override;

    /// One path for each row, in order; a row whose conversion failed has the path of a file that is not
    /// there.
    const QStringList& trackFiles() const { return m_list.entries(); }

public slots:
    /// The work cannot be left: closing counts only after it.
    void reject() override;

private:
    void connectControls();
    void Form_Load();
    void Timer1_Timer();

    void PrepareTracks();
    void ConvertFile(const QString& source, const QString& target);
    bool convertBlocks();
    void showProgress(double fraction);
    void breathe();

    std::unique_ptr<Ui::frmPrepare> ui;
    std::unique_ptr<AudioInformation> AInfo;
    std::unique_ptr<AudioFile> FileR;
    std::unique_ptr<AudioFile> FileW;
    QTimer Timer1{this};
    zib::TrackList m_list;
    QElapsedTimer m_sinceBreath;
    qint16 m_conversions = 0; ///< Conversions to come in all.
    qint16 m_finished = 0;    ///< Conversions done.
    bool m_done = false;
};
