#include "faces/Face.h"

#include <QFile>
#include <QSet>

namespace zib {

namespace {

/// Every line with the stage that it belongs to.
QStringList staged(const QStringList& lines)
{
    QStringList whole;
    QString stage;
    for (const QString& line : lines) {
        if (line.startsWith("== "))
            stage = line;
        whole << stage + '\t' + line;
    }
    return whole;
}

QStringList missing(const QStringList& lines, const QStringList& others, QChar sign)
{
    const QSet<QString> known(others.begin(), others.end());
    QStringList found;
    for (const QString& line : lines)
        if (!known.contains(line))
            found << line.section('\t', 0, 0) + "\n    " + sign + ' ' + line.section('\t', 1);
    return found;
}

} // namespace

QMap<QString, QString> Face::told(Words words) const
{
    for (const QString& what : m_leftOut)
        words.leaveOut(what);
    for (const auto& [text, with] : m_replaced)
        words.replace(text, with);
    return words.lines();
}

void Face::stage(const QString& title, const Words& words)
{
    const QMap<QString, QString> now = told(words);
    m_lines << "== " + title;
    for (auto line = now.begin(); line != now.end(); ++line)
        if (m_before.value(line.key()) != line.value())
            m_lines << line.key() + ": " + line.value();
    for (auto line = m_before.begin(); line != m_before.end(); ++line)
        if (!now.contains(line.key()))
            m_lines << line.key() + " gone";
    m_before = now;
}

QString Face::path() const
{
    return ZIB_SOURCE_DIR "/tests/faces/words/" + m_name + ".txt";
}

QString Face::difference() const
{
    QFile file(path());
    if (qEnvironmentVariableIsSet("ZIB_RECORD_FACES")) {
        if (!file.open(QIODevice::WriteOnly) || file.write(m_lines.join('\n').toUtf8() + '\n') < 0)
            return "cannot be written: " + path();
        return {};
    }
    if (!file.open(QIODevice::ReadOnly))
        return "nothing was recorded: " + path();
    const QStringList recorded = staged(QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts));
    const QStringList now = staged(m_lines);
    const QStringList unlike = missing(recorded, now, '-') + missing(now, recorded, '+');
    return unlike.isEmpty() ? QString() : path() + '\n' + unlike.join('\n');
}

} // namespace zib
