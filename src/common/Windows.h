#pragma once

#include "common/CompilationRow.h"
#include "common/DiscNames.h"
#include "common/Outcome.h"

#include <QList>
#include <QStringList>

#include <memory>

class DVDWriterPro;
class QWidget;

namespace zib {

/// Opens windows for windows, which never know each other. Every call shows its window modally over the
/// owner and returns when it has closed. GUI thread only.
class Windows
{
public:
    virtual ~Windows() = default;
    virtual void showSplash(QWidget* owner) = 0;
    virtual void showTip(QWidget* owner) = 0;
    virtual void showAbout(QWidget* owner) = 0;
    /// Applied options are loaded and the main window refreshed before this returns.
    virtual void showOptions(QWidget* owner) = 0;
    /// @returns the track file list: one path of a CD-format WAV file for each row, in order.
    virtual QStringList showPrepare(QWidget* owner, const QList<CompilationRow>& rows) = 0;
    /// @param names of the disc and of each track file, in the same order; they go onto the disc.
    virtual void showWrite(QWidget* owner, const QStringList& trackFiles, const DiscNames& names) = 0;
    /// Takes a writer whose window closes while it writes, and tells how the disc ended. Returns at once.
    virtual void keepWriting(std::unique_ptr<DVDWriterPro> writer) = 0;
    virtual void showRip(QWidget* owner) = 0;
    virtual void showMP3ToWAV(QWidget* owner) = 0;
    virtual void showPlayer(QWidget* owner) = 0;
    /// Plays the shared CurrentFile.
    virtual void showPlay(QWidget* owner) = 0;
    virtual void showLabelDesigner(QWidget* owner, const QList<CompilationRow>& rows) = 0;
    /// From here on the owner is the label designer, which is redrawn when a dialog applies its changes.
    /// @returns why the preview could not be shown; the detail is a sentence for the user.
    virtual Outcome<> showPreview(QWidget* owner) = 0;
    /// The owner is any window. Sets the default printer right for its paper.
    /// @returns why there is no printer to set right; the detail is a sentence for the user.
    virtual Outcome<> showCalibrate(QWidget* owner) = 0;
    virtual void showLabelList(QWidget* owner) = 0;
    virtual void showLabelBack(QWidget* owner) = 0;
    virtual void showLabelTitle(QWidget* owner) = 0;
};

} // namespace zib
