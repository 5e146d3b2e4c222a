#pragma once

#include <QRandomGenerator>
#include <QString>
#include <QStringList>

#include <optional>

namespace zib {

/// The tips of a text file, one a line, empty lines included.
class TipList
{
public:
    /// @param seed of the random choice.
    explicit TipList(quint32 seed) : m_random(seed) {}

    /// Reads the file; UTF-8, or Latin-1 where it is none. Lines end with LF, CR LF or CR.
    /// @returns false, with no tips, when the path is empty or no readable file.
    bool load(const QString& path);
    int count() const { return static_cast<int>(m_tips.size()); }
    /// @returns any tip, each as likely as the others, the last one too; nothing when there are none.
    std::optional<QString> any();
    /// @returns the lines of a text, without an empty one behind the last line end.
    static QStringList linesOf(const QByteArray& text);

private:
    QRandomGenerator m_random;
    QStringList m_tips;
};

} // namespace zib
