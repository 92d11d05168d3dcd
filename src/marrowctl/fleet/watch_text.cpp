#include "marrowctl/fleet/watch_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "marrowctl/report/output.h"
#include "marrowctl/support/units.h"
#include "marrowctl/support/utf8.h"

namespace marrowbench::ctl {
namespace {

constexpr std::int64_t kMsOfSecond = 1000;
constexpr int kLeastLines = 4;
constexpr int kLabelWidth = 10;
constexpr std::size_t kLeastBar = 10, kMostBar = 60;
constexpr int kColumnGap = 2;

constexpr std::array kStates = {ClientState::ready, ClientState::running, ClientState::done,
                                ClientState::late, ClientState::missing};

Tone toneOf(ClientState state) {
  switch (state) {
    case ClientState::ready: return Tone::plain;
    case ClientState::running: return Tone::cyan;
    case ClientState::done: return Tone::green;
    case ClientState::late: return Tone::yellow;
    case ClientState::missing: return Tone::red;
  }
  return Tone::plain;
}

std::string timeOfDay(std::int64_t ms) { return isoTime(ms / kMsOfSecond).substr(11, 8); }

std::string shownAge(std::int64_t ms) {
  return shownDuration(std::max<std::int64_t>(ms, 0) / kMsOfSecond);
}

// Its columns, whatever switches colours on and off in it.
std::size_t widthOf(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) {
    if (text.front() == '\033') {
      text.remove_prefix(std::min(text.find('m') + 1, text.size()));
      continue;
    }
    const std::size_t length = std::max<std::size_t>(characterLength(text), 1);
    text.remove_prefix(length);
    ++width;
  }
  return width;
}

// Cut at a width; what comes behind it are only ends of colours.
std::string cut(std::string_view text, std::size_t most) {
  std::string kept;
  std::size_t width = 0;
  while (!text.empty()) {
    std::size_t length = std::max<std::size_t>(characterLength(text), 1);
    const bool isCode = text.front() == '\033';
    if (isCode) length = std::min(text.find('m') + 1, text.size());
    if (isCode || width++ < most) kept += text.substr(0, length);
    text.remove_prefix(length);
  }
  return kept;
}

std::string labelled(const char* label, const std::string& text) {
  return fmt::format("{:<{}}{}", label, kLabelWidth, text);
}

std::string what(const RunState& state) {
  if (!state.trouble.empty()) return "can't be seen: " + printable(state.trouble);
  if (!state.publishedMs) return "waits for its settings file";
  const bool isLaterPhase = state.phaseStartMs.has_value();
  const std::int64_t start = isLaterPhase ? *state.phaseStartMs : state.startMs.value_or(0);
  const std::int64_t toStart = start - state.nowMs;
  if ((state.rows == 0 || isLaterPhase) && toStart > 0) {
    return (isLaterPhase ? "goes on in " : "starts in ") +
           shownDuration((toStart + kMsOfSecond - 1) / kMsOfSecond);
  }
  if (isComplete(state)) return "complete";
  if (waitingForPhase(state) > 0 && atWork(state) == 0) return "waits for its next phase";
  if (state.startMs) return "runs for " + shownAge(state.nowMs - *state.startMs);
  return "runs";
}

std::string headLine(const RunState& state, const TextStyle& style) {
  const std::string front = printable(state.run) + ": " + what(state);
  const std::string time = timeOfDay(state.nowMs);
  const std::size_t used = columnsOf(front) + time.size();
  const auto width = static_cast<std::size_t>(style.width);
  const std::string gap(used < width ? width - used : 1, ' ');
  return toned(front, Tone::strong, style) + gap + time;
}

std::string clientsLine(const RunState& state, const TextStyle& style) {
  constexpr int kAllStates = 62;  // columns of all of them, with numbers of a digit
  std::string text;
  for (const ClientState each : kStates) {
    const std::int64_t count = state.count(each);
    if (count == 0 && style.width < kAllStates) continue;
    const std::string part = fmt::format("{} {}", shownCount(count), nameOf(each));
    text +=
        (text.empty() ? "" : "   ") + toned(part, count > 0 ? toneOf(each) : Tone::faint, style);
  }
  return labelled("Clients", text.empty() ? "none" : text);
}

std::string bar(std::int64_t part, std::int64_t all, std::size_t width, const TextStyle& style) {
  const auto filled =
      static_cast<std::size_t>(static_cast<double>(width) *
                               static_cast<double>(std::min(part, all)) / static_cast<double>(all));
  std::string text;
  for (std::size_t i = 0; i < width; ++i) {
    const bool isFilled = i < filled;
    if (style.hasBlocks) {
      text += isFilled ? "█" : "░";
    } else {
      text += isFilled ? '#' : '-';
    }
  }
  return text;
}

std::string rowsText(const RunState& state) {
  if (!state.publishedMs) return "-";
  std::string text =
      fmt::format("{} of {}", shownCount(state.rows), shownCount(state.expectedRows()));
  const auto left = secondsLeft(state);
  if (left && *left > 0) text += ", about " + shownDuration(*left) + " left";
  for (const std::string& table : state.uncounted)
    text += fmt::format(", none of {} is counted", printable(table));
  return text;
}

std::string rowsLine(const RunState& state, const TextStyle& style) {
  std::string text = rowsText(state);
  const std::size_t used = kLabelWidth + columnsOf(text) + 2;
  const auto width = static_cast<std::size_t>(style.width);
  if (state.publishedMs && state.expectedRows() > 0 && used + kLeastBar <= width) {
    const std::string drawn =
        bar(state.rows, state.expectedRows(), std::min(width - used, kMostBar), style);
    text = toned(drawn, Tone::green, style) + "  " + text;
  }
  return labelled("Rows", text);
}

std::string lockText(const RunState& state) {
  if (state.locks.empty()) return "no lock";
  const auto oldest = std::max_element(
      state.locks.begin(), state.locks.end(),
      [](const WatchedLock& a, const WatchedLock& b) { return a.ageMs < b.ageMs; });
  return fmt::format("lock held for {}", shownAge(oldest->ageMs));
}

std::string lastRowText(const RunState& state) {
  return state.lastRowMs ? shownAge(state.nowMs - *state.lastRowMs) + " ago" : "-";
}

std::string shownClient(const WatchedClient& client, const RunState& state) {
  std::string text = printable(client.host) + " " + nameOf(client.state);
  if (state.knowsOwners && state.rowsPerClient > 0 && state.publishedMs)
    text += fmt::format(" {}/{}", client.rows, state.rowsPerClient);
  return text;
}

// Those that need somebody first, then those that are behind.
std::vector<const WatchedClient*> byUrgency(const RunState& state) {
  const auto rank = [](const WatchedClient& client) {
    switch (client.state) {
      case ClientState::missing: return 0;
      case ClientState::late: return 1;
      case ClientState::running: return 2;
      case ClientState::ready: return 3;
      case ClientState::done: return 4;
    }
    return 4;
  };
  std::vector<const WatchedClient*> clients;
  for (const WatchedClient& client : state.clients) clients.push_back(&client);
  std::sort(clients.begin(), clients.end(),
            [&rank](const WatchedClient* a, const WatchedClient* b) {
              if (rank(*a) != rank(*b)) return rank(*a) < rank(*b);
              if (a->rows != b->rows) return a->rows < b->rows;
              return a->host < b->host;
            });
  return clients;
}

void addReasons(const RunState& state, const TextStyle& style, std::size_t most,
                std::vector<std::string>& lines) {
  for (const WatchedClient* const client : byUrgency(state)) {
    if (client->state != ClientState::missing || most-- == 0) return;
    lines.push_back(toned(printable(client->host), Tone::red, style) + ": " +
                    printable(client->reason));
  }
}

// In columns, row by row; the last place says how many more there are.
void addGrid(const RunState& state, const TextStyle& style, std::size_t lineCount,
             std::vector<std::string>& lines) {
  const std::vector<const WatchedClient*> clients = byUrgency(state);
  if (clients.empty() || lineCount == 0) return;
  std::size_t widest = 0;
  for (const WatchedClient* const client : clients)
    widest = std::max(widest, columnsOf(shownClient(*client, state)));
  const std::size_t column = widest + kColumnGap;
  const std::size_t columns =
      std::max<std::size_t>((static_cast<std::size_t>(style.width) + kColumnGap) / column, 1);
  const std::size_t places = columns * lineCount;
  const bool isCut = clients.size() > places;
  const std::size_t shown = isCut ? places - 1 : clients.size();
  std::size_t used = 0;
  const auto put = [&](const std::string& text, Tone tone, std::size_t i) {
    if (i % columns == 0) {
      lines.emplace_back();
    } else {
      lines.back() += std::string(column - used, ' ');
    }
    lines.back() += toned(text, tone, style);
    used = std::min(columnsOf(text), column);
  };
  for (std::size_t i = 0; i < shown; ++i)
    put(shownClient(*clients[i], state), toneOf(clients[i]->state), i);
  if (isCut) {
    put(fmt::format("and {} more", shownCount(static_cast<std::int64_t>(clients.size() - shown))),
        Tone::faint, shown);
  }
}

}  // namespace

