#!/usr/bin/python3
"""Draws splash.svg and renders splash.png (480x300) and splash@2x.png (960x600).

Needs rsvg-convert (librsvg2-bin), python3-pil and the fonts of fonts-urw-base35. The results are committed,
so building the program needs neither.
"""
import colorsys
import math
import pathlib
import subprocess

from PIL import Image

WIDTH, HEIGHT = 480, 300
CENTRE_X, CENTRE_Y, RADIUS, HUB = 392, 128, 172, 26
COUNT = 31  # bars of the wave form
HERE = pathlib.Path(__file__).resolve().parent


def point(radius, degrees):
    angle = math.radians(degrees)
    return CENTRE_X + radius * math.cos(angle), CENTRE_Y + radius * math.sin(angle)


def wedge(start, end, inner, outer):
    """An annular sector as a path."""
    (ax, ay), (bx, by) = point(outer, start), point(outer, end)
    (cx, cy), (dx, dy) = point(inner, end), point(inner, start)
    return (f"M{ax:.2f} {ay:.2f} A{outer} {outer} 0 0 1 {bx:.2f} {by:.2f} "
            f"L{cx:.2f} {cy:.2f} A{inner} {inner} 0 0 0 {dx:.2f} {dy:.2f} Z")


def rainbow():
    """Light on a disc: two opposite fans of colour that fade out towards their edges."""
    parts = []
    for middle, span, hue in ((200, 74, 0.52), (20, 62, 0.02), (112, 40, 0.74), (292, 40, 0.10)):
        steps = 74
        for i in range(steps):
            t = (i + 0.5) / steps
            colour = colorsys.hls_to_rgb((hue + 0.42 * t) % 1.0, 0.66, 0.85)
            fill = "#%02x%02x%02x" % tuple(round(255 * c) for c in colour)
            strength = 0.60 * math.sin(math.pi * t) ** 2
            start = middle - span / 2 + span * i / steps
            parts.append(f'<path d="{wedge(start, start + span / steps, HUB + 22, RADIUS - 5)}" '
                         f'fill="{fill}" fill-opacity="{strength:.3f}"/>')
    return "\n  ".join(parts)


def grooves():
    return "\n  ".join(
        f'<circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{r}" fill="none" stroke="#ffffff" '
        f'stroke-opacity="{0.05 + 0.05 * (i % 3 == 0):.2f}" stroke-width="0.8"/>'
        for i, r in enumerate(range(HUB + 26, RADIUS - 4, 7)))


def sound():
    """Bars of a wave form below the title, ending at the disc."""
    bars = []
    for i in range(COUNT):
        t = i / (COUNT - 1)
        level = (0.30 + 0.28 * math.sin(i * 0.55) + 0.22 * math.sin(i * 1.37 + 0.7)
                 + 0.12 * math.sin(i * 2.9))
        height = max(2.0, 44 * abs(level) * math.sin(math.pi * (0.06 + 0.9 * t)) ** 0.8)
        x = 33 + i * 6.7
        bars.append(f'<rect x="{x:.1f}" y="{238 - height / 2:.1f}" width="3.2" height="{height:.1f}" '
                    f'rx="1.6" fill="url(#bars)" fill-opacity="{0.95 - 0.25 * t:.2f}"/>')
    return "\n  ".join(bars)


