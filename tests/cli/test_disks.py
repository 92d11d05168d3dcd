"""File systems of disks: what they grant, and what they say when they are full or broken."""

import errno
import os
import subprocess

import pytest

from complete_run import ITERATIONS, METHODS, write_complete_run
from conftest import reason, reserved, table_rows

MIB = 1 << 20

pytestmark = pytest.mark.skipif(os.environ.get("MARROWBENCH_ALL") != "1",
                                reason="disks are part of scripts/test --all")

# Name and the smallest size that its file system can be made with, in MiB.
DISKS = [("ext4", 64), ("xfs", 320), ("btrfs", 128)]


@pytest.fixture(params=DISKS, ids=lambda disk: disk[0])
def disk(mounts, request):
    return mounts.disk(*request.param)


def fill(folder, room):
    """Leaves about so many bytes."""
    status = os.statvfs(folder)
    filler = folder / "filler"
    with open(filler, "wb") as file:
        os.posix_fallocate(file.fileno(), 0, status.f_bavail * status.f_frsize - room)


def test_complete_run_on_a_disk(bench, disk):
    bench.run(write_complete_run(disk))
    bench.folder = disk
    assert [row["Error"] for row in bench.rows()] == [""] * ITERATIONS
    source = (disk / "source.bin").read_bytes()
    written = {(disk / f"new/{method}_write.bin").read_bytes() for method, _, _ in METHODS}
    copied = {(disk / f"new/{method}_copy.bin").read_bytes() for method, _, _ in METHODS}
    assert copied == {source} and len(written) == 3, "each test line has data of its own"


def test_preallocated_file_has_its_size_and_blocks_before_its_data(bench, disk):
    (disk / "source.bin").write_bytes(bytes(4 * MIB))
    for source in (disk / "source.bin", "MEMORY"):
        dest = disk / f"from_{os.path.basename(source)}"
        status = reserved(bench, f"posix;0;prealloc;WAIT;64;0;4096;1;0;{source};{dest};;res.csv;0\n",
                          dest)
        assert status.st_size == 4 * MIB and status.st_blocks * 512 >= 4 * MIB


def test_full_disk_is_told_and_its_table_stays_whole(bench, disk):
    table = disk / "res.csv"
    settings = bench.settings("".join(
        f"{method};flush;0;0;64;0;65536;2;0;MEMORY;{disk}/{method}.bin;;{table};false\n"
        for method in ("posix", "stream")))
    fill(disk, 24 * MIB)
    printed = bench.run(settings)
    told = printed.count(f"marrowbench: row lost: {table}: ")
    kept = table_rows(table.read_text()) if table.exists() else []
    assert len(kept) + told == 4, "each row is in the table or told"
    assert "No space left on device" in printed
    assert not (disk / "res.csv_lock.txt").exists()


def test_quota_is_told(bench, mounts):
    disk = mounts.disk("btrfs", 256)
    for command in (["quota", "enable", disk], ["subvolume", "create", disk / "limited"],
                    ["qgroup", "limit", "1M", disk / "limited"]):
        subprocess.run(["btrfs", *command], check=True, capture_output=True)
    limited = disk / "limited"
    # In blocks of the file system: a write of which only a part fits is cut short without an errno.
    bench.run(bench.settings("".join(
        f"{method};flush;0;0;4;0;4096;1;0;MEMORY;{limited}/{method}.bin;;res.csv;false\n"
        for method, _, _ in METHODS)))
    reasons = [row["Error"].split(" ! ")[-1] for row in bench.rows()]
    assert reasons == [reason(errno.EDQUOT)] * 3


def test_broken_disk_is_told_by_each_interface(bench, mounts):
    disk = mounts.disk("ext4", 64)
    (disk / "source.bin").write_bytes(b"x" * 32 * MIB)
    os.sync()
    subprocess.run(["mount", "-o", "remount,ro", disk], check=True)
    with open(disk / "source.bin", "rb") as file:
        os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)
    # What is cut off are the file's blocks: the file system's own stand in front.
    with open(bench.folder / "disk.img", "r+b") as image:
        image.truncate(20 * MIB)
    bench.run(bench.settings("".join(
        f"{method};0;0;0;64;0;0;1;0;{disk}/source.bin;{dest};;res.csv;false\n"
        for method, _, _ in METHODS for dest in ("MEMORY", f"{method}.bin"))))
    assert [row["Error"] for row in bench.rows()] == [
        f"ERROR: Unable to read file '{disk}/source.bin' ! {reason(errno.EIO)}"] * 6