std::vector<std::string> watchTable(const RunState& state, const TextStyle& style, int height) {
  std::vector<std::string> lines = {
      headLine(state, style), clientsLine(state, style), rowsLine(state, style),
      labelled("Last row", lastRowText(state) + "   " + lockText(state))};
  const std::size_t room = static_cast<std::size_t>(std::max(height, kLeastLines)) - lines.size();
  if (room >= 2 && !state.clients.empty()) {
    const std::size_t behind = lines.size();
    lines.emplace_back();
    addReasons(state, style, room / 3, lines);
    if (lines.size() > behind + 1 && lines.size() - behind < room) lines.emplace_back();
    addGrid(state, style, room - (lines.size() - behind), lines);
  }
  for (std::string& line : lines) {
    const auto width = static_cast<std::size_t>(style.width);
    if (widthOf(line) > width) line = cut(line, width);
  }
  return lines;
}

std::string watchLine(const RunState& state) {
  std::string text = timeOfDay(state.nowMs) + " " + printable(state.run) + " " + what(state) + ":";
  for (const ClientState each : kStates) {
    const std::int64_t count = state.count(each);
    if (count > 0) text += fmt::format(" {} {},", shownCount(count), nameOf(each));
  }
  if (text.ends_with(',')) text.pop_back();
  if (text.ends_with(':')) text += " no client";
  if (state.publishedMs) {
    text += fmt::format("; rows {}; last row {}; {}", rowsText(state), lastRowText(state),
                        lockText(state));
  }
  return text;
}

}  // namespace marrowbench::ctl
