#pragma once

#include "common/Platform.h"

#include <optional>

namespace zib {

/// INI files on disk. Every call reads the file anew, so what other programs wrote in between is seen and
/// kept. A write replaces the file atomically and durably, keeps its permissions and follows symbolic links;
/// after a crash, a full disk or a refusal the old file stands whole. New files have "\n" line ends.
class IniFile final : public IniService
{
public:
    QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                        const QByteArray& fallback, int size, const QString& file) override;
    QList<QByteArray> readAll(const QList<IniQuery>& queries, const QString& file) override;
    bool WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                    const std::optional<QByteArray>& value, const QString& file) override;
    bool writeAll(const QList<IniChange>& changes, const QString& file) override;
    /// Reads what readAll would give if these lists of changes had been written, one after the other.
    QList<QByteArray> readWith(const QList<QList<IniChange>>& changes, const QList<IniQuery>& queries,
                               const QString& file) const;
};

} // namespace zib
