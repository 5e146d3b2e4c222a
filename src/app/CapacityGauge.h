#pragma once

#include <QFont>
#include <QFrame>

#include <optional>

class QPainter;

namespace zib {

/// The gauge of the disc's capacity: a scale of 100 minutes and a bar as long as TotalMinutes, in bands that
/// change colour at 60, 74 and 80 minutes. Its geometry is in twips; ticks, trough and bands have fixed
/// colours.
class CapacityGauge final : public QFrame
{
    Q_OBJECT
public:
    explicit CapacityGauge(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// Shows TotalMinutes anew, to the eye and to a screen reader.
    void showTotal();

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void paintTrough(QPainter& painter) const;
    void paintTicks(QPainter& painter) const;
    void paintLabels(QPainter& painter);
    void paintFill(QPainter& painter) const;
    QColor background() const;
    double scaleTwips() const;
    QFont wideFont() const;
    QFont narrowFont() const;

    std::optional<QFont> m_labelFont; ///< Found when it is first painted, so that no window waits for it.
};

} // namespace zib
