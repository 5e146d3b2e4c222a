#include "label/DecimalBox.h"

namespace zib {

QValidator::State DecimalBox::validate(QString& text, int& cursor) const
{
    const QString point = locale().decimalPoint();
    for (const char16_t sign : {u'.', u','})
        text.replace(QChar(sign), point);
    return QDoubleSpinBox::validate(text, cursor);
}

} // namespace zib
