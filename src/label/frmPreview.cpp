#include "label/frmPreview.h"
#include "ui_frmPreview.h"

#include "common/Messages.h"
#include "common/Texts.h"
#include "common/Twips.h"
#include "common/Windows.h"
#include "label/CalibrationPage.h"
#include "label/LabelDialogs.h"
#include "label/LabelPainter.h"
#include "label/LabelPrint.h"
#include "label/LabelSurface.h"

#include <QMouseEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QVBoxLayout>

namespace {

constexpr int kPrintDelayMs = 1000;

} // namespace

frmPreview::frmPreview(const zib::Services& services, QSize labelArea, QWidget* parent,
                       const zib::LabelImage& standing)
    : QDialog(parent), ui(std::make_unique<Ui::frmPreview>()), m_services(services), m_labelArea(labelArea)
{
    ui->setupUi(this);
    m_surface = std::make_unique<zib::LabelSurface>(madeGround(), labelArea);
    m_surface->setImage(standing);
    connectControls();
    Form_Load();
}

frmPreview::~frmPreview() = default;

/// @returns what the label lies on: the window, at the label's size. Where the screen has no room for that it
/// is a page that scrolls in the window.
QWidget* frmPreview::madeGround()
{
    const QSize label{zib::wholePixels(m_labelArea.width()), zib::wholePixels(m_labelArea.height())};
    if (label.boundedTo(zib::roomFor(this)) != label)
        return madePage(label);
    setFixedSize(label);
    return this;
}

QWidget* frmPreview::madePage(QSize label)
{
    auto* page = new QWidget;
    for (QWidget* control : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        control->setParent(page);
    page->setFixedSize(label);
    auto* scroller = new QScrollArea;
    scroller->setObjectName(QStringLiteral("scrollArea"));
    scroller->setAccessibleName(accessibleName());
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidget(page);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(scroller);
    const int bar = scroller->verticalScrollBar()->sizeHint().width();
    setMaximumSize(label + QSize(bar, bar));
    resize(maximumSize());
    zib::fitToScreen(this);
    return page;
}

void frmPreview::connectControls()
{
    m_timer.setObjectName(QStringLiteral("Timer1"));
    connect(&m_timer, &QTimer::timeout, this, &frmPreview::Timer1_Timer);
    const auto* calibrate = new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P), this);
    connect(calibrate, &QShortcut::activated, this, &frmPreview::Calibrate_Click);
}

void frmPreview::Form_Load()
{
    m_loaded = m_surface->RedrawLabel();
    if (!m_loaded)
        return;
    m_timer.setInterval(kPrintDelayMs);
    m_timer.start();
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
    m_timer.stop();
    tell(zib::printLabelPage(m_services, this, m_labelArea,
                             [scene = m_surface->scene()](const Printer::Target&, const zib::Calibration&) {
                                 return [scene](QPainter& painter) { zib::paintScene(painter, scene); };
                             }));
}

/// The label waits: the page comes first, and then its numbers.
void frmPreview::Calibrate_Click()
{
    const bool labelToCome = m_timer.isActive();
    m_timer.stop();
    const auto sent = zib::printLabelPage(m_services, this, {}, &zib::calibrationPage);
    tell(sent);
    if (!sent)
        return;
    if (const zib::Outcome<> shown = m_services.windows.showCalibrate(this); !shown)
        m_services.messages.critical(this, shown.error().detail);
    if (labelToCome)
        m_timer.start();
}

void frmPreview::tell(const zib::Outcome<QString>& sent)
{
    if (sent) {
        const QString words = QStringLiteral("Sent to %1").arg(*sent);
        setWindowTitle(QStringLiteral("%1 - %2").arg(words, zib::kApplicationTitle));
        setAccessibleName(words); // A reader hears this name, not the title.
        emit Sent(*sent);
    } else if (sent.error().kind != zib::Failure::Kind::Cancelled) {
        m_services.messages.critical(this, sent.error().detail);
    }
}
