#include "fakes/fake_platform.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace marrowbench {

bool reserveSpace(int descriptor, Reservation kind, std::int64_t length) {
  test::FakePlatform& platform = test::fakePlatform();
  platform.reservations.push_back({descriptor, kind, length});
  if (platform.answers.empty()) return true;
  const int answer = platform.answers.front();
  platform.answers.pop_front();
  if (answer != 0) errno = answer;
  return answer == 0;
}

bool populatePages(std::byte* memory, std::size_t size) {
  test::fakePlatform().populated.push_back({memory, size});
  return test::fakePlatform().populates;
}

bool systemErrorText(int code, char* text, std::size_t size) {
  const auto& texts = test::fakePlatform().errorTexts;
  const auto scripted = texts.find(code);
  if (scripted == texts.end() && (code < 1 || code > 133)) return false;
  const char* found = scripted == texts.end() ? std::strerror(code) : scripted->second.c_str();
  (void)std::snprintf(text, size, "%s", found);
  return true;
}

namespace test {

FakePlatform& fakePlatform() {
  static FakePlatform platform;
  return platform;
}

}  // namespace test
}  // namespace marrowbench
