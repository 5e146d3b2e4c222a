#pragma once

#include <QObject>

class QKeyEvent;
class QLineEdit;
class QScrollBar;

namespace zib {

/// Lets keys and wheel step the number of a read-only box whose scroll bar gives the focus away at each
/// change: the arrows by one, and faster while held; the page keys by a page; Home to the smallest number,
/// End to the largest. The same keys mean the same on the bar. Belongs to the box.
class NumberKeys final : public QObject
{
    Q_OBJECT
public:
    /// Makes it once for each box. The bar's upper end is the larger number.
    static void install(QScrollBar* bar, QLineEdit* box);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    NumberKeys(QScrollBar* bar, QLineEdit* box);
    bool keyPressed(const QKeyEvent& event);
    void step(int direction, const QKeyEvent& event);

    QScrollBar* m_bar;
    QLineEdit* m_box;
    int m_repeats = 0; ///< How often the key that is held has come again.
};

} // namespace zib
