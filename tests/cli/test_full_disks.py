"""Disks that are full, have no inodes left or can't be written to."""

import subprocess

import pytest

METHODS = ["posix", "ansic", "stream"]


def line(method, dest, table="res.csv", log="log.txt", size_kib=256):
    return f"{method};flush;0;0;64;0;{size_kib};1;0;MEMORY;{dest};{log};{table};false\n"


def test_full_memory_file_system_is_told_by_each_interface(bench, mounts):
    mount = mounts.memory("size=128k")
    bench.run(bench.settings("".join(line(method, mount / f"{method}.bin") for method in METHODS)))
    # What the first test wrote fills the file system: the others can't even begin.
    assert [row["Error"] for row in bench.rows()] == [
        f"ERROR: Unable to write file '{mount}/{method}.bin' ! No space left on device"
        for method in METHODS]


@pytest.mark.parametrize("room", range(0, 4096, 512))
def test_table_on_a_full_disk_keeps_whole_rows_only(bench, mounts, room):
    mount = mounts.memory("size=64k")
    table, filler = mount / "res.csv", mount / "filler"
    bench.run(bench.settings(line("posix", "data.bin", table, size_kib=64)))
    # From case to case the table's last page has more room, and there is no other page.
    whole = table.read_bytes()
    with open(table, "ab") as file:
        row = whole[whole.index(b"\n") + 1:]
        while table.stat().st_size + len(row) < 4096 - room:
            file.write(row)
            file.flush()
    before = table.read_bytes()
    with pytest.raises(OSError), open(filler, "wb", buffering=0) as file:
        while True:
            file.write(b"x" * 4096)

    _, told = bench.run_apart(bench.settings(line("posix", "data.bin", table, size_kib=64) * 3))
    lost = told.count(f"marrowbench: row lost: {table}: No space left on device")
    assert told[lost:] == ([f"marrowbench: {lost} of 3 rows lost"] if lost else [])
    after = table.read_bytes()
    assert after.startswith(before)
    assert after.count(b"\n\n") == before.count(b"\n\n") + 3 - lost, "rows written or told"
    assert after.endswith(b"\n\n"), "no torn row"

    filler.unlink()
    bench.run(bench.settings(line("posix", "data.bin", table, size_kib=64)))
    assert table.read_bytes().count(b"\n\n") == after.count(b"\n\n") + 1
    assert not (mount / "res.csv_lock.txt").exists()


def test_no_inode_for_the_lock_loses_the_row_and_says_so(bench, mounts):
    mount = mounts.memory("size=1m,nr_inodes=2")
    (mount / "last").write_bytes(b"")
    table = mount / "res.csv"
    printed, told = bench.run_apart(bench.settings(line("posix", "data.bin", table) * 2))
    blanks = " " * 18
    assert printed.count(
        f"{blanks}ERROR: Unable to write excel file as it is still locked.{table}") == 2
    assert printed.count(f"{blanks}Null data test: N/A") == 2, "the tests themselves run"
    assert told == [f"marrowbench: row lost: {table}: no lock: No space left on device"] * 2 + [
        "marrowbench: 2 of 2 rows lost"]


def test_read_only_file_system_is_told(bench, mounts):
    mount = mounts.memory("size=1m")
    subprocess.run(["mount", "-o", "remount,ro", mount], check=True)
    bench.run(bench.settings("".join(line(method, mount / "a.bin") for method in METHODS)))
    assert [row["Error"] for row in bench.rows()] == [
        f"ERROR: Unable to open file '{mount}/a.bin' ! Read-only file system"] * len(METHODS)
