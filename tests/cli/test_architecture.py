"""Which folder may include which, no cycles, and the size of the files."""

import pathlib
import re

SOURCE = pathlib.Path(__file__).resolve().parents[2] / "src"

ARROWS = {
    "support": set(),
    "fileaccess": {"support"},
    "results": {"support"},
    "paths": {"support", "results"},
    "settings": {"support", "fileaccess", "paths"},
    "run": {"support", "fileaccess", "results", "paths", "settings"},
    "main": {"support", "fileaccess", "results", "paths", "settings", "run"},
}

# Placeholders read a record; their header only names its type.
EXCEPTIONS = {("paths/placeholders.cpp", "settings/test_config.h")}

SYSTEM_NAMES = re.compile(r"__APPLE__|__linux__|__unix__|_WIN32|__MACH__|__GLIBC__")


def files():
    return sorted(path for path in SOURCE.rglob("*") if path.suffix in (".cpp", ".h"))


def name_of(path):
    return path.relative_to(SOURCE).as_posix()


def included(path):
    return re.findall(r'^#include "([^"]+)"', path.read_text(), re.MULTILINE)


def test_every_folder_is_in_the_table():
    assert {path.name for path in SOURCE.iterdir()} == set(ARROWS)


def test_includes_follow_the_arrows():
    wrong = []
    for path in files():
        folder = name_of(path).split("/")[0]
        for header in included(path):
            target = header.split("/")[0]
            allowed = target == folder or target in ARROWS[folder]
            if not allowed and (name_of(path), header) not in EXCEPTIONS:
                wrong.append(f"{name_of(path)} includes {header}")
    assert wrong == []


def test_headers_form_no_cycle():
    graph = {name_of(path): included(path) for path in files()}
    done = set()

    def visit(name, chain):
        assert name not in chain, " -> ".join([*chain, name])
        if name in done:
            return
        for header in graph[name]:
            visit(header, [*chain, name])
        done.add(name)

    for name in graph:
        visit(name, [])
    assert len(done) == len(graph)


def test_included_files_exist():
    missing = [f"{name_of(path)}: {header}" for path in files() for header in included(path)
               if not (SOURCE / header).exists()]
    assert missing == []


def test_only_the_seam_asks_for_the_system():
    asking = [name_of(path) for path in files() if SYSTEM_NAMES.search(path.read_text())]
    assert asking == []


def test_the_locale_is_left_alone():
    # Figures have the C locale's form on every client.
    setting = [name_of(path) for path in files()
               if re.search(r"setlocale|std::locale\b|imbue", path.read_text())]
    assert setting == []


def test_files_stay_small():
    sizes = {name_of(path): len(path.read_text().splitlines()) for path in files()}
    budget = {".cpp": 300, ".h": 150}
    assert {name: size for name, size in sizes.items()
            if size >= budget[pathlib.Path(name).suffix]} == {}


def test_product_depends_on_standard_library_and_platform_only():
    known = {"cpuid.h", "fcntl.h", "unistd.h", "immintrin.h", "sys/mman.h", "sys/stat.h", "sys/time.h",
             "sys/types.h"}
    foreign = []
    for path in files():
        for header in re.findall(r"^#include <([^>]+)>", path.read_text(), re.MULTILINE):
            if "/" in header or header.endswith(".h"):
                if header not in known:
                    foreign.append(f"{name_of(path)}: {header}")
    assert foreign == []
