#include "engines/rip/sheets/TocTokens.h"

namespace zib {

namespace {

class TocScanner
{
public:
    explicit TocScanner(const QString& text) : m_text(text) {}
    std::optional<QList<TocToken>> scan();

private:
    QChar at(qsizetype ahead = 0) const
    {
        return m_at + ahead < m_text.size() ? m_text[m_at + ahead] : QChar();
    }
    bool ended() const { return m_at >= m_text.size(); }
    bool isWordEnd() const;
    void skipComment();
    bool takeQuoted();
    QChar takeEscaped();
    void takeWord();

    const QString& m_text;
    qsizetype m_at = 0;
    int m_line = 1;
    QList<TocToken> m_tokens;
};

std::optional<QList<TocToken>> TocScanner::scan()
{
    while (!ended()) {
        if (at() == u'\n' || (at() == u'\r' && at(1) != u'\n'))
            ++m_line;
        if (at().isSpace() || at() == QChar::ByteOrderMark || at() == u',' || at() == u':')
            ++m_at;
        else if (at() == u'/' && at(1) == u'/')
            skipComment();
        else if (at() == u'"') {
            if (!takeQuoted())
                return std::nullopt;
        } else
            takeWord();
    }
    return m_tokens;
}

void TocScanner::skipComment()
{
    while (!ended() && at() != u'\n' && at() != u'\r')
        ++m_at;
}

bool TocScanner::takeQuoted()
{
    TocToken token{.quoted = true, .line = m_line};
    ++m_at;
    while (!ended() && at() != u'"') {
        if (at() == u'\n')
            return false;
        token.text += at() == u'\\' ? takeEscaped() : at();
        ++m_at;
    }
    if (ended())
        return false;
    ++m_at;
    m_tokens << token;
    return true;
}

/// A quotation mark, a backslash, or three octal digits of ISO 8859-1; the last letter is left for the
/// caller.
QChar TocScanner::takeEscaped()
{
    const auto digit = [this](qsizetype ahead) {
        const QChar letter = at(ahead);
        return letter >= u'0' && letter <= u'7' ? letter.unicode() - u'0' : -1;
    };
    if (digit(1) >= 0 && digit(1) < 4 && digit(2) >= 0 && digit(3) >= 0) {
        const int code = digit(1) * 64 + digit(2) * 8 + digit(3);
        m_at += 3;
        return QChar(code);
    }
    if (at(1) == u'"' || at(1) == u'\\')
        ++m_at;
    return at();
}

bool TocScanner::isWordEnd() const
{
    return at().isSpace() || at() == u'"' || at() == u'{' || at() == u'}' || at() == u',' ||
           (at() == u'/' && at(1) == u'/');
}

void TocScanner::takeWord()
{
    TocToken token{.line = m_line};
    do
        token.text += m_text[m_at++];
    while (!ended() && !isWordEnd() && token.text != u"{" && token.text != u"}");
    m_tokens << token;
}

} // namespace

std::optional<QList<TocToken>> tocTokens(const QString& text)
{
    return TocScanner(text).scan();
}

} // namespace zib
