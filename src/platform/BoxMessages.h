#pragma once

#include "common/Messages.h"

namespace zib {

/// Message boxes on the screen. Texts are plain: a file name that looks like markup stays what it is.
class BoxMessages final : public Messages
{
public:
    void information(QWidget* owner, const QString& text, const QString& remark = {}) override;
    void critical(QWidget* owner, const QString& text, const QString& title = kApplicationTitle) override;
    void plain(QWidget* owner, const QString& text) override;
    Answer askYesNoCancel(QWidget* owner, const QString& text, Answer preset = Answer::Yes) override;
};

} // namespace zib
