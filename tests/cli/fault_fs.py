#!/usr/bin/env python3
"""A FUSE file system that shows a folder, with one fault in it.

    fault_fs.py FOLDER MOUNTPOINT FAULT [NAME=VALUE...]

    FAULT     errno  reads and writes that reach byte `at` fail with the errno `code`
              zeros  `length` bytes from byte `at` on are read as zeros
              short  a read gives at most `length` bytes
              close  every close fails with the errno `code`
              drop   writes that reach byte `at` are forgotten
              late   a file is not found for `length` milliseconds after it was made, and can be
                     made again
              hidden a file is not found until this mount is asked to make it
              rename it fails with the errno `code`
              stay   folders can't be removed, with the errno `code`
              aged   files are `length` seconds older than they are
              whole  times are whole seconds
              slow   a file that is opened, made or renamed takes `length` milliseconds
              case   small and capital letters are the same
              exact  there is none, and files are always made exclusively
              none   there is none; only files are never made exclusively, as far as this mount is
                     asked: it takes `length` milliseconds from the question whether there is one

It applies to files whose name matches `name`, "*.bin" by default. The kernel caches nothing, so a
program sees the result of each of its calls. Runs until it is unmounted.
"""

import errno
import fnmatch
import os
import sys
import time

from fusepy import FUSE, FuseOSError, Operations


class FaultyFolder(Operations):
    def __init__(self, folder, fault, values):
        self.folder = os.path.realpath(folder)
        self.fault = fault
        self.code = getattr(errno, values.get("code", "EIO"))
        self.at = int(values.get("at", 0))
        self.length = int(values.get("length", 0))
        self.pattern = values.get("name", "*.bin")
        self.made = set()

    def inside(self, path):
        return self.folder + (path.lower() if self.fault == "case" else path)

    def has(self, fault, path):
        return self.fault == fault and fnmatch.fnmatch(os.path.basename(path), self.pattern)

    def fail_if(self, fault, path):
        if self.has(fault, path):
            raise FuseOSError(self.code)

    def refuse_beyond(self, path, end):
        if self.has("errno", path) and end > self.at:
            raise FuseOSError(self.code)

    def read(self, path, size, offset, handle):
        self.refuse_beyond(path, offset + size)
        data = bytearray(os.pread(handle, size, offset))
        if self.has("short", path):
            del data[self.length:]
        if self.has("zeros", path):
            first = max(self.at - offset, 0)
            last = min(self.at + self.length - offset, len(data))
            if first < last:
                data[first:last] = bytes(last - first)
        return bytes(data)

    def write(self, path, data, offset, handle):
        self.refuse_beyond(path, offset + len(data))
        if self.has("drop", path) and offset + len(data) > self.at:
            return len(data)
        return os.pwrite(handle, data, offset)

    def flush(self, path, handle):
        self.fail_if("close", path)

    def release(self, path, handle):
        os.close(handle)

    def getattr(self, path, handle=None):
        try:
            status = os.lstat(self.inside(path))
        except OSError as failure:
            raise FuseOSError(failure.errno) from failure
        if handle is None and self.has("late", path) and time.time() - status.st_ctime < self.length / 1000:
            raise FuseOSError(errno.ENOENT)
        if self.has("hidden", path) and path not in self.made:
            raise FuseOSError(errno.ENOENT)
        return self.with_faulty_times(path, {name: getattr(status, name) for name in (
            "st_mode", "st_nlink", "st_size", "st_uid", "st_gid", "st_atime", "st_mtime", "st_ctime")})

    def with_faulty_times(self, path, status):
        if self.has("aged", path):
            status["st_mtime"] -= self.length
        if self.has("whole", path):
            status["st_mtime"] = int(status["st_mtime"])
        return status

    def readdir(self, path, handle):
        return [".", "..", *os.listdir(self.inside(path))]

    def take_time(self, path):
        if self.has("slow", path):
            time.sleep(self.length / 1000)

    def open(self, path, flags):
        self.take_time(path)
        return os.open(self.inside(path), flags)

    def create(self, path, mode, info=None):
        if self.has("none", path):
            time.sleep(self.length / 1000)
        self.take_time(path)
        self.made.add(path)
        exclusive = os.O_EXCL if self.has("exact", path) else 0
        return os.open(self.inside(path), os.O_RDWR | os.O_CREAT | exclusive, mode)

    def truncate(self, path, length, handle=None):
        os.truncate(self.inside(path), length)

    def unlink(self, path):
        os.unlink(self.inside(path))

    def rename(self, old, new):
        self.fail_if("rename", new)
        self.take_time(new)
        os.rename(self.inside(old), self.inside(new))

    def mkdir(self, path, mode):
        os.mkdir(self.inside(path), mode)

    def rmdir(self, path):
        self.fail_if("stay", path)
        os.rmdir(self.inside(path))


if __name__ == "__main__":
    shown, mountpoint, kind, *pairs = sys.argv[1:]
    FUSE(FaultyFolder(shown, kind, dict(pair.split("=") for pair in pairs)), mountpoint,
         foreground=True, nothreads=True, direct_io=True, attr_timeout=0, entry_timeout=0)
