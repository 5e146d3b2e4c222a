#include "label/frmPreview.h"
#include "ui_frmPreview.h"

#include "common/Messages.h"
#include "common/Texts.h"
#include "common/Twips.h"
#include "common/WaitPointer.h"
#include "components/Components.h"
#include "label/LabelPainter.h"
#include "label/LabelSurface.h"

#include <QMouseEvent>
#include <QTimer>

namespace {

constexpr int kPrintDelayMs = 1000;

} // namespace

frmPreview::frmPreview(const zib::Services& services, QSize labelArea, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmPreview>()), m_services(services), m_timer(new QTimer(this))
{
    ui->setupUi(this);
    m_surface = std::make_unique<zib::LabelSurface>(this, labelArea);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    connectControls();
    Form_Load(labelArea);
}

frmPreview::~frmPreview() = default;

void frmPreview::connectControls()
{
    connect(m_timer, &QTimer::timeout, this, &frmPreview::Timer1_Timer);
}

void frmPreview::Form_Load(QSize labelArea)
{
    setFixedSize(zib::wholePixels(labelArea.width()), zib::wholePixels(labelArea.height()));
    m_loaded = m_surface->RedrawLabel();
    if (!m_loaded)
        return;
    m_timer->setInterval(kPrintDelayMs);
    m_timer->start();
}

/// A double-click on the window or on the picture, which lets it pass up to here.
void frmPreview::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        Form_DblClick();
}

void frmPreview::Form_DblClick()
{
    close();
}

void frmPreview::Timer1_Timer()
{
    m_timer->stop();
    if (const zib::Outcome<> printed = print(); !printed)
        m_services.messages.critical(this, printed.error().detail);
}

zib::Outcome<> frmPreview::print()
{
    const zib::WaitPointer wait(this);
    const std::unique_ptr<Printer> printer = m_services.components.makePrinter();
    const zib::LabelScene scene = m_surface->scene();
    return printer->print(zib::kApplicationTitle,
                          [&scene](QPainter& painter) { zib::paintScene(painter, scene); });
}
