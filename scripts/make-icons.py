#!/usr/bin/env python3
"""Draws the GUI's white glyphs and writes them as PNG texture atlases with CEGUI imagesets.

Run by hand after changing a glyph, then commit the regenerated files:

    python3 scripts/make-icons.py

It writes, into assets/resources/:
  - Icons16px.png + Icons16px.imageset  ("Icons16px/<name>": 16x16 toolbar and panel icons)
  - DarkVexa.png  + DarkVexa.imageset   ("DarkVexa/<name>": the widget look's fill pixel,
                                          check mark, arrows and slider knob)

Only the Python 3 standard library is used (PNG is written with zlib + struct), and the output
is byte-for-byte deterministic, so regenerating without changes leaves git clean.

Every glyph is pure white; its shape lives in the alpha channel. The widget looks tint them
through colour properties, so one white image serves every state and theme. Shapes are defined
as point-membership tests in pixel coordinates (0..size, y down) and rasterised with 8x8
supersampling for anti-aliased edges.
"""

import math
import os
import struct
import sys
import zlib

SUPERSAMPLE = 8

# ---------------------------------------------------------------------------------------------
# Shape primitives: each returns a predicate inside(x, y) -> bool.
# ---------------------------------------------------------------------------------------------


def seg(ax, ay, bx, by, width):
    """A stroke from a to b with round caps."""
    dx, dy = bx - ax, by - ay
    length2 = dx * dx + dy * dy
    r2 = (width * 0.5) ** 2

    def inside(x, y):
        t = 0.0 if length2 == 0 else ((x - ax) * dx + (y - ay) * dy) / length2
        t = min(1.0, max(0.0, t))
        px = ax + t * dx - x
        py = ay + t * dy - y
        return px * px + py * py <= r2

    return inside


def polyline(points, width):
    """Connected strokes; round caps make round joins."""
    return union(*[seg(*points[i], *points[i + 1], width) for i in range(len(points) - 1)])


def circle(cx, cy, r):
    def inside(x, y):
        return (x - cx) ** 2 + (y - cy) ** 2 <= r * r

    return inside


def ring(cx, cy, r, width, start_deg=None, end_deg=None):
    """A circle outline of the given stroke width, optionally only an arc (degrees, y down,
    measured clockwise on screen from +x, from start to end)."""
    inner2 = (r - width * 0.5) ** 2
    outer2 = (r + width * 0.5) ** 2

    def inside(x, y):
        d2 = (x - cx) ** 2 + (y - cy) ** 2
        if d2 < inner2 or d2 > outer2:
            return False
        if start_deg is None:
            return True
        a = math.degrees(math.atan2(y - cy, x - cx)) % 360.0
        s = start_deg % 360.0
        e = end_deg % 360.0
        return s <= a <= e if s <= e else (a >= s or a <= e)

    return inside


def rect(x0, y0, x1, y1):
    def inside(x, y):
        return x0 <= x <= x1 and y0 <= y <= y1

    return inside


