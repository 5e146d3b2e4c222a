// The jobs that are timed from outside, and the measurements that need no clock.
//
//   bench_audio convert SOURCE TARGET   one file to 44.1 kHz, 16 bits, stereo, as the windows do it
//   bench_audio information FILE...     asks what the list asks of each file; prints the seconds it took
//   bench_audio memory SOURCE TARGET    converts; prints the megabytes above an idle program at the highest
//   point bench_audio quality                 measures rate conversion and dither on generated tones
#include "conversion.h"
#include "memory.h"
#include "quality.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

namespace {

int convert(const QString& source, const QString& target)
{
    return zib::bench::convertFile(source, target) ? 0 : 1;
}

int information(const QStringList& paths)
{
    const auto inspector = zib::makeAudioInformation();
    QElapsedTimer timer;
    timer.start();
    qint64 total = 0;
    qsizetype letters = 0;
    for (const QString& path : paths) {
        if (!inspector->isAudioFile(path) || !inspector->open(path))
            return 1;
        total += inspector->durationMs();
        letters += inspector->title().size() + inspector->artist().size();
    }
    std::printf("%.6f\n", static_cast<double>(timer.nsecsElapsed()) / 1e9);
    std::fprintf(stderr, "%lld ms of sound, %lld letters\n", static_cast<long long>(total),
                 static_cast<long long>(letters));
    return 0;
}

int memory(const QString& source, const QString& target)
{
    const double idle = zib::bench::megabytes("VmRSS:");
    const int result = convert(source, target);
    std::printf("%.1f\n", zib::bench::megabytes("VmHWM:") - idle);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString command = arguments.value(0);
    if (command == QLatin1String("convert") && arguments.size() == 3)
        return convert(arguments[1], arguments[2]);
    if (command == QLatin1String("information"))
        return information(arguments.mid(1));
    if (command == QLatin1String("memory") && arguments.size() == 3)
        return memory(arguments[1], arguments[2]);
    if (command == QLatin1String("quality"))
        return zib::bench::measureQuality() ? 0 : 1;
    std::fputs("usage: bench_audio convert|memory SOURCE TARGET, information FILE..., quality\n", stderr);
    return 2;
}
