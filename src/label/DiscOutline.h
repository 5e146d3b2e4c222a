#pragma once

#include "label/LabelSettings.h"

#include <QWidget>

namespace zib {

/// A faint outline of the disc over a label: its edge and the hole in its middle, so that one sees what the
/// knife takes away. It is for the screen alone, lets every click through, and is as large as its surface.
class DiscOutline final : public QWidget
{
    Q_OBJECT
public:
    explicit DiscOutline(QWidget* surface, const DiscSize& disc = discSize());

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    DiscSize m_disc;
};

} // namespace zib
