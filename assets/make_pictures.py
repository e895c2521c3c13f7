#!/usr/bin/env python3
"""make_pictures.py   makes every PNG and the .ico from the SVG sources beside this file.

Needs rsvg-convert (Debian: librsvg2-bin). The results are kept in the repository, so that only who changes a picture needs it.
"""
import pathlib
import struct
import subprocess

HERE = pathlib.Path(__file__).resolve().parent

# Source without ending, name of the results, sizes in pixels. Below 32 pixels the full icon has more than can be seen.
PICTURES = [
    ("icons/quillmoor-small", "icons/quillmoor", (16, 24)),
    ("icons/quillmoor", "icons/quillmoor", (32, 48, 64, 128, 256, 512)),
    ("icons/quillmoor-small", "icons/tray", (16, 32)),
] + [
    (f"{folder}/{name}", f"{folder}/{name}", sizes)
    for folder, names, sizes in (
        ("panes", "profiles backup settings options help", (32, 64)),
        ("status", "connected disconnected", (32, 64)),
        ("tasks", "Add Delete Save Exit Profile", (16, 32)),
        ("browser", "Cdup FolderClose FolderLink Link TextFile ZipFile ExeFile ImageFile HelpFile File", (16, 32)),
    )
    for name in names.split()
]
ICO_SIZES = (16, 24, 32, 48, 64, 128, 256)


def draw(source, result, size):
    target = HERE / f"{result}-{size}.png"
    subprocess.run(
        ["rsvg-convert", "--width", str(size), "--height", str(size), "--output", target, HERE / f"{source}.svg"],
        check=True,
    )


def write_ico(target, pngs):
    """An .ico whose images are PNG files, which Windows reads since Vista. A side of 256 is written as 0."""
    offset = 6 + 16 * len(pngs)
    header = struct.pack("<HHH", 0, 1, len(pngs))
    for size, png in pngs:
        header += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(png), offset)
        offset += len(png)
    target.write_bytes(header + b"".join(png for _, png in pngs))


def main():
    for source, result, sizes in PICTURES:
        for size in sizes:
            draw(source, result, size)
    write_ico(
        HERE / "icons/quillmoor.ico",
        [(size, (HERE / f"icons/quillmoor-{size}.png").read_bytes()) for size in ICO_SIZES],
    )


if __name__ == "__main__":
    main()
