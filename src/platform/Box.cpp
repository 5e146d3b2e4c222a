#include "platform/Box.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QStyle>

namespace zib {

namespace {

QString pictureOf(QMessageBox::Icon icon)
{
    switch (icon) {
    case QMessageBox::Information:
        return QStringLiteral(":/icons/box_information.svg");
    case QMessageBox::Question:
        return QStringLiteral(":/icons/box_question.svg");
    case QMessageBox::Critical:
        return QStringLiteral(":/icons/box_critical.svg");
    default:
        return {};
    }
}

/// Draws the icon in the program's own style, sharp at any resolution. The box keeps its kind, which a
/// picture set through the box itself would take from it.
void dressUp(QMessageBox& box)
{
    auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label"));
    const int side = box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &box);
    const QPixmap picture = QIcon(pictureOf(box.icon())).pixmap(QSize(side, side), box.devicePixelRatioF());
    if (label && !picture.isNull())
        label->setPixmap(picture);
    if (auto* text = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        text->setAlignment(Qt::AlignVCenter | Qt::AlignLeft);
    if (auto* remark = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        remark->setTextFormat(Qt::PlainText);
}

} // namespace

QMessageBox::StandardButton showBox(QWidget* owner, QMessageBox::Icon icon, const QString& title,
                                    const QString& text, QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton preset, const QString& remark)
{
    QMessageBox box(icon, title, QString(), buttons, owner ? owner : QApplication::activeWindow());
    box.setObjectName(QStringLiteral("zibMessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(text);
    box.setInformativeText(remark);
    box.setDefaultButton(preset);
    dressUp(box);
    return static_cast<QMessageBox::StandardButton>(box.exec());
}

} // namespace zib
