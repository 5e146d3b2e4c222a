#include "app/GaugeReader.h"

#include "app/CapacityGauge.h"
#include "app/totals.h"
#include "common/GenralMacro.h"

namespace zib {

namespace {

constexpr double kDiscMinutes = 80;

QAccessibleInterface* readerOf(const QString&, QObject* object)
{
    auto* gauge = qobject_cast<CapacityGauge*>(object);
    return gauge ? new GaugeReader(gauge) : nullptr;
}

} // namespace

GaugeReader::GaugeReader(QWidget* gauge) : QAccessibleWidget(gauge, QAccessible::ProgressBar) {}

void GaugeReader::install()
{
    static const bool done = (QAccessible::installFactory(readerOf), true);
    Q_UNUSED(done)
}

QString GaugeReader::valueText()
{
    const QString text = totalTimeText(TotalMinutes) + QStringLiteral(" of ") + totalTimeText(kDiscMinutes);
    return TotalMinutes > kDiscMinutes ? text + QStringLiteral(", more than an 80-minute disc holds") : text;
}

QString GaugeReader::text(QAccessible::Text kind) const
{
    return kind == QAccessible::Value ? valueText() : QAccessibleWidget::text(kind);
}

void* GaugeReader::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QVariant GaugeReader::currentValue() const
{
    return TotalMinutes;
}

QVariant GaugeReader::maximumValue() const
{
    return kScaleMinutes;
}

} // namespace zib
