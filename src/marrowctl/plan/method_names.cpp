#include "marrowctl/plan/method_names.h"

namespace marrowbench::ctl {

std::string_view nameOf(TestType type) {
  switch (type) {
    case TestType::copy: return "copy";
    case TestType::read: return "read";
    case TestType::write: return "write";
  }
  return "";
}

std::string_view nameOf(Method method) {
  switch (method) {
    case Method::posix: return "Posix";
    case Method::system: return "System";
    case Method::stream: return "Stream";
    case Method::ansiC: return "AnsiC";
    case Method::winApi: return "WinApi";
  }
  return "";
}

}  // namespace marrowbench::ctl
