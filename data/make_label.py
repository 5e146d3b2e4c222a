#!/usr/bin/python3
"""Draws Sample1.jpg, the background that a new disc label starts with (1575x1575).

Pale on purpose: red and blue text stands on it. Nothing in it needs a fixed shape, since the
label stretches it. Needs rsvg-convert (librsvg2-bin) and python3-pil; the result is committed.
"""
import math
import pathlib
import subprocess

from PIL import Image

SIZE = 1575
MARGIN = 500  # drawn around the page and cut off, so that the blur does not pale at its edges
HERE = pathlib.Path(__file__).resolve().parent

# centre x, centre y, radius, colour, opacity
CLOUDS = (
    (180, 160, 620, "#cbe6ff", 0.85), (1430, 240, 560, "#e8ddff", 0.85), (1500, 1330, 640, "#ffe2d0", 0.85),
    (150, 1400, 600, "#d3f4ea", 0.85), (820, 1560, 460, "#fff0c4", 0.80), (800, -60, 420, "#d6ecff", 0.80),
)


def clouds():
    return "\n".join(
        f'<circle cx="{x}" cy="{y}" r="{r}" fill="{colour}" fill-opacity="{opacity}"/>'
        for x, y, r, colour, opacity in CLOUDS)


def stave(base, height, gap, phase, colour, opacity):
    """Five lines that swing across the page like a stave in the wind."""
    lines = []
    for n in range(5):
        points = []
        for x in range(-20, SIZE + 41, 20):
            t = x / SIZE
            swing = math.sin(2 * math.pi * (t * 0.95 + phase))
            spread = gap * (1 + 0.45 * math.sin(2 * math.pi * (t * 0.7 + phase + 0.3)))
            points.append(f"{x} {base + height * swing + (n - 2) * spread:.1f}")
        lines.append(f'<path d="M{" L".join(points)}" fill="none" stroke="{colour}" '
                     f'stroke-opacity="{opacity}" stroke-width="2.6"/>')
    return "\n".join(lines)


def note(x, y, scale, turn, colour, opacity):
    return (f'<g transform="translate({x} {y}) rotate({turn}) scale({scale})" fill="{colour}" '
            f'fill-opacity="{opacity}"><ellipse cx="0" cy="0" rx="13" ry="9.5" transform="rotate(-22)"/>'
            f'<path d="M9.4 -4 V-66 C14 -48 36 -46 30 -20 C30 -34 18 -40 13.4 -42 V-2 Z"/></g>')


def rings(x, y, first, last, step, colour):
    """Grooves of a record that reaches beyond the page."""
    return "\n".join(
        f'<circle cx="{x}" cy="{y}" r="{r}" fill="none" stroke="{colour}" stroke-width="2" '
        f'stroke-opacity="{0.30 * (1 - (r - first) / (last - first)):.3f}"/>'
        for r in range(first, last, step))


SVG = f"""<svg xmlns="http://www.w3.org/2000/svg" width="{SIZE + 2 * MARGIN}" height="{SIZE + 2 * MARGIN}"
 viewBox="{-MARGIN} {-MARGIN} {SIZE + 2 * MARGIN} {SIZE + 2 * MARGIN}">
<defs><filter id="soft" x="-50%" y="-50%" width="200%" height="200%"><feGaussianBlur stdDeviation="150"/></filter></defs>
<rect x="{-MARGIN}" y="{-MARGIN}" width="{SIZE + 2 * MARGIN}" height="{SIZE + 2 * MARGIN}" fill="#fbfdff"/>
<g filter="url(#soft)">{clouds()}</g>
{rings(SIZE + 60, -60, 160, 900, 22, "#8f86d8")}
{rings(-60, SIZE + 60, 160, 900, 22, "#58b79a")}
{stave(1408, 60, 25, 0.12, "#6f8fc4", 0.34)}
{note(250, 1462, 1.9, -8, "#5577b8", 0.36)}
{note(560, 1400, 1.6, 6, "#7a68c0", 0.32)}
{note(880, 1332, 1.9, 10, "#c07c5a", 0.34)}
{note(1190, 1372, 1.6, -6, "#c06a74", 0.32)}
{note(1420, 1446, 1.8, -10, "#5577b8", 0.32)}
</svg>
"""


def main():
    drawing, picture = HERE / "label.tmp.svg", HERE / "label.tmp.png"
    drawing.write_text(SVG, encoding="utf-8")
    subprocess.run(["rsvg-convert", str(drawing), "-o", str(picture)], check=True)
    page = (MARGIN, MARGIN, MARGIN + SIZE, MARGIN + SIZE)
    Image.open(picture).convert("RGB").crop(page).save(HERE / "Sample1.jpg", quality=88, optimize=True,
                                                       progressive=True, dpi=(300, 300))
    drawing.unlink()
    picture.unlink()


if __name__ == "__main__":
    main()
