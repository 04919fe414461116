#!/usr/bin/env python3
"""Writes the seed corpus of the text and model-file fuzz programs into tests/fuzz/corpus/.

Small valid files of every form each reader knows, plus a few cut short or odd ones. The binary
state files come from the library's own writers instead (fuzz_seed_writer). Files named
crash-* are inputs that once broke a reader; this script never touches them.
"""
import os
import struct
import sys

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")


def put(target, name, data):
    folder = os.path.join(ROOT, "fuzz_" + target)
    os.makedirs(folder, exist_ok=True)
    if isinstance(data, str):
        data = data.encode()
    with open(os.path.join(folder, name), "wb") as out:
        out.write(data)


def lzf_literal(data):
    """LZF with literal runs only: valid input for the decoder, no compressor needed."""
    out = bytearray()
    for i in range(0, len(data), 32):
        chunk = data[i:i + 32]
        out.append(len(chunk) - 1)
        out += chunk
    return bytes(out)


def ply():
    verts = [(0, 0, 0, 255, 0, 0), (1, 0, 0, 0, 255, 0), (1, 1, 0, 0, 0, 255), (0, 1, 0, 9, 9, 9)]
    head = ("ply\nformat {fmt} 1.0\ncomment seed\nelement vertex 4\nproperty float x\nproperty float y\n"
            "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
            "element face 2\nproperty list uchar int vertex_indices\nend_header\n")
    body = "".join("%g %g %g %d %d %d\n" % v for v in verts) + "3 0 1 2\n4 0 1 2 3\n"
    put("ply", "ascii_mesh.ply", head.format(fmt="ascii") + body)
    for fmt, end in (("binary_little_endian", "<"), ("binary_big_endian", ">")):
        data = head.format(fmt=fmt).encode()
        for v in verts:
            data += struct.pack(end + "fffBBB", *v)
        data += struct.pack(end + "BIII", 3, 0, 1, 2) + struct.pack(end + "BIIII", 4, 0, 1, 2, 3)
        put("ply", fmt + ".ply", data)
        put("ply", fmt + "_cut.ply", data[:-7])
    put("ply", "normals_uv_extra.ply",
        "ply\nformat ascii 1.0\nelement vertex 2\nproperty double x\nproperty double y\nproperty double z\n"
        "property float nx\nproperty float ny\nproperty float nz\nproperty float u\nproperty float v\n"
        "property short quality\nelement edge 1\nproperty int vertex1\nproperty int vertex2\nend_header\n"
        "1e6 2e6 3 0 0 1 0.5 0.5 7\n1e6 2e6 4 0 1 0 1 1 -3\n0 1\n")
    put("ply", "no_faces.ply", "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
        "property float z\nend_header\n1 2 3\n")
    put("ply", "huge_count.ply", "ply\nformat binary_little_endian 1.0\nelement vertex 4000000000\n"
        "property float x\nproperty float y\nproperty float z\nend_header\n" + "\0" * 64)
    put("ply", "bad_face_index.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\nelement face 1\nproperty list uchar uint vertex_indices\nend_header\n"
        "0 0 0\n1 0 0\n0 1 0\n3 0 1 7\n")


def text_cloud():
    put("text_cloud", "plain.xyz", "0 0 0\n1 2 3\n4.5 5.5 6.5\n")
    put("text_cloud", "colours.txt", "1 2 3 255 0 0\n4 5 6 0 255 0 0.5\n")
    put("text_cloud", "named.csv", "x,y,z,red,green,blue,intensity\n1,2,3,10,20,30,0.5\n4,5,6,40,50,60,0.7\n")
    put("text_cloud", "decimal_comma.csv", "1,5;2,25;3,0\n4,5;5,25;6,0\n")
    put("text_cloud", "counted.pts", "2\n1 2 3 100 255 0 0\n4 5 6 200 0 255 0\n")
    put("text_cloud", "comments.xyz", "# header\n// another\n\n1\t2\t3\n7;8;9\n")
    put("text_cloud", "normals.xyzn", "0 0 0 0 0 1\n1 1 1 0 1 0\n")
    put("text_cloud", "far.xyz", "654321.123 5432109.987 321.5\n654322.123 5432110.987 322.5\n")
    put("text_cloud", "ragged.xyz", "1 2 3\n4 5\nx y z\n1e999 2 3\n")


def pcd():
    def header(fields, data, points=2):
        return ("# .PCD v0.7\nVERSION 0.7\nFIELDS %s\nSIZE %s\nTYPE %s\nCOUNT %s\nWIDTH %d\nHEIGHT 1\n"
                "VIEWPOINT 0 0 0 1 0 0 0\nPOINTS %d\nDATA %s\n" % (
                    " ".join(f[0] for f in fields), " ".join(str(f[1]) for f in fields),
                    " ".join(f[2] for f in fields), " ".join("1" for _ in fields), points, points, data))
    fields = [("x", 4, "F"), ("y", 4, "F"), ("z", 4, "F"), ("rgb", 4, "U"), ("intensity", 2, "U")]
    pts = [(1.0, 2.0, 3.0, 0xFF0000, 7), (4.0, 5.0, 6.0, 0x00FF00, 9)]
    put("pcd", "ascii.pcd", header(fields, "ascii") + "".join("%g %g %g %d %d\n" % p for p in pts))
    body = b"".join(struct.pack("<fffIH", *p) for p in pts)
    put("pcd", "binary.pcd", header(fields, "binary").encode() + body)
    put("pcd", "binary_cut.pcd", header(fields, "binary").encode() + body[:9])
    columns = b"".join(b"".join(struct.pack("<" + ("f" if f[2] == "F" else ("I" if f[1] == 4 else "H")), p[i])
                                for p in pts) for i, f in enumerate(fields))
    packed = lzf_literal(columns)
    put("pcd", "compressed.pcd", header(fields, "binary_compressed").encode() +
        struct.pack("<II", len(packed), len(columns)) + packed)
    put("pcd", "compressed_lies.pcd", header(fields, "binary_compressed").encode() +
        struct.pack("<II", len(packed), 0xFFFFFFF0) + packed)
    put("pcd", "normals_v06.pcd", "VERSION .6\nFIELDS x y z normal_x normal_y normal_z\nSIZE 4 4 4 4 4 4\n"
        "TYPE F F F F F F\nWIDTH 1\nHEIGHT 1\nPOINTS 1\nDATA ascii\n0 0 0 0 0 1\n")
    put("pcd", "huge_points.pcd", header(fields[:3], "binary", 4000000000).encode() + b"\0" * 24)


