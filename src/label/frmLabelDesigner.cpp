#include "label/frmLabelDesigner.h"
#include "ui_frmLabelDesigner.h"

#include "common/Messages.h"
#include "common/Twips.h"
#include "common/Windows.h"
#include "label/LabelControls.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"
#include "label/LabelSurface.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>

#include <algorithm>

using LabelMaker::LabelDocument;

namespace {

constexpr int kNothing = -2;
constexpr int kTitle = -1;
constexpr int kNarrowestEditorTwips = 750;
constexpr int kCaretRoom = 8;             ///< Pixels.
constexpr int kLightestTextOnWhite = 190; ///< Lightness, of 255.

/// The editor's colours: the label's own on white, or on black where white would hide them.
QPalette editorColors(const QWidget* editor, const QColor& text)
{
    QPalette colors = editor->palette();
    colors.setColor(QPalette::Text, text);
    colors.setColor(QPalette::Base, text.lightness() > kLightestTextOnWhite ? Qt::black : Qt::white);
    return colors;
}

/// Where the editor of a label lies, in pixels.
QRect editorPlace(const zib::TextControl* label)
{
    const qint32 padding = LabelDocument.PaddingLeft;
    const int width = zib::twipsFromPixels(label->width()) + padding + 30;
    return {zib::wholePixels(label->item().left - padding + 15),
            zib::wholePixels(label->item().top - LabelDocument.PaddingTop + 15),
            zib::wholePixels(std::max(width, kNarrowestEditorTwips)), label->height()};
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

void frmLabelDesigner::RedrawTable()
{
    m_surface->RedrawTable();
}

void frmLabelDesigner::RedrawTitle()
{
    m_surface->RedrawTitle();
}

void frmLabelDesigner::RedrawBackground()
{
    if (const zib::Outcome<> drawn = m_surface->RedrawBackground(); !drawn)
        m_services.messages.critical(nullptr, drawn.error().detail);
}

void frmLabelDesigner::connectControls()
{
    connect(m_surface->title(), &zib::TextControl::Click, this, &frmLabelDesigner::cdTitle_Click);
    connect(m_surface.get(), &zib::LabelSurface::labelClicked, this, &frmLabelDesigner::labels_Click);
    connect(ui->txtCursor, &QLineEdit::textEdited, this, &frmLabelDesigner::txtCursor_Change);
    connect(ui->txtCursor, &QLineEdit::returnPressed, this, &frmLabelDesigner::EndCellEdit);
    connect(ui->Title, &QPushButton::clicked, this, &frmLabelDesigner::Title_Click);
    connect(ui->cmdBack, &QPushButton::clicked, this, &frmLabelDesigner::cmdBack_Click);
    connect(ui->cmdList, &QPushButton::clicked, this, &frmLabelDesigner::cmdList_Click);
    connect(ui->cmdPrint, &QPushButton::clicked, this, &frmLabelDesigner::cmdPrint_Click);
    connect(ui->cmdClose, &QPushButton::clicked, this, &frmLabelDesigner::cmdClose_Click);
}

void frmLabelDesigner::Form_Load(const QList<zib::CompilationRow>& rows)
{
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    resize(size().boundedTo(screen()->availableSize() - QSize(0, 40)));
    m_surface->setEditable();
    LabelMaker::InitLabelDocument(rows);
    // A broken picture is told where the user can do something about it: in its dialog and before printing.
    static_cast<void>(m_surface->RedrawLabel());
    EditTarget = kNothing;
}

/// A click on the window, the label area or the picture, which let it pass up to here.
void frmLabelDesigner::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        Form_Click();
}

void frmLabelDesigner::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F2)
        cdTitle_Click();
    else if (event->key() == Qt::Key_Escape && EditTarget != kNothing)
        hideEditor();
    else
        QDialog::keyPressEvent(event);
}

bool frmLabelDesigner::focusNextPrevChild(bool next)
{
    const bool editing = EditTarget != kNothing && focusWidget() == ui->txtCursor;
    return (editing && editNext(next)) || QDialog::focusNextPrevChild(next);
}

void frmLabelDesigner::Form_Click()
{
    EndCellEdit();
}

void frmLabelDesigner::cdTitle_Click()
{
    edit(kTitle);
}

void frmLabelDesigner::labels_Click(int n)
{
    edit(n);
}

/// The editor grows with its text, as the label will.
void frmLabelDesigner::txtCursor_Change()
{
    const int text = ui->txtCursor->fontMetrics().horizontalAdvance(ui->txtCursor->text());
    const int wanted = zib::wholePixels(LabelDocument.PaddingLeft) + text + kCaretRoom;
    ui->txtCursor->resize(std::max(ui->txtCursor->width(), wanted), ui->txtCursor->height());
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
    if (const zib::Outcome<> shown = m_services.windows.showPreview(this); !shown)
        m_services.messages.critical(this, shown.error().detail);
}

void frmLabelDesigner::cmdClose_Click()
{
    close();
}

/// Moves the editor to the neighbouring text, and leaves it at either end. @returns whether the focus is
/// where it belongs.
bool frmLabelDesigner::editNext(bool forward)
{
    const int target = EditTarget == kTitle
                           ? (forward ? 1 : kNothing)
                           : (EditTarget == 1 && !forward ? kTitle : EditTarget + (forward ? 1 : -1));
    if (target != kTitle && !m_surface->label(target)) {
        EndCellEdit();
        return forward; // the hidden editor has handed the focus on already
    }
    edit(target);
    return true;
}

void frmLabelDesigner::edit(int target)
{
    EndCellEdit();
    EditTarget = target;
    BeginCellEdit(targetLabel());
}

zib::TextControl* frmLabelDesigner::targetLabel() const
{
    return EditTarget == kTitle ? m_surface->title() : m_surface->label(EditTarget);
}

void frmLabelDesigner::BeginCellEdit(const zib::TextControl* label)
{
    QLineEdit* editor = ui->txtCursor;
    editor->setFont(label->font());
    editor->setPalette(editorColors(editor, label->item().color));
    editor->setText(label->text());
    editor->setGeometry(editorPlace(label));
    editor->raise();
    editor->show();
    editor->setFocus();
    editor->selectAll();
    ui->scrollArea->ensureWidgetVisible(editor);
}

void frmLabelDesigner::EndCellEdit()
{
    if (zib::TextControl* label = targetLabel()) {
        const QString text = ui->txtCursor->text();
        label->setCaption(text.isEmpty() ? LabelMaker::kTenBlanks : text);
    }
    // A cell's new text stays in its label only; a title is kept in the document.
    if (EditTarget == kTitle) {
        LabelMaker::Document document = LabelDocument;
        document.TitleText = m_surface->title()->text();
        LabelMaker::setLabelDocument(document);
    }
    hideEditor();
}

/// Hiding the editor hands the focus on, which must not be taken for a step to the next text.
void frmLabelDesigner::hideEditor()
{
    EditTarget = kNothing;
    ui->txtCursor->hide();
}
