"""The table as a user and as docs/performance.md sees it."""

import datetime
import os
import platform
import re
import shutil
import subprocess

HEAD = ["figure", "median", "range", "samples", "target", "verdict"]
BEGIN, END = "<!-- figures: scripts/bench -->", "<!-- end of figures -->"


def machine(compiler, folders):
    """What the figures were taken on, a line each."""
    lines = [f"{processor()}, {os.cpu_count()} processors, {memory_gib()} GiB memory",
             f"{platform.system()} {platform.release()}",
             f"compiled with {compiler}"]
    lines += [f"{name}: {file_system(folder)}" for name, folder in folders if folder is not None]
    lines += [version(peer) for peer in ("fio", "dd") if shutil.which(peer)]
    lines.append(datetime.date.today().isoformat())
    return lines


def processor():
    try:
        with open("/proc/cpuinfo") as info:
            return re.search(r"^model name\s*: (.*)$", info.read(), re.MULTILINE)[1]
    except (OSError, TypeError):
        return platform.processor() or platform.machine()


def memory_gib():
    return round(os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2**30)


def file_system(folder):
    command = ["df", "-T", folder] if platform.system() == "Linux" else ["df", folder]
    last = subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout.split("\n")[1]
    return last.split()[1] if platform.system() == "Linux" else last.split()[0]


def version(peer):
    done = subprocess.run([peer, "--version"], stdout=subprocess.PIPE, text=True)
    return (done.stdout.splitlines() or [peer])[0]


def plain(figures):
    """Columns for a terminal."""
    rows = [HEAD] + [figure.cells() for figure in figures]
    widths = [max(len(row[i]) for row in rows) for i in range(len(HEAD))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
                     for row in rows)


def markdown(figures, where):
    rows = [HEAD, ["---"] * len(HEAD)] + [figure.cells() for figure in figures]
    table = "\n".join("| " + " | ".join(row) + " |" for row in rows)
    return "\n".join(f"- {text}" for text in where) + "\n\n" + table


def replace_figures(document, text):
    """The document with what stands between its two marks replaced."""
    if BEGIN not in document or END not in document:
        raise ValueError(f"the document lacks the lines '{BEGIN}' and '{END}'")
    before, rest = document.split(BEGIN, 1)
    behind = rest.split(END, 1)[1]
    return f"{before}{BEGIN}\n\n{text}\n\n{END}{behind}"
