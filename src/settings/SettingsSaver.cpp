#include "settings/SettingsSaver.h"

#include "common/GenralMacro.h"
#include "settings/OptionsFunc.h"

namespace zib {

bool SettingsSaver::save(const QList<IniChange>& changes)
{
    const auto returned = std::make_shared<bool>(false);
    const auto saved = std::make_shared<bool>(true);
    if (platform().ini)
        platform().ini->writeLater(changes, gSettingsFile,
                                   [self = shared_from_this(), returned, saved](bool written) {
                                       *saved = written;
                                       if (written || !*returned)
                                           return;
                                       self->load();
                                       emit self->takenBack();
                                       self->tell(false, {});
                                   });
    *returned = true;
    load();
    return *saved;
}

void SettingsSaver::load()
{
    OptionsFunc::LoadSettings();
    emit applied();
}

void SettingsSaver::tell(bool saved, const QStringList& leftOut)
{
    QStringList texts;
    if (!saved)
        texts << tr("The settings could not be saved in the file") + u'\n' + gSettingsFile +
                     QStringLiteral("\n\n") +
                     tr("The file or its folder may not be written, or the disk is full. "
                        "What was set before stays in force.");
    if (!leftOut.isEmpty())
        texts << tr("These settings cannot be stored as they were typed and stay as they were:") + u'\n' +
                     leftOut.join(u'\n');
    if (!texts.isEmpty())
        emit refused(texts.join(QStringLiteral("\n\n")));
}

} // namespace zib
