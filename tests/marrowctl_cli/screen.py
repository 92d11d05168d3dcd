"""A terminal on which a program is started: what it got, and how that looks."""

import codecs
import fcntl
import os
import re
import select
import struct
import termios
import time

CODE = re.compile(r"\x1b\[([?\d;]*)([A-Za-z])")


class Screen:
    """Rows of characters, drawn by the few codes that marrowctl uses."""

    def __init__(self, columns, rows):
        self.columns, self.rows = columns, rows
        self.lines = [""]
        self.row = self.column = 0
        self.cursor_is_shown = True
        self.wrapped = 0  # how often a line was longer than the terminal is wide

    def feed(self, text):
        while text:
            code = CODE.match(text)
            if code:
                self.obey(*code.groups())
                text = text[code.end():]
            else:
                self.put(text[0])
                text = text[1:]

    def obey(self, number, letter):
        if letter == "A":
            # Not above the first row that the terminal still shows.
            self.row = max(self.row - int(number), len(self.lines) - self.rows, 0)
        elif letter == "K":
            # Behind a full line the cursor stands on its last column still, as xterm has it.
            self.lines[self.row] = self.lines[self.row][:min(self.column, self.columns - 1)]
        elif letter == "J":
            self.lines[self.row] = self.lines[self.row][:self.column]
            del self.lines[self.row + 1:]
        elif number == "?25":
            self.cursor_is_shown = letter == "h"
        else:
            assert letter == "m", f"unknown code {number}{letter}"

    def put(self, character):
        if character == "\r":
            self.column = 0
        elif character == "\n":
            self.next_row()
        else:
            if self.column == self.columns:
                self.wrapped += 1
                self.next_row()
                self.column = 0
            line = self.lines[self.row].ljust(self.column)
            self.lines[self.row] = line[:self.column] + character + line[self.column + 1:]
            self.column += 1

    def next_row(self):
        self.row += 1
        if self.row == len(self.lines):
            self.lines.append("")

    def shown(self):
        return [line.rstrip() for line in self.lines]


class Terminal:
    """The other side of a terminal, `side` of which a program gets."""

    def __init__(self, columns=80, rows=24):
        self.master, self.side = os.openpty()
        self.resize(columns, rows)
        self.screen = Screen(columns, rows)
        self.text = ""
        self.decoder = codecs.getincrementaldecoder("utf-8")()
        self.half_code = ""

    def resize(self, columns, rows):
        fcntl.ioctl(self.side, termios.TIOCSWINSZ, struct.pack("4H", rows, columns, 0, 0))

    def read(self, seconds=0.1):
        """Takes what has come meanwhile, or comes within these seconds; tells whether anything has."""
        if not select.select([self.master], [], [], seconds)[0]:
            return False
        piece = self.decoder.decode(os.read(self.master, 65536))
        self.text += piece
        piece = self.half_code + piece
        escape = piece.rfind("\x1b")
        is_half = escape >= 0 and not CODE.match(piece, escape)
        self.half_code = piece[escape:] if is_half else ""
        self.screen.feed(piece[:escape] if is_half else piece)
        return True

    def read_until(self, condition, seconds=60):
        end = time.monotonic() + seconds
        while not condition(self):
            assert time.monotonic() < end, "\n".join(self.screen.shown())
            self.read()

    def read_to_the_end(self, process, seconds=60):
        """Until the process has ended; returns its status."""
        end = time.monotonic() + seconds
        while process.poll() is None:
            assert time.monotonic() < end, "\n".join(self.screen.shown())
            self.read()
        while self.read():
            pass
        return process.returncode

    def close(self):
        os.close(self.side)
        os.close(self.master)
