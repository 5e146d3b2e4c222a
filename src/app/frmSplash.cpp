#include "app/frmSplash.h"

#include "ui_frmSplash.h"

#include <QPixmap>
#include <QScreen>

namespace {

constexpr int kShownMs = 3000;

/// The picture in the resolution of the screen.
QPixmap picture(qreal ratio)
{
    if (ratio <= 1)
        return QPixmap(QStringLiteral(":/splash/splash.png"));
    QPixmap large(QStringLiteral(":/splash/splash@2x.png"));
    large.setDevicePixelRatio(2);
    return large;
}

} // namespace

frmSplash::frmSplash(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), ui(std::make_unique<Ui::frmSplash>())
{
    ui->setupUi(this);
    connectControls();
    Form_Load();
}

frmSplash::~frmSplash() = default;

void frmSplash::connectControls()
{
    m_timer.setObjectName(QStringLiteral("Timer1"));
    connect(&m_timer, &QTimer::timeout, this, &frmSplash::Timer1_Timer);
}

void frmSplash::Form_Load()
{
    m_timer.setInterval(kShownMs);
    m_timer.setSingleShot(true);
    const QPixmap artwork = picture(devicePixelRatioF());
    const QSize size = artwork.deviceIndependentSize().toSize();
    ui->Image1->setPixmap(artwork);
    ui->Image1->setGeometry(QRect(QPoint(0, 0), size));
    setFixedSize(size);
    move(screen()->availableGeometry().center() - QPoint(width() / 2, height() / 2));
}

/// Clicks on the picture arrive here too.
void frmSplash::Form_Click()
{
    accept();
}

void frmSplash::Form_KeyDown()
{
    accept();
}

void frmSplash::Timer1_Timer()
{
    accept();
}

void frmSplash::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_timer.start();
}

void frmSplash::keyPressEvent(QKeyEvent*)
{
    Form_KeyDown();
}

void frmSplash::mouseReleaseEvent(QMouseEvent*)
{
    Form_Click();
}

void frmSplash::mouseDoubleClickEvent(QMouseEvent*)
{
    Form_Click();
}
