#pragma once

#include "common/GenralMacro.h"
#include "faces/Words.h"
#include "fakes/FakeSeams.h"

#include <QFile>

namespace zib {

/// Says each of several things with its number.
inline void sayAll(Words& words, const QString& what, const QStringList& things)
{
    for (qsizetype i = 0; i < things.size(); ++i)
        words.say(QString("%1 %2").arg(what).arg(i + 1, 2, 10, QChar('0')),
                  QString(things[i]).replace('\n', "\\n"));
}

inline QStringList requestWords(const QList<FileDialogRequest>& requests)
{
    QStringList words;
    for (const FileDialogRequest& request : requests)
        words << QString("%1, %2, flags %3, in %4, at most %5")
                     .arg(request.title, request.filter, QString::number(request.flags, 16),
                          request.initialFolder)
                     .arg(request.maxFileSize);
    return words;
}

inline QString fontWords(const QFont& font)
{
    return QString("%1 %2%3%4%5")
        .arg(font.family())
        .arg(font.pointSizeF())
        .arg(font.bold() ? " bold" : "", font.italic() ? " italic" : "",
             font.underline() ? " underlined" : "");
}

/// What a window did with everything outside it: boxes, dialogs, other windows, the shell, what is kept
/// awake, and the state that every window shares.
inline void sayWorld(Words& words, const FakeDesk& desk)
{
    sayAll(words, "~box", desk.messages.shown);
    QStringList presets;
    for (const Messages::Answer preset : desk.messages.presets)
        presets << QString::number(static_cast<int>(preset));
    words.say("~box presets", presets.join(' '));
    QStringList owners;
    for (const QPointer<QWidget>& owner : desk.messages.owners)
        owners << (owner ? owner->objectName() : QString("nobody"));
    words.say("~box owners", owners.join(' '));
    sayAll(words, "~dialog open", requestWords(desk.dialogs.opened));
    sayAll(words, "~dialog save", requestWords(desk.dialogs.saved));
    words.say("~dialog titles", desk.dialogs.titles.join(" | "));
    QStringList shown;
    for (const QColor& color : desk.dialogs.presetColors)
        shown << color.name();
    for (const QFont& font : desk.dialogs.presetFonts)
        shown << fontWords(font);
    words.say("~dialog presets", shown.join(" | "));
    words.say("~folders asked", desk.folders.titles.join(" | ") + desk.folders.starts.join(" | "));
    words.say("~windows", desk.windows.shown.join(' '));
    sayAll(words, "~shell", desk.shell.calls);
    words.say("~awake", desk.inhibitor.held->join(" | "));
    words.say("~awake asked", QString::number(desk.inhibitor.asked.size()));
    words.say("~current file", CurrentFile);
    words.say("~minutes", QString::number(TotalMinutes, 'f', 6));
}

/// A file's text, line by line, but for what is blank.
inline void sayFile(Words& words, const QString& what, const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        sayAll(words, what,
               QString::fromUtf8(file.readAll()).replace('\r', "\\r").split('\n', Qt::SkipEmptyParts));
}

} // namespace zib
