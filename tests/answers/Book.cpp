#include "answers/Book.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace zib::answers {

namespace {

constexpr qsizetype kMostShown = 40; // lines of a difference

/// One line whatever it holds: only printing letters of ASCII as they are.
QString plain(const QString& text)
{
    QString out;
    for (const QChar letter : text)
        out += letter >= u' ' && letter <= u'~'
                   ? QString(letter)
                   : QStringLiteral("\\u%1").arg(letter.unicode(), 4, 16, QChar(u'0'));
    return out;
}

/// Numbers, or places as "3.14", as a range; words one by one.
QString toldAs(const QStringList& inputs)
{
    static const QRegularExpression number(QStringLiteral("^-?[0-9.]+$"));
    const auto isNumber = [](const QString& input) { return number.match(input).hasMatch(); };
    if (inputs.size() > 1 && std::all_of(inputs.cbegin(), inputs.cend(), isNumber))
        return QStringLiteral("%1 to %2").arg(inputs.first(), inputs.last());
    return inputs.join(QStringLiteral(" | "));
}

QString nameOf(const QString& line)
{
    return line.left(line.indexOf(u':'));
}

/// Lines of one list that the other has not, or not so often.
QStringList without(QStringList lines, const QStringList& others)
{
    for (const QString& other : others)
        lines.removeOne(other);
    return lines;
}

QStringList linesIn(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n') : QStringList{};
}

void record(const QString& path, const QStringList& lines)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(lines.join(u'\n').toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

/// The lines of either side, each with the heading and the inputs it belongs to.
QStringList headed(const QStringList& lines)
{
    QStringList all;
    QString heading;
    QString inputs;
    for (const QString& line : lines) {
        if (line.startsWith(QStringLiteral("== ")))
            heading = line + QStringLiteral(" / ");
        else if (line.startsWith(QStringLiteral("    ")))
            all << heading + inputs + line.mid(3);
        else if (!line.isEmpty())
            all << heading + line;
        if (!line.startsWith(QStringLiteral("    ")))
            inputs = line.left(line.indexOf(QStringLiteral(": ")) + 1);
    }
    return all;
}

QByteArray differencesOf(const QStringList& recorded, const QStringList& now)
{
    QStringList words;
    for (const QString& line : without(headed(recorded), headed(now)))
        words << QStringLiteral("recorded: ") + line;
    for (const QString& line : without(headed(now), headed(recorded)))
        words << QStringLiteral("now:      ") + line;
    const qsizetype more = words.size() - kMostShown;
    words = words.first(std::min(words.size(), kMostShown));
    if (more > 0)
        words << QStringLiteral("and %1 more").arg(more);
    return words.join(u'\n').toUtf8();
}

} // namespace

Book::Book(const QString& name) : m_path(QStringLiteral(ZIB_TESTS_DIR "/%1.txt").arg(name)) {}

void Book::chapter(const QString& title, const Answer& usual)
{
    flush();
    if (!m_lines.isEmpty())
        m_lines << QString();
    m_lines << QStringLiteral("== ") + plain(title);
    m_usual = usual;
}

QString Book::told(const Answer& answer) const
{
    if (answer == m_usual)
        return m_usual.isEmpty() ? QStringLiteral("nothing") : QStringLiteral("as ever");
    const QStringList news = without(answer, m_usual);
    if (news == answer)
        return plain(answer.join(QStringLiteral("; ")));
    QStringList words = news;
    QStringList gone;
    for (const QString& line : without(m_usual, answer)) {
        const auto isRenewed = [&](const QString& other) { return nameOf(other) == nameOf(line); };
        if (!std::any_of(news.cbegin(), news.cend(), isRenewed))
            gone << nameOf(line);
    }
    if (!gone.isEmpty())
        words << QStringLiteral("no ") + gone.join(QStringLiteral(", "));
    return words.isEmpty() ? QStringLiteral("in another order: ") + plain(answer.join(QStringLiteral("; ")))
                           : plain(words.join(QStringLiteral("; ")));
}

void Book::tell(const QString& input, const Answer& answer)
{
    add(input, told(answer));
}

void Book::tellAll(const QString& place, const QList<std::pair<QString, Answer>>& answers)
{
    QStringList texts;
    QList<QStringList> inputs;
    for (const auto& [input, answer] : answers) {
        const QString text = told(answer);
        if (!texts.contains(text)) {
            texts << text;
            inputs << QStringList();
        }
        inputs[texts.indexOf(text)] << plain(input);
    }
    QStringList words;
    for (qsizetype i = 0; i < texts.size(); ++i)
        words << (texts.size() == 1 ? texts[0] : inputs[i].join(u' ') + QStringLiteral(" -> ") + texts[i]);
    add(place, words.join(QStringLiteral("\n    ")));
}

void Book::add(const QString& input, const QString& text)
{
    if (text != m_text)
        flush();
    m_inputs << plain(input);
    m_text = text;
}

void Book::flush()
{
    if (m_inputs.isEmpty())
        return;
    m_lines << (toldAs(m_inputs) + QStringLiteral(": ") + m_text).split(u'\n');
    m_inputs.clear();
}

QByteArray Book::differences()
{
    flush();
    m_lines << QString();
    if (qEnvironmentVariableIntValue("ZIB_RECORD_ANSWERS") != 0)
        record(m_path, m_lines);
    const QStringList recorded = linesIn(m_path);
    if (recorded == m_lines)
        return {};
    const QByteArray words = differencesOf(recorded, m_lines);
    return words.isEmpty() ? QByteArray("the same lines in another order") : words;
}

} // namespace zib::answers
