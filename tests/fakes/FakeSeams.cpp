#include "fakes/FakeSeams.h"

#include "components/DVDWriterPro.h"

namespace zib {

void ScriptedMessages::remember(QWidget* owner, const QString& line)
{
    shown << line;
    owners << owner;
    if (onShow)
        onShow(line);
}

void ScriptedMessages::information(QWidget* owner, const QString& text, const QString& remark)
{
    remember(owner, "i: " + text + (remark.isEmpty() ? QString() : '\n' + remark));
}

void ScriptedMessages::critical(QWidget* owner, const QString& text, const QString& title)
{
    remember(owner, (title == kApplicationTitle ? QString("c: ") : "c[" + title + "]: ") + text);
}

void ScriptedMessages::plain(QWidget* owner, const QString& text)
{
    remember(owner, "p: " + text);
}

Messages::Answer ScriptedMessages::askYesNoCancel(QWidget* owner, const QString& text, Answer preset)
{
    presets << preset;
    remember(owner, "q: " + text);
    return answer;
}

Outcome<QString> ScriptedDialogs::openFile(QWidget*, const FileDialogRequest& request)
{
    opened << request;
    if (files.isEmpty())
        return noFile;
    return files.takeFirst();
}

Outcome<QString> ScriptedDialogs::saveFile(QWidget*, const FileDialogRequest& request)
{
    saved << request;
    if (files.isEmpty())
        return noFile;
    return files.takeFirst();
}

Outcome<QColor> ScriptedDialogs::chooseColor(QWidget*, const QString& title, const QColor& current)
{
    titles << title;
    presetColors << current;
    if (colors.isEmpty())
        return Failure{Failure::Kind::Cancelled};
    return colors.takeFirst();
}

Outcome<QFont> ScriptedDialogs::chooseFont(QWidget*, const QString& title, const QFont& current)
{
    titles << title;
    presetFonts << current;
    if (fonts.isEmpty())
        return Failure{Failure::Kind::Cancelled};
    return fonts.takeFirst();
}

void RecordingWindows::note(const char* name)
{
    shown << name;
    if (onShow)
        onShow(name);
}

QStringList RecordingWindows::showPrepare(QWidget*, const QList<CompilationRow>& given)
{
    rows = given;
    note("prepare");
    return preparedFiles;
}

void RecordingWindows::showWrite(QWidget*, const QStringList& given, const DiscNames& names)
{
    trackFiles = given;
    discNames = names;
    note("write");
}

void RecordingWindows::keepWriting(std::unique_ptr<DVDWriterPro> writer)
{
    kept.push_back(std::move(writer));
}

void RecordingWindows::showLabelDesigner(QWidget*, const QList<CompilationRow>& given)
{
    rows = given;
    note("label");
}

Outcome<> RecordingWindows::showPreview(QWidget*)
{
    note("preview");
    return previewAnswer;
}

Outcome<> RecordingWindows::showCalibrate(QWidget*)
{
    note("calibrate");
    return calibrateAnswer;
}

bool RecordingShell::ShellExecuteA(const QString& verb, const QString& file, const QString& parameters,
                                   const QString&)
{
    calls << QString("%1 %2 %3").arg(verb, file, parameters).trimmed();
    return true;
}

QString ScriptedFolderPicker::SHBrowseForFolderA(QWidget*, const QString& title, const QString& start)
{
    titles << title;
    starts << start;
    return answers.isEmpty() ? QString() : answers.takeFirst();
}

std::optional<QString> TableRegistry::value(const QString& key, const QString& name) const
{
    for (const auto& [path, text] : entries)
        if (path == key + "\\" + name)
            return text;
    return std::nullopt;
}

std::shared_ptr<void> RecordingInhibitor::hold(const QString& why)
{
    asked << why;
    *held << why;
    return {held.get(), [all = held, why](QStringList*) { all->removeOne(why); }};
}

FakeDesk::FakeDesk(IniService* ini) : m_before(platform())
{
    setPlatform({ini, &shell, &folders, &registry, &messages, &inhibitor});
}

FakeDesk::~FakeDesk()
{
    setPlatform(m_before);
}

} // namespace zib
