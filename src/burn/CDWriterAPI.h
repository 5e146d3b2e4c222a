#pragma once

#include <QString>

/// The sentences for the errors that a disc writer reports by number.
namespace CDWriterAPI {

/// @param code a drive's sense code; 1000 to 1055 have a sentence.
/// @returns the sentence, a blank and "(code)."; for any other code the blank and the code alone.
QString WriterErrorText(qint32 code);

} // namespace CDWriterAPI