def obj():
    put("obj", "quad.obj", "# seed\nmtllib none.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 1 1\n"
        "vn 0 0 1\nusemtl red\ng group\ns 1\nf 1/1/1 2/2/1 3/3/1 4/1/1\nf -4 -3 -2\nl 1 2\n")
    put("obj", "colours.obj", "v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 1\nf 1//1 2//1 3//1\nvn 0 0 1\n")
    put("obj", "bad_index.obj", "v 0 0 0\nv 1 0 0\nf 1 2 9\nf 1 2 -7\nf a b c\n")
    put("obj", "weights.obj", "v 0 0 0 1\nv 1 0 0 1\nv 0 1 0 1\nf 1 2 3\n")


def stl():
    put("stl", "ascii.stl", "solid seed\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
        "endloop\nendfacet\nfacet normal 0 0 1\nouter loop\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\nendloop\n"
        "endfacet\nendsolid seed\n")
    tri = struct.pack("<12fH", 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0)
    put("stl", "binary.stl", b"binary seed".ljust(80, b" ") + struct.pack("<I", 2) + tri * 2)
    put("stl", "binary_solid_header.stl", b"solid but binary".ljust(80, b" ") + struct.pack("<I", 1) + tri)
    put("stl", "binary_huge_count.stl", b"x".ljust(80, b" ") + struct.pack("<I", 0xFFFFFFFF) + tri)
    put("stl", "ascii_cut.stl", "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0")


def off():
    put("off", "plain.off", "OFF\n4 2 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 2\n4 0 1 2 3 255 0 0\n")
    put("off", "stcnoff.off", "STCNOFF 3 1 0\n0 0 0 0 0 1 1 0 0 1 0 0\n1 0 0 0 0 1 0 1 0 1 1 0\n"
        "0 1 0 0 0 1 0 0 1 1 0 1\n3 0 1 2\n")
    put("off", "colours_int.off", "COFF\n# comment\n3 1 3\n0 0 0 255 0 0 255\n1 0 0 0 255 0 255\n"
        "0 1 0 0 0 255 255\n3 0 1 2\n")
    put("off", "bad.off", "OFF\n3 1 0\n0 0 0\n1 0 0\n3 0 1 5\n")
    put("off", "huge_counts.off", "OFF\n4000000000 4000000000 0\n0 0 0\n")


def look():
    put("look", "minimal.json", '{"vexa": {"version": "1.0"}}')
    put("look", "two_views.json",
        '{"vexa": {"version": "1.0", "window": {"caption": "Seed", "size": "0,800;0,600", "maximized": false},'
        ' "background": "102030", "views": ['
        '{"position": "0,0;0,0", "size": "0.5,-5;1,0", "axes": true, "grid": "xy"},'
        '{"position": "0.5,5;0,0", "size": "0.5,-5;1,0", "camera": {"position": "0,0,5", "target": "0,0,0"}}]}}')
    put("look", "no_version.json", '{"vexa": {}}')
    put("look", "bad_placement.json", '{"vexa": {"version": "1.0", "views": [{"position": "a;b", "size": "1"}]}}')
    put("look", "not_json.json", '{"vexa": [')
    for name in ("demo.json", "viewer.json"):
        with open(os.path.join(os.path.dirname(ROOT), "..", "..", "assets", "looks", name), "rb") as f:
            put("look", "asset_" + name, f.read())


def composite():
    for i, text in enumerate(["0.5,-5", "0.5,-5;1,0", "1px", " , 2 ,", "1;2;3", "nan,inf", "1e99,1", ";", ""]):
        put("composite", "seed%d.txt" % i, text)


def camera_anim():
    pose = '{"position": "1.000000, 2.000000, 3.000000", "target": "0.000000, 0.000000, 0.000000", ' \
           '"up": "0.000000, 1.000000, 0.000000"}'
    put("camera_anim", "two_keys.json", '[["0.000000", %s], ["1.000000", %s]]' % (pose, pose))
    put("camera_anim", "empty.json", "[]")
    put("camera_anim", "not_a_number.json", '[["soon", %s]]' % pose)
    put("camera_anim", "nan_time.json", '[["nan", %s], ["-1", %s]]' % (pose, pose))
    put("camera_anim", "wrong_shape.json", '{"vexa": 1}')
    put("camera_anim", "cut.json", '[["0.0", {"position": "1, 2, 3",')


if __name__ == "__main__":
    for make in (ply, text_cloud, pcd, obj, stl, off, look, composite, camera_anim):
        make()
    sys.exit(0)
