#!/usr/bin/env python3
"""make_video.py [TARGET]   draws Server.avi: pages fly from a server onto a disk, over and over.

An AVI file with one video stream, 8 bits a pixel, run-length coded (RLE8), every frame whole, no sound: what the common
animation control plays. Palette entry 0 is the colour around the picture; players let the background through there. It
is drawn for a screen at 200 %, in hard edges that smooth out when it is shown at half its size. The same bytes every time.
"""
import math
import pathlib
import struct
import sys

WIDTH, HEIGHT = 544, 120
FRAMES = 12
MICROSECONDS_PER_FRAME = 83333
PAGES = 3  # on their way at any time; in one loop each takes the place of the next

# Name and colour, in palette order. The first is nowhere in the picture itself.
COLOURS = {
    "around": 0xFF00FF,
    "edge": 0x53677A,
    "case": 0x6F8498,
    "front": 0x8FA2B4,
    "slot": 0x42535F,
    "shine": 0xDFE7EE,
    "lamp on": 0xB6F0C6,
    "lamp half": 0x6CC48A,
    "lamp off": 0x3F7C56,
    "busy": 0xF2B857,
    "idle": 0x9C7A3E,
    "page": 0xFFFFFF,
    "page edge": 0x2F83A8,
    "fold": 0xB7D6E4,
    "text": 0x7FB0C6,
    "blue": 0x2F83A8,
}
INDEX = {name: i for i, name in enumerate(COLOURS)}


class Frame:
    def __init__(self):
        self.rows = [bytearray(WIDTH) for _ in range(HEIGHT)]

    def fill(self, inside, box, colour):
        """Colours every pixel of the box (left, top, right, bottom) whose centre is inside."""
        left, top, right, bottom = (int(v) for v in (box[0], box[1], math.ceil(box[2]), math.ceil(box[3])))
        for y in range(max(top, 0), min(bottom, HEIGHT)):
            for x in range(max(left, 0), min(right, WIDTH)):
                if inside(x + 0.5, y + 0.5):
                    self.rows[y][x] = INDEX[colour]

    def box(self, left, top, right, bottom, colour, radius=0.0):
        def inside(x, y):
            dx = max(left + radius - x, x - right + radius, 0)
            dy = max(top + radius - y, y - bottom + radius, 0)
            return left <= x <= right and top <= y <= bottom and dx * dx + dy * dy <= radius * radius + 1e-9

        self.fill(inside, (left, top, right, bottom), colour)

    def disc(self, x0, y0, radius, colour):
        self.fill(lambda x, y: math.hypot(x - x0, y - y0) <= radius, (x0 - radius, y0 - radius, x0 + radius, y0 + radius), colour)

    def polygon(self, points, colour):
        """A convex polygon, its corners clockwise on the screen."""

        def inside(x, y):
            return all(
                (x2 - x1) * (y - y1) - (y2 - y1) * (x - x1) >= 0
                for (x1, y1), (x2, y2) in zip(points, points[1:] + points[:1])
            )

        xs, ys = zip(*points)
        self.fill(inside, (min(xs), min(ys), max(xs), max(ys)), colour)


def draw_server(frame, step):
    frame.box(20, 8, 112, 114, "edge", 8)
    frame.box(24, 12, 108, 110, "case", 5)
    for unit in range(3):
        top = 18 + 31 * unit
        frame.box(30, top, 102, top + 24, "front", 4)
        for line in range(3):
            frame.box(38, top + 6 + 5 * line, 70, top + 8 + 5 * line, "slot")
        phase = (step + 4 * unit) % FRAMES
        frame.disc(91, top + 12, 5, "lamp on" if phase < 3 else "lamp half" if phase < 6 else "lamp off")


def draw_disk(frame, step):
    left, right = 428, 524
    frame.polygon([(left + 14, 72), (right - 14, 72), (right, 90), (left, 90)], "case")
    frame.box(left, 86, right, 114, "edge", 7)
    frame.box(left + 4, 90, right - 4, 110, "front", 4)
    frame.box(left + 14, 99, left + 56, 102, "shine", 1)
    # A page arrives at the turn of the loop.
    frame.disc(right - 18, 100, 5, "busy" if step in (0, 1, 2, 11) else "idle")
    frame.polygon([(left + 26, 76), (right - 26, 76), (right - 22, 82), (left + 22, 82)], "slot")


