#include "marrowctl/check/finding_kinds.h"

namespace marrowbench::ctl {
namespace {

constexpr FindingKind kKinds[] = {
    {"unknown-allow", Severity::warning,
     R"(A comment "# marrowctl: allow NAME..." silences findings of these names for its file. A name that is
no finding silences nothing, and the finding that was meant goes on being shown.

    # marrowctl: allow nolog

Write the name as it stands at the end of the finding:

    # marrowctl: allow no-log)"},
    {"unknown-method", Severity::error,
     R"(A test line begins with its method: Stream, AnsiC, Posix or System, in any case. The program
refuses every other line with "Error reading settings line" and goes on with the next one, so that
the test is missing from the table.

    Posx;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Write the method that is meant. A comment has its "#" in the first column.)"},
    {"bad-number", Severity::error,
     R"(The fields 4 to 9 are numbers: chunk wait (ms), chunk size (KiB), system buffer, file size (KiB),
iterations and cache mode. Each is digits, with a "-" in front at most. Anything else, a unit, a point
or a blank inside, makes the program refuse the line.

    Posix;0;0;0;1M;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Write the KiB:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"empty-field", Severity::warning,
     R"(A field with nothing between its separators is not empty: it reads as ";". As a path that is a
file called ";", as a flag it is false, and as a number it makes the program refuse the line.

    Posix;;0;0;1024;0;1024;1;0;MEMORY;data.bin;;results.csv;true

Write what is meant: 0 for a flag or a number, MEMORY for a source or destination in memory. A blank
between the separators makes a field that is really empty:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin; ;results.csv;true)"},
    {"line-too-long", Severity::error,
     R"(Of a line 1,000 characters are read. The rest is cut without a word, be it in the middle of a path,
and fields behind it are missing.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;/a/very/long/path/...

Shorten the paths: relative ones start in the folder of the settings file.)"},
    {"too-many-tests", Severity::error,
     R"(A settings file has room for 200 tests. The program names the 201st and all later ones as ignored
and does not run them.

Put them into a second file, and end the first with a chain line that names it:

    [cfgPath]part-2.bst)"},
    {"unintended-chain", Severity::error,
     R"(A line that ends in ".bst" names the next settings file, whatever stands before. A test line whose
last field ends so is not run: the client waits for a file with the whole line as its name, forever.

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.bst

Give the table another ending, or write the done flag behind it:

    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true)"},
    {"behind-chain", Severity::warning,
     R"(A chain line ends its settings file: what stands behind it is never read.

    [cfgPath]part-2.bst
    Posix;0;0;0;1024;0;1024;1;0;MEMORY;data.bin;log.txt;results.csv;true

Move the chain line to the end of the file.)"},
    {"chain-missing", Severity::warning,
     R"(A client whose settings file names a next one that does not exist waits for it and prints a dot
every five seconds, without an end. That may be meant: the file is published later. Often it is a path
that starts in another folder: a chain path is taken from where the client was started, not from the
folder of the settings file.

    part-2.bst

Write the folder of this settings file in front:

    [cfgPath]part-2.bst)"},
    {"chain-cycle", Severity::warning,
     R"(A chain that leads back to a file that was run before makes the clients go round until they are
stopped, with more rows in the table each time. The totals that check shows are those of one pass.

    (in all.bst)  [cfgPath]all.bst

Remove the chain line, unless an endless load is what you want.)"},
    {"not-a-settings-name", Severity::error,
     R"(The program takes a settings file by its ending only: a name that does not end in ".bst" (in any
case) is refused with "Unknown commandline flags" and exit status 1.

    marrowbench tests.txt

Rename the file:

    mv tests.txt tests.bst)"},
};

}  // namespace

std::span<const FindingKind> kindsAboutLines() { return kKinds; }

}  // namespace marrowbench::ctl
