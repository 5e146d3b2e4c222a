#pragma once

#include "burn/DamagedSources.h"
#include "burn/TrackList.h"
#include "common/Services.h"
#include "common/Worker.h"

#include <QDialog>
#include <QTimer>

#include <memory>

class AudioFile;
class AudioInformation;
namespace Ui {
class frmPrepare;
}

/// Turns the compilation into files that can go onto a disc: what is in CD format already stays where it is,
/// everything else is converted into the "Temp" folder. Works by itself once it is shown, takes no input and
/// closes when it is done. What it asks of files is asked on a thread, so none of them can hold the window
/// up.
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

    /// The program ends: nothing more is asked, begun or told, and what was begun goes.
    void abandon();

public slots:
    /// The work cannot be left by its user: closing counts only after it.
    void reject() override;

private:
    void connectControls();
    void Form_Load();
    void Timer1_Timer();

    void PrepareTracks();
    void prepareRow(qsizetype row);
    void ConvertFile(const QString& source, const QString& target);
    bool beginConversion(const QString& source, const QString& target);
    bool convertBlocks();
    QString troubleWith(const QString& source) const;
    void showProgress(double fraction);
    template <typename Answer, typename Question>
    Answer ask(Question question);

    std::unique_ptr<Ui::frmPrepare> ui;
    const zib::Services m_services;
    // While a question is asked, these are the thread's.
    const std::shared_ptr<AudioInformation> m_information;
    const std::shared_ptr<AudioFile> m_fileReader;
    const std::shared_ptr<AudioFile> m_fileWriter;
    QTimer m_timer{this};
    zib::TrackList m_list;
    zib::DamagedSources m_damaged;
    qint16 m_conversions = 0; ///< Conversions to come in all.
    qint16 m_finished = 0;    ///< Conversions done.
    bool m_done = false;
    bool m_abandoned = false;
    zib::Worker m_worker;
};
