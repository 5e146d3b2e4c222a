#pragma once

#include "road/Screen.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

class QProcess;

/// Walking through the real program from outside, by its windows' titles and its keys, and hearing with other
/// programs' decoders.
namespace road {

inline const QString kSamples = ZIB_SOURCE_DIR "/data/samples/";

/// Skips the test where one of the tools is not installed; to be the last call of initTestCase.
void skipWithout(const QStringList& tools);
/// What another decoder makes of a file, as stereo of 44100 Hz and 16 bits: ffmpeg of an MP3 file, sox of a
/// WAV file.
QByteArray decodedByOthers(const QString& file);
/// The largest difference of two sounds, the shorter one followed by silence.
int largestDifference(const QByteArray& a, const QByteArray& b);
/// Power of what differs, in decibels below the power of @p a.
double differenceDb(const QByteArray& a, const QByteArray& b);
/// A WAV file that needs no preparation: five seconds and a bit of two tones.
QString cdFormatFile(const QString& folder);
/// Waits for the tip of the day, which comes behind splash and main window, and closes it.
/// @returns the main window.
QString startedWithTip(const Screen& screen);
void addFiles(const Screen& screen, const QString& main, const QStringList& files);
/// Presses "Start Writing" until writing has begun: the drives are looked for first, so the button may not
/// answer at once.
void startWriting(const Screen& screen, const QString& window, const std::function<bool()>& begun);
/// The program folder, copied to where nothing of the build tree is near.
QString copiedProgram(const QString& home);
/// @param variables "NAME=value", added to the environment.
void start(QProcess& run, const Screen& screen, const QString& program, const QStringList& variables = {});
/// Presses keys until a window answers: a program that is still adding files does not listen.
QString openedBy(const Screen& screen, const QString& window, const QString& keys, const QString& title);
/// Saves the list, which must have all its files; the main window's title then names the project.
void saveProject(const Screen& screen, const QString& main, const QString& project);
QByteArray content(const QString& path);
/// Answers the box that tells of the end and leaves the writing window.
void closeWriting(const Screen& screen);
/// Copies every track of the disc that the ripper lists first.
void rip(const Screen& screen, const QString& main, int tracks);
void closeBox(const Screen& screen);
void exitProgram(const Screen& screen, QProcess& run, const QString& main);

} // namespace road
