#ifndef MARROWBENCH_MARROWCTL_FLEET_CREW_H
#define MARROWBENCH_MARROWCTL_FLEET_CREW_H

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace marrowbench::ctl {

/// True when a signal waits, which is held back, that would end this process.
[[nodiscard]] bool isInterrupted();

/// What a member of a crew says of a step. What the numbers mean is between it and who asks.
struct CrewAnswer {
  std::int64_t member = 0;
  std::int64_t first = 0, second = 0, third = 0, fourth = 0;
};

/// A member's side: it takes each step when all are let go, and answers.
class CrewMember {
 public:
  CrewMember(std::size_t index, std::array<int, 2> gateEnds, int answersEnd)
      : number(index), gates(gateEnds), answers(answersEnd) {}

  /// Counted from 0.
  const std::size_t number;

  /// Waits until the crew is let go. @return false: there are no more steps
  [[nodiscard]] bool waitForStep();
  void answer(std::int64_t first, std::int64_t second = 0, std::int64_t third = 0,
              std::int64_t fourth = 0) const;

 private:
  std::array<int, 2> gates;
  int answers;
  std::size_t steps = 0;
};

/// Processes of this program that act at the same moments, as clients of a share do: the core's own
/// code is written for one thread.
class Crew {
 public:
  /// Starts the members, each of which does `work` and ends. Fewer where the system starts no more.
  Crew(std::size_t size, const std::function<void(CrewMember& self)>& work);
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  /// Ends those that are still there.
  ~Crew();

  [[nodiscard]] std::size_t size() const { return members.size(); }

  /// Lets all members take one step and waits for their answers.
  ///
  /// @return the answers in the order in which they came; nothing when one did not come within the
  ///         seconds, or the program is interrupted
  [[nodiscard]] std::optional<std::vector<CrewAnswer>> step(double seconds);

 private:
  [[nodiscard]] bool waitForAnswer(double seconds) const;

  std::vector<pid_t> members;
  // A gate's bytes, one for each member, let all go. There are two, for every other step: a member
  // that is fast would take a byte of one that has not begun.
  std::array<int, 2> gates{-1, -1};
  std::array<int, 2> gateReadEnds{-1, -1};  // open here, too: members that ended send no SIGPIPE
  int answers = -1;                         // from where they are read
  std::size_t steps = 0;
};

}  // namespace marrowbench::ctl

#endif
