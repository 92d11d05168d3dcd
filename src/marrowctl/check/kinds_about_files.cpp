#include "marrowctl/check/finding_kinds.h"

namespace marrowbench::ctl {
namespace {

constexpr FindingKind kKinds[] = {
    {"path-too-long", Severity::error,
     R"(Paths have room for 500 characters, as written and with their placeholders replaced; the rest is cut
and another file is used. A table needs more care, as a lock stands beside it: a path of 249
characters leaves no name for the lock, and no row is written. From 250 on (a warning) the lock is
named by the first 249 characters, and other tables may share it.

    ...;log.txt;[cfgPath]a/very/long/path/[cfgName]/[host]/results.csv;true

Shorten the names, a table's path to 241 characters or fewer.)"},
    {"folder-refused", Severity::error,
     R"(A client makes the folder of a file, but two missing levels at most, so that a mistyped path grows
no tree on the share. With three or more missing the test is not run; of a table no row is written. A
folder whose text has fewer than three characters ("", "./", "d/") counts as missing, and a missing one
is not made where fewer than three characters and a "/" are left two levels above it. That is so for
relative paths where the client was started in the settings file's folder, marrowbench tests.bst, or in
the one above.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;/mnt/shear/a/b/data.bin;log.txt;results.csv;true

Correct the path, make the folder beforehand, or start the client with the whole path of the settings
file: marrowbench /mnt/share/tests.bst.)"},
    {"folder-complaint", Severity::note,
     R"(The folder of a log or table has a text of fewer than three characters ("", "./", "d/"), which the
program takes for a missing folder and does not make. It prints "ERROR: Folder does not exists" for
each row, and writes the file all the same if the folder is there. A table whose folder is not there is
folder-refused.

    (marrowbench tests.bst)  ...;data.bin;log.txt;results.csv;true

Start the client with the whole path of the settings file, from which relative paths are taken.)"},
    {"exists-already", Severity::error,
     R"(AnsiC creates the file that it writes and refuses one that exists ("File exists"). A name that
stays the same over iterations, lines or clients works once and fails from then on; so does one that
is left from an earlier run.

    AnsiC;0;0;0;1024;0;1024;3;0;MEMORY;data.bin;log.txt;results.csv;true

Make each name another one:

    AnsiC;0;0;0;1024;0;1024;3;0;MEMORY;data_[host]_[cfgline]_[iter]_[date].bin;log.txt;results.csv;true)"},
    {"whole-copy-refused", Severity::error,
     R"(A chunk size below 0 asks for the whole file in one step, which only Stream can do with a copy. AnsiC
and Posix fail with "single chunk copy not supported". Sizes of 2,097,152 KiB and more become negative
too: they don't fit their 32 bits.

    Posix;0;0;0;-1;0;0;1;0;source.bin;copy.bin;log.txt;results.csv;true

Write the KiB of a chunk, or the method Stream:

    Posix;0;0;0;1024;0;0;1;0;source.bin;copy.bin;log.txt;results.csv;true)"},
    {"copies-onto-itself", Severity::error,
     R"(Source and dest are the same file, by their text or through links. Stream empties its dest before it
reads the source, so that the data is gone; AnsiC refuses a dest that exists; Posix writes the file
over itself, which is no copy.

    Stream;0;0;0;1024;0;0;1;0;data.bin;data.bin;log.txt;results.csv;true

Write another dest:

    Stream;0;0;0;1024;0;0;1;0;data.bin;copy_[host].bin;log.txt;results.csv;true)"},
    {"memory-to-memory", Severity::error,
     R"(With both paths in memory the test is a read of a file without a name, and always fails. A path that
is left empty means memory too.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;MEMORY;log.txt;results.csv;true

Write a dest for a write, a source for a read:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[host].bin;log.txt;results.csv;true)"},
};

}  // namespace

std::span<const FindingKind> kindsAboutFiles() { return kKinds; }

}  // namespace marrowbench::ctl
