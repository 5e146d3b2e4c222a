#pragma once

#include <QKeyEvent>

namespace zib {

/// Whether a key would close a dialog or press its default button, which it must not while a job runs.
inline bool endsDialogs(const QKeyEvent& event)
{
    return event.key() == Qt::Key_Escape || event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

} // namespace zib
