#!/usr/bin/env python3
"""make_help.py [TARGET]   makes Help.rtf, which the help pane shows, from Help.md.

Of Markdown it knows what that file uses: headings of three levels, paragraphs, bulleted and numbered lists, **bold** and
`fixed pitch`. Every block stands on one line.
"""
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent

HEAD = (
    r"{\rtf1\ansi\ansicpg1252\uc1\deff0"
    r"{\fonttbl{\f0\fswiss\fcharset0 Segoe UI;}{\f1\fmodern\fcharset0 Consolas;}}"
    r"{\colortbl;\red47\green131\blue168;\red106\green78\blue138;}"
)
HEADINGS = {  # half points, colour, space before and after in twips
    "#": r"\pard\plain\sa160\f0\fs40\b\cf1 ",
    "##": r"\pard\plain\sb320\sa100\f0\fs28\b\cf1 ",
    "###": r"\pard\plain\sb200\sa80\f0\fs23\b\cf2 ",
}
PARAGRAPH = r"\pard\plain\sa120\f0\fs20 "
LIST_ITEM = r"\pard\plain\li360\fi-260\tx360\sa60\f0\fs20 "
LAST_ITEM = LIST_ITEM.replace(r"\sa60", r"\sa140")


def escaped(text):
    out = ""
    for character in text:
        if character in "\\{}":
            out += "\\" + character
        elif ord(character) < 128:
            out += character
        else:
            units = character.encode("utf-16-le")
            for at in range(0, len(units), 2):
                unit = int.from_bytes(units[at : at + 2], "little")
                out += f"\\u{unit - 65536 if unit > 32767 else unit}?"
    return out


def inline(text):
    out = ""
    for part in re.split(r"(\*\*.+?\*\*|`.+?`)", text):
        if part.startswith("**"):
            out += r"{\b " + escaped(part[2:-2]) + "}"
        elif part.startswith("`"):
            out += r"{\f1 " + escaped(part[1:-1]) + "}"
        else:
            out += escaped(part)
    return out


ITEM = re.compile(r"(-|\d+\.) (.*)")


def block(line, next_line):
    heading = re.match(r"(#{1,3}) (.*)", line)
    item = ITEM.match(line)
    if heading:
        return HEADINGS[heading[1]] + inline(heading[2])
    if item:
        mark = r"\bullet" if item[1] == "-" else item[1]
        return (LIST_ITEM if ITEM.match(next_line) else LAST_ITEM) + mark + r"\tab " + inline(item[2])
    return PARAGRAPH + inline(line)


def main():
    lines = [line for line in (HERE / "Help.md").read_text(encoding="utf-8").splitlines() if line]
    blocks = [block(line, next_line) + "\\par\n" for line, next_line in zip(lines, lines[1:] + [""])]
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else HERE / "Help.rtf"
    target.write_bytes((HEAD + "\n" + "".join(blocks) + "}\n").encode("ascii"))


if __name__ == "__main__":
    main()
