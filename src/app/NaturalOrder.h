#pragma once

#include <QCollator>
#include <QString>

namespace zib {

/// Orders names as people do: "2" before "10", without regard to case, by the rules of the user's language.
/// An object belongs to one thread.
class NaturalOrder
{
public:
    NaturalOrder();
    bool operator()(const QString& one, const QString& other) const;

private:
    int compare(QStringView one, QStringView other) const;

    QCollator m_words;
};

} // namespace zib
