#pragma once

#include "common/CommonDialogs.h"
#include "common/Messages.h"
#include "common/Windows.h"
#include "components/DVDWriterPro.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>

/// What a window needs around it while it is measured: nobody who asks, chooses or opens anything.
namespace zib::bench {

/// Is never asked to choose anything.
class NoDialogs : public CommonDialogs
{
public:
    Outcome<QString> openFile(QWidget*, const FileDialogRequest&) override
    {
        return Failure{Failure::Kind::Cancelled};
    }
    Outcome<QString> saveFile(QWidget*, const FileDialogRequest&) override
    {
        return Failure{Failure::Kind::Cancelled};
    }
    Outcome<QColor> chooseColor(QWidget*, const QString&, const QColor&) override
    {
        return Failure{Failure::Kind::Cancelled};
    }
    Outcome<QFont> chooseFont(QWidget*, const QString&, const QFont&) override
    {
        return Failure{Failure::Kind::Cancelled};
    }
};

/// Counts what is refused.
class Refusals final : public Messages
{
public:
    void information(QWidget*, const QString&, const QString&) override { ++count; }
    void critical(QWidget*, const QString&, const QString&) override { ++count; }
    void plain(QWidget*, const QString&) override { ++count; }
    Answer askYesNoCancel(QWidget*, const QString&, Answer) override { return Answer::Cancel; }

    int count = 0;
};

class NoWindows final : public Windows
{
public:
    void showSplash(QWidget*) override {}
    void showTip(QWidget*) override {}
    void showAbout(QWidget*) override {}
    void showOptions(QWidget*) override {}
    QStringList showPrepare(QWidget*, const QList<CompilationRow>&) override { return {}; }
    void showWrite(QWidget*, const QStringList&, const DiscNames&) override {}
    void keepWriting(std::unique_ptr<DVDWriterPro>) override {}
    void showRip(QWidget*) override {}
    void showMP3ToWAV(QWidget*) override {}
    void showPlayer(QWidget*) override {}
    void showPlay(QWidget*) override {}
    void showLabelDesigner(QWidget*, const QList<CompilationRow>&) override {}
    Outcome<> showPreview(QWidget*) override { return {}; }
    Outcome<> showCalibrate(QWidget*) override { return {}; }
    void showLabelList(QWidget*) override {}
    void showLabelBack(QWidget*) override {}
    void showLabelTitle(QWidget*) override {}
};

/// Measures how long the event loop is kept waiting.
class Heart
{
public:
    /// @param beatMs between beats: 0 keeps a core busy, so only where the window does so anyway.
    explicit Heart(int beatMs)
    {
        m_timer.callOnTimeout([this] { beat(); });
        m_timer.start(beatMs);
        m_since.start();
    }
    void beat() { m_longest = std::max(m_longest, m_since.restart()); }
    qint64 longestMs() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};

} // namespace zib::bench
