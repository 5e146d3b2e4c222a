#pragma once

#include <QAccessibleWidget>

namespace zib {

/// What the gauge's scale ends at, in minutes.
constexpr double kScaleMinutes = 100;

/// What a screen reader is told of the capacity gauge: how much of a disc of 80 minutes the list takes.
class GaugeReader final : public QAccessibleWidget, public QAccessibleValueInterface
{
public:
    explicit GaugeReader(QWidget* gauge);

    /// Has every gauge read by this class from now on.
    static void install();
    /// The value in words.
    static QString valueText();

    QString text(QAccessible::Text kind) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;
    QVariant currentValue() const override;
    void setCurrentValue(const QVariant&) override {} ///< The list sets it.
    QVariant maximumValue() const override;
    QVariant minimumValue() const override { return 0.0; }
    QVariant minimumStepSize() const override { return 0.0; }
};

} // namespace zib
