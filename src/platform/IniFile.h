#pragma once

#include "common/Platform.h"

namespace zib {

/// INI files on disk. Every call reads the file anew, so what other programs wrote in between is seen and
/// kept. A write replaces the file atomically and durably, keeps its permissions and follows symbolic links;
/// after a crash, a full disk or a refusal the old file stands whole. New files have "\n" line ends.
class IniFile final : public IniService
{
public:
    QByteArray GetPrivateProfileStringA(const QByteArray& section, const QByteArray& key,
                                        const QByteArray& fallback, int size, const QString& file) override;
    bool WritePrivateProfileStringA(const QByteArray& section, const std::optional<QByteArray>& key,
                                    const std::optional<QByteArray>& value, const QString& file) override;
    bool writeAll(const QList<IniChange>& changes, const QString& file) override;
};

} // namespace zib
