"""What the interfaces really ask the system for: the calls that strace sees on the test's files."""

import os
import re
import shutil
import subprocess

import pytest

KIB = 1024
FILE_KIB = 40
LIBCXX = os.environ["MARROWBENCH_STREAMS"] == "libc++"


def calls(bench, line, watched):
    """The sizes that were read from and written to the watched files, in order."""
    (bench.folder / "source.bin").write_bytes(b"x" * FILE_KIB * KIB)
    path = bench.settings(line)
    trace = bench.folder / "trace.txt"
    # Leaks can't be looked for under a tracer.
    environment = os.environ | {"ASAN_OPTIONS": "detect_leaks=0"}
    subprocess.run(["strace", "-y", "-e", "trace=read,readv,write,writev,fallocate,ftruncate",
                    "-o", trace, bench.program, path],
                   check=True, capture_output=True, env=environment)
    seen = {name: [] for name in watched}
    for text in trace.read_text(errors="replace").splitlines():
        match = re.match(r"(\w+)\(\d+<([^>]*)>.* = (-?\d+)", text)
        if match and match[2].rsplit("/", 1)[-1] in watched:
            kind = {"readv": "read", "writev": "write"}.get(match[1], match[1])
            seen[match[2].rsplit("/", 1)[-1]].append((kind, int(match[3])))
    return seen


@pytest.fixture(autouse=True)
def strace_is_there():
    if shutil.which("strace") is None:
        pytest.skip("needs strace")
    if subprocess.run(["strace", "true"], capture_output=True).returncode != 0:
        pytest.skip("strace may not trace here")


def chunks(kind, size_kib, total_kib=FILE_KIB):
    return [(kind, size_kib * KIB)] * (total_kib // size_kib)


def copy_calls(bench, method, buffer, chunk_kib, flush="0"):
    seen = calls(bench, f"{method};{flush};0;0;{chunk_kib};{buffer};0;1;0;source.bin;dest.bin;;;false",
                 ["source.bin", "dest.bin"])
    reads = [call for call in seen["source.bin"] if call[1] != 0]
    return reads, seen["dest.bin"]


@pytest.mark.parametrize("chunk_kib", [1, 8])
def test_descriptors_make_one_read_and_one_write_per_chunk(bench, chunk_kib):
    reads, writes = copy_calls(bench, "posix", 0, chunk_kib, flush="flush")
    assert reads == chunks("read", chunk_kib)
    assert writes == chunks("write", chunk_kib)


def test_stdio_buffer_setting_reaches_both_files_of_a_copy(bench):
    assert copy_calls(bench, "ansic", -1, 1) == (chunks("read", 4), chunks("write", 4))


@pytest.mark.parametrize("buffer", [0, 1])
@pytest.mark.parametrize("chunk_kib", [1, 2])
def test_stdio_unbuffered_or_chunk_sized_moves_chunk_by_chunk(bench, buffer, chunk_kib):
    reads, writes = copy_calls(bench, "ansic", buffer, chunk_kib)
    assert reads == chunks("read", chunk_kib)
    assert writes == chunks("write", chunk_kib)


def test_stdio_flush_writes_every_chunk(bench):
    assert copy_calls(bench, "ansic", -1, 1, flush="flush")[1] == chunks("write", 1)


# libc++ builds its file streams on stdio, whose blocks of 4 KiB lie below whatever buffer a stream
# has; libstdc++ has nothing below.
SMALL_READS = chunks("read", 4) if LIBCXX else chunks("read", 1)
SMALL_WRITES = chunks("write", 4) if LIBCXX else chunks("write", 1)
LEFT_ALONE_READS = chunks("read", 4) if LIBCXX else [("read", 8191)] * 5 + [("read", 5)]


@pytest.mark.parametrize("buffer", [0, 1])
def test_streams_unbuffered_or_chunk_sized_move_small_chunks(bench, buffer):
    assert copy_calls(bench, "stream", buffer, 1) == (SMALL_READS, SMALL_WRITES)


def test_streams_left_alone_read_by_the_librarys_buffer(bench):
    reads, _ = copy_calls(bench, "stream", -1, 1)
    assert reads == LEFT_ALONE_READS


def test_stream_buffer_of_a_large_chunk_takes_it_whole(bench):
    reads, _ = copy_calls(bench, "stream", 1, 8)
    assert max(size for _, size in reads) == 8 * KIB
    assert sum(size for _, size in reads) == FILE_KIB * KIB


def test_stream_flush_writes_every_chunk(bench):
    assert copy_calls(bench, "stream", -1, 1, flush="flush")[1] == chunks("write", 1)


@pytest.mark.parametrize("buffer", [-1, 0, 1])
def test_keeps_stdio_buffer_tests_on_the_librarys_buffering(bench, buffer):
    line = f"ansic;0;0;0;1;{buffer};{FILE_KIB};1;0;"
    seen = calls(bench, f"{line}MEMORY;dest.bin;;;false", ["dest.bin"])
    assert seen["dest.bin"] == chunks("write", 4)
    seen = calls(bench, f"{line}source.bin;MEMORY;;;false", ["source.bin"])
    assert [call for call in seen["source.bin"] if call[1] != 0] == chunks("read", 4)


def test_stream_buffer_setting_of_a_read_test_reaches_the_input(bench):
    for buffer, expected in ((0, SMALL_READS), (1, SMALL_READS), (-1, LEFT_ALONE_READS)):
        line = f"stream;0;0;0;1;{buffer};0;1;0;source.bin;MEMORY;;;false"
        seen = calls(bench, line, ["source.bin"])
        assert [call for call in seen["source.bin"] if call[1] != 0] == expected, buffer


def test_keeps_stream_write_tests_on_the_librarys_buffering(bench):
    sizes = []
    for buffer in (-1, 0, 1):
        line = f"stream;0;0;0;1;{buffer};{FILE_KIB};1;0;MEMORY;dest.bin;;;false"
        sizes.append(calls(bench, line, ["dest.bin"])["dest.bin"])
    assert sizes[0] == sizes[1] == sizes[2]
    assert sum(size for _, size in sizes[0]) == FILE_KIB * KIB


def test_preallocation_comes_before_the_first_write(bench):
    line = f"posix;0;prealloc;0;16;0;{FILE_KIB};1;0;MEMORY;dest.bin;;;false"
    seen = calls(bench, line, ["dest.bin"])["dest.bin"]
    if ("fallocate", -1) in seen:
        pytest.skip("this file system refuses preallocation")
    assert seen == [("fallocate", 0), ("ftruncate", 0), ("write", 16384), ("write", 16384),
                    ("write", 8192)]
