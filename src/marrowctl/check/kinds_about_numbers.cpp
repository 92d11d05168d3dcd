#include "marrowctl/check/finding_kinds.h"

namespace marrowbench::ctl {
namespace {

constexpr FindingKind kKinds[] = {
    {"negative-size", Severity::error,
     R"(A "-" is accepted in front of every number, but sizes, waits and counts below 0 are hardly meant: a
negative chunk size moves the whole file in one step, negative iterations run nothing. A copy by
Stream with a negative chunk size works, so that it is a warning there.

    Posix;0;0;0;1024;0;1024;-3;0;MEMORY;data.bin;log.txt;results.csv;true

Write 0 or more. A System Buffer of -1 is fine: it leaves the library's own buffer alone.)"},
    {"number-wraps", Severity::warning,
     R"(Numbers are kept in 32 bits, sizes in bytes: of a larger one the upper bits are lost. 4294967297
iterations are 1, a chunk of 4194304 KiB is one of 0 bytes. A wait is made in full, but the speed
percentage that is shown counts with its lower 16 bits.

    Posix;0;0;70000;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Write chunks of at most 2097151 KiB and waits of at most 65535 ms.)"},
    {"size-capped", Severity::warning,
     R"(Reads and writes go through a buffer of 1 GiB. A larger file size is cut to 1 GiB without a word.

    Posix;0;0;0;1024;0;4194304;1;0;MEMORY;data.bin;log.txt;results.csv;true

Write at most 1048576 KiB. More iterations, with [iter] in the name, move more data:

    Posix;0;0;0;1024;0;1048576;4;0;MEMORY;data_[iter].bin;log.txt;results.csv;true)"},
    {"size-unknown", Severity::note,
     R"(A read or a copy moves as much as its source holds. The source does not exist here and no line
writes it with a size that is known, so the totals leave it out.

    Posix;0;0;0;1024;0;0;1;0;/mnt/share/source.bin;MEMORY;log.txt;results.csv;true

Nothing is wrong with the line. Run check where the share is mounted to have the source counted.)"},
    {"done-flag-one", Severity::warning,
     R"(The last field asks for the done marker with "true", in any case, and with nothing else. "1", which
is true for Flush and PreAllocate, is false here.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;1

Write true:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"no-done-flag", Severity::note,
     R"(A client that has worked through a settings file leaves a marker, _NAME_log/done__HOST beside it, if
one of the lines asks for that with "true" in its last field. No line does, so that nothing shows when
all clients have finished: a warning where there are several.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv

Write true behind the table, in one line of the file at least:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"comment-indented", Severity::warning,
     R"(A "#" marks a comment in the first column only. Behind blanks it belongs to a line that the program
refuses with "Error reading settings line"; and a line that ends in .bst becomes a chain line.

      # large files

Put the "#" into the first column:

    # large files)"},
    {"byte-order-mark", Severity::error,
     R"(Some editors write the three bytes EF BB BF in front of a text in UTF-8. The program takes them for
part of the first line: a test or comment there is refused, and a chain line waits for a file whose
name begins with these bytes.

    <EF BB BF># my tests

Save the file as UTF-8 without a byte order mark.)"},
    {"unknown-placeholder", Severity::warning,
     R"(A word in brackets that is no placeholder stays in the path as it is: all clients then write one
file called data_[hostname].bin.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[hostname].bin;log.txt;results.csv;true

There are [host], [date], [iter], [cfgline], [cfgTaskID], [cfgID], [cfgLogName], [cfgNameID], [cfgName],
[cfgPath] and [temp], in any case:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[host].bin;log.txt;results.csv;true)"},
};

}  // namespace

std::span<const FindingKind> kindsAboutNumbers() { return kKinds; }

}  // namespace marrowbench::ctl
