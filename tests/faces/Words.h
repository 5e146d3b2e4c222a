#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

class QAbstractItemView;
class QObject;
class QWidget;

namespace zib {

/// What a window shows and how it answers, in words: one line for each property of each control that differs
/// from a plain control's, by the control's name. Left out is what the machine, its fonts or the toolkit's
/// version decide: where a layout puts things, and what the toolkit's own parts are made of.
class Words
{
public:
    /// Says something; nothing when it is empty.
    void say(const QString& what, const QString& value);
    /// A window with all that is in it, but for windows of its own.
    void sayWindow(QWidget* window);
    /// What a widget draws, stroke by stroke, in its own coordinates; the toolkit's style draws nothing.
    void sayStrokes(const QString& name, QWidget* widget);
    /// The same texts in place of others that no two runs share, such as folders.
    void replace(const QString& text, const QString& with);
    /// Does not tell what no two runs share.  @param what begins the line.
    void leaveOut(const QString& what);

    const QMap<QString, QString>& lines() const { return m_lines; }

private:
    void sayObject(QObject* object, const QString& name);
    void sayChildren(QObject* object, const QString& name);

    QMap<QString, QString> m_lines;
};

} // namespace zib
