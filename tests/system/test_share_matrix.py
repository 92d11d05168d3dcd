"""Each interface and each kind of test on each share, and what then stands in the files."""

import os
import random

import pytest

from program_bench import Bench
from shares import start_program

METHODS = ("stream", "ansic", "posix")
SIZE_KIB = 600  # no multiple of the chunks
CHUNK_KIB = 64
REFUSED = "ERROR: Unable to preallocate file '{}' ! Operation not supported"


def line(method, source, dest, flags="0;0", table="res.csv"):
    return (f"{method};{flags};0;{CHUNK_KIB};0;{SIZE_KIB};1;0;{source};{dest};/run/log.txt;{table};"
            "false\n")


def without_zeros(length):
    return random.Random(length).randbytes(length).replace(b"\0", b"\1")


def run(client, folder, name, text):
    start_program(client, folder.put(name, text)).finish()


def outcomes(rows):
    return [(row["Method"].lower(), row["Type"], row["Error"]) for row in rows]


def sum_at(client, path):
    return client.run("sha256sum", path).split()[0]


@pytest.fixture
def reference(share):
    """What the program writes on a local disk, by method: test data depends on the line's number."""
    bench = Bench(share.lab.folder / "reference")
    bench.folder.mkdir()
    text = "".join(line(method, "MEMORY", f"{method}.bin") for method in METHODS)
    bench.run(bench.settings(text.replace("/run/log.txt", "log.txt")))
    return {method: (bench.folder / f"{method}.bin").read_bytes() for method in METHODS}


def test_written_files_hold_the_test_data_for_everyone(share, folder, reference):
    writer, reader = share.clients(2)
    run(writer, folder, "write.bst",
        "".join(line(method, "MEMORY", f"{method}.bin") for method in METHODS))
    assert outcomes(folder.rows()) == [(method, "Write", "") for method in METHODS]
    for method in METHODS:
        assert len(reference[method]) == SIZE_KIB * 1024
        assert folder.read(f"{method}.bin") == reference[method], "on the server"
        sums = {sum_at(client, folder.path / f"{method}.bin") for client in (writer, reader)}
        assert len(sums) == 1, "at both clients"


def test_copies_of_another_clients_file_are_whole(share, folder):
    writer, copier = share.clients(2)
    content = without_zeros(SIZE_KIB * 1024 + 77)
    folder.put("source.bin", content)
    run(copier, folder, "copy.bst",
        "".join(line(method, "source.bin", f"{method}.bin") for method in METHODS))
    assert outcomes(folder.rows()) == [(method, "Copy", "") for method in METHODS]
    for method in METHODS:
        assert folder.read(f"{method}.bin") == content
        assert sum_at(writer, folder.path / f"{method}.bin") == sum_at(
            copier, folder.path / "source.bin")


def test_reads_see_another_clients_data_and_its_zeros(share, folder):
    _, reader = share.clients(2)
    content = bytearray(without_zeros(SIZE_KIB * 1024))
    folder.put("whole.bin", bytes(content))
    zeros_end = 3 * CHUNK_KIB * 1024
    content[zeros_end - 2000:zeros_end] = bytes(2000)
    folder.put("zeros.bin", bytes(content))
    run(reader, folder, "read.bst", "".join(
        line(method, source, "MEMORY") for method in METHODS
        for source in ("whole.bin", "zeros.bin")))
    rows = folder.rows()
    assert outcomes(rows) == [(method, "Read", "") for method in METHODS for _ in range(2)]
    # Of a chunk's last 300 bytes samples are looked at.
    assert [row["Zero test"] for row in rows] == ["0", str(zeros_end - 300)] * len(METHODS)


def test_preallocation_is_granted_or_told(share, folder):
    client, _ = share.clients(2)
    content = without_zeros(SIZE_KIB * 1024)
    folder.put("source.bin", content)
    run(client, folder, "reserve.bst", line("posix", "source.bin", "copy.bin", "0;prealloc") +
        line("posix", "MEMORY", "write.bin", "0;prealloc"))
    rows = folder.rows()
    assert [row["PreAllocate"] for row in rows] == ["prealloc"] * 2
    if share.server.preallocates:
        assert [row["Error"] for row in rows] == ["", ""]
        assert folder.read("copy.bin") == content
        assert os.stat(folder.on_server / "write.bin").st_size == SIZE_KIB * 1024
    else:
        assert [row["Error"] for row in rows] == [
            REFUSED.format(folder.path / name) for name in ("copy.bin", "write.bin")]
        assert [row["Time ms"] for row in rows] == ["0", "0"]
