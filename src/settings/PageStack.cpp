#include "settings/PageStack.h"

#include "common/Twips.h"

#include <QLayout>
#include <QTabWidget>

#include <algorithm>

namespace zib {

namespace {

constexpr int kShownTwips = 210;
constexpr int kHiddenTwips = -20000;
constexpr int kGap = 8; // Pixels between the strip's frame and a page, above and below.

} // namespace

void PageStack::show() const
{
    place();
    for (int i = 0; i < m_pages.size(); ++i) {
        const bool shown = i == m_strip->currentIndex();
        if (!shown && m_pages[i]->isAncestorOf(m_strip->window()->focusWidget()))
            m_strip->setFocus(); // Else a button below would take the focus, and the next key.
        if (shown)
            m_pages[i]->raise();
        m_pages[i]->move(wholePixels(shown ? kShownTwips : kHiddenTwips), m_pages[i]->y());
        m_pages[i]->setEnabled(shown);
    }
}

void PageStack::fit() const
{
    QSize largest;
    for (const QWidget* page : m_pages)
        largest = largest.expandedTo(page->sizeHint());
    const QMargins margins = m_strip->parentWidget()->layout()->contentsMargins();
    const int sides = 2 * wholePixels(kShownTwips) - margins.left() - margins.right();
    m_strip->setMinimumSize(largest + QSize(sides, m_strip->sizeHint().height() + 2 * kGap));
}

void PageStack::place() const
{
    const QWidget* window = m_strip->parentWidget();
    const QWidget* frame = m_strip->currentWidget();
    const int top = frame->mapTo(window, QPoint(0, 0)).y() + kGap;
    const int width = window->width() - 2 * wholePixels(kShownTwips);
    // A hidden page never reaches into the window, however wide that is.
    const int hiddenWidth = std::min(width, -wholePixels(kHiddenTwips));
    for (int i = 0; i < m_pages.size(); ++i)
        m_pages[i]->setGeometry(m_pages[i]->x(), top, i == m_strip->currentIndex() ? width : hiddenWidth,
                                frame->height() - 2 * kGap);
}

} // namespace zib
