#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace zib {

/// What a drive says about a failed command: sense key, additional sense code and its qualifier (SPC-3, 4.5).
struct Sense
{
    int key = 0;
    int asc = 0;
    int ascq = 0;

    /// As "[3 0C 00]", hexadecimal.
    QString toText() const;
    /// The first such triple in a text, if it holds one.
    static std::optional<Sense> inText(const QString& text);

    bool operator==(const Sense&) const = default;
};

/// One row of the table: which sense data lead to which writer error code.
struct SenseRow
{
    int key; ///< -1 stands for any.
    int asc;
    int ascq;            ///< -1 stands for any.
    int code;            ///< 1000 to 1055.
    const char* meaning; ///< The standard's own name for it (SPC-3 annex D, MMC-5 annex F).
};

/// A code that no drive of this kind reports, and why.
struct UnreachableCode
{
    int code;
    const char* reason;
};

/// The writer error code, 1000 to 1055, that tells most about @p sense.
int writerErrorCode(const Sense& sense);

/// The whole table, the first fitting row deciding.
const QList<SenseRow>& senseTable();
/// The codes no row leads to.
const QList<UnreachableCode>& unreachableCodes();

} // namespace zib
