#pragma once

#include <QLabel>

namespace zib {

/// A plain note in a narrow column. Unlike a QLabel it breaks a word that is wider than the column, as names
/// of printers are, rather than cutting it.
class NoteLabel final : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace zib
