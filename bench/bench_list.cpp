// Measures the compilation list with many files, in the real window with the real reading of files.
//   bench_list FILE...     all files of one folder; prints the seconds that adding them took, and the longest
//   time in
//                          milliseconds that the window's events waited meanwhile

#include "quiet.h"

#include "app/frmMain.h"
#include "common/GenralMacro.h"
#include "components/Components.h"
#include "engines/audio/makers.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTableView>
#include <QTemporaryDir>

#include <cstdio>

namespace {

/// Chooses the files that the measurement was given.
class Chooser final : public zib::bench::NoDialogs
{
public:
    explicit Chooser(QString answer) : m_answer(std::move(answer)) {}
    zib::Outcome<QString> openFile(QWidget*, const zib::FileDialogRequest&) override { return m_answer; }

private:
    QString m_answer;
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
    zib::bench::Refusals refusals;
    zib::bench::NoWindows windows;
    zib::Components components;
    components.makeInformation = zib::makeAudioInformation;
    frmMain window(zib::Services{refusals, chooser, windows, components});
    window.show();
    QApplication::processEvents();

    QElapsedTimer clock;
    zib::bench::Heart heart(0);
    clock.start();
    window.findChild<QAction*>(QStringLiteral("Toolbar1_add"))->trigger();
    const double seconds = static_cast<double>(clock.nsecsElapsed()) / 1e9;
    heart.beat();
    const auto* list = window.findChild<QTableView*>(QStringLiteral("ListView1"));
    std::printf("%.3f %lld\n", seconds, static_cast<long long>(heart.longestMs()));
    return list->model()->rowCount() + refusals.count == files.size() ? 0 : 1;
}
