#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>

#include <functional>
#include <optional>
#include <utility>

namespace zib {

/// A value of an INI file by its names.
struct IniName
{
    QByteArray section;
    QByteArray key;
};

/// Many questions to one INI file, answered while its lines pass by: the first section of a name counts, and
/// the first key in it.
class IniQuestions
{
public:
    explicit IniQuestions(const QList<IniName>& names);

    /// A section begins.
    void enter(const QByteArray& section);
    /// A key of the section passes by; @p value is asked for only when somebody asks for the key.
    void take(const QByteArray& key, const std::function<QByteArray()>& value);
    /// @returns the values in the order of the questions; nothing for a missing section or key.
    const QList<std::optional<QByteArray>>& answers() const { return m_answers; }

private:
    using Indexes = QList<qsizetype>;

    /// What is asked of one section.
    struct Asked
    {
        QByteArray section;
        bool passed = false;
        QHash<QByteArray, Indexes> ascii{}; ///< By the key's small letters.
        QList<std::pair<QByteArray, qsizetype>> other{};
    };

    Asked& askedOf(const QByteArray& section);
    Indexes asking(const QByteArray& key);

    QList<Asked> m_asked;
    qsizetype m_current = -1;
    QList<std::optional<QByteArray>> m_answers;
};

} // namespace zib
