#include "platform/BoxMessages.h"

#include "platform/Box.h"

namespace zib {

void BoxMessages::information(QWidget* owner, const QString& text)
{
    showBox(owner, QMessageBox::Information, kApplicationTitle, text);
}

void BoxMessages::critical(QWidget* owner, const QString& text, const QString& title)
{
    showBox(owner, QMessageBox::Critical, title, text);
}

void BoxMessages::plain(QWidget* owner, const QString& text)
{
    showBox(owner, QMessageBox::NoIcon, kApplicationTitle, text);
}

Messages::Answer BoxMessages::askYesNoCancel(QWidget* owner, const QString& text)
{
    switch (showBox(owner, QMessageBox::Question, kApplicationTitle, text,
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel)) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

} // namespace zib
