#pragma once

#include "app/frmMain.h"
#include "common/GenralMacro.h"
#include "fakes/FakeAudioInformation.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"

#include <QAction>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

/// Takes every file for a sound of one second.
class AnySound : public AudioInformation
{
public:
    bool isAudioFile(const QString&) override { return true; }
    bool open(const QString&) override { return true; }
    QString title() const override { return {}; }
    QString tagTitle(TagKind) const override { return {}; }
    QString artist() const override { return {}; }
    qint32 durationMs() const override { return 1000; }
    int sampleRate() const override { return 44100; }
    int channels() const override { return 2; }
    int bitsPerSample() const override { return 16; }
    bool isPcm() const override { return true; }
};

/// Drops files on a window, as a file manager does.
inline void drop(QWidget& window, const QStringList& paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls << QUrl::fromLocalFile(path);
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted())
        return;
    QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &event);
}

/// A main window with every outside thing faked, in an application folder of its own with real files.
struct Desk
{
    /// @param service what the program takes for its INI files, if not the real one.
    explicit Desk(zib::IniService* service = nullptr) : desk(service ? service : &ini)
    {
        zib::setApplicationFolder(folder.path());
        desk.components.makeInformation = [this] {
            return std::make_unique<zib::FakeAudioInformation>(shelf);
        };
        set("View", "Show Splash Screen", "False");
        set("View", "Show Tips Of Day", "False");
    }

    /// The window, made at the first call, so that a test can write settings before.
    frmMain& window()
    {
        if (!m_window) {
            m_window = std::make_unique<frmMain>(desk.services);
            m_window->show();
        }
        return *m_window;
    }
    void set(const char* section, const char* key, const char* value)
    {
        ini.WritePrivateProfileStringA(section, QByteArray(key), QByteArray(value),
                                       folder.filePath("settings.ini"));
    }
    /// A file of @p bytes bytes that the fake component takes for a sound of @p ms milliseconds.
    QString sound(const QString& name, qint32 ms = 60000, int bytes = 1000, const QString& title = {},
                  const QString& artist = {})
    {
        const QString path = file(name, bytes);
        zib::FakeSound sound;
        sound.durationMs = ms;
        sound.title = title;
        sound.artist = artist;
        shelf.sounds.insert(path, sound);
        return path;
    }
    QString file(const QString& name, int bytes = 10)
    {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(QByteArray(bytes, 'x'));
        return file.fileName();
    }
    /// Adds files through the Add Files dialog, which answers with @p paths, all of the application folder.
    void add(const QStringList& paths)
    {
        QStringList parts{paths.size() == 1 ? paths.first() : folder.path()};
        for (const QString& path : paths)
            if (paths.size() > 1)
                parts << path.section('/', -1);
        desk.dialogs.files << parts.join(QChar(QChar::Null));
        trigger("mnuFileSub_1");
    }
    /// Three tracks of a minute each.
    void addThree() { add({sound("a.wav"), sound("b.wav"), sound("c.wav")}); }

    template <typename T>
    T* control(const QString& name)
    {
        T* found = window().findChild<T*>(name);
        if (!found)
            qFatal("There is no control %s", qPrintable(name));
        return found;
    }
    QAction* action(const QString& name) { return control<QAction>(name); }
    /// Makes the window the active one, with the list under the keys.
    bool focusList()
    {
        window().activateWindow();
        list()->setFocus();
        return QTest::qWaitForWindowActive(&window(), 30000);
    }
    void trigger(const QString& name) { action(name)->trigger(); }
    QTableView* list() { return control<QTableView>("ListView1"); }
    QString cell(int row, int column) { return list()->model()->index(row, column).data().toString(); }
    int rows() { return list()->model()->rowCount(); }
    QStringList column(int number)
    {
        QStringList texts;
        for (int row = 0; row < rows(); ++row)
            texts << cell(row, number);
        return texts;
    }
    QString panel(int number)
    {
        return control<QWidget>(QString("StatusBar1_%1").arg(number))->property("text").toString();
    }
    bool ticked(int row)
    {
        return list()->model()->index(row, 0).data(Qt::CheckStateRole).toInt() == Qt::Checked;
    }
    void tick(int row)
    {
        list()->model()->setData(list()->model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
    }

    QTemporaryDir folder;
    zib::IniFile ini;
    zib::FakeDesk desk;
    zib::FakeAudioShelf shelf;

private:
    std::unique_ptr<frmMain> m_window;
};
