#include "common/CompilationRow.h"

#include "common/GeneralAPI.h"

namespace zib {

QString CompilationRow::path() const
{
    return GeneralAPI::JoinPath(location, fileName);
}

} // namespace zib
