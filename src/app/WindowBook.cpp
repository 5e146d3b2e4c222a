#include "app/WindowBook.h"

#include "app/frmAbout.h"
#include "app/frmMain.h"
#include "app/frmSplash.h"
#include "app/frmTip.h"
#include "burn/frmPrepare.h"
#include "burn/frmWrite.h"
#include "common/Messages.h"
#include "label/frmCalibrate.h"
#include "components/DVDWriterPro.h"
#include "label/frmLabelBack.h"
#include "label/frmLabelDesigner.h"
#include "label/frmLabelList.h"
#include "label/frmLabelTitle.h"
#include "label/frmPreview.h"
#include "tools/frmMP3ToWAV.h"
#include "tools/frmPlay.h"
#include "tools/frmPlayer.h"
#include "tools/frmRip.h"
#include "settings/frmOptions.h"

namespace zib {

WindowBook::WindowBook(Messages& messages, CommonDialogs& dialogs, const Components& components)
    : m_services{messages, dialogs, *this, components},
      m_closedWrites(messages, [this]() -> QWidget* { return m_main; })
{
}

void WindowBook::setMainWindow(frmMain* window)
{
    m_main = window;
}

void WindowBook::showSplash(QWidget* owner)
{
    frmSplash(owner).exec();
}

void WindowBook::showTip(QWidget* owner)
{
    frmTip(owner).exec();
}

void WindowBook::showAbout(QWidget* owner)
{
    frmAbout(m_services.messages, owner).exec();
}

void WindowBook::showOptions(QWidget* owner)
{
    frmOptions window(m_services, owner);
    if (m_main)
        QObject::connect(&window.saver(), &SettingsSaver::applied, m_main, &frmMain::RefreshMain);
    QObject::connect(&window.saver(), &SettingsSaver::refused, &window.saver(),
                     [this](const QString& text) { m_services.messages.critical(nullptr, text); });
    window.exec();
}

QStringList WindowBook::showPrepare(QWidget* owner, const QList<CompilationRow>& rows)
{
    frmPrepare window(m_services, rows, owner);
    m_prepare = &window;
    window.exec();
    return window.trackFiles();
}

void WindowBook::showWrite(QWidget* owner, const QStringList& trackFiles, const DiscNames& names)
{
    frmWrite window(m_services, trackFiles, names, owner);
    m_write = &window;
    window.exec();
}

bool WindowBook::isWriting() const
{
    return !m_closedWrites.isEmpty() || (m_write && m_write->isWriting());
}

void WindowBook::abandonPreparing()
{
    if (m_prepare)
        m_prepare->abandon();
}

void WindowBook::keepWriting(std::unique_ptr<DVDWriterPro> writer)
{
    m_closedWrites.keep(std::move(writer));
}

void WindowBook::showRip(QWidget* owner)
{
    frmRip ripper(m_services, owner);
    ripper.exec();
}

void WindowBook::showMP3ToWAV(QWidget* owner)
{
    frmMP3ToWAV converter(m_services, owner);
    converter.exec();
}

void WindowBook::showPlayer(QWidget* owner)
{
    frmPlayer player(m_services, owner);
    player.exec();
}

void WindowBook::showPlay(QWidget* owner)
{
    frmPlay player(m_services, owner);
    player.exec();
}

void WindowBook::showLabelDesigner(QWidget* owner, const QList<CompilationRow>& rows)
{
    frmLabelDesigner designer(m_services, rows, owner);
    designer.exec();
}

Outcome<> WindowBook::showPreview(QWidget* owner)
{
    const auto* designer = qobject_cast<frmLabelDesigner*>(owner);
    Q_ASSERT(designer);
    frmPreview preview(m_services, designer->labelArea(), owner, designer->image());
    QObject::connect(&preview, &frmPreview::Sent, designer, &frmLabelDesigner::showSent);
    if (preview.loaded())
        preview.exec();
    return preview.loaded();
}

Outcome<> WindowBook::showCalibrate(QWidget* owner)
{
    frmCalibrate dialog(m_services, owner);
    if (dialog.loaded())
        dialog.exec();
    return dialog.loaded();
}

void WindowBook::showLabelList(QWidget* owner)
{
    frmLabelList dialog(m_services, owner);
    QObject::connect(&dialog, &frmLabelList::Applied, qobject_cast<frmLabelDesigner*>(owner),
                     &frmLabelDesigner::RedrawTable);
    dialog.exec();
}

void WindowBook::showLabelBack(QWidget* owner)
{
    frmLabelBack dialog(m_services, owner);
    QObject::connect(&dialog, &frmLabelBack::Applied, qobject_cast<frmLabelDesigner*>(owner),
                     &frmLabelDesigner::RedrawBackground);
    dialog.exec();
}

void WindowBook::showLabelTitle(QWidget* owner)
{
    frmLabelTitle dialog(m_services, owner);
    QObject::connect(&dialog, &frmLabelTitle::Applied, qobject_cast<frmLabelDesigner*>(owner),
                     &frmLabelDesigner::RedrawTitle);
    dialog.exec();
}

} // namespace zib
