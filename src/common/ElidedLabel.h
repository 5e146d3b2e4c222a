#pragma once

#include <QLabel>

namespace zib {

/// A label for one line of plain text whose length nobody knows: it shows what there is room for and ends in
/// an ellipsis. text() is always the whole one.
class ElidedLabel final : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace zib
