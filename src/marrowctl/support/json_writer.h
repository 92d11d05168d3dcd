#ifndef MARROWBENCH_MARROWCTL_SUPPORT_JSON_WRITER_H
#define MARROWBENCH_MARROWCTL_SUPPORT_JSON_WRITER_H

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowbench::ctl {

/// Writes a JSON document piece by piece, so that hundreds of thousands of paths need no tree in
/// memory. Texts are bytes: what is no UTF-8 becomes U+FFFD.
class JsonWriter {
 public:
  /// Appends to `target`, which the caller owns and keeps.
  explicit JsonWriter(std::string& target) : out(target) {}

  /// An object or array opens where a value may stand; members begin with key().
  JsonWriter& beginObject() { return begin('{'); }
  JsonWriter& endObject() { return end('}'); }
  JsonWriter& beginArray() { return begin('['); }
  JsonWriter& endArray() { return end(']'); }

  JsonWriter& key(std::string_view name);

  JsonWriter& value(std::string_view text);
  JsonWriter& value(const char* text) { return value(std::string_view(text)); }
  JsonWriter& value(std::int64_t number);
  /// In as few digits as tell it from every other number. @pre it is finite
  JsonWriter& value(std::same_as<double> auto number) { return literal(shortest(number)); }
  JsonWriter& value(std::same_as<bool> auto truth) { return literal(truth ? "true" : "false"); }
  JsonWriter& null() { return literal("null"); }

  /// The value, or null where there is none.
  template <class Value>
  JsonWriter& value(const std::optional<Value>& content) {
    return content ? value(*content) : null();
  }

  /// key() and value() at once.
  template <class Value>
  JsonWriter& member(std::string_view name, const Value& content) {
    return key(name).value(content);
  }

 private:
  JsonWriter& begin(char bracket);
  JsonWriter& end(char bracket);
  JsonWriter& literal(std::string_view text);
  [[nodiscard]] static std::string shortest(double number);
  void separate();
  void breakLine();
  void quote(std::string_view text);

  std::string& out;
  std::vector<bool> isFirst{true};  // for each open bracket: nothing stands in it yet
  bool isBehindKey = false;
};

}  // namespace marrowbench::ctl

#endif
