#!/usr/bin/env python3
"""Renders the matcap images: spheres lit the way each material looks under studio lighting,
seen from the camera. A renderer looks up a surface's colour by its view-space normal, so a
mesh drawn with a matcap looks made of that material without any lights in the scene.

Run by hand after changing a material, then commit the regenerated files:

    python3 scripts/make-matcaps.py [output folder]      (default: assets/matcaps)

Each image is 256x256 RGBA: the sphere fills the image, the outside of the disc is transparent
black and the rim is anti-aliased by supersampling. The file name (without ".png") is what the
user sees in the matcap list, which is sorted by name; the sixth entry is the default, so the
names are chosen to put the neutral "Neutral Grey" there.

Only the Python 3 standard library is used (PNG is written with zlib + struct), and the output
is byte-for-byte deterministic, so regenerating without changes leaves git clean.

Shading happens in linear light in view space (x right, y up, z towards the viewer) and is
converted to sRGB at the end. Every material shares the same studio: a warm key light from the
upper left, a cool fill from the right, a rim light from behind and a sky/ground ambient.
"""

import math
import os
import struct
import sys
import zlib

SIZE = 256
RIM_SAMPLES = 6  # per axis, only for pixels the disc's edge crosses

# ---------------------------------------------------------------------------------------------
# Vector helpers (tuples of three floats)
# ---------------------------------------------------------------------------------------------


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def normalize(v):
    length = math.sqrt(dot(v, v))
    return (v[0] / length, v[1] / length, v[2] / length)


def add(*vs):
    return (sum(v[0] for v in vs), sum(v[1] for v in vs), sum(v[2] for v in vs))


def scale(v, s):
    return (v[0] * s, v[1] * s, v[2] * s)


def mul(a, b):
    return (a[0] * b[0], a[1] * b[1], a[2] * b[2])


def mix(a, b, t):
    return (a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t)


def clamp01(x):
    return 0.0 if x < 0.0 else 1.0 if x > 1.0 else x


def smoothstep(edge0, edge1, x):
    t = clamp01((x - edge0) / (edge1 - edge0))
    return t * t * (3.0 - 2.0 * t)


def to_linear(srgb):
    return tuple(c ** 2.2 for c in srgb)


def reflect_view(n):
    """The view ray (towards -z) reflected about the normal."""
    nv = n[2]
    return (2.0 * nv * n[0], 2.0 * nv * n[1], 2.0 * nv * n[2] - 1.0)


# ---------------------------------------------------------------------------------------------
# The studio
# ---------------------------------------------------------------------------------------------

VIEW = (0.0, 0.0, 1.0)
KEY = (normalize((-0.55, 0.6, 0.6)), to_linear((1.0, 0.97, 0.92)), 1.0)
FILL = (normalize((0.75, -0.05, 0.45)), to_linear((0.85, 0.9, 1.0)), 0.3)
RIM = (normalize((0.35, 0.55, -0.75)), to_linear((1.0, 1.0, 1.0)), 0.6)
SKY = to_linear((0.75, 0.8, 0.9))
GROUND = to_linear((0.32, 0.3, 0.28))


def ambient(n):
    return mix(GROUND, SKY, 0.5 + 0.5 * n[1])


def environment(r, softness):
    """A photo-studio surround seen in direction r: bright sky fading to a dark horizon band,
    a darker floor, and two soft boxes. `softness` widens every transition, for rough metals."""
    y = r[1]
    sky = mix(to_linear((0.78, 0.8, 0.84)), to_linear((0.42, 0.46, 0.55)), smoothstep(0.0, 0.9, y))
    floor = mix(to_linear((0.3, 0.27, 0.24)), to_linear((0.12, 0.11, 0.1)), smoothstep(0.0, -0.8, y))
    horizon = smoothstep(-0.04 - softness, 0.04 + softness, y)
    colour = mix(floor, sky, horizon)
    band = 1.0 - smoothstep(0.0, 0.08 + softness, abs(y + 0.02))
    colour = scale(colour, 1.0 - 0.75 * band)
    for direction, strength, size in ((KEY[0], 4.0, 0.93), (FILL[0], 1.5, 0.95)):
        c = dot(r, direction)
        colour = add(colour, scale((1.0, 1.0, 1.0), strength * smoothstep(size - softness, size + 0.03, c)))
    return colour


