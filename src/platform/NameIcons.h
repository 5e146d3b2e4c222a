#pragma once

#include <QFileIconProvider>

namespace zib {

/// Icons and kinds of files by their names. The toolkit's own provider opens every file of unknown name to
/// look at its content, which takes long in a folder of thousands and for ever at a pipe.
class NameIcons final : public QFileIconProvider
{
public:
    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo& info) const override;
    QString type(const QFileInfo& info) const override;
};

} // namespace zib
