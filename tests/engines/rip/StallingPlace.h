#pragma once

#include <QString>

namespace zib {

/// Lets every call that names something under a folder hang, as a storage that does not answer, until this
/// ends. Only calls of the process that this stands in; one at a time.
class StallingPlace
{
public:
    explicit StallingPlace(const QString& folder);
    ~StallingPlace();
    Q_DISABLE_COPY_MOVE(StallingPlace)

    /// Calls that hang at the moment.
    static int hanging();
};

} // namespace zib
