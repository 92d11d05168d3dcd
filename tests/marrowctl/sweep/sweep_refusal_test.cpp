#include <gtest/gtest.h>

#include "marrowctl/sweep/sweep.h"

namespace marrowbench::ctl {
namespace {

struct Case {
  SweepOptions options;
  const char* option;
  const char* reason;  // a part of it
};

void expectRefused(const Case& c) {
  const SweepResult result = makeSweep(c.options);
  EXPECT_TRUE(result.files.empty()) << c.reason;
  EXPECT_EQ(result.option, c.option) << c.reason;
  EXPECT_NE(result.reason.find(c.reason), std::string::npos) << c.reason << ": " << result.reason;
}

TEST(SweepRefusal, OfValues) {
  const Case cases[] = {{{.method = "steam"}, "method", "did you mean stream?"},
                        {{.method = "system"}, "method", "measures nothing"},
                        {{.kind = "raed"}, "kind", "did you mean read?"},
                        {{.chunk = "1000B"}, "chunk", "no multiple of 1 KiB"},
                        {{.chunk = "2G"}, "chunk", "more than 1 GiB"},
                        {{.size = "1025M"}, "size", "more than 1 GiB"},
                        {{.size = "1MB,1M"}, "size", "no size with a unit"},
                        {{.size = "0"}, "size", "measures nothing"},
                        {{.size = "4096"}, "size", "no size with a unit"},
                        {{.buffer = "2"}, "buffer", "outside -1 to 1"},
                        {{.buffer = "-2"}, "buffer", "outside -1 to 1"},
                        {{.wait = "-1"}, "wait", "outside 0 to 65535"},
                        {{.wait = "65536"}, "wait", "outside 0 to 65535"},
                        {{.iterations = "0"}, "iterations", "at least once"},
                        {{.flush = "maybe"}, "flush", "none of"},
                        {{.flush = "no,off"}, "flush", "once each"},
                        {{.prealloc = "perhaps"}, "prealloc", "none of"}};
  for (const Case& c : cases) expectRefused(c);
}

TEST(SweepRefusal, OfPaths) {
  const std::string longName(240, 'x');
  const Case cases[] = {
      {{.dest = "/share/a;b"}, "dest", "\";\""},
      {{.dest = "/share/a\nb"}, "dest", "control character"},
      {{.dest = "/share/[hots]"}, "dest", "did you mean [host]?"},
      {{.dest = "/share/[host"}, "dest", "no placeholder"},
      {{.dest = "/share/host]"}, "dest", "no placeholder"},
      {{.dest = "memory"}, "dest", "kind of test"},
      {{.dest = "/x.bin"}, "dest", "fewer than three"},
      {{.dest = "a,,b"}, "dest", "empty"},
      {{.kind = "write,read", .dest = "/share/[date]/"}, "dest", "read again"},
      {{.kind = "copy", .dest = "/share/[cfgLine]/"}, "dest", "read again"},
      {{.kind = "read", .dest = "/share/[cfgnameID]/"}, "dest", "read again"},
      {{.dest = std::string("/") + longName + longName + "/"}, "dest", "500"},
      {{.source = "/share/x"}, "source", "nothing is read"},
      {{.kind = "copy", .dest = "/share/[host]", .source = "/share/[host]"}, "dest", "onto itself"},
      {{.log = "/share/"}, "log", "a folder"},
      {{.table = "/share/"}, "table", "a folder"},
      {{.table = "/" + longName + "/" + longName}, "table", "248"}};
  for (const Case& c : cases) expectRefused(c);
}

TEST(SweepRefusal, OfOutputs) {
  const Case cases[] = {
      {{.output = "sweep.txt"}, "output", "ends in .bst"},
      {{.output = "share/.bst"}, "output", "nothing before"},
      {{.output = "[host].bst"}, "output", "\"[\""},
      {{.output = "a;b.bst"}, "output", "\";\""},
      {{.output = "a,b/x.bst"}, "output", "\",\""},
      {{.output = "a\nb.bst"}, "output", "control"},
      {{.output = "/" + std::string(300, 'x') + ".bst"}, "output", "300"},
      {{.wait = "0,1,2,3,4,5,6,7,8,9,10", .iterations = "1..524288"}, "output", "200 of one file"},
      {{.chunk = "1K..1G", .size = "1K..1G", .wait = "0..65535"}, "wait", "doubles"},
      {{.chunk = "1K..1G", .size = "1K..1G", .wait = "1..32768", .iterations = "1..524288"},
       "output",
       "100,000"}};
  for (const Case& c : cases) expectRefused(c);
}

TEST(SweepRefusal, OfWhatWouldHaveNoEffect) {
  const Case cases[] = {
      {{.method = "posix", .kind = "copy", .chunk = "0"}, "chunk", "posix copy"},
      {{.method = "stream,ansic", .kind = "copy", .chunk = "4K,0"}, "chunk", "ansic copy"},
      {{.chunk = "0,4K", .wait = "10"}, "wait", "no chunks"},
      {{.method = "posix", .flush = "yes"}, "flush", "posix write"},
      {{.method = "ansic", .kind = "write,read", .flush = "no,yes"}, "flush", "ansic read"},
      {{.method = "stream", .chunk = "0", .flush = "flush"}, "flush", "no chunks"},
      {{.method = "posix", .kind = "read", .prealloc = "1"}, "prealloc", "posix read"},
      {{.method = "posix,stream", .prealloc = "true"}, "prealloc", "stream write"},
      {{.method = "stream", .kind = "write", .buffer = "1"}, "buffer", "stream write"},
      {{.method = "ansic", .kind = "read", .buffer = "1"}, "buffer", "ansic read"},
      {{.method = "posix", .kind = "copy", .buffer = "0,1"}, "buffer", "posix copy"},
      {{.method = "stream", .kind = "read", .chunk = "0", .buffer = "1"},
       "buffer",
       "chunk size of 0"}};
  for (const Case& c : cases) expectRefused(c);
}

TEST(SweepRefusal, DoesNotMeetWhatHasAnEffect) {
  const SweepOptions cases[] = {
      {.method = "stream", .kind = "copy", .chunk = "0"},
      {.method = "posix,ansic,stream", .kind = "write,read", .chunk = "0"},
      {.method = "ansic,stream", .kind = "write,copy", .flush = "yes,no"},
      {.method = "posix", .kind = "write,copy", .prealloc = "yes,no"},
      {.method = "ansic,stream", .kind = "copy", .buffer = "-1,0,1"},
      {.method = "stream", .kind = "read", .buffer = "1"},
      {.size = "1G", .wait = "65535"},
      {.dest = "/share/[date]/[cfgline]/"}};
  for (const SweepOptions& options : cases) EXPECT_EQ(makeSweep(options).reason, "");
}

TEST(SweepRefusal, OfNeighbours) {
  SweepOptions good{.output = "/share/n.bst", .neighbours = {"pc1", "pc2"}};
  EXPECT_EQ(makeSweep(good).reason, "");
  const auto with = [&good](auto change) {
    SweepOptions options = good;
    change(options);
    return options;
  };
  const Case cases[] = {
      {with([](auto& o) { o.neighbours = {"pc1"}; }), "neighbour", "no neighbour"},
      {with([](auto& o) {
         o.neighbours = {"pc1.a", "pc1.b"};
       }),
       "neighbour", "comes twice"},
      {with([](auto& o) {
         o.neighbours = {"pc1", "../x"};
       }),
       "neighbour", "no name"},
      {with([](auto& o) {
         o.neighbours = {"pc1", "localhost"};
       }),
       "neighbour", "NoHostNameSet_"},
      {with([](auto& o) {
         o.neighbours = {"pc1", "pc1-2"}, o.chunk = "1K..1G", o.size = "1K..1G";
       }),
       "neighbour", "one name"},
      {with([](auto& o) { o.kind = "write"; }), "neighbour", "nothing is read"},
      {with([](auto& o) { o.source = "/share/x"; }), "source", "with neighbours"},
      {with([](auto& o) { o.output = "-"; }), "output", "give --output"}};
  for (const Case& c : cases) expectRefused(c);
}

}  // namespace
}  // namespace marrowbench::ctl
