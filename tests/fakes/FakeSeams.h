#pragma once

#include "common/CommonDialogs.h"
#include "common/GenralMacro.h"
#include "common/Messages.h"
#include "common/Platform.h"
#include "common/Services.h"
#include "common/Windows.h"
#include "components/Components.h"

#include <QColor>
#include <QFont>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace zib {

/// Message boxes that answer themselves and are remembered as "i: text", "c: text", "p: text" or "q: text";
/// a critical box with a title of its own as "c[title]: text". A remark is the next line.
class ScriptedMessages final : public Messages
{
public:
    void information(QWidget* owner, const QString& text, const QString& remark = {}) override;
    void critical(QWidget* owner, const QString& text, const QString& title = kApplicationTitle) override;
    void plain(QWidget* owner, const QString& text) override;
    Answer askYesNoCancel(QWidget* owner, const QString& text, Answer preset = Answer::Yes) override;

    QStringList shown;
    QList<QPointer<QWidget>> owners;
    QList<Answer> presets;                      ///< Of the questions, in order.
    Answer answer = Answer::Cancel;             ///< What a question is answered with.
    std::function<void(const QString&)> onShow; ///< Runs while a box is "open".

private:
    void remember(QWidget* owner, const QString& line);
};

/// Common dialogs that answer from a script; an empty script cancels.
class ScriptedDialogs final : public CommonDialogs
{
public:
    Outcome<QString> openFile(QWidget* owner, const FileDialogRequest& request) override;
    Outcome<QString> saveFile(QWidget* owner, const FileDialogRequest& request) override;
    Outcome<QColor> chooseColor(QWidget* owner, const QString& title, const QColor& current) override;
    Outcome<QFont> chooseFont(QWidget* owner, const QString& title, const QFont& current) override;

    QList<QString> files;                     ///< Answers of the next file dialogs.
    Failure noFile{Failure::Kind::Cancelled}; ///< What a file dialog answers when there are none left.
    QList<QColor> colors;                     ///< Answers of the next colour dialogs.
    QList<QFont> fonts;                       ///< Answers of the next font dialogs.
    QList<FileDialogRequest> opened;
    QList<FileDialogRequest> saved;
    QStringList titles; ///< Titles of colour and font dialogs.
    QList<QColor> presetColors;
    QList<QFont> presetFonts;
};

/// Windows that are not opened but remembered by name.
class RecordingWindows final : public Windows
{
public:
    void showSplash(QWidget*) override { note("splash"); }
    void showTip(QWidget*) override { note("tip"); }
    void showAbout(QWidget*) override { note("about"); }
    void showOptions(QWidget*) override { note("options"); }
    QStringList showPrepare(QWidget*, const QList<CompilationRow>& rows) override;
    void showWrite(QWidget*, const QStringList& trackFiles, const DiscNames& names) override;
    void keepWriting(std::unique_ptr<DVDWriterPro> writer) override;
    void showRip(QWidget*) override { note("rip"); }
    void showMP3ToWAV(QWidget*) override { note("converter"); }
    void showPlayer(QWidget*) override { note("player"); }
    void showPlay(QWidget*) override { note("play"); }
    void showLabelDesigner(QWidget*, const QList<CompilationRow>& rows) override;
    Outcome<> showPreview(QWidget*) override;
    Outcome<> showCalibrate(QWidget*) override;
    void showLabelList(QWidget*) override { note("labelList"); }
    void showLabelBack(QWidget*) override { note("labelBack"); }
    void showLabelTitle(QWidget*) override { note("labelTitle"); }

    std::vector<std::shared_ptr<DVDWriterPro>> kept; ///< What keepWriting was given.
    QStringList shown;
    QList<CompilationRow> rows;                 ///< What showPrepare or showLabelDesigner was given last.
    QStringList trackFiles;                     ///< What showWrite was given.
    DiscNames discNames;                        ///< What showWrite was given.
    QStringList preparedFiles;                  ///< What showPrepare answers.
    Outcome<> previewAnswer;                    ///< What showPreview answers.
    Outcome<> calibrateAnswer;                  ///< What showCalibrate answers.
    std::function<void(const QString&)> onShow; ///< Runs while a window is "open".

private:
    void note(const char* name);
};

/// A shell that starts nothing and remembers "verb file parameters".
class RecordingShell final : public Shell
{
public:
    bool ShellExecuteA(const QString& verb, const QString& file, const QString& parameters,
                       const QString& folder) override;

    QStringList calls;
};

/// A folder picker that answers from a script; an empty script cancels.
class ScriptedFolderPicker final : public FolderPicker
{
public:
    QString SHBrowseForFolderA(QWidget* owner, const QString& title, const QString& start) override;

    QStringList answers;
    QStringList titles;
    QStringList starts;
};

/// A registry over a list of "key\name" and value.
class TableRegistry final : public Registry
{
public:
    std::optional<QString> value(const QString& key, const QString& name) const override;

    QList<std::pair<QString, QString>> entries;
};

/// Keeps nothing awake, and remembers what it was asked for and what is still held.
class RecordingInhibitor final : public Inhibitor
{
public:
    std::shared_ptr<void> hold(const QString& why) override;

    QStringList asked;
    std::shared_ptr<QStringList> held = std::make_shared<QStringList>();
};

/// Everything outside a window, faked, and every shared value put back at the end. The INI service is the
/// caller's choice, since files are real in tests: pass the platform's own where settings are read or
/// written.
struct FakeDesk
{
    explicit FakeDesk(IniService* ini = nullptr);
    ~FakeDesk();

    GlobalsScope globals;
    ScriptedMessages messages;
    ScriptedDialogs dialogs;
    RecordingWindows windows;
    RecordingShell shell;
    ScriptedFolderPicker folders;
    TableRegistry registry;
    RecordingInhibitor inhibitor;
    Components components;
    Services services{messages, dialogs, windows, components};

private:
    Platform m_before;
};

} // namespace zib
