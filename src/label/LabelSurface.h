#pragma once

#include "common/Outcome.h"
#include "label/LabelItems.h"

#include <QList>
#include <QObject>

#include <memory>

class QWidget;

namespace zib {

class DiscOutline;
class ImageControl;
class LineControl;
class TextControl;

/// The controls of one label surface, laid out from the label document: Image1, cdTitle and the arrays lines
/// and labels, whose member 0 is a template that stays hidden. The controls belong to the surface. A faint
/// outline of the disc lies before them.
class LabelSurface final : public QObject
{
    Q_OBJECT
public:
    /// Finds the controls among the children of @p surface, which must have them all.
    LabelSurface(QWidget* surface, QSize areaTwips);
    /// Removes the lines and cells; the surface must still be there.
    ~LabelSurface() override;

    /// The picture to begin with: it stays when the document's file is not there.
    void setImage(const LabelImage& image);
    /// The picture in its place as it is now, shown or hidden; a null one when none was ever read.
    LabelImage image() const;

    /// Shows over title and cells that they can be edited.
    void setEditable();

    /// The three steps below, in this order.
    Outcome<> RedrawLabel();
    /// Makes every line and cell anew.
    void RedrawTable();
    void RedrawTitle();
    /// @returns a failure when the image is used, its file is there and cannot be shown: then the picture
    /// stays as it was. A missing file is none.
    Outcome<> RedrawBackground();

    TextControl* title() const { return m_title; }
    /// @returns cell label n, counted from 1; none when there is no such label.
    TextControl* label(int n) const;

    /// The label as the controls show it at this moment.
    LabelScene scene() const;

signals:
    void labelClicked(int n);

private:
    void unloadTable();
    void addLine(const LabelLine& line);
    void addLabel(const LabelText& text);

    QWidget* m_surface;
    QSize m_area; ///< Twips.
    bool m_editable = false;
    ImageControl* m_image;
    TextControl* m_title;
    QList<LineControl*> m_lines;                   ///< Member 0 is the template.
    QList<TextControl*> m_labels;                  ///< Member 0 is the template.
    DiscOutline* m_disc;                           ///< Before everything else.
    std::shared_ptr<const LabelPicture> m_picture; ///< What is shown, held for the next who asks.
};

} // namespace zib