def blinn(n, light, shininess):
    h = normalize(add(light, VIEW))
    return max(0.0, dot(n, h)) ** shininess


def fresnel(n, f0):
    return f0 + (1.0 - f0) * (1.0 - max(0.0, n[2])) ** 5


# ---------------------------------------------------------------------------------------------
# Materials: each maps a view-space normal to a linear RGB colour.
# ---------------------------------------------------------------------------------------------


def lit(base, wrap=0.0, specular=0.0, shininess=16.0, rim=0.0, ambient_amount=0.25, scatter=None,
        gloss=0.0):
    """Diffuse with wrap-around (soft terminators), Blinn-Phong highlights, a rim light, and for
    translucent materials a tinted glow where light scatters past the terminator."""
    base = to_linear(base)
    scatter = to_linear(scatter) if scatter else None

    def shade(n):
        colour = scale(mul(base, ambient(n)), ambient_amount)
        for direction, light_colour, intensity in (KEY, FILL):
            nl = dot(n, direction)
            diffuse = max(0.0, (nl + wrap) / (1.0 + wrap))
            colour = add(colour, scale(mul(base, light_colour), diffuse * intensity))
            if scatter:
                band = smoothstep(-0.5, 0.0, nl) * (1.0 - smoothstep(0.0, 0.6, nl))
                colour = add(colour, scale(mul(scatter, light_colour), 0.35 * band * intensity))
            if specular:
                colour = add(colour, scale(light_colour, specular * intensity * blinn(n, direction, shininess)))
        if rim:
            edge = (1.0 - max(0.0, n[2])) ** 3
            behind = 0.5 + 0.5 * dot(n, normalize((RIM[0][0], RIM[0][1], 0.0)))
            colour = add(colour, scale(RIM[1], rim * edge * behind))
        if gloss:
            colour = mix(colour, environment(reflect_view(n), 0.15), gloss * fresnel(n, 0.04))
        return colour

    return shade


def metal(tint, softness):
    """A mirror-like metal: the studio reflected and tinted, brighter towards grazing angles."""
    tint = to_linear(tint)

    def shade(n):
        f = fresnel(n, 0.0)
        reflectance = mix(tint, (1.0, 1.0, 1.0), f)
        colour = mul(environment(reflect_view(n), softness), reflectance)
        return add(colour, scale(reflectance, 0.5 * blinn(n, KEY[0], 200.0)))

    return shade


def pearl(n):
    """White nacre with a soft sheen whose hue drifts from pink to green towards the rim."""
    colour = lit((0.9, 0.88, 0.86), wrap=0.4, specular=0.25, shininess=30.0, rim=0.15, ambient_amount=0.35)(n)
    t = 1.0 - max(0.0, n[2])
    hue = (0.5 + 0.5 * math.cos(6.0 * t + 0.0), 0.5 + 0.5 * math.cos(6.0 * t + 2.1),
           0.5 + 0.5 * math.cos(6.0 * t + 4.2))
    return mix(colour, mul(colour, add(scale(hue, 0.6), (0.55, 0.55, 0.55))), 0.6 * smoothstep(0.05, 0.7, t))


def toon(n):
    """Three flat bands, a hard highlight and a dark outline, with one-pixel soft edges."""
    base = to_linear((0.2, 0.62, 0.72))
    nl = dot(n, KEY[0])
    px = 2.0 / SIZE
    level = 0.3 + 0.35 * smoothstep(0.1 - px, 0.1 + px, nl) + 0.35 * smoothstep(0.55 - px, 0.55 + px, nl)
    colour = scale(base, level * 1.2)
    highlight = smoothstep(0.965 - 0.004, 0.965 + 0.004, dot(n, normalize(add(KEY[0], VIEW))))
    colour = mix(colour, (1.0, 1.0, 1.0), highlight)
    outline = 1.0 - smoothstep(0.2 - 2 * px, 0.2 + 2 * px, n[2])
    return mix(colour, to_linear((0.05, 0.08, 0.12)), outline)