def round_rect(x0, y0, x1, y1, radius):
    def inside(x, y):
        if not (x0 <= x <= x1 and y0 <= y <= y1):
            return False
        cx = min(max(x, x0 + radius), x1 - radius)
        cy = min(max(y, y0 + radius), y1 - radius)
        return (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius

    return inside


def frame(x0, y0, x1, y1, width, radius=0.0):
    """The outline of a (rounded) rectangle, stroke inside the given bounds."""
    outer = round_rect(x0, y0, x1, y1, radius) if radius > 0 else rect(x0, y0, x1, y1)
    inner_radius = max(0.0, radius - width)
    inner = (round_rect(x0 + width, y0 + width, x1 - width, y1 - width, inner_radius)
             if inner_radius > 0 else rect(x0 + width, y0 + width, x1 - width, y1 - width))
    return diff(outer, inner)


def poly(points):
    """A filled polygon (even-odd rule)."""
    n = len(points)

    def inside(x, y):
        result = False
        j = n - 1
        for i in range(n):
            xi, yi = points[i]
            xj, yj = points[j]
            if (yi > y) != (yj > y):
                cross_x = xi + (y - yi) * (xj - xi) / (yj - yi)
                if x < cross_x:
                    result = not result
            j = i
        return result

    return inside


def union(*shapes):
    def inside(x, y):
        for s in shapes:
            if s(x, y):
                return True
        return False

    return inside


def diff(shape, *holes):
    def inside(x, y):
        if not shape(x, y):
            return False
        for h in holes:
            if h(x, y):
                return False
        return True

    return inside


def intersect(*shapes):
    def inside(x, y):
        for s in shapes:
            if not s(x, y):
                return False
        return True

    return inside


def rotated(shape, cx, cy, degrees):
    """The shape turned about (cx, cy) clockwise on screen."""
    c = math.cos(math.radians(degrees))
    s = math.sin(math.radians(degrees))

    def inside(x, y):
        dx, dy = x - cx, y - cy
        return shape(cx + dx * c + dy * s, cy - dx * s + dy * c)

    return inside


# ---------------------------------------------------------------------------------------------
# The 16x16 icons
# ---------------------------------------------------------------------------------------------

STROKE = 1.8


def icon_gear():
    cx = cy = 8.0

    def teeth(x, y):
        dx, dy = x - cx, y - cy
        d = math.hypot(dx, dy)
        if d > 7.3:
            return False
        angle = math.atan2(dy, dx)
        # eight teeth, each about a third of its sector wide
        sector = (angle / (2.0 * math.pi) * 8.0 + 0.5) % 1.0
        return abs(sector - 0.5) < 0.19

    body = union(circle(cx, cy, 5.3), teeth)
    return diff(body, circle(cx, cy, 2.3))


def icon_eye():
    cx, cy = 8.0, 8.0

    def lens(half_width, half_height):
        def inside(x, y):
            u = (x - cx) / half_width
            if abs(u) >= 1.0:
                return False
            return abs(y - cy) <= half_height * (1.0 - u * u)

        return inside

    outline = diff(lens(7.6, 5.4), lens(5.9, 3.7))
    return union(outline, circle(cx, cy, 2.4))


def icon_camera():
    body = round_rect(1.0, 4.5, 15.0, 13.5, 1.5)
    hump = round_rect(5.0, 2.5, 10.5, 5.5, 0.8)
    lens_hole = circle(8.0, 9.0, 3.3)
    lens = circle(8.0, 9.0, 1.9)
    flash = rect(12.0, 6.0, 13.5, 7.0)
    return union(diff(union(body, hump), lens_hole, flash), lens)


def icon_video():
    body = round_rect(1.0, 4.0, 10.5, 12.0, 1.2)
    lens = poly([(11.0, 8.0), (15.0, 4.5), (15.0, 11.5)])
    return union(body, lens)


def icon_home():
    roof = polyline([(1.8, 8.2), (8.0, 2.2), (14.2, 8.2)], 1.9)
    walls = rect(3.5, 7.5, 12.5, 14.5)
    door = rect(6.8, 10.0, 9.2, 14.6)
    return union(roof, diff(walls, door))


def icon_pin():
    head = round_rect(4.5, 1.5, 11.5, 3.5, 0.6)
    body = poly([(6.0, 3.0), (10.0, 3.0), (10.7, 8.5), (5.3, 8.5)])
    base = round_rect(3.0, 8.3, 13.0, 10.3, 0.6)
    needle = seg(8.0, 10.0, 8.0, 15.0, 1.4)
    return union(head, body, base, needle)


def icon_folder():
    tab = round_rect(1.5, 3.0, 7.0, 6.0, 0.8)
    body = round_rect(1.5, 4.8, 14.5, 13.0, 1.0)
    return union(tab, body)


def icon_file():
    page = poly([(3.0, 1.5), (10.0, 1.5), (13.0, 4.5), (13.0, 14.5), (3.0, 14.5)])
    inner = poly([(4.5, 3.0), (9.0, 3.0), (9.0, 6.0), (11.5, 6.0), (11.5, 13.0), (4.5, 13.0)])
    return diff(page, inner)


def icon_refresh():
    arc = ring(8.0, 8.0, 5.0, STROKE, 330.0, 270.0)  # open at the top right
    head = poly([(8.0, 0.6), (12.2, 3.0), (8.0, 5.4)])
    return union(arc, head)


def icon_info():
    outline = ring(8.0, 8.0, 6.4, 1.5)
    dot = circle(8.0, 4.9, 1.1)
    stem = seg(8.0, 7.4, 8.0, 11.6, 1.8)
    return union(outline, dot, stem)


def icon_layout():
    return union(
        frame(1.5, 1.5, 14.5, 14.5, 1.5, 1.5),
        rect(7.25, 2.0, 8.75, 14.0),
        rect(2.0, 7.25, 14.0, 8.75),
    )


ICONS = [
    ("right", polyline([(6.0, 3.0), (11.0, 8.0), (6.0, 13.0)], 2.0)),
    ("left", polyline([(10.0, 3.0), (5.0, 8.0), (10.0, 13.0)], 2.0)),
    ("up", polyline([(3.0, 10.5), (8.0, 5.5), (13.0, 10.5)], 2.0)),
    ("down", polyline([(3.0, 5.5), (8.0, 10.5), (13.0, 5.5)], 2.0)),
    ("zoom", union(ring(6.6, 6.6, 4.4, STROKE), seg(10.0, 10.0, 14.0, 14.0, 2.6))),
    ("pin", icon_pin()),
    ("close", union(seg(4.0, 4.0, 12.0, 12.0, STROKE), seg(12.0, 4.0, 4.0, 12.0, STROKE))),
    ("home", icon_home()),
    ("back", union(seg(3.5, 8.0, 13.0, 8.0, STROKE),
                   polyline([(7.5, 3.8), (3.3, 8.0), (7.5, 12.2)], STROKE))),
    ("forward", union(seg(3.0, 8.0, 12.5, 8.0, STROKE),
                      polyline([(8.5, 3.8), (12.7, 8.0), (8.5, 12.2)], STROKE))),
    ("settings", icon_gear()),
    ("camera", icon_camera()),
    ("video", icon_video()),
    ("eye", icon_eye()),
    ("check", polyline([(2.8, 8.6), (6.3, 12.0), (13.2, 4.2)], 2.0)),
    ("plus", union(seg(8.0, 3.0, 8.0, 13.0, STROKE), seg(3.0, 8.0, 13.0, 8.0, STROKE))),
    ("minus", seg(3.0, 8.0, 13.0, 8.0, STROKE)),
    ("play", poly([(4.0, 2.5), (13.5, 8.0), (4.0, 13.5)])),
    ("pause", union(rect(3.5, 3.0, 6.5, 13.0), rect(9.5, 3.0, 12.5, 13.0))),
    ("stop", round_rect(3.0, 3.0, 13.0, 13.0, 1.0)),
    ("record", circle(8.0, 8.0, 5.2)),
    ("folder", icon_folder()),
    ("file", icon_file()),
    ("refresh", icon_refresh()),
    ("info", icon_info()),
    ("layout", icon_layout()),
    ("menu", union(rect(2.0, 3.0, 14.0, 4.8), rect(2.0, 7.1, 14.0, 8.9), rect(2.0, 11.2, 14.0, 13.0))),
    ("search", union(ring(6.6, 6.6, 4.4, STROKE), seg(10.0, 10.0, 14.0, 14.0, 2.6))),
]

# ---------------------------------------------------------------------------------------------
# The widget look's own images
# ---------------------------------------------------------------------------------------------

# (name, width, height, shape or None for a solid block)
WIDGET_GLYPHS = [
    ("Check", 10, 8, polyline([(1.2, 4.2), (3.8, 6.8), (8.8, 1.2)], 1.8)),
    ("ArrowUp", 7, 4, poly([(0.0, 4.0), (3.5, 0.0), (7.0, 4.0)])),
    ("ArrowDown", 7, 4, poly([(0.0, 0.0), (7.0, 0.0), (3.5, 4.0)])),
    ("ArrowLeft", 4, 7, poly([(4.0, 0.0), (4.0, 7.0), (0.0, 3.5)])),
    ("ArrowRight", 4, 7, poly([(0.0, 0.0), (4.0, 3.5), (0.0, 7.0)])),
    ("ComboArrow", 10, 6, polyline([(1.0, 1.0), (5.0, 5.0), (9.0, 1.0)], 1.6)),
    ("Knob", 12, 12, circle(6.0, 6.0, 6.0)),
    ("RadioDot", 6, 6, circle(3.0, 3.0, 3.0)),
    ("Dash", 8, 2, rect(0.0, 0.0, 8.0, 2.0)),
]

# ---------------------------------------------------------------------------------------------
# Rasterising and writing
# ---------------------------------------------------------------------------------------------


class Canvas:
    """An RGBA image kept as white with a separate alpha plane."""

    def __init__(self, width, height):
        self.width = width
        self.height = height
        self.alpha = bytearray(width * height)

    def draw(self, shape, left, top, width, height):
        step = 1.0 / SUPERSAMPLE
        total = SUPERSAMPLE * SUPERSAMPLE
        for j in range(height):
            for i in range(width):
                hits = 0
                for sy in range(SUPERSAMPLE):
                    y = j + (sy + 0.5) * step
                    for sx in range(SUPERSAMPLE):
                        if shape(i + (sx + 0.5) * step, y):
                            hits += 1
                if hits:
                    value = (hits * 255 + total // 2) // total
                    index = (top + j) * self.width + left + i
                    self.alpha[index] = max(self.alpha[index], value)

    def fill(self, left, top, width, height):
        for j in range(top, top + height):
            for i in range(left, left + width):
                self.alpha[j * self.width + i] = 255

    def png_bytes(self):
        raw = bytearray()
        for j in range(self.height):
            raw.append(0)  # filter: none
            for i in range(self.width):
                # RGB stays white even where transparent, so filtering never darkens edges
                raw += bytes((255, 255, 255, self.alpha[j * self.width + i]))

        def chunk(kind, data):
            body = kind + data
            return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 6, 0, 0, 0)
        return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
                + chunk(b"IDAT", zlib.compress(bytes(raw), 9)) + chunk(b"IEND", b""))


