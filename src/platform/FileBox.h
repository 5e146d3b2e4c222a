#pragma once

#include "platform/NameIcons.h"

#include <QFileDialog>

namespace zib {

/// The file dialog that every picker of the program uses: Qt's own, so that it looks the same on every
/// desktop. While open it refuses, with a box, names that cannot be told apart or are too long, and names in
/// folders that do not exist, when asked to.
class FileBox final : public QFileDialog
{
    Q_OBJECT
public:
    /// @param folder where it starts; when it is missing, its nearest parent; when empty, the home folder.
    FileBox(QWidget* owner, const QString& title, const QString& folder);

    /// @param filter "Text|*.a;*.b|Text|*.c"; "*.*" stands for every file.
    void setFilter(const QString& filter);
    void setPathMustExist(bool on) { m_pathMustExist = on; }
    /// @returns what was chosen: the paths of every name that was marked or typed. Quotes part names, but
    /// they belong to the name of a file that is saved, and of one that is there.
    QStringList chosen() const;
    /// @returns the entries of a filter in Qt's form, "Text (*.a *.b)".
    static QStringList nameFiltersOf(const QString& filter);

protected:
    void accept() override;

private:
    void showWholeColumns();
    QString typedText() const;
    QStringList markedNames() const;
    bool marksGive(QString text) const;
    bool isOneName(const QString& text) const;
    QString takeQuotedText(const QString& text);
    QString refusal();
    QString missingFolder() const;
    QString longName() const;

    NameIcons m_icons;
    QString m_named; ///< The path that was typed with quotes in its name; empty when Qt's reading holds.
    bool m_pathMustExist = false;
};

} // namespace zib
