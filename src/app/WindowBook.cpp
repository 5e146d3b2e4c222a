#include "app/WindowBook.h"

#include "app/frmMain.h"

namespace zib {

WindowBook::WindowBook(Messages& messages, CommonDialogs& dialogs, const Components& components)
    : m_services{messages, dialogs, *this, components}
{
}

void WindowBook::setMainWindow(frmMain* window)
{
    m_main = window;
}

void WindowBook::showSplash(QWidget*) {}

void WindowBook::showTip(QWidget*) {}

void WindowBook::showAbout(QWidget*) {}

void WindowBook::showOptions(QWidget*) {}

QStringList WindowBook::showPrepare(QWidget*, const QList<CompilationRow>&)
{
    return {};
}

void WindowBook::showWrite(QWidget*, const QStringList&) {}

void WindowBook::showRip(QWidget*) {}

void WindowBook::showMP3ToWAV(QWidget*) {}

void WindowBook::showPlayer(QWidget*) {}

void WindowBook::showPlay(QWidget*) {}

void WindowBook::showLabelDesigner(QWidget*, const QList<CompilationRow>&) {}

Outcome<> WindowBook::showPreview(QWidget*)
{
    return {};
}

void WindowBook::showLabelList(QWidget*) {}

void WindowBook::showLabelBack(QWidget*) {}

void WindowBook::showLabelTitle(QWidget*) {}

} // namespace zib
