#pragma once

#include "common/Platform.h"

#include <QList>

#include <optional>
#include <variant>

namespace zib {

/// A registry whose entries are a table of this program's own. Keys and names compare without case.
class SystemRegistry final : public Registry
{
public:
    /// A text, a 32-bit number, or bytes of another kind.
    using Content = std::variant<QString, quint32, QByteArray>;
    struct Entry
    {
        QString key;
        QString name;
        Content content;
    };

    explicit SystemRegistry(QList<Entry> entries = systemInformation()) : m_entries(std::move(entries)) {}
    /// A text is given as it is when it fits 1024 characters with its NUL; a number as "&h" and the
    /// hexadecimal digits of its bytes, highest first, each without padding. Anything else counts as missing.
    std::optional<QString> value(const QString& key, const QString& name) const override;

    /// The entries that lead to the first installed system-information tool; none when none is installed.
    static QList<Entry> systemInformation();

private:
    QList<Entry> m_entries;
};

} // namespace zib
