#pragma once

#include <QList>

class QTabWidget;
class QWidget;

namespace zib {

/// Pages that lie over a tab strip, beside each other in one window, and are shown by moving them: the shown
/// one stands at 210 twips from the window's left edge, the others far outside it, disabled.
class PageStack
{
public:
    PageStack() = default;
    /// The strip and the pages are children of one window that has a layout; the pages stand outside the
    /// layout.
    PageStack(QTabWidget* strip, QList<QWidget*> pages) : m_strip(strip), m_pages(std::move(pages)) {}

    /// Shows the page of the strip's current tab.
    void show() const;
    /// Gives the strip room for the largest page, whatever font and style are in use.
    void fit() const;
    /// Lays the pages over the strip's frame, from top to bottom; for every time the frame changes its size.
    void place() const;

private:
    QTabWidget* m_strip = nullptr;
    QList<QWidget*> m_pages;
};

} // namespace zib
