#include "faces/Words.h"

#include "faces/Items.h"
#include "faces/Look.h"
#include "faces/Properties.h"
#include "faces/Strokes.h"

#include <QAction>
#include <QDialog>
#include <QHash>
#include <QLayout>
#include <QMenu>
#include <QScrollArea>
#include <QShortcut>
#include <QTimer>
#include <QWidget>

namespace zib {

namespace {

/// Whether a control is the program's and not a part of one of the toolkit's.
bool isNamed(const QObject* object)
{
    const QString name = object->objectName();
    const bool isInTabBar = object->parent() && object->parent()->inherits("QTabBar");
    return !name.isEmpty() && !name.startsWith("qt_") && !name.startsWith("_q_") && !isInTabBar;
}

/// What an object is called that has no name; nothing for what the toolkit made for itself.
QString calling(const QObject* object)
{
    if (const auto* shortcut = qobject_cast<const QShortcut*>(object))
        return "QShortcut(" + shortcut->key().toString(QKeySequence::PortableText) + ")";
    const QString name = object->metaObject()->className();
    return name.startsWith("zib::") ? name : QString();
}

QString tabOrder(const QWidget* window)
{
    QStringList names;
    for (const QWidget* next = window->nextInFocusChain(); next && next != window;
         next = next->nextInFocusChain())
        if (next->window() == window && isNamed(next) && next->focusPolicy() & Qt::TabFocus)
            names << next->objectName();
    return names.join(' ');
}

/// Who lies above whom, where no layout parts them.
QString heap(const QWidget* widget)
{
    if (widget->layout())
        return {};
    QStringList names;
    for (const QObject* child : widget->children())
        if (child->isWidgetType() && isNamed(child) && !static_cast<const QWidget*>(child)->isWindow())
            names << child->objectName();
    return names.size() > 1 ? names.join(' ') : QString();
}

} // namespace

void Words::say(const QString& what, const QString& value)
{
    if (!value.isEmpty())
        m_lines.insert(what, value);
}

void Words::sayWindow(QWidget* window)
{
    const QString name = window->objectName();
    say(name + ".window", windowWords(window));
    say(name + ".tab order", tabOrder(window));
    if (const QWidget* focus = window->focusWidget())
        say(name + ".focus",
            isNamed(focus) ? focus->objectName() : QString(focus->metaObject()->className()));
    sayObject(window, name);
}

void Words::sayObject(QObject* object, const QString& name)
{
    for (const auto& [property, value] : propertyWords(object))
        say(name + '.' + property, value);
    if (auto* widget = qobject_cast<QWidget*>(object)) {
        say(name + ".heap", heap(widget));
        for (const auto& [property, value] : itemWords(widget))
            say(name + '.' + property, value);
        if (QString(widget->metaObject()->className()).startsWith("zib::") && !widget->isHidden())
            sayStrokes(name, widget);
    }
    sayChildren(object, name);
}

void Words::sayChildren(QObject* object, const QString& name)
{
    QHash<QString, int> unnamed;
    for (QObject* child : object->children()) {
        const auto* widget = qobject_cast<QWidget*>(child);
        if (widget && widget->isWindow() && !qobject_cast<const QMenu*>(child))
            continue;
        if (isNamed(child)) {
            sayObject(child, child->objectName());
        } else if (const QString kind = calling(child); !kind.isEmpty()) {
            const int number = ++unnamed[kind];
            sayObject(child, name + '/' + kind + (number > 1 ? QString(" %1").arg(number) : QString()));
        } else {
            sayChildren(child, name); // A part of the toolkit's may hold what is the program's.
        }
    }
}

void Words::sayStrokes(const QString& name, QWidget* widget)
{
    const StyleRest rest;
    int number = 0;
    for (const QString& stroke : strokesOf(widget))
        say(QString("%1.stroke %2").arg(name).arg(++number, 3, 10, QChar('0')), stroke);
}

void Words::replace(const QString& text, const QString& with)
{
    for (QString& line : m_lines)
        line.replace(text, with);
}

void Words::leaveOut(const QString& what)
{
    m_lines.removeIf([&what](const auto& line) { return line.key().startsWith(what); });
}

} // namespace zib
