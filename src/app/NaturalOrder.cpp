#include "app/NaturalOrder.h"

namespace zib {

namespace {

bool isDigit(QChar letter)
{
    return letter >= u'0' && letter <= u'9';
}

/// The digits, or the other letters, that a text begins with.
QStringView firstRun(QStringView text)
{
    qsizetype end = 0;
    while (end < text.size() && isDigit(text[end]) == isDigit(text[0]))
        ++end;
    return text.left(end);
}

/// Compares whole numbers of any length.
int compareNumbers(QStringView one, QStringView other)
{
    while (one.size() > 1 && one[0] == u'0')
        one = one.mid(1);
    while (other.size() > 1 && other[0] == u'0')
        other = other.mid(1);
    if (one.size() != other.size())
        return one.size() < other.size() ? -1 : 1;
    return one.compare(other);
}

} // namespace

/// The collator's own numeric mode is missing in the plain "C" locale, so numbers are compared here.
NaturalOrder::NaturalOrder()
{
    m_words.setCaseSensitivity(Qt::CaseInsensitive);
}

bool NaturalOrder::operator()(const QString& one, const QString& other) const
{
    const int order = compare(one, other);
    return order != 0 ? order < 0 : one < other;
}

int NaturalOrder::compare(QStringView one, QStringView other) const
{
    while (!one.isEmpty() && !other.isEmpty()) {
        const QStringView left = firstRun(one);
        const QStringView right = firstRun(other);
        const bool numbers = isDigit(left[0]) && isDigit(right[0]);
        if (const int order = numbers ? compareNumbers(left, right) : m_words.compare(left, right))
            return order;
        one = one.mid(left.size());
        other = other.mid(right.size());
    }
    return static_cast<int>(one.size() - other.size());
}

} // namespace zib
