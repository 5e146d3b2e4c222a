#include "label/LabelSurface.h"

#include "common/Twips.h"
#include "label/DiscOutline.h"
#include "label/LabelControls.h"
#include "label/LabelLayout.h"
#include "label/LabelMaker.h"
#include "label/LabelPictureFile.h"

#include <QPalette>
#include <QWidget>

using LabelMaker::LabelDocument;

namespace zib {

namespace {

template <typename Control>
Control* child(QWidget* surface, const QString& name)
{
    auto* control = surface->findChild<Control*>(name, Qt::FindDirectChildrenOnly);
    Q_ASSERT(control);
    return control;
}

void paintSurface(QWidget* surface, const QColor& color)
{
    QPalette colors = surface->palette();
    colors.setColor(QPalette::Window, color);
    surface->setPalette(colors);
    surface->setAutoFillBackground(true);
}

/// Removes an array's members from the highest down to 1.
template <typename Control>
void unload(QList<Control*>& array)
{
    while (array.size() > 1)
        delete array.takeLast();
}

} // namespace

LabelSurface::LabelSurface(QWidget* surface, QSize areaTwips)
    : m_surface(surface), m_area(areaTwips), m_image(child<ImageControl>(surface, QStringLiteral("Image1"))),
      m_title(child<TextControl>(surface, QStringLiteral("cdTitle"))), m_lines{child<LineControl>(
                                                                           surface,
                                                                           QStringLiteral("lines_0"))},
      m_labels{child<TextControl>(surface, QStringLiteral("labels_0"))}, m_disc(new DiscOutline(surface))
{
    m_lines[0]->hide();
    m_labels[0]->hide();
    m_disc->resize(wholePixels(areaTwips.width()), wholePixels(areaTwips.height()));
    paintSurface(m_surface, Qt::white);
}

LabelSurface::~LabelSurface()
{
    m_surface->setUpdatesEnabled(false);
    unloadTable();
    delete m_disc;
}

void LabelSurface::setImage(const LabelImage& image)
{
    if (!image.picture.image.isNull())
        m_image->setItem(image);
}

LabelImage LabelSurface::image() const
{
    return m_image->item();
}

void LabelSurface::setEditable()
{
    m_editable = true;
    m_title->setCursor(Qt::IBeamCursor);
}

Outcome<> LabelSurface::RedrawLabel()
{
    RedrawTable();
    RedrawTitle();
    return RedrawBackground();
}

void LabelSurface::RedrawTable()
{
    LabelMaker::Document document = LabelDocument;
    document.TextFontName = document.TextFontName.trimmed();
    LabelMaker::setLabelDocument(document);

    m_surface->setUpdatesEnabled(false);
    unloadTable();
    for (const LabelLine& line : layout::gridLines())
        addLine(line);
    for (const LabelText& text : layout::cellTexts())
        addLabel(text);
    m_disc->raise();
    m_surface->setUpdatesEnabled(true);
}

void LabelSurface::RedrawTitle()
{
    LabelMaker::Document document = LabelDocument;
    document.TitleText = document.TitleText.trimmed();
    document.TitleFontName = document.TitleFontName.trimmed();
    LabelMaker::setLabelDocument(document);
    m_title->setItem(layout::title());
}

Outcome<> LabelSurface::RedrawBackground()
{
    LabelMaker::Document document = LabelDocument;
    document.BackImagePath = document.BackImagePath.trimmed();
    LabelMaker::setLabelDocument(document);
    if (document.UseBackColor)
        paintSurface(m_surface, document.BackColor);
    m_image->setVisible(document.UseBackImage);
    if (document.BackImagePath.isEmpty())
        return {};
    const auto picture = sharedPicture(document.BackImagePath, this);
    if (!picture) {
        const bool told = document.UseBackImage && picture.error().kind != Failure::Kind::NotFound;
        return told ? Outcome<>(picture.error()) : Outcome<>();
    }
    m_picture = *picture;
    m_image->setItem({layout::imagePlace(m_picture->size, m_area), *m_picture});
    return {};
}

TextControl* LabelSurface::label(int n) const
{
    return n >= 1 ? m_labels.value(n) : nullptr;
}

LabelScene LabelSurface::scene() const
{
    LabelScene scene;
    scene.area = m_area;
    scene.background = m_surface->palette().color(QPalette::Window);
    if (!m_image->isHidden())
        scene.image = m_image->item();
    scene.title = m_title->item();
    for (const LineControl* line : m_lines.mid(1))
        scene.lines << line->item();
    for (const TextControl* cell : m_labels.mid(1))
        scene.cells << cell->item();
    return scene;
}

void LabelSurface::unloadTable()
{
    unload(m_labels);
    unload(m_lines);
}

void LabelSurface::addLine(const LabelLine& line)
{
    auto* control = new LineControl(m_surface);
    control->setObjectName(QStringLiteral("lines_%1").arg(m_lines.size()));
    control->setItem(line);
    control->show();
    m_lines << control;
}

void LabelSurface::addLabel(const LabelText& text)
{
    auto* control = new TextControl(m_surface);
    const auto n = static_cast<int>(m_labels.size());
    control->setObjectName(QStringLiteral("labels_%1").arg(n));
    control->setItem(text);
    if (m_editable)
        control->setCursor(Qt::IBeamCursor);
    control->show();
    connect(control, &TextControl::Click, this, [this, n] { emit labelClicked(n); });
    m_labels << control;
}

} // namespace zib
