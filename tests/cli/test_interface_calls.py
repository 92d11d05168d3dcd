"""What the interfaces really ask the system for: the calls that strace sees on the test's files."""

import os
import re
import subprocess

import pytest

from conftest import MUSL, SANITIZED, needs_strace

KIB = 1024
FILE_KIB = 40
LIBCXX = os.environ["MARROWBENCH_STREAMS"] == "libc++"


def traced(bench, line, *options):
    """What strace saw, a line for each call."""
    (bench.folder / "source.bin").write_bytes(b"x" * FILE_KIB * KIB)
    path = bench.settings(line)
    trace = bench.folder / "trace.txt"
    # Leaks can't be looked for under a tracer.
    environment = os.environ | {"ASAN_OPTIONS": "detect_leaks=0"}
    subprocess.run(["strace", "-y", *options, "-o", trace, bench.program, path],
                   check=True, capture_output=True, env=environment)
    return trace.read_text(errors="replace").splitlines()


def calls(bench, line, watched):
    """The sizes that were read from and written to the watched files, in order."""
    seen = {name: [] for name in watched}
    for text in traced(bench, line, "-e", "trace=read,readv,write,writev,fallocate,ftruncate"):
        match = re.match(r"(\w+)\(\d+<([^>]*)>.* = (-?\d+)", text)
        if match and match[2].rsplit("/", 1)[-1] in watched:
            kind = {"readv": "read", "writev": "write"}.get(match[1], match[1])
            seen[match[2].rsplit("/", 1)[-1]].append((kind, int(match[3])))
    return seen


@pytest.fixture(autouse=True)
def tools(request):
    needs_strace()
    own = ("descriptors", "posix", "preallocation", "any_library")
    if MUSL and not any(word in request.node.name for word in own):
        pytest.skip("the blocks of musl and its libc++ are others than those listed here")


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


@pytest.mark.parametrize("buffer", [0, 1])
def test_streams_of_any_library_make_a_call_or_two_per_chunk(bench, buffer):
    reads, writes = copy_calls(bench, "stream", buffer, 4)
    chunk_count = FILE_KIB // 4
    assert len(reads) <= 2 * chunk_count and len(writes) <= 2 * chunk_count


def test_streams_left_alone_read_by_the_librarys_buffer(bench):
    assert copy_calls(bench, "stream", -1, 1) == (LEFT_ALONE_READS, SMALL_WRITES)


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


def all_calls(bench, line):
    """Every call from the first byte read from or written to the test's files to the last one."""
    found = []
    for text in traced(bench, line):
        match = re.match(r"(\w+)\((?:\d+<([^>]*)>)?.*\) += (\S+)", text)
        if match:
            found.append((match[1], (match[2] or "").rsplit("/", 1)[-1], match[3]))
    moving = [i for i, (kind, file, _) in enumerate(found)
              if kind in ("read", "write", "writev") and file in ("source.bin", "dest.bin")]
    return found[moving[0]:moving[-1] + 1]


def reads(size_kib):
    return [("read", "source.bin", str(size_kib * KIB))]


def writes(size_kib, call="write"):
    return [(call, "dest.bin", str(size_kib * KIB))]


# stdio first looks whether the file is a terminal, which it would buffer by lines. The first chunk
# goes out in one write; of each later one a block of 4 KiB fills the buffer and goes out alone.
LOOK = [("newfstatat", "dest.bin", "0")]
STDIO_WRITES = writes(8) + writes(4) * 8
STREAM_CALLS = {
    "libstdc++": ((reads(8) + writes(8, "writev")) * 5, reads(8) * 5, writes(8, "writev") * 5),
    # The stream keeps four bytes of its buffer for characters that are put back, and so asks stdio
    # for the last chunk early.
    "libc++": (reads(8) + LOOK + reads(4) * 4 + writes(4) * 2 + (reads(4) * 2 + writes(4) * 2) * 2
               + reads(0) + writes(4) * 2
               + [("lseek", "source.bin", str(FILE_KIB * KIB)), ("close", "source.bin", "0")]
               + writes(4) * 2, reads(8) + reads(4) * 8 + reads(0), writes(4) * 10),
}[os.environ["MARROWBENCH_STREAMS"]]


@pytest.mark.parametrize("method, buffer, copy, read, write", [
    ("posix", 0, (reads(8) + writes(8)) * 5, reads(8) * 5, writes(8) * 5),
    ("ansic", 0, (reads(8) + writes(8)) * 5, reads(8) * 5, STDIO_WRITES),
    ("ansic", -1, reads(8) + LOOK + writes(8) + (reads(8) + writes(4) * 2) * 4, reads(8) * 5,
     STDIO_WRITES),
    ("ansic", 1, reads(8) + writes(8) + (reads(8) * 2 + writes(8) * 2) * 2, reads(8) * 5,
     STDIO_WRITES),
    ("stream", 0, *STREAM_CALLS),
])
def test_only_the_interfaces_own_calls_lie_between_first_and_last_byte(
        bench, method, buffer, copy, read, write):
    if SANITIZED:
        pytest.skip("the sanitizers make calls of their own")
    settings = f"{method};0;0;0;8;{buffer};{FILE_KIB};1;0;"
    assert all_calls(bench, f"{settings}source.bin;dest.bin;;;false") == copy
    assert all_calls(bench, f"{settings}source.bin;MEMORY;;;false") == read
    (bench.folder / "dest.bin").unlink()
    assert all_calls(bench, f"{settings}MEMORY;dest.bin;;;false") == write
