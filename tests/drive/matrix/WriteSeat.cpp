#include "WriteSeat.h"

#include "app/frmMain.h"
#include "common/GenralMacro.h"
#include "engines/burn/DiscWriter.h"
#include "engines/burn/drive/DriveRecorder.h"
#include "engines/burn/image/ImageRecorder.h"
#include "engines/burn/makers.h"
#include "fakes/FakeAudioInformation.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLabel>
#include <QProgressBar>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace zib {

namespace {

constexpr int kLookMs = 20;

/// Short enough for a test, long enough for a loaded machine.
DrivePatience patience()
{
    return {
        .pollMs = 20, .readyMs = 3000, .callMs = 8000, .writeMs = 3000, .closeMs = 5000, .cancelMs = 12'000};
}

void tell(const QString& line)
{
    const QByteArray text = QString(line).replace('\n', ' ').toUtf8() + '\n';
    std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout);
    std::fflush(stdout);
}

} // namespace

WriteSeat::WriteSeat(const QString& folder)
    : m_end(m_book, {drivesInUseAnswer, unlockDrivesInUse}), m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    setApplicationFolder(folder + "/program");
    for (const QString& name : QDir(folder).entryList({"track*.wav"}, QDir::Files, QDir::Name))
        m_tracks << folder + '/' + name;
    m_desk.components.makeInformation = [] {
        static FakeAudioShelf shelf;
        return std::make_unique<FakeAudioInformation>(shelf);
    };
    m_desk.components.makeWriter = [folder] {
        return std::make_unique<DiscWriter>([] { return findDrives(patience()); },
                                            std::make_shared<ImageRecorder>(folder + "/program/Images"));
    };
    m_desk.messages.onShow = [](const QString& line) { tell("box " + line); };
    m_main = std::make_unique<frmMain>(m_book.services());
    m_book.setMainWindow(m_main.get());
    m_main->show();
    connect(&m_input, &QSocketNotifier::activated, this, &WriteSeat::hear);
    connect(&m_looks, &QTimer::timeout, this, &WriteSeat::look);
    m_looks.start(kLookMs);
    m_sinceChange.start();
    QTimer::singleShot(0, this, &WriteSeat::open);
}

WriteSeat::~WriteSeat() = default;

int WriteSeat::run()
{
    connect(&m_quit, &QuitSignals::raised, &m_end, &ProgramEnd::hurry);
    const int result = QApplication::exec();
    m_end.leave(result);
    return result;
}

void WriteSeat::hear()
{
    char bytes[256];
    const auto got = ::read(STDIN_FILENO, bytes, sizeof bytes);
    if (got <= 0) {
        m_input.setEnabled(false);
        QApplication::quit();
        return;
    }
    m_heard.append(bytes, got);
    for (qsizetype end = m_heard.indexOf('\n'); end >= 0; end = m_heard.indexOf('\n')) {
        const QByteArray word = m_heard.left(end);
        m_heard.remove(0, end + 1);
        // Out of the notifier: what is pressed may run an event loop of its own.
        QTimer::singleShot(0, this, [this, word] { obey(word); });
    }
}

void WriteSeat::obey(const QByteArray& word)
{
    if (word == "write")
        press("cmdWrite");
    else if (word == "cancel")
        press("cmdCancel");
    else if (word == "close" && window() != nullptr)
        window()->close();
    else if (word == "reopen")
        open();
    else if (word == "reset") {
        m_pulse.reset();
        m_silence = 0;
    } else if (word == "quit") {
        for (QWidget* top : QApplication::topLevelWidgets())
            top->close();
        QApplication::quit();
    }
}

void WriteSeat::open()
{
    m_open = true;
    m_book.showWrite(m_main.get(), m_tracks, {});
    m_open = false;
}

QDialog* WriteSeat::window() const
{
    for (QWidget* top : QApplication::topLevelWidgets())
        if (top->objectName() == "frmWrite" && top->isVisible())
            return qobject_cast<QDialog*>(top);
    return nullptr;
}

void WriteSeat::press(const char* control)
{
    auto* button = window() != nullptr ? window()->findChild<QAbstractButton*>(control) : nullptr;
    if (button != nullptr)
        button->click();
}

/// The state in a word, then all that changes on the screen.
QString WriteSeat::screen() const
{
    const QDialog* shown = window();
    if (shown == nullptr)
        return "closed";
    const bool free = shown->findChild<QAbstractButton*>("cmdWrite")->isEnabled() &&
                      shown->findChild<QComboBox*>("cboDevices")->count() > 0;
    return QString("%1 %2 | %3 | %4 | %5")
        .arg(free ? "free" : "busy", shown->findChild<QLabel*>("lblStatus")->text(),
             shown->findChild<QLabel*>("lblPer")->text(),
             shown->findChild<QComboBox*>("cboDevices")->currentText(),
             shown->findChild<QAbstractButton*>("cmdCancel")->isEnabled() ? "cancel" : "no cancel");
}

void WriteSeat::look()
{
    const QString now = screen();
    if (m_seen.startsWith("busy") && m_sinceChange.elapsed() > m_silence) {
        m_silence = m_sinceChange.elapsed();
        m_silentText = m_seen.section(" | ", 0, 0);
    }
    if (now != m_seen) {
        m_seen = now;
        m_sinceChange.restart();
        tell("screen " + now);
        tellFigures();
    }
}

void WriteSeat::tellFigures()
{
    const QString figures = QString("figures %1 %2 %3 %4")
                                .arg(m_pulse.longestFreezeMs())
                                .arg(m_pulse.longestStarvationMs())
                                .arg(m_silence)
                                .arg(m_silentText);
    if (figures != m_figures)
        tell(figures);
    m_figures = figures;
}

} // namespace zib
