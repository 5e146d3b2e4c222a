#include "platform/BoxMessages.h"

#include "platform/Box.h"

namespace zib {

namespace {

QMessageBox::StandardButton buttonOf(Messages::Answer answer)
{
    switch (answer) {
    case Messages::Answer::Yes:
        return QMessageBox::Yes;
    case Messages::Answer::No:
        return QMessageBox::No;
    default:
        return QMessageBox::Cancel;
    }
}

} // namespace

void BoxMessages::information(QWidget* owner, const QString& text, const QString& remark)
{
    showBox(owner, QMessageBox::Information, kApplicationTitle, text, QMessageBox::Ok, QMessageBox::NoButton,
            remark);
}

void BoxMessages::critical(QWidget* owner, const QString& text, const QString& title)
{
    showBox(owner, QMessageBox::Critical, title, text);
}

void BoxMessages::plain(QWidget* owner, const QString& text)
{
    showBox(owner, QMessageBox::NoIcon, kApplicationTitle, text);
}

Messages::Answer BoxMessages::askYesNoCancel(QWidget* owner, const QString& text, Answer preset)
{
    switch (showBox(owner, QMessageBox::Question, kApplicationTitle, text,
                    QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, buttonOf(preset))) {
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

} // namespace zib
