#pragma once

#include "common/Texts.h"

class QWidget;

namespace zib {

/// The one door to message boxes. Every call shows one modal box and returns when it closes.
/// The owner is the window that speaks; nullptr means the active window. GUI thread only.
class Messages
{
public:
    enum class Answer
    {
        Yes,
        No,
        Cancel
    };

    virtual ~Messages() = default;
    /// Refusals and guidance: information icon, OK.
    /// @param remark stands below the text, as a paragraph of its own.
    virtual void information(QWidget* owner, const QString& text, const QString& remark = {}) = 0;
    /// Failures: critical icon, OK.
    virtual void critical(QWidget* owner, const QString& text, const QString& title = kApplicationTitle) = 0;
    /// A box without an icon, OK.
    virtual void plain(QWidget* owner, const QString& text) = 0;
    /// A question with Yes, No and Cancel; closing the box means Cancel.
    /// @param preset what Enter answers: No where a Yes cannot be taken back.
    virtual Answer askYesNoCancel(QWidget* owner, const QString& text, Answer preset = Answer::Yes) = 0;
};

} // namespace zib
