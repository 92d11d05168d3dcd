#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include "marrowctl/check/settings_folder.h"

namespace marrowbench::ctl {
namespace {

using marrowbench::ctl::test::find;
using marrowbench::ctl::test::namesOf;
using marrowbench::ctl::test::SettingsFolder;

using Setup = std::function<void(SettingsFolder&)>;

struct Case {
  std::string name;
  std::string raises;  ///< "^" marks the place of the finding and is no part of the text
  std::string justNot;
  const char* field;  ///< nullptr: none
  Severity severity;
  Setup setup = {};
};

constexpr auto E = Severity::error;
constexpr auto W = Severity::warning;
constexpr auto N = Severity::note;

const std::string kWrite = "posix;0;0;0;4;0;4;1;0;MEMORY;d_[host].bin;[host].log;r.csv;true\n";

// A write with these fields in front of its paths, and with this destination.
std::string writing(const std::string& front, const std::string& dest = "d_[host].bin") {
  return front + ";MEMORY;" + dest + ";[host].log;r.csv;true\n";
}

// The line with blanks behind it.
std::string padded(std::size_t length) {
  std::string line = kWrite.substr(0, kWrite.size() - 1);
  line.resize(length, ' ');
  return line;
}

std::string times(int count, const std::string& text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const Setup kFleet = [](SettingsFolder& s) { s.options.clients = 3; };
const Setup kTwo = [](SettingsFolder& s) { s.options.hosts = {"pc1", "pc2"}; };

const std::vector<Case>& cases() {
  static const std::vector<Case> all = {
      {"unknown-allow", "# marrowctl: allow no-log ^nolog\n" + kWrite,
       "# marrowctl: allow no-log\n" + kWrite, nullptr, W},
      {"unknown-method", "  ^posixx;0;0;0;4;0;4;1;0;MEMORY;d.bin\n",
       "  POSIX;0;0;0;4;0;4;1;0;MEMORY;d.bin\n", "method", E},
      {"bad-number", writing("posix;0;0;0; 4^K;0;4;1;0"), writing("posix;0;0;0; 4;0;4;1;0"),
       "chunkBytes", E},
      {"bad-number", writing("posix;0;0;0;4;0;4;1;-^-1"), writing("posix;0;0;0;4;0;4;1;-1"),
       "cacheMode", E},
      {"bad-number", writing("posix;0;0;^;4;0;4;1;0"), writing("posix;0;0; ;4;0;4;1;0"),
       "chunkWaitMs", E},
      {"empty-field", writing("posix;^;0;0;4;0;4;1;0"), writing("posix; ;0;0;4;0;4;1;0"), "flush",
       W},
      {"line-too-long", padded(1000) + "^ \n", padded(1000) + "\n", nullptr, E},
      {"too-many-tests", times(200, kWrite) + "^" + kWrite + kWrite, times(200, kWrite), nullptr,
       E},
      {"unintended-chain", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin; ;^r.BST\n", "r.BST\n", nullptr, E},
      {"behind-chain", "[cfgPath]n.bst\n\n# note\n ^" + kWrite, "[cfgPath]n.bst\n\n# note\n",
       nullptr, W},
      {"chain-missing", " ^[cfgPath]n.bst\n", "[cfgPath]here.bst\n", nullptr, W,
       [](SettingsFolder& s) { s.write("here.bst", kWrite); }},
      {"chain-cycle", kWrite + "^[cfgPath]t.bst\n", kWrite + "[cfgPath]u.bst\n", nullptr, W},
      {"folder-refused", writing("posix;0;0;0;4;0;4;1;0", "^a/b/c/d.bin"),
       writing("posix;0;0;0;4;0;4;1;0", "a/b/d.bin"), "dest", E},
      {"folder-refused", writing("posix;0;0;0;4;0;4;1;0", "^a/b/c/d/e.bin"),
       writing("posix;0;0;0;4;0;4;1;0", "a/b/d.bin") +
           writing("posix;0;0;0;4;0;4;1;0", "a/b/c/d/e.bin"),
       "dest", E},
      {"folder-refused", writing("posix;0;0;0;4;0;4;1;0", "^/x.bin"),
       writing("posix;0;0;0;4;0;4;1;0", "/tmp/x.bin"), "dest", E},
      {"folder-refused", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l.log;^a/b/c/r.csv\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l.log;a/b/r.csv\n", "table", E},
      {"folder-refused", writing("posix;0;0;0;4;0;4;2;0", "^a/[iter]/b/d.bin"),
       "posix;0;0;0;4;0;4;1;0;MEMORY;a/0/d.bin;l.log;r.csv\n" +
           writing("posix;0;0;0;4;0;4;1;0", "a/[iter]/b/d.bin"),
       "dest", E},
      {"folder-refused",
       "posix;0;0;0;4;0;4;1;0;MEMORY;a/0/d.bin;l.log;r.csv\n" +
           writing("posix;0;0;0;4;0;4;2;0", "^a[iter]/b/c/d.bin"),
       "posix;0;0;0;4;0;4;1;0;MEMORY;a/0/d.bin;l.log;r.csv\n" +
           writing("posix;0;0;0;4;0;4;2;0", "a/[iter]/d.bin"),
       "dest", E},
      {"folder-complaint", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;^/l.log;r.csv\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;/tmp/l.log;r.csv\n", "log", N},
      {"exists-already", writing("ansic;0;0;0;4;0;4;2;0", "^d.bin"),
       writing("ansic;0;0;0;4;0;4;2;0", "d_[iter].bin"), "dest", E},
      {"exists-already", kWrite + writing("ansic;0;0;0;4;0;4;1;0", "^d_[host].bin"),
       kWrite + writing("ansic;0;0;0;4;0;4;1;0", "e_[host].bin"), "dest", E},
      {"exists-already",
       writing("posix;0;0;0;4;0;4;3;0", "d_[iter].bin") +
           writing("ansic;0;0;0;4;0;4;1;0", "^d_2.bin"),
       writing("posix;0;0;0;4;0;4;3;0", "d_[iter].bin") +
           writing("ansic;0;0;0;4;0;4;1;0", "d_3.bin"),
       "dest", E},
      {"exists-already", writing("ansic;0;0;0;4;0;4;1;0", "^d.bin"),
       writing("ansic;0;0;0;4;0;4;1;0", "d_[host].bin"), "dest", E, kFleet},
      {"exists-already", writing("ansic;0;0;0;4;0;4;1;0", "^old.bin"),
       writing("posix;0;0;0;4;0;4;1;0", "old.bin"), "dest", E,
       [](SettingsFolder& s) { s.write("old.bin", "x"); }},
      {"exists-already",
       writing("posix;0;0;0;4;0;4;1;0", "d_3.bin") +
           writing("ansic;0;0;0;4;0;4;4;0", "^d_[iter].bin"),
       writing("posix;0;0;0;4;0;4;1;0", "d_3.bin") +
           writing("ansic;0;0;0;4;0;4;3;0", "d_[iter].bin"),
       "dest", E},
      {"exists-already",
       writing("posix;0;0;0;4;0;4;2;0", "d_[iter]_7.bin") +
           writing("ansic;0;0;0;4;0;4;9;0", "^d_1_[iter].bin"),
       writing("posix;0;0;0;4;0;4;2;0", "d_[iter]_7.bin") +
           writing("ansic;0;0;0;4;0;4;9;0", "d_2_[iter].bin"),
       "dest", E},
      {"exists-already",
       writing("posix;0;0;0;4;0;4;9;0", "d_pc2_[iter].bin") +
           writing("ansic;0;0;0;4;0;4;1;0", "^d_[host]_[iter].bin"),
       writing("posix;0;0;0;4;0;4;9;0", "d_pc3_[iter].bin") +
           writing("ansic;0;0;0;4;0;4;1;0", "d_[host]_[iter].bin"),
       "dest", E, kTwo},
      {"exists-already", writing("ansic;0;0;0;4;0;4;1;0", "^sub"),
       writing("ansic;0;0;0;4;0;4;1;0", "sub/d.bin"), "dest", E,
       [](SettingsFolder& s) { mkdir(s.path("sub").c_str(), 0777); }},
      {"exists-already", "ansic;0;0;0;4;0;0;2;0;s.bin;^d.bin;l;r.csv\n",
       "ansic;0;0;0;4;0;0;2;0;s.bin;d_[iter].bin;l;r.csv\n", "dest", E},
      {"whole-copy-refused", "posix;0;0;0;^-1;0;0;1;0;s.bin;d.bin;l;r.csv\n",
       "stream;0;0;0;-1;0;0;1;0;s.bin;d.bin;l;r.csv\n", "chunkBytes", E},
      {"whole-copy-refused", "ansic;0;0;0;^2097152;0;0;1;0;s.bin;d.bin;l;r.csv\n",
       "ansic;0;0;0;2097151;0;0;1;0;s.bin;d.bin;l;r.csv\n", "chunkBytes", E},
      {"copies-onto-itself", "posix;0;0;0;4;0;0;1;0;s.bin;^./s.bin;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;s.bin;t.bin;l;r.csv\n", "dest", E,
       [](SettingsFolder& s) { s.write("s.bin", "x"); }},
      {"copies-onto-itself", "posix;0;0;0;4;0;0;1;0;s_[host].bin;^s_pc2.bin;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;s_[host].bin;s_pc3.bin;l;r.csv\n", "dest", E, kTwo},
      {"copies-onto-itself", "posix;0;0;0;4;0;0;4;0;s_[iter].bin;^s_3.bin;l;r.csv\n",
       "posix;0;0;0;4;0;0;3;0;s_[iter].bin;s_3.bin;l;r.csv\n", "dest", E},
      {"copies-onto-itself", "posix;0;0;0;4;0;0;4;0;[host]3.bin;^pc2[iter].bin;l;r.csv\n",
       "posix;0;0;0;4;0;0;3;0;[host]3.bin;pc2[iter].bin;l;r.csv\n", "dest", E, kTwo},
      {"copies-onto-itself", "posix;0;0;0;4;0;0;1;0;s.bin;^link/s.bin;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;s.bin;link/t.bin;l;r.csv\n", "dest", E,
       [](SettingsFolder& s) { EXPECT_EQ(symlink(".", s.path("link").c_str()), 0); }},
      {"memory-to-memory", "posix;0;0;0;4;0;4;1;0;^memory;MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;4;1;0;memory;d.bin;l;r.csv\n", "source", E},
      {"memory-to-memory", "posix;0;0;0;4;0;4;1;0;^memory;MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;4;0;0;memory;MEMORY;l;r.csv\nsystem;0;0;0;4;0;4;1;0;memory;MEMORY;l;r."
       "csv\n",
       "source", E},
      {"negative-size", writing("posix;0;0;0;4;0;4;^-1;0"), writing("posix;0;0;0;4;-1;4;1;-1"),
       "iterations", E},
      {"negative-size", writing("posix;0;0;^-1;4;0;4;1;0"), writing("posix;0;0;0;4;0;4;1;0"),
       "chunkWaitMs", E},
      {"negative-size", writing("posix;0;0;0;4;0;^-4;1;0"), writing("posix;0;0;0;4;0;-0;1;0"),
       "fileBytes", E},
      {"negative-size", "stream;0;0;0;^-1;-1;0;1;0;s.bin;d.bin;l;r.csv\n",
       "stream;0;0;0;0;-1;0;1;0;s.bin;d.bin;l;r.csv\n", "chunkBytes", W},
      {"negative-size", "stream;0;0;0;^-1;-1;0;1;0;s.bin;MEMORY;l;r.csv\n",
       "stream;0;0;0;0;-1;0;1;0;s.bin;MEMORY;l;r.csv\n", "chunkBytes", E},
      {"number-wraps", writing("posix;0;0;0;^2097152;0;4;1;0"),
       writing("posix;0;0;0;2097151;0;4;1;0"), "chunkBytes", W},
      {"number-wraps", writing("posix;0;0;0;4;0;4;^2147483648;0"),
       writing("posix;0;0;0;4;0;4;2147483647;0"), "iterations", W},
      {"number-wraps", writing("posix;0;0;^65536;4;0;4;1;0"), writing("posix;0;0;65535;4;0;4;1;0"),
       "chunkWaitMs", W},
      {"number-wraps", writing("posix;0;0;^4294967296;4;0;4;1;0"), writing("posix;0;0;0;4;0;4;1;0"),
       "chunkWaitMs", W},
      {"number-wraps", writing("posix;0;0;0;4;^4294967295;4;1;0"),
       writing("posix;0;0;0;4;-1;4;1;0"), "systemBuffer", W},
      {"number-wraps", writing("posix;0;0;0;4;0;4;1;^-2147483649"),
       writing("posix;0;0;0;4;0;4;1;-2147483648"), "cacheMode", W},
      {"number-wraps", writing("posix;0;0;0;4;0;^4294967297;1;0"),
       writing("posix;0;0;0;4;0;2147483647;1;0"), "fileBytes", W},
      {"size-capped", writing("posix;0;0;0;4;0;^1048577;1;0"),
       writing("posix;0;0;0;4;0;1048576;1;0"), "fileBytes", W},
      {"size-unknown", "posix;0;0;0;4;0;0;1;0;^s.bin;MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;t.bin;MEMORY;l;r.csv\n", "source", N,
       [](SettingsFolder& s) { s.write("t.bin", "x"); }},
      {"done-flag-one", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv; ^1\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv; True\n", "markDone", W},
      {"no-done-flag", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv\n", "# nothing\n", nullptr, N},
      {"no-done-flag", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv\n" + kWrite, nullptr, W, kFleet},
      {"comment-indented", "\t ^# note\n" + kWrite, "# note\n" + kWrite, nullptr, W},
      {"byte-order-mark", "^\xEF\xBB\xBF# note\n" + kWrite, "# note\n" + kWrite, nullptr, E},
      {"unknown-placeholder", writing("posix;0;0;0;4;0;4;1;0", " ^d_[hots].bin"),
       writing("posix;0;0;0;4;0;4;1;0", " d_[HOST][1].bin"), "dest", W},
      {"unknown-placeholder", "^[cfgFolder]n.bst\n", "[cfgPath]n.bst\n", nullptr, W},
      {"shared-destination", writing("posix;0;0;0;4;0;4;1;0", "^d.bin"), kWrite, "dest", W, kFleet},
      {"shared-destination", kWrite + writing("posix;0;0;0;4;0;4;1;0", "^d_pc2.bin"), kWrite,
       "dest", W, kTwo},
      {"shared-destination",
       writing("posix;0;0;0;4;0;4;1;0", "d_[host]2.bin") +
           writing("posix;0;0;0;4;0;4;1;0", "^d_[host].bin"),
       writing("posix;0;0;0;4;0;4;1;0", "d_[host]3.bin") +
           writing("posix;0;0;0;4;0;4;1;0", "d_[host].bin"),
       "dest", W,
       [](SettingsFolder& s) {
         s.options.hosts = {"pc", "pc2"};
       }},
      {"anonymous-rows", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;[host].log;^r.csv;true\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;[host].log;r_[host].csv;true\n", "table", W, kFleet},
      {"no-table", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l; ^;true\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv;true\n", "table", W},
      {"no-log", "posix;0;0;0;4;0;4;1;0;MEMORY;\xC3\xA4.bin; ^;r.csv;true\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;\xC3\xA4.bin;l;r.csv;true\n", "log", N},
      {"no-log", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin; ^;r.csv;true\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;r.csv;true\n", "log", N},
      {"source-missing", "posix;0;0;0;4;0;0;1;0;^s.bin;MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;1;0", "s.bin") + "posix;0;0;0;4;0;0;1;0;s.bin;MEMORY;l;r.csv\n",
       "source", W},
      {"source-missing", "posix;0;0;0;4;0;0;1;0;^d_pc1.bin;MEMORY;l;r.csv\n" + kWrite,
       kWrite + "posix;0;0;0;4;0;0;1;0;d_pc1.bin;MEMORY;l;r.csv\n", "source", W},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;2;0", "d_[iter]") +
           "posix;0;0;0;4;0;0;3;0;^d_[iter];MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;3;0", "d_[iter]") +
           "posix;0;0;0;4;0;0;3;0;d_[iter];MEMORY;l;r.csv\n",
       "source", W},
      {"source-missing", kWrite + "posix;0;0;0;4;0;0;1;0;^d_pc3.bin;MEMORY;l;r.csv\n",
       kWrite + "posix;0;0;0;4;0;0;1;0;d_pc2.bin;MEMORY;l;r.csv\n", "source", W, kTwo},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;1;0", "d_[date]") +
           "posix;0;0;0;4;0;0;1;0;^d_[date];MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;s.bin;MEMORY;l;r.csv\n", "source", W,
       [](SettingsFolder& s) { s.write("s.bin", "x"); }},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;150;0", "d_[iter]") +
           "posix;0;0;0;4;0;0;151;0;^d_[iter];MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;150;0", "d_[iter]") +
           "posix;0;0;0;4;0;0;150;0;d_[iter];MEMORY;l;r.csv\n",
       "source", W},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;2;0", "d_pc1_[iter]") +
           writing("posix;0;0;0;4;0;4;5;0", "d_[host]_[iter]") +
           "posix;0;0;0;4;0;0;6;0;^d_pc1_[iter];MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;2;0", "d_pc1_[iter]") +
           writing("posix;0;0;0;4;0;4;5;0", "d_[host]_[iter]") +
           "posix;0;0;0;4;0;0;5;0;d_pc1_[iter];MEMORY;l;r.csv\n",
       "source", W},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;3;0", "d_pc1_[iter]") +
           writing("posix;0;0;0;4;0;4;1;0", "d_[host]_[iter]") +
           "posix;0;0;0;4;0;0;4;0;^d_[host]_[iter];MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;3;0", "d_pc1_[iter]") +
           writing("posix;0;0;0;4;0;4;1;0", "d_[host]_[iter]") +
           "posix;0;0;0;4;0;0;3;0;d_[host]_[iter];MEMORY;l;r.csv\n",
       "source", W},
      {"source-missing",
       writing("posix;0;0;0;4;0;4;1;0", "s.bin") +
           "posix;0;0;0;4;0;0;1;0;^./t.bin;MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;1;0", "s.bin") + "posix;0;0;0;4;0;0;1;0;./s.bin;MEMORY;l;r.csv\n",
       "source", W},
      {"reads-own-write", kWrite + "posix;0;0;0;4;0;0;1;0;^d_[host].bin;MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;d_[host].bin;MEMORY;l;r.csv\n" + kWrite, "source", N},
      {"reads-own-write", kWrite + "posix;0;0;0;4;0;0;1;0;^d_pc2.bin;MEMORY;l;r.csv\n",
       kWrite + "posix;0;0;0;4;0;0;1;0;d_pc2_.bin;MEMORY;l;r.csv\n", "source", N, kTwo},
      {"reads-own-write",
       writing("posix;0;0;0;4;0;4;1;0", "d_[host]a") +
           "posix;0;0;0;4;0;0;1;0;^d_[host]a;MEMORY;l;r.csv\n",
       writing("posix;0;0;0;4;0;4;1;0", "d_[host]a") +
           "posix;0;0;0;4;0;0;1;0;d_[host];MEMORY;l;r.csv\n",
       "source", N,
       [](SettingsFolder& s) {
         s.options.hosts = {"p", "pa"};
         s.write("d_p", "x");
       }},
      {"no-effect", writing("posix;^flush;0;0;4;0;4;1;0"), writing("stream;flush;0;0;4;0;4;1;0"),
       "flush", W},
      {"no-effect", "stream;^flush;0;0;0;-1;0;1;0;s.bin;d.bin;l;r.csv\n",
       "stream;flush;0;0;4;-1;0;1;0;s.bin;d.bin;l;r.csv\n", "flush", W},
      {"no-effect", "posix;0;^1;0;4;0;0;1;0;s.bin;MEMORY;l;r.csv\n",
       "posix;0;1;0;4;0;0;1;0;s.bin;d.bin;l;r.csv\n", "preallocate", W},
      {"no-effect", writing("stream;0;^1;0;4;0;4;1;0"), writing("posix;0;1;0;4;0;4;1;0"),
       "preallocate", W},
      {"no-effect", writing("stream;0;0;0;4;^1;4;1;0"),
       "stream;0;0;0;4;1;0;1;0;s.bin;MEMORY;l;r.csv\n", "systemBuffer", W},
      {"no-effect", "ansic;0;0;0;4;^1;0;1;0;s.bin;MEMORY;l;r.csv\n",
       "ansic;0;0;0;4;1;0;1;0;s.bin;d.bin;l;r.csv\n", "systemBuffer", W},
      {"measures-nothing", "^" + writing("system;0;0;0;4;0;4;1;0"), kWrite, "method", W},
      {"measures-nothing", writing("posix;0;0;0;4;0;4;^0;0"), kWrite, "iterations", W},
      {"crowded-lock", "posix;0;0;0;4;0;4;1;0;MEMORY;d_[host];l;^r.csv\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d_[host];l;[host].csv\n", "table", W,
       [](SettingsFolder& s) { s.options.clients = 41; }},
      {"comma-in-path", writing("posix;0;0;0;4;0;4;1;0", "^a,b.bin"),
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;a,b.log;c,d.csv\n", "dest", W},
      {"comma-in-path", "posix;0;0;0;4;0;0;1;0;^a,b.bin;MEMORY;l;r.csv\n",
       "posix;0;0;0;4;0;0;1;0;a,b.bin;MEMORY;l\n", "source", W},
      {"table-is-special", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;^folder\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l; \n", "table", W,
       [](SettingsFolder& s) { mkdir(s.path("folder").c_str(), 0777); }},
      {"table-is-special", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;^pipe;r.csv\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;file;r.csv\n", "log", W,
       [](SettingsFolder& s) {
         mkfifo(s.path("pipe").c_str(), 0666);
         s.write("file", "x");
       }},
      {"table-is-special", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;^/dev/null\n",
       "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;/dev/nul\n", "table", W},
      {"space-short", writing("posix;0;0;0;4;0;1048576;1000000;0", "^d_[iter].bin"),
       writing("posix;0;0;0;4;0;1048576;1000000;0", "/nowhere_/a/b/d_[iter].bin"), "dest", W},
      // Those that an earlier run has left need no more space; the others do.
      {"space-short", writing("posix;0;0;0;4;0;1048576;1000000;0", "^d_[iter].bin"),
       writing("posix;0;0;0;4;0;1048576;2;0", "d_[iter].bin"), "dest", W,
       [](SettingsFolder& s) {
         for (const char* name : {"d_0.bin", "d_1.bin"}) s.write(name, "x");
       }},
      {"space-short", writing("posix;0;0;0;4;0;1048576;1000000;0", "^d_[iter].bin"),
       writing("posix;0;0;0;4;0;1048576;1000000;0", "d.bin"), "dest", W},
  };
  return all;
}

struct Place {
  std::string text;
  std::optional<int> line, column;
};

Place placeIn(std::string text) {
  const std::size_t mark = text.find('^');
  if (mark == std::string::npos) return {text, {}, {}};
  text.erase(mark, 1);
  const std::size_t lineFeed = mark == 0 ? std::string::npos : text.rfind('\n', mark - 1);
  const auto line = static_cast<int>(std::count(
                        text.begin(), text.begin() + static_cast<std::ptrdiff_t>(mark), '\n')) +
                    1;
  return {text, line,
          static_cast<int>(mark - (lineFeed == std::string::npos ? 0 : lineFeed + 1)) + 1};
}

std::string shown(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& f : findings) {
    text += f.name + " " + std::to_string(f.line.value_or(0)) + ":" +
            std::to_string(f.column.value_or(0)) + " " + f.field.value_or("-") + ": " + f.message +
            "\n";
  }
  return text;
}

TEST(Findings, AreRaisedAtTheirPlace) {
  for (const Case& c : cases()) {
    SettingsFolder settings;
    if (c.setup) c.setup(settings);
    const Place place = placeIn(c.raises);
    const auto findings = settings.findings(place.text);
    const bool isThere = std::any_of(findings.begin(), findings.end(), [&](const Finding& f) {
      return f.name == c.name && f.line == place.line && f.column == place.column &&
             f.severity == c.severity &&
             f.field == (c.field ? std::optional<std::string>(c.field) : std::nullopt);
    });
    EXPECT_TRUE(isThere) << c.name << " in\n" << c.raises << "got\n" << shown(findings);
    for (const Finding& f : findings) EXPECT_FALSE(f.message.empty() || f.remedy.empty()) << f.name;
  }
}

TEST(Findings, AdviseNoChunkThatTheCopyDoesNotTake) {
  const auto remedy = [](const std::string& line) {
    SettingsFolder settings;
    for (const Finding& f : settings.findings(line)) {
      if (f.name == std::string("negative-size")) return f.remedy;
    }
    return std::string();
  };
  EXPECT_EQ(remedy("posix;0;0;0;-1;-1;0;1;0;s.bin;d.bin;l;r.csv\n"),
            "write the KiB of a chunk; 0 is 1024 for this copy");
  EXPECT_EQ(remedy("posix;0;0;0;-1;-1;0;1;0;s.bin;MEMORY;l;r.csv\n"),
            "write 0 for one step, or the KiB of a chunk");
  EXPECT_EQ(remedy("stream;0;0;0;-1;-1;0;1;0;s.bin;d.bin;l;r.csv\n"),
            "write 0 for one step, or the KiB of a chunk");
}

TEST(Findings, AreNotRaisedByWhatIsJustRight) {
  for (const Case& c : cases()) {
    SettingsFolder settings;
    if (c.setup) c.setup(settings);
    const auto findings = settings.findings(c.justNot);
    EXPECT_EQ(find(findings, c.name), nullptr) << c.name << " in\n"
                                               << c.justNot << "got\n"
                                               << shown(findings);
  }
}

// not-a-settings-name and path-too-long have tests of their own: they need names of files.
TEST(Findings, AllHaveACaseHere) {
  std::set<std::string> tested = {"not-a-settings-name", "path-too-long"};
  for (const Case& c : cases()) tested.insert(c.name);
  std::set<std::string> known;
  for (const FindingKind& kind : findingKinds()) known.insert(std::string(kind.name));
  EXPECT_EQ(tested, known);
}

TEST(FindingKinds, AreExplainedWithAnExample) {
  for (const FindingKind& kind : findingKinds()) {
    EXPECT_GT(kind.explanation.size(), 150U) << kind.name;
    EXPECT_NE(kind.explanation.find("\n    "), std::string_view::npos) << kind.name;
  }
}

TEST(FindingKinds, HaveNamesInLowerCaseWithHyphens) {
  for (const FindingKind& kind : findingKinds()) {
    EXPECT_EQ(kind.name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string_view::npos)
        << kind.name;
  }
}

// The message of the first finding of this name.
std::string messageOf(const SettingsFolder& settings, const std::string& name,
                      const std::string& text) {
  const auto findings = settings.findings(text);
  const Finding* const finding = find(findings, name);
  return finding == nullptr ? "none in " + shown(findings) : finding->message;
}

TEST(Findings, SayWhatWasMeant) {
  const struct {
    const char *name, *text, *meant;
  } cases[] = {
      {"unknown-method", "Posx;0\n", "Posix"},
      {"unknown-allow", "# marrowctl: allow nolog\n", "no-log"},
      {"unknown-placeholder", "posix;0;0;0;4;0;4;1;0;MEMORY;[hots].bin;l;r.csv;true\n", "host"}};
  const SettingsFolder settings;
  for (const auto& c : cases) {
    const std::string message = messageOf(settings, c.name, c.text);
    EXPECT_TRUE(message.ends_with(std::string("; did you mean ") + c.meant + "?")) << message;
  }
}

TEST(BadNumber, NamesTheCharacter) {
  const struct {
    const char *number, *name;
  } cases[] = {{"1M", "\"M\""},
               {"1 0", "a blank"},
               {"1\t0", "a tab"},
               {"1.5", "\".\""},
               {"--1", "\"-\""},
               {"4\xC3\xA4", "\"\xC3\xA4\""},
               {"4\xFF", "the byte 0xFF"},
               {"4\x01", "the byte 0x01"}};
  const SettingsFolder settings;
  for (const auto& c : cases) {
    EXPECT_EQ(messageOf(settings, "bad-number",
                        writing("posix;0;0;0;" + std::string(c.number) + ";0;4;1;0")),
              std::string("the line is refused: ") + c.name + " is no part of a number");
  }
}

TEST(Findings, SayHereOfWhatTheyLookAtHere) {
  const SettingsFolder settings;
  settings.write("old.bin", "x");
  const std::string read = ";MEMORY;l;r.csv;true\n";
  const struct {
    const char* name;
    std::string text;
  } cases[] = {{"exists-already", writing("ansic;0;0;0;4;0;4;1;0", "old.bin")},
               {"source-missing", "posix;0;0;0;4;0;0;1;0;s.bin" + read},
               {"source-missing", "posix;0;0;0;4;0;0;1;0;s_[date].bin" + read},
               {"table-is-special", "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;/dev/null;r.csv;true\n"},
               {"space-short", writing("posix;0;0;0;4;0;1048576;1000000;0", "d_[iter].bin")}};
  for (const auto& c : cases) {
    const std::string message = messageOf(settings, c.name, c.text);
    EXPECT_NE(message.find(" here"), std::string::npos) << message;
  }
  // What a line before has written says nothing of this machine.
  const std::string again = writing("ansic;0;0;0;4;0;4;1;0", "d.bin");
  EXPECT_EQ(messageOf(settings, "exists-already", again + again).find(" here"), std::string::npos);
}

TEST(EmptyField, ComesBesideTheBadNumberOfItsField) {
  const SettingsFolder settings;
  EXPECT_EQ(namesOf(settings.findings(writing("posix;0;0;0;4;0;;1;0"))),
            (std::vector<std::string>{"bad-number", "empty-field"}));
  // Nothing behind the last separator is the end of the line.
  EXPECT_EQ(namesOf(settings.findings(kWrite + "posix;0;0;0;4;0;4;1;0;MEMORY;e_[host];l;r.csv;\n")),
            std::vector<std::string>{});
}

TEST(NotASettingsName, IsAFileWithAnotherEnding) {
  SettingsFolder settings;
  settings.write("t.txt", kWrite);
  settings.write("u.BST", kWrite);
  settings.options.files = {settings.path("t.txt"), settings.path("u.BST")};
  const auto findings = settings.findings("");
  const Finding* const finding = find(findings, "not-a-settings-name");
  ASSERT_NE(finding, nullptr);
  EXPECT_EQ(finding->file, settings.path("t.txt"));
  EXPECT_EQ(finding->line, std::nullopt);
  EXPECT_EQ(finding->column, std::nullopt);
  EXPECT_EQ(namesOf(findings), std::vector<std::string>{"not-a-settings-name"});
}

// The severity of path-too-long for a table's path of so many characters.
std::optional<Severity> severityForTable(std::size_t length, const std::string& end) {
  SettingsFolder settings;
  const std::string name(length - settings.path("").size() - end.size(), 'x');
  std::string split = name;
  for (std::size_t i = 100; i < split.size(); i += 100) split[i] = '/';
  const auto findings =
      settings.findings("posix;0;0;0;4;0;4;1;0;MEMORY;d.bin;l;" + split + end + ";true\n");
  const Finding* const finding = find(findings, "path-too-long");
  if (finding == nullptr) return std::nullopt;
  EXPECT_EQ(finding->field, "table");
  return finding->severity;
}

TEST(PathTooLong, TellsTablesWithoutANameForTheirLock) {
  EXPECT_EQ(severityForTable(248, ""), std::nullopt);
  EXPECT_EQ(severityForTable(249, ""), E);
  EXPECT_EQ(severityForTable(250, ""), W);
  EXPECT_EQ(severityForTable(248, "_pc"), std::nullopt);
  // "[host]" takes six characters and "pc1" three.
  EXPECT_EQ(severityForTable(251, "[host]"), std::nullopt);
  EXPECT_EQ(severityForTable(252, "[host]"), E);
}

std::vector<Finding> forDest(const SettingsFolder& settings, std::size_t length,
                             const std::string& end) {
  std::string name(length - settings.path("").size() - end.size(), 'x');
  for (std::size_t i = 100; i < name.size(); i += 100) name[i] = '/';
  return settings.findings("posix;0;0;0;4;0;4;11;0;MEMORY;" + name + end + ";l;r.csv;true\n");
}

TEST(PathTooLong, TellsTemplatesAndExpansionsThatAreCut) {
  const struct {
    std::size_t length;
    const char* end;
    bool isCut;
  } lengths[] = {{500, "", false},       {501, "", true},         {500, "[cfgName]", false},
                 {500, "[iter]", false}, {495, "[temp]x", false}, {497, "[date]", true},
                 {496, "[date]", false}, {500, "[cfgPath]", true}};
  for (const auto& l : lengths) {
    const SettingsFolder settings;
    const auto findings = forDest(settings, l.length, l.end);
    EXPECT_EQ(find(findings, "path-too-long") != nullptr, l.isCut)
        << l.length << " " << l.end << "\n"
        << shown(findings);
  }
}

TEST(PathTooLong, IsToldOfEveryPath) {
  const std::string name(200, 'x');
  const std::string path = "/" + name + "/" + name + "/" + name;
  const struct {
    std::string line;
    std::optional<std::string> field;
  } cases[] = {{"posix;0;0;0;4;0;4;1;0;" + path + ";MEMORY;l;r.csv;true\n", "source"},
               {"posix;0;0;0;4;0;4;1;0;MEMORY;" + path + ";l;r.csv;true\n", "dest"},
               {"posix;0;0;0;4;0;4;1;0;MEMORY;d;" + path + ";r.csv;true\n", "log"},
               {"posix;0;0;0;4;0;4;1;0;MEMORY;d;l;" + path + ";true\n", "table"},
               {path + ".bst\n", std::nullopt}};
  const SettingsFolder settings;
  for (const auto& c : cases) {
    const auto findings = settings.findings(c.line);
    const Finding* const finding = find(findings, "path-too-long");
    ASSERT_NE(finding, nullptr) << c.line << shown(findings);
    EXPECT_EQ(finding->field, c.field);
    EXPECT_EQ(finding->severity, E);
  }
  const std::string room = path.substr(0, 500 - 4) + ".bst\n";
  EXPECT_EQ(find(settings.findings(room), "path-too-long"), nullptr);
}

TEST(FolderRefused, TellsWhyNoFolderIsMade) {
  const struct {
    const char *dest, *message;
  } cases[] = {
      {"/d.bin", "the folder's text \"/\" has fewer than three characters"},
      {"/nowhere_/d.bin", "\"/nowhere_/\" is missing here, and a client makes no folder so"},
      {"/tmp/nowhere_/d.bin", "\"/tmp/nowhere_/\" is missing here, and a client makes no"},
      {"/nowhere_/a/b/d.bin", "three or more levels of \"/nowhere_/a/b/\" are missing"}};
  const SettingsFolder settings;
  for (const auto& c : cases) {
    const auto findings = settings.findings(writing("posix;0;0;0;4;0;4;1;0", c.dest));
    const Finding* const finding = find(findings, "folder-refused");
    ASSERT_NE(finding, nullptr) << c.dest;
    EXPECT_TRUE(finding->message.starts_with(std::string("the test is not run: ") + c.message))
        << finding->message;
  }
}

// Of a settings file that is named by a relative path.
std::vector<Finding> findingsInCurrentFolder(const std::string& text) {
  marrowbench::test::writeFile("t.bst", text);
  std::istringstream nothing;
  return check(makePlan({{"t.bst"}, {"pc1"}, 0}, nothing));
}

std::vector<std::string> namesInCurrentFolder(const std::string& text) {
  return namesOf(findingsInCurrentFolder(text));
}

TEST(FolderRefused, TwoLevelsAreNotMadeBelowAFolderOfTwoCharacters) {
  const marrowbench::test::WorkingFolder folder;
  for (const char* name : {"ab", "abc"}) std::filesystem::create_directory(name);
  const auto findings = [](const std::string& dest, const std::string& table) {
    return findingsInCurrentFolder("posix;0;0;0;4;0;4;1;0;MEMORY;" + dest + ";/tmp/l.log;" + table +
                                   ";true\n");
  };
  for (const char* above : {"ab/", "../"}) {
    const std::string path = std::string(above) + "c/d/";
    const std::string why =
        "\"" + path + "\" is missing here, and a client makes no folder so near";
    const auto data = findings(path + "x.bin", "/tmp/r.csv");
    ASSERT_EQ(namesOf(data), std::vector<std::string>{"folder-refused"});
    EXPECT_TRUE(data[0].message.starts_with("the test fails: " + why)) << data[0].message;
    const auto table = findings("/tmp/x.bin", path + "r.csv");
    ASSERT_EQ(namesOf(table), std::vector<std::string>{"folder-refused"});
    EXPECT_TRUE(table[0].message.starts_with("no row is written: " + why)) << table[0].message;
  }
  EXPECT_TRUE(findings("abc/c/d/x.bin", "abc/e/f/r.csv").empty());
  std::filesystem::create_directory("ab/c");
  EXPECT_TRUE(findings("ab/c/d/x.bin", "ab/c/e/r.csv").empty());
}

TEST(FolderComplaint, IsARefusalForATableWhereTheFolderIsNotThere) {
  const marrowbench::test::WorkingFolder folder;
  const auto line = [](const char* log, const char* table) {
    return std::string("posix;0;0;0;4;0;4;1;0;MEMORY;/tmp/x_[host].bin;") + log + ";" + table +
           ";true\n";
  };
  const std::vector<std::string> complaint = {"folder-complaint"};
  EXPECT_EQ(namesInCurrentFolder(line(" ", "r.csv")),
            (std::vector<std::string>{"no-log", "folder-complaint"}));
  EXPECT_EQ(namesInCurrentFolder(line("t/l.log", "/tmp/r.csv")), complaint);
  EXPECT_EQ(namesInCurrentFolder(line("/tmp/l.log", "t/r.csv")),
            std::vector<std::string>{"folder-refused"});
  std::filesystem::create_directory("t");
  EXPECT_EQ(namesInCurrentFolder(line("/tmp/l.log", "t/r.csv")), complaint);
}

TEST(FolderComplaint, KnowsWhatATestMakesByAnotherSpelling) {
  const marrowbench::test::WorkingFolder folder;
  const std::string here = std::filesystem::current_path().string();
  const std::string first =
      "posix;0;0;0;4;0;4;1;0;MEMORY;" + here + "/t/x_[host].bin;/tmp/l.log;/tmp/r.csv;true\n";
  const std::string second =
      "posix;0;0;0;4;0;4;1;0;MEMORY;" + here + "/t/y_[host].bin;/tmp/l.log;t/r.csv;true\n";
  EXPECT_EQ(namesInCurrentFolder(first + second), std::vector<std::string>{"folder-complaint"});
}

TEST(CrowdedLock, IsToldOnceForAFileAndTable) {
  SettingsFolder settings;
  settings.options.clients = 41;
  const std::string line = "posix;0;0;0;4;0;4;1;0;MEMORY;d_[host];l;r.csv\n";
  const std::string other = "posix;0;0;0;4;0;4;1;0;MEMORY;e_[host];l;s.csv\n";
  const auto names = namesOf(settings.findings(line + line + other));
  EXPECT_EQ(std::count(names.begin(), names.end(), "crowded-lock"), 2);
}

TEST(SpaceShort, IsToldOfTheFirstTestThatWrites) {
  const SettingsFolder settings;
  const std::string huge = writing("posix;0;0;0;4;0;1048576;1000000;0", "d_[iter].bin");
  const auto findings =
      settings.findings("posix;0;0;0;4;0;0;1;0;s.bin;MEMORY;l;r.csv\n" + huge + huge);
  const Finding* const finding = find(findings, "space-short");
  ASSERT_NE(finding, nullptr);
  EXPECT_EQ(finding->line, 2);
  const auto names = namesOf(findings);
  EXPECT_EQ(std::count(names.begin(), names.end(), "space-short"), 1);
}

TEST(Findings, AreNotMadeForTestsWithoutRoom) {
  const SettingsFolder settings;
  const std::string system = writing("system;0;0;0;4;0;4;1;0");
  const auto names = namesOf(settings.findings(times(200, kWrite) + system));
  EXPECT_EQ(names, std::vector<std::string>{"too-many-tests"});
}

TEST(Findings, ByteOrderMarkExplainsItsLineAlone) {
  const SettingsFolder settings;
  EXPECT_EQ(namesOf(settings.findings("\xEF\xBB\xBF" + kWrite + kWrite)),
            std::vector<std::string>{"byte-order-mark"});
  EXPECT_EQ(namesOf(settings.findings("\xEF\xBB\xBFnext.bst\n")),
            std::vector<std::string>{"byte-order-mark"});
}

TEST(ChainMissing, IsToldOfClientsWithFilesOfTheirOwn) {
  SettingsFolder settings;
  settings.options.hosts = {"c1", "c2", "c3"};
  settings.write("n-c1.bst", kWrite);
  const std::string text = kWrite + "[cfgPath]n-[host].bst\n";
  const std::vector<Finding> findings = settings.findings(text);
  ASSERT_EQ(namesOf(findings), std::vector<std::string>{"chain-missing"});
  EXPECT_NE(findings.front().message.find("n-c2.bst\" of c2, like those of 1 more client, does"),
            std::string::npos)
      << findings.front().message;
  settings.write("n-c3.bst", kWrite);
  EXPECT_NE(settings.findings(text).front().message.find("n-c2.bst\" of c2 does not exist"),
            std::string::npos);
  settings.write("n-c2.bst", kWrite);
  EXPECT_TRUE(settings.findings(text).empty());
}

TEST(Findings, IndentedCommentExplainsItsLineUnlessItChains) {
  const SettingsFolder settings;
  EXPECT_EQ(namesOf(settings.findings(" # note\n" + kWrite)),
            std::vector<std::string>{"comment-indented"});
  EXPECT_EQ(namesOf(settings.findings(" # all.bst\n")),
            (std::vector<std::string>{"comment-indented", "chain-missing"}));
}

TEST(Findings, AllowedOnesAreLeftOutErrorsToo) {
  const SettingsFolder settings;
  const std::string line = "posix;0;0;0;4K;0;4;1;0;MEMORY;d.bin;l;r.csv;true\n";
  EXPECT_EQ(namesOf(settings.findings(line)), std::vector<std::string>{"bad-number"});
  EXPECT_TRUE(settings.findings(line + "# marrowctl: allow no-log bad-number\n").empty());
}

TEST(Findings, ErrorsStayWhereOnlyOthersMayBeAllowed) {
  const SettingsFolder settings;
  const Plan plan = settings.plan(
      "posix;0;0;0;4K;0;4;1;0;MEMORY;d.bin; ;r.csv;true\n"
      "# marrowctl: allow no-log bad-number\n");
  EXPECT_EQ(namesOf(check(plan, totalsOf(plan), Allowance::allButErrors)),
            std::vector<std::string>{"bad-number"});
}

TEST(Findings, AreAllowedInTheFileOfTheCommentOnly) {
  const SettingsFolder settings;
  const std::string line = "posix;0;0;0;4;0;4;1;0;MEMORY;d.bin; ;r.csv\n";
  settings.write("n.bst", line);
  // Behind the chain line, too, and of the whole file.
  const auto findings = settings.findings(line +
                                          "[cfgPath]n.bst\n# marrowctl: allow no-log\n"
                                          "# marrowctl: allow no-done-flag unknown-allow nolog\n");
  EXPECT_EQ(namesOf(findings), (std::vector<std::string>{"no-done-flag", "no-log"}));
  for (const Finding& finding : findings) EXPECT_EQ(finding.file, settings.path("n.bst"));
}

TEST(Findings, TheStandardLineHasNone) {
  SettingsFolder settings;
  EXPECT_EQ(shown(settings.findings(kWrite)), "");
  settings.options.clients = 40;
  EXPECT_EQ(shown(settings.findings(kWrite)), "");
}

TEST(Findings, StandInOrderOfFileLineAndColumn) {
  const SettingsFolder settings;
  settings.write("n.bst", "posix;0;0;0;4;0;4;0;0;MEMORY;d.bin;l;r.csv\n");
  const auto findings =
      settings.findings("Posx\nposix;1;0;0;4;0;4;0;0;MEMORY;e.bin;l;r.csv\n[cfgPath]n.bst\n");
  EXPECT_EQ(namesOf(findings),
            (std::vector<std::string>{"no-done-flag", "unknown-method", "no-effect",
                                      "measures-nothing", "no-done-flag", "measures-nothing"}));
}

TEST(ExitStatusOf, CountsWarningsOnlyWhenStrict) {
  const auto with = [](Severity severity) {
    Finding finding;
    finding.severity = severity;
    return std::vector<Finding>{finding};
  };
  EXPECT_EQ(exitStatusOf({}, true), 0);
  EXPECT_EQ(exitStatusOf(with(N), true), 0);
  EXPECT_EQ(exitStatusOf(with(W), false), 0);
  EXPECT_EQ(exitStatusOf(with(W), true), 1);
  EXPECT_EQ(exitStatusOf(with(E), false), 2);
}

}  // namespace
}  // namespace marrowbench::ctl
