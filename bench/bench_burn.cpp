// Measures one write of a disc, to an image or to the first drive that is found.
//   bench_burn HOW FOLDER FILE...
// HOW is one of image, image-uncompared (never compared), drive, drive-named (with
// CD-TEXT of many letters) and drive-verified. FOLDER takes the image, which is removed again. Prints the
// seconds that the write took, the megabytes above an idle program at the highest point, and how many of the
// seconds went into comparing.

#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/image/ImageRecorder.h"
#include "memory.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QStringList>

#include <cstdio>

namespace {

using zib::BurnJob;

double secondsOf(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

/// Hears the end of the writing.
class Listener final : public zib::BurnObserver
{
public:
    void readingTrack(int) override {}
    void progress(int, qint64, qint64) override {}
    void closingTrack(int) override {}
    void closingDisc() override {}
    void readingBack() override { m_clock.start(); }
    void comparing(int, qint64, qint64) override { compared = secondsOf(m_clock); }

    double compared = 0; ///< Seconds until the last news of comparing.

private:
    QElapsedTimer m_clock;
};

BurnJob jobOf(const QStringList& files, const QString& how)
{
    BurnJob job;
    job.verify = how == QLatin1String("drive-verified");
    for (const QString& file : files) {
        if (const auto track = zib::findTrack(file))
            job.tracks << *track;
        if (how == QLatin1String("drive-named"))
            job.names.tracks << zib::TrackNames{QString(100, u'\u0416') + file, QString(60, u'\u00e9')};
    }
    return job;
}

std::shared_ptr<zib::Recorder> recorderFor(const QString& how, const QString& folder)
{
    if (how.startsWith(QLatin1String("image")))
        return std::make_shared<zib::ImageRecorder>(folder, how == QLatin1String("image"));
    const zib::FoundRecorders found = zib::findDrives();
    return found.recorders.empty() ? nullptr : found.recorders.front();
}

int measure(const QString& how, const QString& folder, const QStringList& files)
{
    const auto recorder = recorderFor(how, folder);
    if (!recorder)
        return 1;
    Listener listener;
    const BurnJob job = jobOf(files, how);
    if (job.tracks.size() != files.size())
        return 1;
    const double idle = zib::bench::megabytes("VmRSS:");
    QElapsedTimer clock;
    clock.start();
    const auto error = recorder->write(job, listener);
    std::printf("%.3f %.1f %.3f\n", secondsOf(clock), zib::bench::megabytes("VmHWM:") - idle,
                listener.compared);
    if (error)
        std::fprintf(stderr, "%s\n", qPrintable(error->description));
    return error ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.size() < 3) {
        std::fputs(
            "usage: bench_burn image|image-uncompared|drive|drive-named|drive-verified FOLDER FILE...\n",
            stderr);
        return 2;
    }
    const QString folder = arguments[1] + QStringLiteral("/written");
    const int result = measure(arguments[0], folder, arguments.mid(2));
    QDir(folder).removeRecursively();
    return result;
}
