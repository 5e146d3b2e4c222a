#pragma once

#include "common/DiscNames.h"
#include "common/Services.h"

#include <QDialog>
#include <QStringList>

#include <memory>

class DVDWriterPro;
namespace Ui {
class frmWrite;
}

/// Writes the prepared tracks to a disc: drive and speed, start, progress, cancel, and how it ended.
///
/// The drives are looked for once the window is shown. It never waits for a drive without taking the user's
/// word: Cancel and Exit act at every moment. Closing it while a write runs cancels the write and closes at
/// once; how the disc ended is told by whoever keeps the writer then.
class frmWrite final : public QDialog
{
    Q_OBJECT
public:
    /// @param trackFiles paths of CD-format WAV files, in disc order; those that are missing or refused are
    /// told.  @param names of the disc and of each file; they go onto the disc.
    frmWrite(const zib::Services& services, const QStringList& trackFiles, const zib::DiscNames& names = {},
             QWidget* parent = nullptr);
    ~frmWrite() override;

    /// Whether a write was started and has not told its end.
    bool isWriting() const { return m_writing; }

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void connectControls();
    void connectWriter();
    void Form_Load();
    void cboDevices_Click();
    void cboDevices_activated(int index);
    void cboWriteSpeed_Click();
    void cmdWrite_Click();
    void cmdCancel_Click();
    void cmdOptions_Click();
    void cmdExit_Click();
    void DVDWriterPro1_PreparingToWrite();
    void DVDWriterPro1_CachingProgress(qint16 percent);
    void DVDWriterPro1_ReadingTrack(const QString& fileName, qint32 number, qint32 track);
    void DVDWriterPro1_WritingProgress(qint32 track, qint32 done, qint32 size);
    void DVDWriterPro1_ClosingTrack(qint32 track);
    void DVDWriterPro1_ClosingDisc();
    void DVDWriterPro1_WriteCompleted();
    void DVDWriterPro1_WriteCancelled();
    void DVDWriterPro1_WriteError(qint32 error, qint32 sense, const QString& description,
                                  const QString& senseData);

    void DVDWriterPro1_ComparingTrack(qint32 track, qint32 done, qint32 size);
    void DVDWriterPro1_Waiting(const QString& what);
    void DVDWriterPro1_Remark(const QString& text);

    void EnableControls(bool enable);
    void ListDevices();
    void ListWriteSpeeds();
    void AddTracks();
    static bool IsFolder(const QString& path);
    bool showPercent(qint32 track, qint32 done, qint32 size);
    void showPhase(const QString& text);
    void showNote(const QString& text);
    void beginAsking(const QString& what);
    /// @returns whether the window still stands and the answer is wanted.
    bool endAsking();
    void checkAndStart();
    void startWrite();
    void writeEnded();
    void letGo();

    std::unique_ptr<Ui::frmWrite> ui;
    const zib::Services m_services;
    QStringList m_trackFiles;
    zib::DiscNames m_names;
    std::unique_ptr<DVDWriterPro> m_writer;
    std::shared_ptr<void> m_awake; ///< While a disc is written.
    QString m_invitation;          ///< What lblStatus says while nothing runs.
    int m_drive = -1;              ///< The selected drive's index in the writer.
    int m_activated = 0;           ///< The entry of cboDevices that the user chose last.
    bool m_loaded = false;
    bool m_starting = false;   ///< Between the click on Start and the start, or its refusal.
    bool m_asking = false;     ///< A drive is being waited for.
    bool m_askAgain = false;   ///< Another drive was chosen meanwhile.
    bool m_givenUp = false;    ///< The user did not want the answer any more.
    bool m_cancelling = false; ///< Cancel was pressed during the write.
    bool m_writing = false;    ///< A write was started and has not told its end.
    bool m_closed = false;
    bool m_speedWasSet = false;
    bool IsIdle = true; ///< No write runs.
    qint16 TrackCount = 0;
    qint16 CurrentTrack = 0; ///< The track whose data the writer reads.
    bool DriveSupportsBufferProtection = false;
};
