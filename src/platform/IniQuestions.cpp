#include "platform/IniQuestions.h"

#include "platform/IniNames.h"

#include <algorithm>

namespace zib {

IniQuestions::IniQuestions(const QList<IniName>& names) : m_answers(names.size())
{
    for (qsizetype i = 0; i < names.size(); ++i) {
        const QByteArray section = trimmedBlanks(names[i].section);
        const QByteArray key = trimmedBlanks(names[i].key);
        if (section.isEmpty() || key.isEmpty())
            continue;
        if (isAscii(key))
            askedOf(section).ascii[key.toLower()] << i;
        else
            askedOf(section).other.append({key, i});
    }
}

IniQuestions::Asked& IniQuestions::askedOf(const QByteArray& section)
{
    for (Asked& asked : m_asked)
        if (sameName(asked.section, section))
            return asked;
    m_asked.push_back(Asked{.section = section});
    return m_asked.back();
}

void IniQuestions::enter(const QByteArray& section)
{
    const auto found = std::find_if(m_asked.begin(), m_asked.end(), [&](const Asked& asked) {
        return !asked.passed && sameName(asked.section, section);
    });
    m_current = found == m_asked.end() ? -1 : found - m_asked.begin();
    if (m_current >= 0)
        m_asked[m_current].passed = true;
}

/// The questions for a key, which are answered with it.
IniQuestions::Indexes IniQuestions::asking(const QByteArray& key)
{
    Asked& asked = m_asked[m_current];
    if (isAscii(key))
        return asked.ascii.take(key.toLower());
    Indexes indexes;
    for (const auto& [name, index] : asked.other)
        if (!m_answers[index] && sameName(name, key))
            indexes << index;
    return indexes;
}

void IniQuestions::take(const QByteArray& key, const std::function<QByteArray()>& value)
{
    if (m_current < 0)
        return;
    const Indexes indexes = asking(key);
    if (indexes.isEmpty())
        return;
    const QByteArray text = value();
    for (const qsizetype index : indexes)
        m_answers[index] = text;
}

} // namespace zib
