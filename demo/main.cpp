// Plays the program's main job in its real windows: three sample files are added, prepared and written to the
// recorder of disc images; the image is read back with libcdio and compared with the prepared files.
//   zib_demo [FOLDER [dark]]   FOLDER: where the pictures and the image go, build/demo when none is given
//                              dark: in dark colours

#include "Show.h"
#include "comparison.h"

#include "common/CdTime.h"
#include "common/Texts.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPalette>

#include <cstdio>

namespace {

QStringList samples()
{
    QStringList paths;
    for (const char* name : {"Morning Light.mp3", "Night Train.wav", "Short Wave.wav"})
        paths << QStringLiteral(ZIB_SOURCE_DIR "/data/samples/") + QLatin1StringView(name);
    return paths;
}

void say(const QString& line)
{
    std::puts(qPrintable(line));
    std::fflush(stdout);
}

/// Colours as a dark desktop gives them to its programs.
QPalette darkColours()
{
    QPalette colours(QColor(53, 53, 53));
    colours.setColor(QPalette::Base, QColor(35, 35, 35));
    colours.setColor(QPalette::Highlight, QColor(42, 130, 218));
    colours.setColor(QPalette::HighlightedText, Qt::black);
    colours.setColor(QPalette::Link, QColor(90, 170, 250));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        colours.setColor(QPalette::Disabled, role, QColor(130, 130, 130));
    return colours;
}

QString row(const QString& number, const QString& file, const QString& length, const QString& samples,
            const QString& verdict)
{
    return QStringLiteral("  %1  %2  %3  %4  %5")
        .arg(number, 5)
        .arg(file, -20)
        .arg(length, 8)
        .arg(samples, 10)
        .arg(verdict);
}

QString wordsOf(const demo::TrackVerdict& verdict)
{
    if (verdict.right())
        return QStringLiteral("equal, every sample");
    if (!verdict.lengthRight)
        return QStringLiteral("of the wrong length");
    return QStringLiteral("%1 samples differ").arg(verdict.different);
}

/// Prints the table of tracks.  @returns whether every track is right.
bool judge(const QString& cue, const QStringList& prepared)
{
    QList<QByteArray> sounds;
    for (const QString& file : prepared)
        sounds << demo::soundOf(file).value_or(QByteArray());
    const auto disc = demo::DiscImage::open(cue);
    const auto verdicts = disc ? demo::compare(*disc, sounds) : std::nullopt;
    if (!verdicts)
        return false;
    say(row("Track", "Prepared file", "Length", "Samples", "On the disc"));
    bool right = true;
    for (qsizetype i = 0; i < verdicts->size(); ++i) {
        const demo::TrackVerdict& verdict = verdicts->at(i);
        say(row(QString::number(i + 1), QFileInfo(prepared.at(i)).fileName(),
                zib::CdTime::fromFrames(verdict.frames).toMsf(), QString::number(verdict.samples),
                wordsOf(verdict)));
        right = right && verdict.right() && verdict.samples > 0;
    }
    return right;
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(zib::kApplicationTitle);
    if (argc > 2 && qstrcmp(argv[2], "dark") == 0)
        QApplication::setPalette(darkColours());
    const QString folder =
        QDir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("build/demo")).absolutePath();

    say(QStringLiteral("Adding, preparing and writing three sample files in the program's own windows ..."));
    demo::Show show(folder, samples());
    show.play();
    const QString cue = show.cueSheet();
    say(QStringLiteral("The disc image: %1").arg(cue.isEmpty() ? QStringLiteral("none was written") : cue));
    const bool right = !cue.isEmpty() && show.trackFiles().size() == samples().size() &&
                       judge(cue, show.trackFiles()) && show.director().givenUp().isEmpty();
    say(QStringLiteral("%1 pictures of the windows are in %2")
            .arg(show.director().pictures().size())
            .arg(folder));
    say(right ? QStringLiteral("Verdict: the disc holds exactly what was prepared, read back by libcdio.")
              : QStringLiteral("Verdict: FAILED, the disc is not what was prepared."));
    return right ? 0 : 1;
}
