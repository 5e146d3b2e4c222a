#pragma once

#include "Pulse.h"
#include "app/ProgramEnd.h"
#include "app/WindowBook.h"
#include "fakes/FakeSeams.h"
#include "platform/IniFile.h"
#include "platform/QuitSignals.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>

class frmMain;
class QDialog;

namespace zib {

/// The program's own windows over the real writer, in a process of its own that another one watches: what the
/// user sees is told line by line on standard output, what the user does comes on standard input.
///
/// Told: "screen STATE" (free, busy or closed; then the texts), "box TEXT", "figures FREEZE STARVATION
/// SILENCE" in milliseconds. Heard: "write", "cancel", "close", "reopen", "reset", "quit".
class WriteSeat final : public QObject
{
    Q_OBJECT
public:
    /// @param folder holds "track*.wav" and "program/settings.ini".
    explicit WriteSeat(const QString& folder);
    ~WriteSeat() override;

    /// Runs until the watching process or a signal ends it, as the program itself does.
    int run();

private:
    void hear();
    void obey(const QByteArray& word);
    void open();
    void look();
    void tellFigures();
    [[nodiscard]] QDialog* window() const;
    [[nodiscard]] QString screen() const;
    void press(const char* control);

    QuitSignals m_quit; ///< First: threads that are made later take its mask over.
    IniFile m_ini;
    FakeDesk m_desk{&m_ini};
    WindowBook m_book{m_desk.messages, m_desk.dialogs, m_desk.components};
    ProgramEnd m_end;
    std::unique_ptr<frmMain> m_main;
    QStringList m_tracks;
    Pulse m_pulse;
    QSocketNotifier m_input;
    QByteArray m_heard;
    QTimer m_looks;
    QString m_seen;
    QElapsedTimer m_sinceChange;
    qint64 m_silence = 0;
    QString m_silentText;
    QString m_figures;
    bool m_open = false;
};

} // namespace zib
