#include "platform/ToolkitSettings.h"

#include <QSettings>

namespace zib {

void keepToolkitSettingsApart()
{
    // A place where nothing can be: reading finds nothing, writing goes nowhere.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
}

} // namespace zib
