#include "marrowctl/support/host_list.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

namespace marrowbench::ctl {
namespace {

// A mistyped range must not fill the memory.
constexpr std::size_t kMostNames = 100'000;

struct Range {
  std::uint32_t first = 0, last = 0;
  std::size_t width = 0;
};

bool readNumber(std::string_view text, std::uint32_t& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, code] = std::from_chars(text.data(), end, number);
  return !text.empty() && code == std::errc() && stop == end;
}

bool readRange(std::string_view text, Range& range) {
  const std::size_t dash = text.find('-');
  const std::string_view first = text.substr(0, dash);
  const std::string_view last = dash == std::string_view::npos ? first : text.substr(dash + 1);
  range.width = first.size();
  return readNumber(first, range.first) && readNumber(last, range.last) &&
         range.first <= range.last;
}

std::string padded(std::uint64_t number, std::size_t width) {
  const std::string digits = std::to_string(number);
  return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
}

// At each "," that stands in no brackets.
std::vector<std::string_view> elementsOf(std::string_view list) {
  std::vector<std::string_view> elements;
  std::size_t begin = 0;
  bool isInside = false;
  for (std::size_t i = 0; i < list.size(); ++i) {
    if (list[i] == '[') isInside = true;
    if (list[i] == ']') isInside = false;
    if (list[i] != ',' || isInside) continue;
    elements.push_back(list.substr(begin, i - begin));
    begin = i + 1;
  }
  elements.push_back(list.substr(begin));
  return elements;
}

bool refuse(HostList& hosts, std::string problem) {
  hosts.problem = std::move(problem);
  return false;
}

bool addName(HostList& hosts, std::string name) {
  if (name.empty()) return refuse(hosts, "a name is empty");
  if (name.find(']') != std::string::npos) return refuse(hosts, name + " has a ] without a [");
  if (hosts.names.size() == kMostNames) {
    return refuse(hosts, "more than " + std::to_string(kMostNames) + " names");
  }
  hosts.names.push_back(std::move(name));
  return true;
}

bool addElement(HostList& hosts, const std::string& before, std::string_view element) {
  const std::size_t open = element.find('[');
  if (open == std::string_view::npos) return addName(hosts, before + std::string(element));
  const std::size_t close = element.find(']', open);
  if (close == std::string_view::npos)
    return refuse(hosts, std::string(element) + " has a [ without a ]");
  const std::string start = before + std::string(element.substr(0, open));
  for (const std::string_view text : elementsOf(element.substr(open + 1, close - open - 1))) {
    Range range;
    if (!readRange(text, range))
      return refuse(hosts, "[" + std::string(text) + "] is no range of numbers");
    for (std::uint64_t number = range.first; number <= range.last; ++number) {
      if (!addElement(hosts, start + padded(number, range.width), element.substr(close + 1)))
        return false;
    }
  }
  return true;
}

bool addList(HostList& hosts, std::string_view list) {
  const std::vector<std::string_view> elements = elementsOf(list);
  return std::all_of(elements.begin(), elements.end(),
                     [&hosts](std::string_view element) { return addElement(hosts, "", element); });
}

bool addLine(HostList& hosts, const std::string& line) {
  std::istringstream words(line.substr(0, line.find('#')));
  for (std::string word; words >> word;) {
    if (!addList(hosts, word)) return false;
  }
  return true;
}

HostList namesIn(std::istream& input, const std::string& path) {
  HostList hosts;
  for (std::string line; std::getline(input, line);) {
    if (!addLine(hosts, line)) return {{}, path + ": " + hosts.problem};
  }
  if (!input.eof()) return {{}, path + ": it can't be read", true};
  if (hosts.names.empty()) return {{}, path + ": no name stands in it"};
  return hosts;
}

HostList namesInFile(const std::string& path) {
  std::error_code ignored;
  // Not every library takes the reading of a folder for a failure.
  if (std::filesystem::is_directory(path, ignored)) {
    return {{}, path + ": " + std::strerror(EISDIR), true};
  }
  std::ifstream file(path);
  if (!file.is_open()) return {{}, path + ": " + std::strerror(errno), true};
  return namesIn(file, path);
}

}  // namespace

HostList namesOf(std::string_view list) {
  HostList hosts;
  if (!addList(hosts, list)) hosts.names.clear();
  return hosts;
}

HostList readHostList(const std::string& list) {
  if (list == "-") return namesIn(std::cin, list);
  std::error_code code;
  // A folder may have the name of a client.
  const bool isName =
      list.find('/') == std::string::npos && std::filesystem::is_directory(list, code);
  if (!isName && std::filesystem::exists(list, code)) return namesInFile(list);
  // No name of a host holds a "/": a file was meant.
  if (list.find('/') == std::string::npos) return namesOf(list);
  return {{}, list + ": " + std::strerror(ENOENT), true};
}

}  // namespace marrowbench::ctl
