#pragma once

#include "platform/NameIcons.h"

#include <QFileDialog>

namespace zib {

/// The file dialog that every picker of the program uses: Qt's own, so that it looks the same on every
/// desktop. While open it refuses, with a box, names in folders that do not exist, when asked to.
class FileBox final : public QFileDialog
{
    Q_OBJECT
public:
    /// @param folder where it starts; when it is missing, its nearest parent; when empty, the home folder.
    FileBox(QWidget* owner, const QString& title, const QString& folder);

    /// @param filter "Text|*.a;*.b|Text|*.c"; "*.*" stands for every file.
    void setFilter(const QString& filter);
    void setPathMustExist(bool on) { m_pathMustExist = on; }
    /// @returns the entries of a filter in Qt's form, "Text (*.a *.b)".
    static QStringList nameFiltersOf(const QString& filter);

protected:
    void accept() override;

private:
    void showWholeColumns();
    QString missingFolder() const;
    void takeEveryTypedName();

    NameIcons m_icons;
    bool m_pathMustExist = false;
};

} // namespace zib
