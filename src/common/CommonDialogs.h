#pragma once

#include "common/Outcome.h"

#include <QColor>
#include <QFont>
#include <QString>
#include <QStringList>

class QWidget;

namespace zib {

/// What a common file dialog is asked for, and the flags of its kind.
struct FileDialogRequest
{
    enum Flag : quint32
    {
        AllowMultiselect = 0x200,
        PathMustExist = 0x800,
        FileMustExist = 0x1000,
        Explorer = 0x80000,
        LongNames = 0x200000,
    };

    QString title;
    QString filter;          ///< "Text|*.a;*.b|Text|*.c"; patterns match capitals too.
    quint32 flags = 0;       ///< Flag values, joined.
    QString initialFolder{}; ///< Empty: wherever the last dialog was.
    int maxFileSize = 4096; ///< Longest answer in characters, one path by default; a longer one is a failure.
};

/// The error number that a cancelled common dialog raises.
inline constexpr int kDialogCancelled = 32755;

/// The paths of an open dialog's answer: the one path, or the folder joined with each of the names.
QStringList chosenPaths(const QString& answer);

/// The open, save, colour and font dialogs. Modal; a cancel is Failure::Kind::Cancelled. GUI thread only.
class CommonDialogs
{
public:
    virtual ~CommonDialogs() = default;
    /// @returns one full path; or, with several files chosen, their folder and then their names, parted by
    /// NUL.
    virtual Outcome<QString> openFile(QWidget* owner, const FileDialogRequest& request) = 0;
    /// @returns the name as typed: no extension is added and no overwrite question asked.
    virtual Outcome<QString> saveFile(QWidget* owner, const FileDialogRequest& request) = 0;
    virtual Outcome<QColor> chooseColor(QWidget* owner, const QString& title, const QColor& current) = 0;
    virtual Outcome<QFont> chooseFont(QWidget* owner, const QString& title, const QFont& current) = 0;
};

} // namespace zib
