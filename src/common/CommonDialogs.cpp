#include "common/CommonDialogs.h"

#include "common/GeneralAPI.h"

namespace zib {

QStringList chosenPaths(const QString& answer)
{
    QStringList parts = answer.split(QChar::Null);
    if (parts.size() == 1)
        return parts;
    const QString folder = parts.takeFirst();
    for (QString& part : parts)
        part = GeneralAPI::JoinPath(folder, part);
    return parts;
}

} // namespace zib
