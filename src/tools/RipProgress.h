#pragma once

#include <QString>

namespace zib {

/// How much of a track is done at @p position, 0 to 1 and beyond its end above 1.  @p start and @p end
/// differ.
double fractionDone(qint32 start, qint32 end, qint32 position);
/// The whole extraction in percent, halves rounded to the even number, at most 100.
/// @param done tracks that are finished.  @param total at least 1.
qint16 overallRipped(int done, double fraction, int total);
/// The tracks that are finished in percent, not rounded.
float finishedRipped(int done, int total);

/// "Track #07 WHAT": two digits at least.
QString trackText(int track, const QString& what);
/// What CDRipperX's driveState means, in words.
QString driveStateText(int state);

} // namespace zib
