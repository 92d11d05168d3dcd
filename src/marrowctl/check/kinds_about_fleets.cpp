#include "marrowctl/check/finding_kinds.h"

namespace marrowbench::ctl {
namespace {

constexpr FindingKind kKinds[] = {
    {"shared-destination", Severity::warning,
     R"(Several clients write the same file at the same time. They overwrite each other's data and wait for
each other's locks on the server; the speeds are those of a quarrel.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Give each client a file of its own:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[host].bin;log.txt;results.csv;true)"},
    {"anonymous-rows", Severity::warning,
     R"(A row of the table has no cell for the client. It can be told only by the paths in the row or by the
table's own name, and none of them holds [host].

    Posix;0;0;0;1024;0;0;1;0;/mnt/share/source.bin;MEMORY;log.txt;results.csv;true

Put [host] into one of them:

    Posix;0;0;0;1024;0;0;1;0;/mnt/share/source.bin;MEMORY;log.txt;results_[host].csv;true)"},
    {"no-table", Severity::warning,
     R"(The field behind the log is the path of the results table. It is blank, so that no row is kept:
speeds are only printed.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt

Write the path of a table:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"no-log", Severity::note,
     R"(The log field is blank: what the client reports about this test is only printed. The table has its
speeds anyway.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin; ;results.csv;true

Write the path of a log if the reports are to be kept, one for each client:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;[host].log;results.csv;true)"},
    {"source-missing", Severity::warning,
     R"(The source does not exist here, and no line before this one writes it on any client. The test will
fail, unless the file is made until then or exists where the clients run. A source with [date] is
never found: the date is that of the reading.

    Posix;0;0;0;1024;0;0;1;0;data_[host].bin;MEMORY;log.txt;results.csv;true

Write the file first, with as many iterations as are read:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[host].bin;log.txt;results.csv;true
    Posix;0;0;0;1024;0;0;1;0;data_[host].bin;MEMORY;log.txt;results.csv;true)"},
    {"reads-own-write", Severity::note,
     R"(A client keeps what it has written in its memory. When it reads the same file soon after, it is
served from there, and the speed is that of the client's memory, not of the network or the server.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data_[host].bin;log.txt;results.csv;true
    Posix;0;0;0;1024;0;0;1;0;data_[host].bin;MEMORY;log.txt;results.csv;true

Read what another client has written, read more than the memory holds, or mount the share anew in
between.)"},
    {"no-effect", Severity::warning,
     R"(A setting that does nothing for this method and kind of test. Flush works for writes and copies by
Stream and AnsiC, in chunks; PreAllocate for writes and copies by Posix; a System Buffer of 1 and more
for reads and copies by Stream and for copies by AnsiC, in chunks. Elsewhere two lines that differ in
it measure the same.

    Posix;flush;0;0;1024;1;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Write 0:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"measures-nothing", Severity::warning,
     R"(The method System moves no data and leaves rows with zeros. A line with 0 iterations, or with none
written, leaves no row at all.

    Posix;0;0;0;1024;0;1024;0;0;MEMORY;data.bin;log.txt;results.csv;true

Write another method and 1 or more iterations, or make the line a comment.)"},
    {"crowded-lock", Severity::warning,
     R"(Clients write their rows one after the other, under a lock for which each waits for about ten seconds.
When many finish at the same moment, only some 40 get it in that time, and the rows of the others are
lost. Here more than 40 clients share one table.

    ...;log.txt;results.csv;true

Give each client its own table, and join them afterwards:

    ...;log.txt;results_[host].csv;true)"},
    {"comma-in-path", Severity::warning,
     R"(The cells of a row are separated by commas, and nothing is quoted. A comma in Source or Dest makes
two cells of one, and all cells behind it move to the right. The path counts as it is used: with the
folder of the settings file.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;a,b.bin;log.txt;results.csv;true

Name files and folders without commas.)"},
    {"table-is-special", Severity::warning,
     R"(The path of the table or the log is a folder, a device, a pipe or a socket here. Nothing that is
written there is kept in a file, and the program may wait for whoever reads a pipe.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;/mnt/share;true

Write the path of a file; leave the field blank if nothing is to be kept:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;/mnt/share/results.csv;true)"},
    {"space-short", Severity::warning,
     R"(The new files of all clients and iterations together need more than is free in the file system that
they go to, as it shows here. Writes will fail with "No space left on device". The program deletes no
file: those of earlier lines stay.

    Posix;0;0;0;1024;0;1048576;1000;0;MEMORY;data_[host]_[iter].bin;log.txt;results.csv;true

Write smaller files or fewer of them; without [iter] Stream and Posix write the same one again.)"},
};

}  // namespace

std::span<const FindingKind> kindsAboutFleets() { return kKinds; }

}  // namespace marrowbench::ctl