# Sorted by name the sixth entry is "Neutral Grey", the default the viewer preselects.
MATERIALS = [
    ("Blue Plastic", lit((0.1, 0.32, 0.85), wrap=0.1, specular=1.2, shininess=120.0, rim=0.2, gloss=0.6)),
    ("Chrome", metal((0.95, 0.95, 0.97), 0.0)),
    ("Clay", lit((0.8, 0.64, 0.52), wrap=0.25, specular=0.04, shininess=8.0, rim=0.15)),
    ("Gold", metal((1.0, 0.78, 0.34), 0.12)),
    ("Jade", lit((0.22, 0.58, 0.38), wrap=0.6, specular=0.9, shininess=90.0, rim=0.25, scatter=(0.4, 0.9, 0.6),
                 gloss=0.5)),
    ("Neutral Grey", lit((0.7, 0.7, 0.7), wrap=0.3, specular=0.22, shininess=24.0, rim=0.3, ambient_amount=0.3)),
    ("Pearl", pearl),
    ("Red Wax", lit((0.72, 0.1, 0.07), wrap=0.6, specular=0.35, shininess=30.0, rim=0.1, scatter=(1.0, 0.4, 0.25))),
    ("Skin", lit((0.88, 0.64, 0.54), wrap=0.5, specular=0.15, shininess=20.0, rim=0.15, scatter=(0.9, 0.3, 0.2))),
    ("Toon", toon),
]

# ---------------------------------------------------------------------------------------------
# Rendering and PNG output
# ---------------------------------------------------------------------------------------------


def to_byte(linear):
    return int(round(255.0 * clamp01(linear) ** (1.0 / 2.2)))


def normal_at(x, y):
    """The sphere's normal under image point (x, y) in pixels, or None outside the disc."""
    radius = SIZE / 2.0
    nx = (x - radius) / radius
    ny = (radius - y) / radius
    rr = nx * nx + ny * ny
    if rr > 1.0:
        return None
    return (nx, ny, math.sqrt(1.0 - rr))


def render(shade):
    rows = []
    radius = SIZE / 2.0
    for py in range(SIZE):
        row = bytearray([0])  # PNG filter type "None"
        for px in range(SIZE):
            distance = math.hypot(px + 0.5 - radius, py + 0.5 - radius)
            if distance < radius - 0.75:
                r, g, b = shade(normal_at(px + 0.5, py + 0.5))
                row += bytes((to_byte(r), to_byte(g), to_byte(b), 255))
                continue
            if distance > radius + 0.75:
                row += bytes(4)
                continue
            # The edge crosses this pixel: average the covered samples' colours (straight alpha,
            # so a renderer sampling near the rim still reads the sphere's colour).
            total = [0.0, 0.0, 0.0]
            covered = 0
            for sy in range(RIM_SAMPLES):
                for sx in range(RIM_SAMPLES):
                    n = normal_at(px + (sx + 0.5) / RIM_SAMPLES, py + (sy + 0.5) / RIM_SAMPLES)
                    if n is None:
                        continue
                    c = shade(n)
                    for i in range(3):
                        total[i] += clamp01(c[i])
                    covered += 1
            if covered == 0:
                row += bytes(4)
                continue
            alpha = int(round(255.0 * covered / (RIM_SAMPLES * RIM_SAMPLES)))
            row += bytes([to_byte(total[i] / covered) for i in range(3)] + [alpha])
        rows.append(bytes(row))
    return b"".join(rows)


def png_bytes(width, height, rgba_rows):
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    header = struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)  # 8-bit RGBA
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(rgba_rows, 9)) +
            chunk(b"IEND", b""))


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "assets", "matcaps")
    os.makedirs(out, exist_ok=True)
    names = sorted(name for name, _ in MATERIALS)
    if len(names) < 6 or names[5] != "Neutral Grey":
        sys.exit("make-matcaps: the sixth name in sorted order must be the neutral default")
    for name, shade in MATERIALS:
        path = os.path.join(out, name + ".png")
        with open(path, "wb") as f:
            f.write(png_bytes(SIZE, SIZE, render(shade)))
        print("wrote", os.path.relpath(path))


if __name__ == "__main__":
    main()
