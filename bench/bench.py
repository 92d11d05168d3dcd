"""Measures what the program itself costs: the command behind scripts/bench."""

import argparse
import os
import pathlib
import shutil
import sys
import tempfile

import figures
import report
from programs import in_process

DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "docs/performance.md"
MEMORY = pathlib.Path("/dev/shm")


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, prog="scripts/bench")
    parser.add_argument("folder", nargs="?", type=pathlib.Path,
                        help="where the file tests outside memory run; default: the build folder")
    parser.add_argument("--build", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="only the groups of figures whose name holds TEXT: "
                        + ", ".join(group.__name__ for group in figures.GROUPS))
    parser.add_argument("--smoke", action="store_true",
                        help="small sizes: shows that everything runs, the figures mean nothing")
    parser.add_argument("--document", type=pathlib.Path,
                        help="the document that gets the figures; default: docs/performance.md for "
                        "a whole run in the build folder, otherwise none")
    return parser.parse_args()


def memory_folder(scale):
    """A memory file system with room for the largest file, or None."""
    needed = 2 * scale.large
    if os.path.ismount(MEMORY) and shutil.disk_usage(MEMORY).free > needed:
        return MEMORY
    return None


def measure(bench, only):
    for group in figures.GROUPS:
        if only in group.__name__:
            print(f"measuring: {group.__name__}", file=sys.stderr)
            yield from group(bench)


def main():
    options = arguments()
    scale = figures.SMOKE if options.smoke else figures.FULL
    whole = not (options.folder or options.only or options.smoke)
    document = options.document or (DOCUMENT if whole else None)
    build = options.build.resolve()
    memory = memory_folder(scale)
    compiler = in_process(build / "bench/bench_in_process", "^fill/byteLoop/65536$")[0]["compiler"]

    with tempfile.TemporaryDirectory(dir=options.folder or build, prefix="bench_") as folder, \
         tempfile.TemporaryDirectory(dir=memory, prefix="marrowbench_") as in_memory:
        bench = figures.Bench(build, pathlib.Path(in_memory) if memory else None,
                              pathlib.Path(folder).resolve(), scale)
        where = report.machine(compiler, bench.places())
        taken = list(measure(bench, options.only))

    print("\n".join(where))
    print(report.plain(taken))
    if document:
        document.write_text(report.replace_figures(document.read_text(),
                                                   report.markdown(taken, where)))


if __name__ == "__main__":
    main()
