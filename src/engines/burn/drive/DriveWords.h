#pragma once

#include "engines/burn/drive/DiscVerdict.h"
#include "engines/burn/drive/LibburnSession.h"
#include "engines/burn/drive/WritePhases.h"
#include "engines/burn/mmc/WritePage.h"

namespace zib {

/// A failure with a code and a sentence of its own.
BurnError plainError(qint32 code, const QString& description);
/// A failure without sense data, after the sentence @p what.
/// @param reason what the library says of it; may be empty.
BurnError withoutSense(const QString& what, const QString& reason);
/// What the user can do about a refusal, with a blank before it; nothing where the disc alone decides that.
QString adviceOn(const Sense& sense);
/// A drive's own error with a sentence that says when it came.
BurnError senseError(const Sense& sense, const QString& description);
/// Why the drive at @p path did not answer to a question of ours, after the sentence @p what.
BurnError answerError(const DriveAnswer& answer, const QString& path, const QString& what);
/// After a test that left the disc in another state than blank.
BurnError notBlank(const DiscVerdict& verdict, const QString& path);
/// The tracks do not fit on the disc, in the drive's own terms though it was not asked to try.
BurnError tooLong(const CdTime& needed, const CdTime& there);
/// Why the mode that was asked for could not be had.
BurnError planError(const PlanFault& fault, const WritePlan& wanted, const QString& path);

/// What the drive was doing when it failed, in a sentence.
/// @param track being written, from 1.
QString failedStep(const LibburnMessages& messages, WritePhases::Phase phase, int track, bool sessionAtOnce);
/// The track that a write to @p address belongs to, in a session written at once.
int trackAt(int address, const BurnJob& job);

/// What a drive says while it is waited for.
QString waitingWords(const DriveAnswer& answer);
/// The same for a drive that has been handed its work, before the disc is closed.
QString waitingWords(WritePhases::Phase phase);

} // namespace zib
