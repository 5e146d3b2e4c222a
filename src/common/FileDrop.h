#pragma once

#include <QObject>
#include <QStringList>

#include <functional>

class QWidget;

namespace zib {

/// Takes the files that other programs drop on a window, whose acceptDrops must be on; none while another
/// window has to be answered first. Lives as long as the window.
class FileDrop final : public QObject
{
public:
    /// @param accepts whether files may be dropped now.  @param take gets the local paths, in order, after
    /// the drop has ended: the program that hands them out waits for its end.
    FileDrop(QWidget* window, std::function<bool()> accepts, std::function<void(const QStringList&)> take);

    bool eventFilter(QObject* window, QEvent* event) override;

private:
    std::function<bool()> m_accepts;
    std::function<void(const QStringList&)> m_take;
};

} // namespace zib
