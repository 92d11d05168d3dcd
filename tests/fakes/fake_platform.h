#ifndef MARROWBENCH_TESTS_FAKES_FAKE_PLATFORM_H
#define MARROWBENCH_TESTS_FAKES_FAKE_PLATFORM_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "support/platform.h"

namespace marrowbench::test {

/// What unit tests link in place of the system's file: reservations are only written down.
struct FakePlatform {
  struct Call {
    int descriptor;
    Reservation kind;
    std::int64_t length;
  };
  /// Every reservation asked for so far.
  std::vector<Call> reservations;
  /// The errno of the next answers, 0 for success; success when there are none left.
  std::deque<int> answers;
  /// Every populatePages() so far, and what they answer.
  struct Populated {
    std::byte* memory;
    std::size_t size;
  };
  std::vector<Populated> populated;
  bool populates = true;
  /// Texts for errno codes. Without one, codes of 1 to 133 get the C library's, others are unknown.
  std::map<int, std::string> errorTexts;
};

/// The one fake platform; every test starts with a fresh one.
FakePlatform& fakePlatform();

}  // namespace marrowbench::test

#endif