def imageset_xml(name, image_file, images):
    lines = ['<?xml version="1.0" ?>',
             "<!-- Generated by scripts/make-icons.py; edit the script, not this file. -->",
             f'<Imageset version="2" name="{name}" imagefile="{image_file}" '
             'nativeHorzRes="1280" nativeVertRes="720" autoScaled="false">']
    for image_name, x, y, w, h in images:
        lines.append(f'    <Image name="{image_name}" xPos="{x}" yPos="{y}" width="{w}" height="{h}" />')
    lines.append("</Imageset>")
    return "\n".join(lines) + "\n"


def build_icons():
    cell = 20  # 16 px icon plus a 2 px transparent gutter on every side
    columns = 8
    rows = (len(ICONS) + columns - 1) // columns
    canvas = Canvas(columns * cell, rows * cell)
    images = []
    for index, (name, shape) in enumerate(ICONS):
        left = (index % columns) * cell + 2
        top = (index // columns) * cell + 2
        canvas.draw(shape, left, top, 16, 16)
        images.append((name, left, top, 16, 16))
    return canvas, images


def build_widget_images():
    canvas = Canvas(64, 32)
    images = []
    # An 8x8 white block: "Fill" and "Pixel" sit well inside it, so bilinear filtering at any
    # scale only ever samples white.
    canvas.fill(0, 0, 8, 8)
    images.append(("Fill", 2, 2, 4, 4))
    images.append(("Pixel", 3, 3, 1, 1))
    x, y, row_height = 10, 0, 0
    for name, w, h, shape in WIDGET_GLYPHS:
        if x + w > canvas.width:
            x, y, row_height = 0, y + row_height + 2, 0
            x = 10 if y < 10 else 0
        canvas.draw(shape, x, y + 1, w, h)
        images.append((name, x, y + 1, w, h))
        x += w + 2
        row_height = max(row_height, h + 1)
    return canvas, images


def write(path, data):
    mode = "wb" if isinstance(data, bytes) else "w"
    with open(path, mode) as f:
        f.write(data)
    print("wrote", os.path.relpath(path))


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    out = os.path.join(root, "assets", "resources")
    if not os.path.isdir(out):
        sys.exit(f"make-icons: no resource directory at {out}")

    icons, icon_images = build_icons()
    write(os.path.join(out, "Icons16px.png"), icons.png_bytes())
    write(os.path.join(out, "Icons16px.imageset"), imageset_xml("Icons16px", "Icons16px.png", icon_images))

    widgets, widget_images = build_widget_images()
    write(os.path.join(out, "DarkVexa.png"), widgets.png_bytes())
    write(os.path.join(out, "DarkVexa.imageset"), imageset_xml("DarkVexa", "DarkVexa.png", widget_images))


if __name__ == "__main__":
    main()
