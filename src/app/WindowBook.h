#pragma once

#include "burn/ClosedWrites.h"
#include "common/Services.h"
#include "common/Windows.h"

#include <QPointer>

#include <memory>

class frmMain;
class frmPrepare;
class frmWrite;

namespace zib {

/// Opens the program's windows, each modally, and hands the news of one to another. Owns the services that
/// every window is given.
class WindowBook : public Windows
{
public:
    /// All arguments outlive the book, and the book outlives every window.
    WindowBook(Messages& messages, CommonDialogs& dialogs, const Components& components);

    const Services& services() const { return m_services; }
    /// The window that is refreshed when options were applied.
    void setMainWindow(frmMain* window);
    /// Writes that go on behind windows that have closed.
    ClosedWrites& closedWrites() { return m_closedWrites; }
    /// Whether a disc is being written, behind a window or behind none.
    bool isWriting() const;
    /// The program ends: has the preparing window, which its user cannot close, close.
    void abandonPreparing();

    void showSplash(QWidget* owner) override;
    void showTip(QWidget* owner) override;
    void showAbout(QWidget* owner) override;
    void showOptions(QWidget* owner) override;
    QStringList showPrepare(QWidget* owner, const QList<CompilationRow>& rows) override;
    void showWrite(QWidget* owner, const QStringList& trackFiles, const DiscNames& names) override;
    void keepWriting(std::unique_ptr<DVDWriterPro> writer) override;
    void showRip(QWidget* owner) override;
    void showMP3ToWAV(QWidget* owner) override;
    void showPlayer(QWidget* owner) override;
    void showPlay(QWidget* owner) override;
    void showLabelDesigner(QWidget* owner, const QList<CompilationRow>& rows) override;
    Outcome<> showPreview(QWidget* owner) override;
    Outcome<> showCalibrate(QWidget* owner) override;
    void showLabelList(QWidget* owner) override;
    void showLabelBack(QWidget* owner) override;
    void showLabelTitle(QWidget* owner) override;

private:
    Services m_services;
    QPointer<frmMain> m_main;
    QPointer<frmPrepare> m_prepare;
    QPointer<frmWrite> m_write;
    ClosedWrites m_closedWrites;
};

} // namespace zib
