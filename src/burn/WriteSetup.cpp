#include "burn/WriteSetup.h"

#include "burn/WriteTexts.h"
#include "common/GeneralAPI.h"
#include "common/GenralMacro.h"
#include "components/DVDWriterPro.h"

namespace zib {

QList<DriveEntry> usableDrives(const DVDWriterPro& writer)
{
    QList<DriveEntry> entries;
    for (int drive = 0; drive < writer.driveCount(); ++drive) {
        const bool burnsDiscs = writer.canWriteCdR(drive) || writer.canWriteCdRw(drive);
        if (burnsDiscs && writer.canWriteAudio(drive))
            entries << DriveEntry{writer.driveText1(drive) + QStringLiteral(": ") + writer.driveText2(drive) +
                                      u' ' + writer.driveText3(drive),
                                  drive};
    }
    return entries;
}

QString whyNotWritable(DVDWriterPro& writer, int drive)
{
    if (drive < 0)
        return WriteTexts::kNoDrive;
    const int status = writer.discStatus();
    if (status == DVDWriterPro::kNoDisc)
        return WriteTexts::kNoDisc;
    if (status != DVDWriterPro::kAppendableDisc && status != DVDWriterPro::kBlankDisc)
        return WriteTexts::kWrongDisc;
    return writer.discHoldsData() ? WriteTexts::kUsedDisc : QString();
}

void configureWrite(DVDWriterPro& writer, const OptionsData& options, bool driveProtectsBuffer)
{
    writer.setCacheLocally(options.CacheFilesLocally);
    if (options.CacheFilesLocally) {
        const QString folder = GeneralAPI::SettingFolder(options.Temporary);
        GeneralAPI::MakeFolderPath(folder);
        writer.setCacheFolder(folder);
    }
    writer.setWriteMode(0);
    writer.setTestWrite(options.TestMode);
    writer.setCloseSession(true);
    writer.setCloseDisc(true);
    writer.setVerify(options.VerifyAfterWriting);
    writer.setBufferProtection(options.BufferProtection && driveProtectsBuffer);
}

} // namespace zib