def draw_page(frame, way):
    """A page on its way, 0 at the server to 1 in the disk's slot, which cuts off what has gone in."""
    across = min(way / 0.86, 1.0)
    x = 90 + (476 - 90) * across
    y = 62 - 26 * math.sin(math.pi * across)
    lean = 0.16 * math.cos(math.pi * across)
    if way > 0.72:  # over the slot: upright, then down
        fall = (way - 0.72) / 0.28
        lean *= 1 - fall
        y += (112 - y) * fall * fall
    half_width, half_height, fold = 15, 19, 9
    cos, sin = math.cos(lean), math.sin(lean)

    def turned(points):
        return [(x + px * cos - py * sin, y + px * sin + py * cos) for px, py in points]

    def sheet(grow):
        w, h = half_width + grow, half_height + grow
        return turned([(-w, -h), (w - fold, -h), (w, -h + fold), (w, h), (-w, h)])

    before = [bytearray(row) for row in frame.rows]
    frame.polygon(sheet(0), "page edge")
    frame.polygon(sheet(-2.5), "page")
    frame.polygon(turned([(half_width - fold, -half_height), (half_width, -half_height + fold), (half_width - fold, -half_height + fold)]), "fold")
    for line in range(4):
        top = -6 + 6 * line
        end = 9 if line < 3 else 2
        frame.polygon(turned([(-9, top), (end, top), (end, top + 2.5), (-9, top + 2.5)]), "text")
    if x > 430:  # what is below the slot is inside the disk
        for row in range(79, HEIGHT):
            frame.rows[row] = before[row]
    if x < 150:  # what is left of the server's edge is still inside it
        for row in range(HEIGHT):
            frame.rows[row][:112] = before[row][:112]


def draw(step):
    frame = Frame()
    draw_server(frame, step)
    draw_disk(frame, step)
    for page in range(PAGES):
        draw_page(frame, (page + step / FRAMES) / PAGES)
    return frame


def rle8(rows):
    """BI_RLE8: rows from the bottom up, runs of 1 to 255, or 3 to 255 bytes as they are, padded to an even number."""
    out = bytearray()
    for row in reversed(rows):
        x = 0
        literal = bytearray()

        def flush():
            while literal:
                piece = literal[:254] if len(literal) >= 3 else literal[:1]
                del literal[: len(piece)]
                if len(piece) >= 3:
                    out.extend((0, len(piece)))
                    out.extend(piece)
                    out.extend(b"\0" * (len(piece) % 2))
                else:
                    out.extend((1, piece[0]))

        while x < WIDTH:
            run = 1
            while x + run < WIDTH and run < 255 and row[x + run] == row[x]:
                run += 1
            if run < 3:
                literal.extend(row[x : x + run])
            else:
                flush()
                out.extend((run, row[x]))
            x += run
        flush()
        out.extend((0, 0))
    out.extend((0, 1))
    return bytes(out)


def chunk(name, data):
    return name + struct.pack("<I", len(data)) + data + b"\0" * (len(data) % 2)


def lists(name, data):
    return chunk(b"LIST", name + data)


def avi(frames):
    largest = max(len(f) for f in frames)
    has_index = 0x10
    main_header = struct.pack(
        "<14I", MICROSECONDS_PER_FRAME, largest * 1000000 // MICROSECONDS_PER_FRAME, 0, has_index, len(frames), 0, 1,
        largest, WIDTH, HEIGHT, 0, 0, 0, 0,
    )
    stream_header = b"vids" + b"RLE " + struct.pack(
        "<IHHIIIIIIII4H", 0, 0, 0, 0, MICROSECONDS_PER_FRAME, 1000000, 0, len(frames), largest, 0xFFFFFFFF, 0,
        0, 0, WIDTH, HEIGHT,
    )
    compression_rle8 = 1
    palette = [(c & 0xFF, c >> 8 & 0xFF, c >> 16, 0) for c in COLOURS.values()]
    format_ = struct.pack(
        "<IiiHHIIiiII", 40, WIDTH, HEIGHT, 1, 8, compression_rle8, WIDTH * HEIGHT, 0, 0, len(palette), 0
    ) + b"".join(bytes(entry) for entry in palette)
    movie = b""
    index = b""
    key_frame = 0x10
    for data in frames:
        index += b"00dc" + struct.pack("<III", key_frame, 4 + len(movie), len(data))
        movie += chunk(b"00dc", data)
    header = lists(b"hdrl", chunk(b"avih", main_header) + lists(b"strl", chunk(b"strh", stream_header) + chunk(b"strf", format_)))
    return chunk(b"RIFF", b"AVI " + header + lists(b"movi", movie) + chunk(b"idx1", index))


def main():
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent / "Server.avi"
    target.write_bytes(avi([rle8(draw(step).rows) for step in range(FRAMES)]))


if __name__ == "__main__":
    main()
