#include "platform/SystemRegistry.h"

#include "platform/Detached.h"

namespace zib {

namespace {

constexpr qsizetype kBufferCharacters = 1024;

QString numberText(quint32 number)
{
    QString text = QStringLiteral("&h");
    for (int shift = 24; shift >= 0; shift -= 8)
        text += QString::number((number >> shift) & 0xFF, 16).toUpper();
    return text;
}

} // namespace

std::optional<QString> SystemRegistry::value(const QString& key, const QString& name) const
{
    for (const Entry& entry : m_entries) {
        if (entry.key.compare(key, Qt::CaseInsensitive) != 0 ||
            entry.name.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        if (const auto* number = std::get_if<quint32>(&entry.content))
            return numberText(*number);
        const auto* text = std::get_if<QString>(&entry.content);
        return text && text->size() < kBufferCharacters ? std::optional(*text) : std::nullopt;
    }
    return std::nullopt;
}

QList<SystemRegistry::Entry> SystemRegistry::systemInformation()
{
    const QString tool = firstInstalled({
        QStringLiteral("hardinfo2"),
        QStringLiteral("hardinfo"),
        QStringLiteral("kinfocenter"),
        QStringLiteral("lshw-gtk"),
        QStringLiteral("gnome-system-monitor"),
        QStringLiteral("mate-system-monitor"),
        QStringLiteral("plasma-systemmonitor"),
        QStringLiteral("xfce4-taskmanager"),
        QStringLiteral("lxtask"),
        QStringLiteral("qps"),
    });
    if (tool.isEmpty())
        return {};
    return {{QStringLiteral("SOFTWARE\\Microsoft\\Shared Tools\\MSINFO"), QStringLiteral("PATH"), tool}};
}

} // namespace zib
