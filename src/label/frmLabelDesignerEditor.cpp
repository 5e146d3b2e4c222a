#include "label/frmLabelDesigner.h"
#include "ui_frmLabelDesigner.h"

#include "common/Twips.h"
#include "label/LabelControls.h"
#include "label/LabelMaker.h"
#include "label/LabelSurface.h"

#include <algorithm>

// The designer's editor, which stands over one text of the label at a time.

using LabelMaker::LabelDocument;

namespace {

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

} // namespace

int frmLabelDesigner::behind(int target)
{
    return target == kTitle ? 1 : target + 1;
}

int frmLabelDesigner::before(int target)
{
    if (target == kTitle)
        return kNothing;
    return target == 1 ? kTitle : target - 1;
}

bool frmLabelDesigner::focusNextPrevChild(bool next)
{
    const bool editing = EditTarget != kNothing && focusWidget() == ui->txtCursor;
    return (editing && editNext(next)) || QDialog::focusNextPrevChild(next);
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
    const int room = ui->Picture1->width() - ui->txtCursor->x();
    ui->txtCursor->resize(std::clamp(wanted, ui->txtCursor->width(), std::max(room, ui->txtCursor->width())),
                          ui->txtCursor->height());
}

/// The text before or behind another that is on the label; nothing at either end.
int frmLabelDesigner::neighbourOf(int target, bool forward) const
{
    const QRect area = ui->Picture1->rect();
    int next = forward ? behind(target) : before(target);
    while (m_surface->label(next) && !area.intersects(m_surface->label(next)->geometry()))
        next = forward ? behind(next) : before(next);
    return next == kTitle || m_surface->label(next) ? next : kNothing;
}

/// Moves the editor to the neighbouring text that is on the label, and leaves it at either end. @returns
/// whether the focus is where it belongs.
bool frmLabelDesigner::editNext(bool forward)
{
    const int target = neighbourOf(EditTarget, forward);
    if (target == kNothing) {
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

/// In pixels. Beyond the label nobody would see it, so there it is moved and narrowed into it.
QRect frmLabelDesigner::editorPlace(const zib::TextControl* label) const
{
    const qint32 padding = LabelDocument.PaddingLeft;
    const int wanted = zib::twipsFromPixels(label->width()) + padding + 30;
    const int width =
        std::min(zib::wholePixels(std::max(wanted, kNarrowestEditorTwips)), ui->Picture1->width());
    const int height = std::min(label->height(), ui->Picture1->height());
    const int left = zib::wholePixels(label->item().left - padding + 15);
    const int top = zib::wholePixels(label->item().top - LabelDocument.PaddingTop + 15);
    const int narrowest = std::min(width, zib::wholePixels(kNarrowestEditorTwips));
    const int shownLeft = std::clamp(left, 0, ui->Picture1->width() - narrowest);
    return {shownLeft, std::clamp(top, 0, ui->Picture1->height() - height),
            std::min(width, ui->Picture1->width() - shownLeft), height};
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
        m_surface->title()->setCaption(LabelDocument.TitleText); // As much of it as the document holds.
    }
    hideEditor();
}

/// Hiding the editor hands the focus on, which must not be taken for a step to the next text.
void frmLabelDesigner::hideEditor()
{
    EditTarget = kNothing;
    ui->txtCursor->hide();
}
