#pragma once

#include <QDoubleSpinBox>

namespace zib {

/// A number box that takes a point as well as a comma before the decimals, whichever the desktop's language
/// writes: rulers and manuals use both, and the wrong one must not turn 0.5 into 5.
class DecimalBox final : public QDoubleSpinBox
{
    Q_OBJECT
public:
    using QDoubleSpinBox::QDoubleSpinBox;

    QValidator::State validate(QString& text, int& cursor) const override;
};

} // namespace zib
