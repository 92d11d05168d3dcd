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

# The rooms of marrowctl: what each adds to what the rooms in its list may include. "core" goes before the
# folders of the program itself, which includes nothing of marrowctl.
ROOMS = {
    "support": {"core support"},
    "plan": {"support", "core settings", "core paths", "core support"},
    "check": {"plan"},
    "sweep": {"plan", "check"},
    "table": {"plan"},
    "report": {"table", "plan"},
    "run": {"plan", "table"},
    "fleet": {"plan", "check", "table", "report", "core results"},
    "main": {"support", "plan", "check", "sweep", "table", "report", "run", "fleet"},
}

# Libraries of marrowctl, and the files that may include what is slow to compile.
LIBRARIES = {"CLI", "fmt", "nlohmann"}
COMMAND_LINE = "marrowctl/main/command_line.cpp"

EXCEPTIONS = {
    # Placeholders read a record; their header only names its type.
    ("paths/placeholders.cpp", "settings/test_config.h"),
    # The limit of a file's size stands beside the parameters of a settings line.
    ("marrowctl/plan/totals.cpp", "fileaccess/run_stats.h"),
}

SYSTEM_NAMES = re.compile(r"__APPLE__|__linux__|__unix__|_WIN32|__MACH__|__GLIBC__")


def files():
    return sorted(path for path in SOURCE.rglob("*") if path.suffix in (".cpp", ".h"))


def name_of(path):
    return path.relative_to(SOURCE).as_posix()


def included(path):
    return re.findall(r'^#include "([^"]+)"', path.read_text(), re.MULTILINE)


def place_of(name):
    """The folder of a file as the tables name it: "core settings", or a room of marrowctl."""
    parts = name.split("/")
    return parts[1] if parts[0] == "marrowctl" else f"core {parts[0]}"


def reach_of(place):
    """What the files of a folder may include."""
    if place.startswith("core "):
        return {place, *(f"core {folder}" for folder in ARROWS[place.removeprefix("core ")])}
    return {place}.union(*({each} if each.startswith("core ") else reach_of(each)
                           for each in ROOMS[place]))


def test_every_folder_is_in_the_table():
    assert {path.name for path in SOURCE.iterdir()} == {*ARROWS, "marrowctl"}
    rooms = {path.name for path in (SOURCE / "marrowctl").iterdir() if path.is_dir()}
    assert rooms <= set(ROOMS), "the tables of this test name each room"


def test_includes_follow_the_arrows():
    wrong = [f"{name_of(path)} includes {header}" for path in files() for header in included(path)
             if place_of(header) not in reach_of(place_of(name_of(path)))
             and (name_of(path), header) not in EXCEPTIONS]
    assert wrong == []


def test_includes_of_marrowctl_begin_with_its_name():
    # So that a room is never taken for the program's folder of the same name.
    rooms = [path for path in files() if name_of(path).startswith("marrowctl/")]
    beside = [f"{name_of(path)}: {header}" for path in rooms for header in included(path)
              if (path.parent / header).exists()]
    assert beside == []


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


def system_headers(path):
    return [header for header in re.findall(r"^#include <([^>]+)>", path.read_text(), re.MULTILINE)
            if "/" in header or header.endswith(".h")]


def foreign_headers():
    known = {"cpuid.h", "emmintrin.h", "fcntl.h", "glob.h", "unistd.h", "immintrin.h", "poll.h", "spawn.h", "sys/ioctl.h", "sys/mman.h",
             "sys/stat.h", "sys/statvfs.h", "sys/time.h", "sys/types.h", "sys/utsname.h", "sys/wait.h"}
    return [(name_of(path), header) for path in files() for header in system_headers(path)
            if header not in known]


def test_program_depends_on_standard_library_and_platform_only():
    assert [each for each in foreign_headers() if not each[0].startswith("marrowctl/")] == []


def test_marrowctl_depends_on_its_libraries_besides():
    assert [each for each in foreign_headers() if each[1].split("/")[0] not in LIBRARIES] == []


def test_headers_that_are_slow_to_compile_stay_in_few_files():
    includers = [name for name, header in foreign_headers() if header.startswith("CLI/")]
    assert set(includers) <= {COMMAND_LINE}
    assert [name for name, header in foreign_headers()
            if header == "nlohmann/json.hpp" and name.endswith(".h")] == []
