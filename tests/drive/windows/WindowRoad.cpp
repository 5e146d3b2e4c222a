#include "WindowRoad.h"

#include "app/frmMain.h"
#include "common/GenralMacro.h"
#include "drive/burn/BurnBench.h"
#include "engines/audio/makers.h"
#include "engines/rip/makers.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTreeWidget>

namespace zib {

namespace {

const QByteArray kSettings = "[View]\nShow Splash Screen=False\nShow Tips Of Day=False\n"
                             "[Misc]\nExplore After Ripping=False\n";

template <typename Control>
Control* control(QWidget* window, const char* name)
{
    return window->findChild<Control*>(name);
}

/// Chooses the entry that begins so. @returns whether it is chosen already.
bool choose(QComboBox* box, const QString& beginning)
{
    if (box->currentText().startsWith(beginning))
        return true;
    for (int i = 0; i < box->count(); ++i)
        if (box->itemText(i).startsWith(beginning))
            box->setCurrentIndex(i);
    return false;
}

} // namespace

WindowRoad::WindowRoad()
    : m_book(desk.messages, desk.dialogs, desk.components), m_director(m_folder.filePath("pictures"))
{
    const QString program = path("program");
    QDir().mkpath(program);
    put(program + "/settings.ini", kSettings);
    setApplicationFolder(program);
    desk.components.makeInformation = makeAudioInformation;
    desk.components.makeFile = makeAudioFile;
    desk.components.makeWriter = [program] {
        return std::make_unique<DiscWriter>([] { return findDrives(testPatience()); },
                                            std::make_shared<ImageRecorder>(program + "/Images"));
    };
    desk.components.makeRipper = [program] { return makeRipper(program + "/Images", makeAudioFile); };
    m_main = std::make_unique<frmMain>(m_book.services());
    m_book.setMainWindow(m_main.get());
    m_main->show();
    m_director.setScene("frmOptions", [this](QWidget* window, int) { visitOptions(window); });
    m_director.setScene("frmWrite", [this](QWidget* window, int) { visitWriting(window); });
    m_director.setScene("frmRip", [this](QWidget* window, int) { visitRipper(window); });
    m_director.setScene("frmPrepare", [](QWidget*, int) {});
}

WindowRoad::~WindowRoad() = default;

void WindowRoad::trigger(const char* action)
{
    m_main->findChild<QAction*>(action)->trigger();
}

QList<WindowRoad::Row> WindowRoad::list(const QStringList& files)
{
    trigger("mnuTracksSub_8"); // Clear All Tracks
    QStringList answer{QFileInfo(files.first()).absolutePath()};
    for (const QString& file : files)
        answer << QFileInfo(file).fileName();
    desk.dialogs.files = {answer.join(QChar::Null)};
    trigger("Toolbar1_add");
    const QAbstractItemModel* model = control<QTableView>(m_main.get(), "ListView1")->model();
    QList<Row> rows;
    for (int row = 0; row < model->rowCount(); ++row) {
        const auto cell = [&](int column) { return model->index(row, column).data().toString(); };
        rows << Row{{cell(2), cell(3)}, cell(4), cell(6) + cell(1)};
    }
    return rows;
}

void WindowRoad::compareAfterWriting(bool on)
{
    m_compares = on;
    trigger("Toolbar1_options");
}

void WindowRoad::visitOptions(QWidget* window)
{
    auto* pages = control<QTabWidget>(window, "tbsOptions");
    pages->setCurrentIndex(pages->count() - 1); // Misc
    auto* box = control<QCheckBox>(window, "chkVerify");
    if (box->isChecked() != m_compares)
        box->click();
    demo::press(window, "cmdOK");
}

void WindowRoad::saveProject(const QString& name)
{
    desk.dialogs.files = {path(name)};
    trigger("mnuFileSub_7"); // Save Project As
}

WindowRoad::Written WindowRoad::write(Recorder target,
                                      const std::function<void(QWidget*, const QString&)>& look)
{
    m_recorder = target;
    m_step = Step::Waiting;
    m_written = {};
    m_look = look;
    m_known = sheets();
    desk.messages.shown.clear();
    trigger("Toolbar1_write");
    for (const QString& sheet : sheets())
        if (!m_known.contains(sheet))
            m_image = QFileInfo(sheet).completeBaseName();
    m_written.box = desk.messages.shown.isEmpty() ? QString() : desk.messages.shown.last();
    return m_written;
}

void WindowRoad::visitWriting(QWidget* window)
{
    const QString status = control<QLabel>(window, "lblStatus")->text();
    if (m_written.statuses.isEmpty() || m_written.statuses.last() != status)
        m_written.statuses << status;
    if (m_step == Step::Started && m_look)
        m_look(window, status);
    if (m_step == Step::Starting || !control<QPushButton>(window, "cmdWrite")->isEnabled())
        return;
    if (m_step == Step::Started) {
        const auto* note = control<QLabel>(window, "lblNote");
        m_written.status = status;
        m_written.note = note->isHidden() ? QString() : note->text();
        demo::press(window, "cmdExit");
        return;
    }
    auto* drives = control<QComboBox>(window, "cboDevices");
    if (drives->count() < 2 ||
        !choose(drives, m_recorder == Recorder::Drive ? EmulatedRecorder::device() : "Images"))
        return;
    m_step = Step::Starting;
    demo::press(window, "cmdWrite");
    m_step = Step::Started;
}

QStringList WindowRoad::rip(Recorder from, int tracks)
{
    m_recorder = from;
    m_step = Step::Waiting;
    m_tracks = tracks;
    m_target = path(QString("copies%1").arg(QDir(m_folder.path()).entryList({"copies*"}).size()));
    QDir().mkpath(m_target);
    desk.messages.shown.clear();
    trigger("Toolbar1_ripper");
    QStringList files;
    for (int track = 1; track <= tracks; ++track)
        files << QString("%1/Track%2.wav").arg(m_target).arg(track);
    return desk.messages.shown == QStringList("i: Audio Ripping Completed.") ? files : QStringList();
}

void WindowRoad::visitRipper(QWidget* window)
{
    if (m_step == Step::Started && !desk.messages.shown.isEmpty())
        demo::press(window, "cmdClose");
    auto* rows = control<QTreeWidget>(window, "lvwTracks");
    const QString name = m_recorder == Recorder::Drive ? EmulatedRecorder::device() : m_image;
    if (m_step != Step::Waiting || !choose(control<QComboBox>(window, "cboDevices"), name + ':') ||
        rows->topLevelItemCount() != m_tracks)
        return;
    m_step = Step::Starting;
    control<QLineEdit>(window, "txtSaveTo")->setText(m_target);
    for (int row = 0; row < m_tracks; ++row)
        rows->topLevelItem(row)->setCheckState(0, Qt::Checked);
    demo::press(window, "cmdRip");
    m_step = Step::Started;
}

QString WindowRoad::prepared(const QString& source) const
{
    const QString made = path("program/Temp/" + QFileInfo(source).completeBaseName() + ".wav");
    return QFile::exists(made) ? made : source;
}

QStringList WindowRoad::sheets() const
{
    const QDir images(path("program/Images"));
    QStringList sheets;
    for (const QString& name : images.entryList({"*.cue"}, QDir::Files, QDir::Time | QDir::Reversed))
        sheets << images.filePath(name);
    return sheets;
}

} // namespace zib
