#ifndef MARROWBENCH_TESTS_HELPERS_ENVIRONMENT_VARIABLE_H
#define MARROWBENCH_TESTS_HELPERS_ENVIRONMENT_VARIABLE_H

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace marrowbench::test {

/// An environment variable that has this value as long as the object lives; null: unset.
class EnvironmentVariable {
 public:
  EnvironmentVariable(const char* variable, const char* value) : name(variable) {
    if (const char* old = std::getenv(name)) before = old;
    set(value);
  }
  EnvironmentVariable(const EnvironmentVariable&) = delete;
  EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
  ~EnvironmentVariable() { set(before ? before->c_str() : nullptr); }

 private:
  void set(const char* value) const {
    if (value == nullptr) {
      unsetenv(name);
    } else {
      setenv(name, value, 1);
    }
    tzset();  // in case the variable is TZ
  }

  const char* const name;
  std::optional<std::string> before;
};

}  // namespace marrowbench::test

#endif
