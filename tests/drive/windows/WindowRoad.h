#pragma once

#include "Director.h"
#include "EmulatedRecorder.h"
#include "app/WindowBook.h"
#include "common/DiscNames.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QTemporaryDir>

#include <functional>
#include <memory>

class frmMain;

namespace zib {

/// The program's own windows over its own engines, with an emulated recorder and the recorder of images, in
/// the hands of a user who goes by the names of the controls. Boxes answer themselves (desk.messages.shown).
class WindowRoad
{
public:
    /// Where a disc goes to, and comes from.
    enum class Recorder
    {
        Drive,
        Image
    };
    /// What a write ended with.
    struct Written
    {
        QString box;          ///< The last one: "i: Writing is completed.", or what it was instead.
        QString status;       ///< What the window said in the end.
        QString note;         ///< And beside it; empty when hidden.
        QStringList statuses; ///< All that it said, each as often as it changed.
    };
    /// One row of the list.
    struct Row
    {
        TrackNames names;
        QString time;
        QString path;
    };

    WindowRoad();
    ~WindowRoad();

    /// Makes the list hold these files and no others. @returns what it shows of them.
    QList<Row> list(const QStringList& files);
    /// Ticks or unticks "Compare Disc With Files After Writing" in the options.
    void compareAfterWriting(bool on);
    /// Saves the list as a project of this name.
    void saveProject(const QString& name);
    /// Prepares and writes the list. @param look called over and over with the writing window and what it
    /// says, from the start to the end.
    Written write(Recorder recorder,
                  const std::function<void(QWidget* window, const QString& status)>& look = {});
    /// Copies every track of the disc that was written last, or lies in the drive. @returns the files.
    QStringList rip(Recorder recorder, int tracks);
    QString path(const QString& name) const { return m_folder.filePath(name); }
    /// What a source was prepared to, or the source itself where it needed no preparation.
    QString prepared(const QString& source) const;
    /// Sheets of all images, the latest last.
    QStringList sheets() const;

    EmulatedRecorder recorder;

private:
    void trigger(const char* action);
    void visitOptions(QWidget* window);
    void visitWriting(QWidget* window);
    void visitRipper(QWidget* window);

    QTemporaryDir m_folder;
    IniFile m_ini;

public:
    FakeDesk desk{&m_ini};

private:
    enum class Step
    {
        Waiting,
        Starting,
        Started
    };

    WindowBook m_book;
    std::unique_ptr<frmMain> m_main;
    demo::Director m_director;
    Step m_step = Step::Waiting;
    Recorder m_recorder = Recorder::Drive;
    bool m_compares = false;
    int m_tracks = 0;
    QString m_target;
    QStringList m_known;
    QString m_image;
    Written m_written;
    std::function<void(QWidget* window, const QString& status)> m_look;
};

} // namespace zib
