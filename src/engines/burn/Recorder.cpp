#include "engines/burn/Recorder.h"

namespace zib {

namespace {

struct Words
{
    Failure::Kind kind;
    qint32 code;
    const char* before; ///< Text before the detail.
    const char* after;  ///< Text behind it.
};

constexpr Words kWords[] = {
    {Failure::Kind::UnreadableFile, BurnErrorCode::kSourceFile, "The file \"",
     "\" cannot be read any more or has changed since it was added. Prepare the list again."},
    {Failure::Kind::NotFound, BurnErrorCode::kSourceFile, "The file \"",
     "\" is no longer there. Prepare the list again."},
    {Failure::Kind::WriteFailed, BurnErrorCode::kStorage, "\"",
     "\" could not be written. Make room on that drive, or see to the rights of the folder, and write "
     "again."},
    {Failure::Kind::NoPermission, BurnErrorCode::kNoPermission, "You may not use \"",
     "\". Ask for the rights to it (for a drive: membership in the group cdrom) and write again."},
    {Failure::Kind::Busy, BurnErrorCode::kBusy, "Another program is using \"",
     "\". Close that program and write again."},
    {Failure::Kind::NoMedium, BurnErrorCode::kWrongDisc, "There is no disc in \"",
     "\". Insert an empty disc and write again."},
    {Failure::Kind::WrongMedium, BurnErrorCode::kWrongDisc, "The disc in \"",
     "\" cannot be written. Insert an empty disc and write again."},
    {Failure::Kind::MediumTooSmall, BurnErrorCode::kWrongDisc, "The tracks do not fit on the disc in \"",
     "\". Take tracks off the list and write again."},
    {Failure::Kind::DeviceGone, BurnErrorCode::kDeviceGone, "\"",
     "\" does not answer any more. Connect it again, close this window and open it again."},
    {Failure::Kind::DeviceError, BurnErrorCode::kVerify, "Read back, \"",
     "\" does not show the tracks that were written. Do not use this disc; write again on another one."},
    {Failure::Kind::Unsupported, BurnErrorCode::kUnsupported, "\"",
     "\" cannot do this. Choose another drive, or change the options for writing."},
};

} // namespace

CdTime BurnJob::totalLength() const
{
    CdTime total;
    for (const BurnTrack& track : tracks)
        total = total + CdTime::fromFrames(kPregapFrames) + track.length;
    return total;
}

BurnError BurnError::byUser()
{
    return {.cancelled = true};
}

BurnError BurnError::withSense(qint32 sense, const QString& senseData)
{
    return {.error = DVDWriterPro::kDriveError, .sense = sense, .senseData = senseData};
}

BurnError BurnError::from(const Failure& failure)
{
    if (failure.kind == Failure::Kind::Cancelled)
        return byUser();
    for (const Words& words : kWords)
        if (words.kind == failure.kind)
            return {.error = words.code,
                    .description = QString::fromLatin1(words.before) + failure.detail +
                                   QString::fromLatin1(words.after)};
    return {.error = BurnErrorCode::kUnsupported, .description = failure.detail};
}

} // namespace zib
