"""A short run of everything: interfaces, kinds of test, flush, preallocation, log, table, chain."""

METHODS = (("posix", "0;prealloc", 0), ("ansic", "flush;0", 1), ("stream", "flush;0", 0))
LINES = [f"{method};{flags};0;4;{buffer};8;1;0;{source};{dest};log.txt;res.csv;true\n"
         for method, flags, buffer in METHODS
         for source, dest in (("source.bin", f"new/{method}_copy.bin"), ("source.bin", "MEMORY"),
                              ("MEMORY", f"new/{method}_write.bin"))]
CHAINED = "posix;0;0;0;4;0;8;1;0;source.bin;new/chained.bin;log.txt;res.csv;true\n"
ITERATIONS = len(LINES) + 1


def write_complete_run(folder):
    """Writes source and settings files; returns the path of the first settings file."""
    (folder / "source.bin").write_bytes(b"x" * 8192)
    (folder / "run1.bst").write_text("".join(LINES) + "[cfgPath]run2.bst\n")
    (folder / "run2.bst").write_text(CHAINED)
    return folder / "run1.bst"
