#pragma once

#include "engines/burn/LibburnSession.h"
#include "engines/burn/WritePhases.h"
#include "engines/burn/mmc/WritePage.h"

namespace zib {

/// A failure with a code and a sentence of its own.
BurnError plainError(qint32 code, const QString& description);
/// A drive's own error with a sentence that says when it came.
BurnError senseError(const Sense& sense, const QString& description);
/// Why the drive at @p path did not answer to a question of ours, after the sentence @p what.
BurnError answerError(const DriveAnswer& answer, const QString& path, const QString& what);
/// Why nothing was written in the mode that was asked for.
BurnError planError(const PlanFault& fault, const WritePlan& wanted, const QString& path);

/// What the drive was doing when it failed, in a sentence.
/// @param track being written, from 1.
QString failedStep(const LibburnMessages& messages, WritePhases::Phase phase, int track, bool sessionAtOnce);
/// The track that a write to @p address belongs to, in a session written at once.
int trackAt(int address, const BurnJob& job);

/// What a drive says while it is waited for.
QString waitingWords(const DriveAnswer& answer);

} // namespace zib
