#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace zib {

/// A word, a number, a text between quotes, or a brace of a TOC file.
struct TocToken
{
    QString text{};
    bool quoted = false;
    int line = 0;
};

/// Cuts a TOC file into its tokens, without its comments.  @returns nothing when a text has no end.
std::optional<QList<TocToken>> tocTokens(const QString& text);

} // namespace zib
