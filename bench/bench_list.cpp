// Measures the compilation list with many files, in the real window with the real reading of files.
//   bench_list FILE...     all files of one folder; prints the seconds that adding them took, and the longest
//   time in
//                          milliseconds that the window's events waited meanwhile

#include "app/frmMain.h"
#include "common/CommonDialogs.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Windows.h"
#include "components/Components.h"
#include "engines/audio/makers.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace {

using zib::Failure;
using zib::Outcome;

/// Chooses the files that the measurement was given.
class Chooser final : public zib::CommonDialogs
{
public:
    explicit Chooser(QString answer) : m_answer(std::move(answer)) {}
    Outcome<QString> openFile(QWidget*, const zib::FileDialogRequest&) override { return m_answer; }
    Outcome<QString> saveFile(QWidget*, const zib::FileDialogRequest&) override
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

private:
    QString m_answer;
};

/// Counts what is refused.
class Refusals final : public zib::Messages
{
public:
    void information(QWidget*, const QString&) override { ++count; }
    void critical(QWidget*, const QString&, const QString&) override { ++count; }
    void plain(QWidget*, const QString&) override { ++count; }
    Answer askYesNoCancel(QWidget*, const QString&) override { return Answer::Cancel; }

    int count = 0;
};

class NoWindows final : public zib::Windows
{
public:
    void showSplash(QWidget*) override {}
    void showTip(QWidget*) override {}
    void showAbout(QWidget*) override {}
    void showOptions(QWidget*) override {}
    QStringList showPrepare(QWidget*, const QList<zib::CompilationRow>&) override { return {}; }
    void showWrite(QWidget*, const QStringList&, const zib::DiscNames&) override {}
    void showRip(QWidget*) override {}
    void showMP3ToWAV(QWidget*) override {}
    void showPlayer(QWidget*) override {}
    void showPlay(QWidget*) override {}
    void showLabelDesigner(QWidget*, const QList<zib::CompilationRow>&) override {}
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
    Heart()
    {
        m_timer.callOnTimeout([this] { beat(); });
        m_timer.start(0);
        m_since.start();
    }
    void beat() { m_longest = std::max(m_longest, m_since.restart()); }
    qint64 longestMs() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};

QString asDialogAnswer(const QStringList& files)
{
    QStringList parts{QFileInfo(files.first()).absolutePath()};
    for (const QString& file : files)
        parts << QFileInfo(file).fileName();
    return parts.join(QChar::Null);
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList files = QApplication::arguments().mid(1);
    if (files.size() < 2) {
        std::fputs("usage: bench_list FILE FILE...\n", stderr);
        return 2;
    }
    QTemporaryDir folder;
    zib::setApplicationFolder(folder.path());
    Chooser chooser(asDialogAnswer(files));
    Refusals refusals;
    NoWindows windows;
    zib::Components components;
    components.makeInformation = zib::makeAudioInformation;
    frmMain window(zib::Services{refusals, chooser, windows, components});
    window.show();
    QApplication::processEvents();

    QElapsedTimer clock;
    Heart heart;
    clock.start();
    window.findChild<QAction*>(QStringLiteral("Toolbar1_add"))->trigger();
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    heart.beat();
    const auto* list = window.findChild<QTableView*>(QStringLiteral("ListView1"));
    std::printf("%.3f %lld\n", seconds, static_cast<long long>(heart.longestMs()));
    return list->model()->rowCount() + refusals.count == files.size() ? 0 : 1;
}