SVG = f"""<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" viewBox="0 0 {WIDTH} {HEIGHT}">
 <defs>
  <linearGradient id="night" x1="0" y1="0" x2="1" y2="1">
   <stop offset="0" stop-color="#17223b"/><stop offset="0.55" stop-color="#1d3358"/><stop offset="1" stop-color="#14203a"/>
  </linearGradient>
  <radialGradient id="warm" gradientUnits="userSpaceOnUse" cx="{CENTRE_X}" cy="{CENTRE_Y}" r="270">
   <stop offset="0" stop-color="#ff9a3c" stop-opacity="0.55"/><stop offset="0.6" stop-color="#ff7a3c" stop-opacity="0.18"/>
   <stop offset="1" stop-color="#ff7a3c" stop-opacity="0"/>
  </radialGradient>
  <linearGradient id="silver" x1="0" y1="0" x2="1" y2="1">
   <stop offset="0" stop-color="#f3f7fc"/><stop offset="0.5" stop-color="#aebfd4"/><stop offset="1" stop-color="#6f87a6"/>
  </linearGradient>
  <linearGradient id="bars" gradientUnits="userSpaceOnUse" x1="33" y1="0" x2="240" y2="0">
   <stop offset="0" stop-color="#6fc3ff"/><stop offset="0.55" stop-color="#a99bff"/><stop offset="1" stop-color="#ffb25a"/>
  </linearGradient>
  <linearGradient id="veil" x1="0" y1="0" x2="1" y2="0">
   <stop offset="0" stop-color="#17223b" stop-opacity="0.9"/><stop offset="0.62" stop-color="#17223b" stop-opacity="0.25"/>
   <stop offset="0.75" stop-color="#17223b" stop-opacity="0"/>
  </linearGradient>
 </defs>
 <rect width="{WIDTH}" height="{HEIGHT}" fill="url(#night)"/>
 <rect width="{WIDTH}" height="{HEIGHT}" fill="url(#warm)"/>
 <g>
  <circle cx="{CENTRE_X}" cy="{CENTRE_Y + 5}" r="{RADIUS + 2}" fill="#000000" fill-opacity="0.22"/>
  <circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{RADIUS}" fill="url(#silver)" stroke="#dfe8f3" stroke-opacity="0.8" stroke-width="1.6"/>
  <g shape-rendering="crispEdges">
  {rainbow()}
  </g>
  {grooves()}
  <circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{HUB + 22}" fill="#e9eff7" fill-opacity="0.88" stroke="#8ea2bb" stroke-width="1.2"/>
  <circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{HUB + 12}" fill="none" stroke="#9db0c7" stroke-width="1"/>
  <circle cx="{CENTRE_X}" cy="{CENTRE_Y}" r="{HUB - 4}" fill="#22365a" stroke="#8ea2bb" stroke-width="1.4"/>
 </g>
 <rect width="{WIDTH}" height="{HEIGHT}" fill="url(#veil)"/>
  {sound()}
 <g font-family="URW Gothic, Liberation Sans, sans-serif">
  <text x="30" y="92" font-size="62" font-weight="600" fill="#ffffff">Zib</text>
  <text x="32" y="136" font-size="33" fill="#ffffff">CD Burner</text>
  <rect x="33" y="153" width="46" height="3" rx="1.5" fill="#ff9a3c"/>
  <text x="32" y="181" font-size="14.5" fill="#c5d8f2">Your MP3 and WAV files</text>
  <text x="32" y="201" font-size="14.5" fill="#c5d8f2">on an audio CD</text>
  <text x="32" y="284" font-size="10" fill="#92a8c8">Free software under the GNU GPL</text>
 </g>
 <rect x="0.5" y="0.5" width="{WIDTH - 1}" height="{HEIGHT - 1}" fill="none" stroke="#5f7ba6" stroke-opacity="0.7"/>
</svg>
"""


def main():
    svg, large = HERE / "splash.svg", HERE / "splash@8x.png"
    svg.write_text(SVG, encoding="utf-8")
    # The fans have hard edges so that neighbours leave no seam; shrinking smooths them.
    subprocess.run(["rsvg-convert", "-z", "8", str(svg), "-o", str(large)], check=True)
    picture = Image.open(large).convert("RGB")
    for name, scale in (("splash.png", 1), ("splash@2x.png", 2)):
        picture.resize((WIDTH * scale, HEIGHT * scale), Image.LANCZOS).save(HERE / name, optimize=True)
    large.unlink()


if __name__ == "__main__":
    main()
