#include "platform/BoxMessages.h"

#include <QApplication>
#include <QMessageBox>

namespace zib {

namespace {

/// Shows one box. @returns the button that closed it.
QMessageBox::StandardButton show(QWidget* owner, QMessageBox::Icon icon, const QString& title,
                                 const QString& text, QMessageBox::StandardButtons buttons = QMessageBox::Ok)
{
    QMessageBox box(icon, title, QString(), buttons, owner ? owner : QApplication::activeWindow());
    box.setObjectName(QStringLiteral("zibMessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace

void BoxMessages::information(QWidget* owner, const QString& text)
{
    show(owner, QMessageBox::Information, kApplicationTitle, text);
}

void BoxMessages::critical(QWidget* owner, const QString& text, const QString& title)
{
    show(owner, QMessageBox::Critical, title, text);
}

void BoxMessages::plain(QWidget* owner, const QString& text)
{
    show(owner, QMessageBox::NoIcon, kApplicationTitle, text);
}

Messages::Answer BoxMessages::askYesNoCancel(QWidget* owner, const QString& text)
{
    switch (show(owner, QMessageBox::Question, kApplicationTitle, text,
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
