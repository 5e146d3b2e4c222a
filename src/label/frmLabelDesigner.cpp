#include "label/frmLabelDesigner.h"
#include "ui_frmLabelDesigner.h"

#include "common/Messages.h"
#include "common/Windows.h"
#include "label/LabelControls.h"
#include "label/LabelDialogs.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"
#include "label/LabelSurface.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QShortcut>
#include <QTimer>

using LabelMaker::LabelDocument;

namespace {

/// What the label says of a table that it cannot hold; nothing when it holds all.
QString fitText(QSize area)
{
    QStringList sentences;
    if (const zib::layout::TrackFit fit = zib::layout::trackFit(area); !fit.all())
        sentences << QStringLiteral("%1 of %2 tracks fit.").arg(fit.fitting).arg(fit.tracks);
    if (zib::layout::isTooWide(area))
        sentences << QStringLiteral("The table is wider than the label.");
    if (!sentences.isEmpty())
        sentences << QStringLiteral("Change row height, font size or columns with List.");
    return sentences.join(u' ');
}

} // namespace

frmLabelDesigner::frmLabelDesigner(const zib::Services& services, const QList<zib::CompilationRow>& rows,
                                   QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmLabelDesigner>()), m_services(services)
{
    ui->setupUi(this);
    m_surface = std::make_unique<zib::LabelSurface>(ui->Picture1, labelArea());
    connectControls();
    Form_Load(rows);
}

frmLabelDesigner::~frmLabelDesigner() = default;

QSize frmLabelDesigner::labelArea() const
{
    return {zib::layout::kLabelAreaTwips, zib::layout::kLabelAreaTwips};
}

zib::LabelImage frmLabelDesigner::image() const
{
    return m_surface->image();
}

void frmLabelDesigner::RedrawTable()
{
    m_surface->RedrawTable();
    showFit();
}

void frmLabelDesigner::RedrawTitle()
{
    m_surface->RedrawTitle();
}

void frmLabelDesigner::RedrawBackground()
{
    const zib::Outcome<> drawn = m_surface->RedrawBackground();
    if (!drawn && drawn.error().kind != zib::Failure::Kind::Cancelled)
        m_services.messages.critical(nullptr, drawn.error().detail);
}

void frmLabelDesigner::showSent(const QString& printer)
{
    const QString words = QStringLiteral("Sent to %1").arg(printer);
    ui->lblState->setText(words);
    ui->lblState->setToolTip(words); // A long name is cut in the narrow column.
}

void frmLabelDesigner::connectControls()
{
    connect(m_surface->title(), &zib::TextControl::Click, this, &frmLabelDesigner::cdTitle_Click);
    connect(m_surface.get(), &zib::LabelSurface::labelClicked, this, &frmLabelDesigner::labels_Click);
    connect(ui->txtCursor, &QLineEdit::textEdited, this, &frmLabelDesigner::txtCursor_Change);
    connect(ui->Title, &QPushButton::clicked, this, &frmLabelDesigner::Title_Click);
    connect(ui->cmdBack, &QPushButton::clicked, this, &frmLabelDesigner::cmdBack_Click);
    connect(ui->cmdList, &QPushButton::clicked, this, &frmLabelDesigner::cmdList_Click);
    connect(ui->cmdPrint, &QPushButton::clicked, this, &frmLabelDesigner::cmdPrint_Click);
    const auto* calibrate = new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P), this);
    connect(calibrate, &QShortcut::activated, this, &frmLabelDesigner::cmdCalibrate_Click);
    connect(ui->cmdCalibrate, &QPushButton::clicked, this, &frmLabelDesigner::cmdCalibrate_Click);
    connect(ui->cmdFit, &QPushButton::clicked, this, &frmLabelDesigner::cmdFit_Click);
    connect(ui->cmdClose, &QPushButton::clicked, this, &frmLabelDesigner::cmdClose_Click);
}

void frmLabelDesigner::Form_Load(const QList<zib::CompilationRow>& rows)
{
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    zib::fitToScreen(this);
    m_surface->setEditable();
    LabelMaker::InitLabelDocument(rows);
    // A broken picture is told once the window is there to be told about.
    if (const zib::Outcome<> drawn = m_surface->RedrawLabel(); !drawn)
        QTimer::singleShot(
            0, this, [this, words = drawn.error().detail] { m_services.messages.critical(this, words); });
    EditTarget = kNothing;
    ui->txtCursor->installEventFilter(this);
    for (QPushButton* button : findChildren<QPushButton*>())
        button->installEventFilter(this);
    showFit();
}

/// A click on the window, the label area or the picture, which let it pass up to here.
void frmLabelDesigner::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        Form_Click();
}

/// Enter presses the button that has the focus. In the editor it closes that, and goes no further: the button
/// that gets the focus then is not meant.
bool frmLabelDesigner::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const auto* press = static_cast<QKeyEvent*>(event);
    if (press->key() != Qt::Key_Return && press->key() != Qt::Key_Enter)
        return false;
    auto* button = qobject_cast<QPushButton*>(watched);
    if (!button)
        EndCellEdit();
    else if (!press->isAutoRepeat()) // Held on after an edit, it means no button.
        button->click();
    return true;
}

/// Escape puts an edit away and nothing else: the label would be lost with the window.
void frmLabelDesigner::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F2)
        cdTitle_Click();
    else if (event->key() == Qt::Key_Escape)
        hideEditor();
    else
        QDialog::keyPressEvent(event);
}

void frmLabelDesigner::Form_Click()
{
    EndCellEdit();
}

void frmLabelDesigner::Title_Click()
{
    EndCellEdit();
    m_services.windows.showLabelTitle(this);
}

void frmLabelDesigner::cmdBack_Click()
{
    EndCellEdit();
    m_services.windows.showLabelBack(this);
}

void frmLabelDesigner::cmdList_Click()
{
    EndCellEdit();
    m_services.windows.showLabelList(this);
}

void frmLabelDesigner::cmdPrint_Click()
{
    EndCellEdit();
    ui->lblState->clear();
    if (const zib::Outcome<> shown = m_services.windows.showPreview(this); !shown)
        m_services.messages.critical(this, shown.error().detail);
}

void frmLabelDesigner::cmdCalibrate_Click()
{
    EndCellEdit();
    if (const zib::Outcome<> shown = m_services.windows.showCalibrate(this); !shown)
        m_services.messages.critical(this, shown.error().detail);
}

void frmLabelDesigner::cmdFit_Click()
{
    EndCellEdit();
    const auto tighter = zib::layout::tighterRows(labelArea());
    if (!tighter)
        return;
    LabelMaker::Document document = LabelDocument;
    document.RowHeight = tighter->rowHeight;
    document.TextFontSize = tighter->fontSize;
    document.PaddingTop = tighter->paddingTop;
    LabelMaker::setLabelDocument(document);
    RedrawTable();
    if (!ui->cmdFit->isVisible())
        ui->cmdList->setFocus();
}

void frmLabelDesigner::cmdClose_Click()
{
    close();
}

void frmLabelDesigner::showFit()
{
    const QString text = fitText(labelArea());
    ui->lblFit->setText(text);
    ui->lblFit->setVisible(!text.isEmpty());
    ui->cmdFit->setVisible(zib::layout::tighterRows(labelArea()).has_value());
}
