"""Every interface with every kind of test, on real files; the data are compared."""

import errno
import resource
import sys

import pytest

from conftest import SANITIZED, reason, reserved

METHODS = ["stream", "ansic", "posix"]


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("buffer", [-1, 0, 1])
@pytest.mark.parametrize("chunk_kib", [1, 3, 2048])
def test_write_copy_read(bench, method, buffer, chunk_kib):
    bench.settings(
        f"{method};flush;0;0;{chunk_kib};{buffer};1000;1;0;MEMORY;a.bin;;res.csv;false\n"
        f"{method};flush;0;0;{chunk_kib};{buffer};1000;1;0;a.bin;b.bin;;res.csv;false\n"
        f"{method};0;0;0;{chunk_kib};{buffer};1000;1;0;b.bin;MEMORY;;res.csv;false\n")
    bench.run(bench.folder / "run.bst")
    rows = bench.rows()
    assert [row["Type"] for row in rows] == ["Write", "Copy", "Read"]
    assert [row["Error"] for row in rows] == ["", "", ""]
    assert [row["Zero test"] for row in rows] == ["", "0", "0"]
    data = (bench.folder / "a.bin").read_bytes()
    assert len(data) == 1024000
    assert (bench.folder / "b.bin").read_bytes() == data


def test_stream_without_chunks_moves_whole_files(bench):
    bench.settings("stream;0;0;0;0;0;1000;1;0;MEMORY;a.bin;;res.csv;false\n"
                   "stream;0;0;0;0;0;1000;1;0;a.bin;b.bin;;res.csv;false\n"
                   "stream;0;0;0;0;0;1000;1;0;b.bin;MEMORY;;res.csv;false\n")
    bench.run(bench.folder / "run.bst")
    assert [row["Error"] for row in bench.rows()] == ["", "", ""]
    assert [row["Zero test"] for row in bench.rows()] == ["", "", "0"]
    assert (bench.folder / "b.bin").read_bytes() == (bench.folder / "a.bin").read_bytes()


def test_iterations_differ_in_their_data(bench):
    bench.settings("posix;0;0;0;64;0;64;2;0;MEMORY;a[iter].bin;;res.csv;false\n")
    bench.run(bench.folder / "run.bst")
    assert (bench.folder / "a0.bin").read_bytes()[:16].hex() == "ed43b84144aff4fb404fa6685e3c8293"
    assert (bench.folder / "a1.bin").read_bytes()[:16].hex() == "be9dc815dd5019470b93b4f64e11af2e"


def test_preallocation_reserves_and_sets_the_length(bench):
    status = reserved(bench, "posix;0;prealloc;WAIT;64;0;1000;1;0;MEMORY;a.bin;;res.csv;false\n",
                      bench.folder / "a.bin")
    if status is None:
        pytest.skip("this file system refuses preallocation")
    assert status.st_size == 1024000 and status.st_blocks * 512 >= 1024000


def test_chunk_pauses_are_part_of_the_time(bench):
    bench.settings("posix;0;0;20;64;0;640;1;0;MEMORY;a.bin;;res.csv;false\n")
    bench.run(bench.folder / "run.bst")
    row = bench.rows()[0]
    assert row["Chunk Wait"] == "20"
    assert int(row["Time ms"]) >= 200
    assert 0 <= int(row["Copy Speed %"]) < 100


def test_file_of_3_gib_fails_a_read_test_and_4_gib_reads_nothing(bench):
    for name, gib in (("three.bin", 3), ("four.bin", 4)):
        with open(bench.folder / name, "wb") as file:
            file.truncate(gib << 30)
    bench.settings("".join(f"{method};0;0;0;64;0;64;1;0;{name}.bin;MEMORY;;res.csv;false\n"
                           for method in METHODS for name in ("three", "four")))
    bench.run(bench.folder / "run.bst")
    error = f"ERROR: Unable to read file '{bench.folder}/three.bin' ! Invalid argument"
    rows = bench.rows()
    assert [row["Error"] for row in rows] == [error, ""] * 3


def test_zero_bytes_in_a_source_are_reported(bench):
    data = bytearray(b"x" * 40960)
    data[20480 - 301:20480] = bytes(301)
    (bench.folder / "holes.bin").write_bytes(data)
    bench.settings("".join(f"{method};0;0;0;4;0;64;1;0;holes.bin;{dest};;res.csv;false\n"
                           for method in METHODS for dest in ("MEMORY", f"{method}.bin")))
    printed = bench.run(bench.folder / "run.bst")
    assert [row["Zero test"] for row in bench.rows()] == [str(20480 - 300)] * 6
    assert printed.count("Null data test: Null found before file position 20180\n") == 6


def limit_memory():
    resource.setrlimit(resource.RLIMIT_AS, (500 << 20, 500 << 20))


def test_no_memory_for_the_buffer_is_reported_and_the_run_goes_on(bench):
    if sys.platform != "linux":
        pytest.skip("this system does not hold programs to RLIMIT_AS")
    (bench.folder / "in.bin").write_bytes(b"x" * 4096)
    bench.settings("posix;0;0;0;64;0;64;1;0;MEMORY;out.bin;;res.csv;false\n"
                   "stream;0;0;0;64;0;64;1;0;in.bin;copy.bin;;res.csv;false\n")
    if SANITIZED:
        options = {"environment": {
            "ASAN_OPTIONS": "allocator_may_return_null=1:max_allocation_size_mb=500"}}
    else:
        options = {"preexec_fn": limit_memory}
    bench.run(bench.folder / "run.bst", **options)
    write, copy = bench.rows()
    assert write["Error"] == f"ERROR: Unable to allocate memory buffer! {reason(errno.ENOMEM)}"
    assert (write["Zero test"], write["Time ms"], copy["Error"]) == ("", "0", "")
    assert not (bench.folder / "out.bin").exists()
