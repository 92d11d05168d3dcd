"""What a file server does wrong with a file's bytes is told by each interface."""

import errno
import os

import pytest

from conftest import MUSL, reason

OLD_LIBCXX = os.environ["MARROWBENCH_STREAMS"] == "libc++" and not MUSL
METHODS = ["posix", "ansic", "stream"]
FILE = bytes(range(1, 251)) * 200  # 50,000 bytes, none of them zero


def rows(bench, lines):
    printed = bench.run(bench.settings("".join(lines)))
    assert "still locked" not in printed
    return bench.rows()


def read(method, source, chunk_kib=4):
    return f"{method};flush;0;0;{chunk_kib};0;0;1;0;{source};MEMORY;log.txt;res.csv;true\n"


def write(method, dest, size_kib):
    return f"{method};flush;0;0;4;0;{size_kib};1;0;MEMORY;{dest};log.txt;res.csv;true\n"


def copy(method, source, dest):
    return f"{method};flush;0;0;4;0;0;1;0;{source};{dest};log.txt;res.csv;true\n"


@pytest.fixture
def shown(bench):
    folder = bench.folder / "shown"
    folder.mkdir()
    (folder / "source.bin").write_bytes(FILE)
    return folder


@pytest.mark.parametrize("method", METHODS)
def test_zeros_in_the_middle_are_found_where_they_are(bench, mounts, shown, method):
    # A chunk of zeros: its last 300 bytes begin at 12288 - 300.
    mount = mounts.faulty(shown, "zeros", "at=8192", "length=4096")
    result = rows(bench, [read(method, mount / "source.bin"),
                          copy(method, mount / "source.bin", "copy.bin")])
    assert [row["Error"] for row in result] == ["", ""]
    assert [row["Zero test"] for row in result] == ["11988", "11988"]
    copied = (bench.folder / "copy.bin").read_bytes()
    assert copied == FILE[:8192] + bytes(4096) + FILE[12288:]


@pytest.mark.parametrize("method", METHODS)
def test_whole_file_is_looked_through_at_its_end(bench, mounts, shown, method):
    mount = mounts.faulty(shown, "zeros", "at=40000", "length=10000")
    result = rows(bench, [read(method, mount / "source.bin", chunk_kib=0)])
    assert [row["Zero test"] for row in result] == ["49500"]


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("code", ["EIO", "ESTALE"])
def test_read_that_fails_names_file_and_reason(bench, mounts, shown, method, code):
    mount = mounts.faulty(shown, "errno", "at=20000", f"code={code}")
    result = rows(bench, [read(method, mount / "source.bin"),
                          copy(method, mount / "source.bin", "copy.bin"),
                          read(method, shown / "source.bin")])
    for row in result[:2]:
        assert row["Error"] == (f"ERROR: Unable to read file '{mount}/source.bin' ! "
                                + reason(getattr(errno, code)))
        assert row["Time ms"] == "0"
    assert result[2]["Error"] == "", "the tests that follow run"


@pytest.mark.parametrize("method", ["posix", "stream"])
@pytest.mark.parametrize("code", ["ENOSPC", "EDQUOT"])
def test_write_that_fails_names_file_and_reason(bench, mounts, shown, method, code):
    mount = mounts.faulty(shown, "errno", "at=20000", f"code={code}")
    result = rows(bench, [write(method, mount / "write.bin", 48),
                          copy(method, shown / "source.bin", mount / "copy.bin"),
                          write(method, mount / "small.bin", 16)])
    # Where libc++ has stdio's buffer below its own, it is the flush that fails, and nobody looks at
    # it: the next chunk finds a stream that is bad already, and no errno.
    why = reason(getattr(errno, code))
    copy_why = "No Error." if OLD_LIBCXX and method == "stream" else why
    for row, name, told in zip(result, ("write", "copy"), (why, copy_why)):
        assert row["Error"] == f"ERROR: Unable to write file '{mount}/{name}.bin' ! {told}"
    assert result[2]["Error"] == ""


@pytest.mark.skipif(MUSL, reason="musl's buffer is smaller than a chunk")
def test_keeps_checking_what_stdio_took_and_not_what_its_flush_wrote(bench, mounts, shown):
    # The library's buffer has the size of the server's blocks, here more than a chunk.
    mount = mounts.faulty(shown, "errno", "at=20000", "code=ENOSPC")
    result = rows(bench, [write("ansic", mount / "write.bin", 48)])
    assert result[0]["Error"] == ""
    assert (shown / "write.bin").stat().st_size < 20000


def test_short_reads_are_an_error_where_the_interface_shows_them(bench, mounts, shown):
    mount = mounts.faulty(shown, "short", "length=1000")
    result = rows(bench, [read(method, mount / "source.bin") for method in METHODS])
    # A descriptor's read has no errno to tell; the libraries go on reading by themselves.
    assert result[0]["Error"] == f"ERROR: Unable to read file '{mount}/source.bin' ! No Error."
    assert [row["Error"] for row in result[1:]] == ["", ""]


@pytest.mark.parametrize("method", METHODS)
def test_keeps_quiet_about_a_close_that_fails(bench, mounts, shown, method):
    mount = mounts.faulty(shown, "close", "code=EIO")
    result = rows(bench, [write(method, mount / "write.bin", 48), read(method, mount / "write.bin"),
                          copy(method, shown / "source.bin", mount / "copy.bin")])
    assert [row["Error"] for row in result] == ["", "", ""]
    assert (shown / "copy.bin").read_bytes() == FILE
