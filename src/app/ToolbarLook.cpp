#include "app/ToolbarLook.h"

#include <QAction>
#include <QEvent>
#include <QToolBar>
#include <QToolButton>

namespace zib {

ToolbarLook::ToolbarLook(QToolBar* toolbar, QObject* parent) : QObject(parent), m_toolbar(toolbar)
{
    for (QAction* action : toolbar->actions()) {
        m_captions << action->text();
        m_tips << action->toolTip();
        QWidget* button = toolbar->widgetForAction(action);
        button->setAccessibleName(action->text());
        button->installEventFilter(this);
    }
}

void ToolbarLook::ShowToolbarText(bool on)
{
    const QList<QAction*> actions = m_toolbar->actions();
    for (qsizetype i = 0; i < actions.size(); ++i)
        actions.at(i)->setText(on ? m_captions.at(i) : QString());
    m_toolbar->setToolButtonStyle(on ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonIconOnly);
    applyTips();
}

void ToolbarLook::ShowToolbarTips(bool on)
{
    m_showTips = on;
    applyTips();
}

/// An action without a tool tip lends its caption as one, so the buttons are told apart from their actions.
void ToolbarLook::applyTips()
{
    const QList<QAction*> actions = m_toolbar->actions();
    for (qsizetype i = 0; i < actions.size(); ++i) {
        const QString tip = m_showTips ? m_tips.at(i) : QString();
        actions.at(i)->setToolTip(tip);
        m_toolbar->widgetForAction(actions.at(i))->setToolTip(tip);
    }
}

void ToolbarLook::setFlat(bool on)
{
    for (QAction* action : m_toolbar->actions())
        if (auto* button = qobject_cast<QToolButton*>(m_toolbar->widgetForAction(action)))
            button->setAutoRaise(on);
}

bool ToolbarLook::eventFilter(QObject* watched, QEvent* event)
{
    return (event->type() == QEvent::ToolTip && !m_showTips) || QObject::eventFilter(watched, event);
}

} // namespace zib
