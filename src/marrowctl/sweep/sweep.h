#ifndef MARROWBENCH_MARROWCTL_SWEEP_SWEEP_H
#define MARROWBENCH_MARROWCTL_SWEEP_SWEEP_H

#include <string>
#include <vector>

/// Settings files from a matrix: every combination of the values that the options list is one test.
namespace marrowbench::ctl {

/// The options as they were given; an empty text has the default that stands beside it. All but
/// output and command list values separated by ",", numbers and sizes in ranges, too.
struct SweepOptions {
  std::string method{};      ///< posix, ansic, stream; posix
  std::string kind{};        ///< write, read, copy; write, with neighbours write and read
  std::string chunk{};       ///< size; 0: the whole file at once; 1M
  std::string size{};        ///< of the files; 256M
  std::string buffer{};      ///< -1: the interface's own, 0: none, 1: of the chunk size; -1
  std::string wait{};        ///< milliseconds after each chunk; 0
  std::string iterations{};  ///< 1
  std::string flush{};       ///< no, yes; no
  std::string prealloc{};    ///< no, yes; no
  std::string dest{};        ///< a folder, ending in "/", or a file; "NAME_data/[host]/"
  std::string source{};      ///< file that is read; what the sweep itself writes
  std::string log{};         ///< NAME_log_[host].txt
  std::string table{};       ///< NAME_results.csv
  std::string output{};      ///< the settings file; "-" or empty: standard output, NAME is "sweep"
  std::vector<std::string> neighbours{};  ///< clients, each of which reads the files of the next
  std::string command{};                  ///< the command line, for the head of the files
};

/// A settings file to be written.
struct SweepFile {
  std::string name;  ///< its path; "-" for standard output
  std::string text;
};

/// The files, the first of them to be started, or why there are none.
struct SweepResult {
  std::vector<SweepFile> files;
  std::string option;  ///< that was refused: "chunk"
  std::string reason;  ///< empty: not refused
};

/// Writes the matrix as settings files; no disk is touched.
///
/// Lines: what is read or copied was written before. The order of methods is turned round from one
/// step of sizes to the next (A B C, C B A), so that a share that slows down does not look like a
/// slow method. Files that are read are those of the sweep's own writes of the same parameters;
/// where there are none (no write asked for, or by AnsiC, whose names nobody can tell afterwards)
/// Posix writes "source" files first: the only lines beyond the matrix.
///
/// Names: every test writes a file of its own. "[host]" and whatever tells the tests apart is put
/// into the name of --dest, and "[iter]" where there are several iterations. AnsiC, which refuses
/// what exists, gets "[iter]" and "[date]".
///
/// Files: at most 200 tests each, joined by chain lines; the last test of each leaves its marker.
/// Relative paths start in "./././" where the program would not know one of the folders above.
///
/// Neighbours: a placeholder can't name another client. NAME.bst holds what all clients write and
/// ends in a chain to "[cfgPath]NAME-[host].bst", of which there is one for each client with what
/// it reads: the files of the next client in the list, the last reads those of the first. A client
/// waits for a file that is not there: put NAME-*.bst beside NAME.bst when all have left their
/// markers, and no one reads what is not yet written.
[[nodiscard]] SweepResult makeSweep(const SweepOptions& options);

}  // namespace marrowbench::ctl

#endif
