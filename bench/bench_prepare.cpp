// What the preparing window adds to the conversion itself.
//   bench_prepare bare SOURCE      converts as fast as blocks can be passed on; prints the seconds it took
//   bench_prepare window SOURCE    the same by the real window; prints also the longest time in milliseconds
//   that
//                                  its events waited meanwhile
#include "conversion.h"
#include "quiet.h"

#include "burn/frmPrepare.h"
#include "common/GenralMacro.h"
#include "components/Components.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int kBeatMs = 10;

double seconds(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

int bare(const QString& source, const QString& folder)
{
    QElapsedTimer clock;
    clock.start();
    const bool isThere = zib::bench::convertFile(source, folder + QStringLiteral("/bare.wav"));
    std::printf("%.3f\n", seconds(clock));
    return isThere ? 0 : 1;
}

int window(const QString& source, const QString& folder)
{
    zib::setApplicationFolder(folder);
    zib::bench::Refusals refusals;
    zib::bench::NoDialogs dialogs;
    zib::bench::NoWindows windows;
    zib::Components components;
    components.makeInformation = zib::makeAudioInformation;
    components.makeFile = zib::makeAudioFile;
    const QFileInfo info(source);
    zib::CompilationRow row;
    row.fileName = info.fileName();
    row.location = info.absolutePath() + QLatin1Char('/');
    zib::bench::Heart heart(kBeatMs);
    QElapsedTimer clock;
    clock.start();
    frmPrepare preparing({refusals, dialogs, windows, components}, {row});
    preparing.exec();
    const double took = seconds(clock);
    heart.beat();
    std::printf("%.3f %lld\n", took, static_cast<long long>(heart.longestMs()));
    return refusals.count == 0 && QFileInfo::exists(preparing.trackFiles().value(0)) ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    const QString command = arguments.value(0);
    const QTemporaryDir folder(QFileInfo(arguments.value(1)).absolutePath() +
                               QStringLiteral("/preparing-XXXXXX"));
    if (command == QLatin1String("bare") && arguments.size() == 2)
        return bare(arguments[1], folder.path());
    if (command == QLatin1String("window") && arguments.size() == 2)
        return window(arguments[1], folder.path());
    std::fputs("usage: bench_prepare bare|window SOURCE\n", stderr);
    return 2;
}
