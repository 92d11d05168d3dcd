#include "results/results_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "helpers/caught_signal.h"
#include "helpers/temp_folder.h"

namespace marrowbench {
namespace {

using test::exists;
using test::fakeClock;
using test::readFile;
using test::setModified;
using test::writeFile;

// The file that the server refuses to delete.
std::string& undeletable() {
  static std::string path;
  return path;
}

}  // namespace
}  // namespace marrowbench

// Linked in place of the C library's: nothing else makes a delete fail where a rename succeeds.
extern "C" int unlink(const char* path) {
  if (marrowbench::undeletable() != path) return unlinkat(AT_FDCWD, path, 0);
  errno = EBUSY;
  return -1;
}

namespace marrowbench {
namespace {

WideFixedString wide(const FixedString& text) {
  WideFixedString result;
  result.assignBytes(text);
  return result;
}

// One attempt of the object under test, with what it tells about the wait.
struct Attempt {
  int waited = -12345;
  bool taken;

  Attempt(ResultsLock& lock, int timeoutMs, bool probeOnly = false)
      : taken(lock.acquire(timeoutMs, {}, &waited, probeOnly)) {}
};

class ResultsLockTest : public testing::Test {
 protected:
  ~ResultsLockTest() override { undeletable().clear(); }

  void leaveLockOfAge(std::int64_t seconds) {
    writeFile(lockPath, "other");
    setModified(lockPath, fakeClock().seconds() - seconds);
  }
  void leaveDanglingLink() { std::filesystem::create_symlink("nowhere", lockPath.c_str()); }
  void leaveGuardOfAge(std::int64_t seconds) { leaveOfAge(guardPath, seconds); }
  static void leaveOfAge(const FixedString& path, std::int64_t seconds) {
    writeFile(path, "");
    setModified(path, fakeClock().seconds() - seconds);
  }

  // After the sleep of each number, counted from 1, the other clients do something.
  static void afterSleep(const std::vector<std::pair<std::size_t, std::function<void()>>>& acts) {
    fakeClock().duringSleep = [acts] {
      for (const auto& [number, act] : acts) {
        if (fakeClock().sleeps.size() == number) act();
      }
    };
  }
  static std::size_t sleeps() { return fakeClock().sleeps.size(); }

  test::TempFolder folder;
  FixedString resultsPath = folder.file("res.csv");
  FixedString lockPath = folder.file("res.csv_lock.txt");
  FixedString asidePath = folder.file("res.csv_lock.txt.none");
  FixedString guardPath = folder.file("res.csv_lock.txt.take");
  FixedString secondGuardPath = folder.file("res.csv_lock.txt.take2");
  ResultsLock lock{wide(resultsPath)};
};

TEST_F(ResultsLockTest, FreeLockIsTakenWithoutASleep) {
  const Attempt attempt(lock, 10000);
  EXPECT_TRUE(attempt.taken);
  EXPECT_EQ(attempt.waited, 0);
  EXPECT_EQ(sleeps(), 0U);
  EXPECT_TRUE(exists(lockPath));
}

TEST_F(ResultsLockTest, NoteTellsWhoHoldsItSinceWhen) {
  int timeout = 0;
  ASSERT_TRUE(lock.acquire(timeout, u"client\u0137\uFFE4", nullptr, false));
  EXPECT_EQ(readFile(lockPath),
            "\n File locked by: client7\xE4 Time locked: Nov 14. 22:13.20\n"
            "Info: This lock file should only exist a few seconds.\n\n");
}

TEST_F(ResultsLockTest, EmptyOwnerShowsAsNothing) {
  ASSERT_TRUE(Attempt(lock, 0).taken);
  EXPECT_EQ(readFile(lockPath).substr(0, 32), "\n File locked by:  Time locked: ");
}

TEST_F(ResultsLockTest, LooksOncePerQuarterOfASecondAtLeastOnce) {
  const struct {
    int timeout;
    std::size_t tries;
  } cases[] = {{-10000, 1}, {-1, 1},  {0, 1},   {1, 1},     {249, 1},
               {250, 1},    {499, 1}, {500, 2}, {10000, 40}};
  leaveLockOfAge(0);
  for (const auto& c : cases) {
    fakeClock().sleeps.clear();
    int timeout = c.timeout;
    int waited = 0;
    EXPECT_FALSE(lock.acquire(timeout, {}, &waited, false)) << c.timeout;
    EXPECT_EQ(fakeClock().sleeps, std::vector<std::uint32_t>(c.tries, 250'000)) << c.timeout;
    EXPECT_EQ(waited, static_cast<int>(c.tries) * 250) << c.timeout;
    EXPECT_EQ(timeout, c.timeout);
    EXPECT_EQ(errno, 0) << "it was not free, and nothing else is wrong";
  }
  EXPECT_EQ(readFile(lockPath), "other");
}

TEST_F(ResultsLockTest, LockGivenBackDuringTheWaitIsTaken) {
  leaveLockOfAge(0);
  afterSleep({{3, [this] { std::filesystem::remove(lockPath.c_str()); }}});
  const Attempt attempt(lock, 10000);
  EXPECT_TRUE(attempt.taken);
  EXPECT_EQ(attempt.waited, 750);
  EXPECT_EQ(sleeps(), 3U);
}

TEST_F(ResultsLockTest, LockOfMoreThanThreeHoursIsTakenOver) {
  for (const int age : {10799, 10800}) {
    leaveLockOfAge(age);
    EXPECT_FALSE(Attempt(lock, 0).taken) << age;
    EXPECT_EQ(readFile(lockPath), "other");
  }
  leaveLockOfAge(10801);
  const Attempt attempt(lock, 0);
  EXPECT_TRUE(attempt.taken);
  EXPECT_EQ(attempt.waited, 250);
  EXPECT_EQ(readFile(lockPath).substr(0, 16), "\n File locked by");
  EXPECT_FALSE(exists(guardPath));
}

// Its creator's clock is right, this one's hours ahead.
TEST_F(ResultsLockTest, OldLockThatCameDuringTheWaitIsNotTakenOver) {
  leaveLockOfAge(10801);
  afterSleep({{1, [this] { leaveLockOfAge(10900); }}});
  EXPECT_FALSE(Attempt(lock, 500).taken);
  EXPECT_EQ(readFile(lockPath), "other");
}

// Between the last look and the question for the age the holder gives the lock back; another takes
// it when the name is to be created.
TEST_F(ResultsLockTest, LockThatIsGoneWhenItsAgeIsAskedIsNotDeleted) {
  leaveLockOfAge(0);
  afterSleep({{2, [this] {
                 std::filesystem::remove(lockPath.c_str());
                 leaveDanglingLink();
               }}});
  EXPECT_FALSE(Attempt(lock, 500).taken);
  EXPECT_TRUE(exists(lockPath)) << "what can't be asked is another client's all the same";
}

TEST_F(ResultsLockTest, TakeoverIsLeftToTheClientThatHasTheGuard) {
  leaveLockOfAge(10801);
  leaveGuardOfAge(0);
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_EQ(readFile(lockPath), "other");
  EXPECT_TRUE(exists(guardPath));
}

TEST_F(ResultsLockTest, GuardOfAClientThatEndedIsRemovedAfterThreeHours) {
  leaveLockOfAge(20000);
  leaveGuardOfAge(10800);
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_TRUE(exists(guardPath)) << "not more than three hours";

  leaveGuardOfAge(10801);
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_FALSE(exists(guardPath));
  EXPECT_TRUE(Attempt(lock, 0).taken) << "the next attempt finds the way free";
}

TEST_F(ResultsLockTest, OldGuardIsLeftToTheClientThatHasTheGuardOfThat) {
  leaveLockOfAge(20000);
  leaveGuardOfAge(20000);
  leaveOfAge(secondGuardPath, 0);
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_TRUE(exists(guardPath));
  EXPECT_TRUE(exists(secondGuardPath));
}

TEST_F(ResultsLockTest, AttemptByAttemptEverythingOldIsRemoved) {
  leaveLockOfAge(20000);
  leaveGuardOfAge(20000);
  leaveOfAge(secondGuardPath, 20000);
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_FALSE(exists(secondGuardPath));
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_FALSE(exists(guardPath));
  EXPECT_TRUE(Attempt(lock, 0).taken);
  lock.release();
  EXPECT_FALSE(exists(lockPath));
  EXPECT_FALSE(exists(guardPath));
  EXPECT_FALSE(exists(secondGuardPath));
}

TEST_F(ResultsLockTest, GuardThatCameDuringTheWaitIsNotRemoved) {
  leaveLockOfAge(20000);
  afterSleep({{1, [this] { leaveGuardOfAge(10900); }}});
  EXPECT_FALSE(Attempt(lock, 500).taken);
  EXPECT_TRUE(exists(guardPath));
}

TEST_F(ResultsLockTest, StaleLockThatCannotBeDeletedStaysTheOtherClients) {
  leaveLockOfAge(10801);
  undeletable() = lockPath.view();
  EXPECT_FALSE(Attempt(lock, 0).taken);
  EXPECT_EQ(readFile(lockPath), "other");
  EXPECT_FALSE(exists(guardPath));
}

TEST_F(ResultsLockTest, ProbeCreatesNothing) {
  const Attempt free(lock, 0, true);
  EXPECT_TRUE(free.taken);
  EXPECT_EQ(free.waited, 0);
  EXPECT_FALSE(exists(lockPath));

  leaveLockOfAge(0);
  EXPECT_FALSE(Attempt(lock, 0, true).taken);
  lock.release();
  EXPECT_EQ(readFile(lockPath), "other");
}

TEST_F(ResultsLockTest, ProbeDeletesAStaleLock) {
  leaveLockOfAge(10801);
  EXPECT_TRUE(Attempt(lock, 0, true).taken);
  EXPECT_FALSE(exists(lockPath));
}

// A dangling link looks free and can't be created: what a client sees whose rival was faster.
TEST_F(ResultsLockTest, LostRaceGoesBackToWaitingWithTheSameCount) {
  leaveLockOfAge(0);
  afterSleep({{2,
               [this] {
                 std::filesystem::remove(lockPath.c_str());
                 leaveDanglingLink();
               }},
              {3, [this] {
                 std::filesystem::remove(lockPath.c_str());
                 leaveLockOfAge(0);
               }}});
  const Attempt attempt(lock, 1000);
  EXPECT_FALSE(attempt.taken);
  EXPECT_EQ(attempt.waited, 1000);
  EXPECT_EQ(sleeps(), 5U);  // two looks, a pause because the rival is invisible, two looks
}

TEST_F(ResultsLockTest, LostRaceCanStillBeWon) {
  leaveDanglingLink();
  afterSleep({{1, [this] { std::filesystem::remove(lockPath.c_str()); }}});
  const Attempt attempt(lock, 1000);
  EXPECT_TRUE(attempt.taken);
  EXPECT_EQ(attempt.waited, 0);
  EXPECT_EQ(sleeps(), 1U);
}

TEST_F(ResultsLockTest, RaceLostAfterTheLastLookTestsTheAgeAgain) {
  leaveLockOfAge(10801);
  afterSleep({{1,
               [this] {
                 std::filesystem::rename(lockPath.c_str(), asidePath.c_str());
                 leaveDanglingLink();
               }},
              {2, [this] { std::filesystem::rename(asidePath.c_str(), lockPath.c_str()); }}});
  const Attempt attempt(lock, 250);
  EXPECT_TRUE(attempt.taken);
  EXPECT_EQ(attempt.waited, 250);
}

TEST_F(ResultsLockTest, NameThatLooksFreeAndCannotBeCreatedIsGivenUp) {
  leaveDanglingLink();
  const Attempt attempt(lock, 1000);
  EXPECT_FALSE(attempt.taken);
  EXPECT_EQ(fakeClock().sleeps, std::vector<std::uint32_t>(4, 250'000));
  EXPECT_EQ(errno, EEXIST);
  EXPECT_FALSE(exists(folder.file("nowhere")));
}

TEST_F(ResultsLockTest, FolderAtTheLockPathIsRefusedAfterTheWait) {
  std::filesystem::create_directory(lockPath.c_str());
  const Attempt attempt(lock, 500);
  EXPECT_FALSE(attempt.taken);
  EXPECT_EQ(attempt.waited, -500);
  EXPECT_EQ(sleeps(), 2U);
  EXPECT_TRUE(std::filesystem::is_directory(lockPath.c_str()));
  EXPECT_TRUE(Attempt(lock, 500, true).taken);  // a probe ends before the create
}

TEST_F(ResultsLockTest, OtherFailureNegatesTheWait) {
  const std::filesystem::path share = folder.file("share").c_str();
  std::filesystem::create_directory(share);
  ResultsLock remote(wide(folder.file("share/res.csv")));
  writeFile(folder.file("share/res.csv_lock.txt"), "other");
  afterSleep({{2, [&] { std::filesystem::rename(share, share.string() + "_gone"); }}});
  const Attempt attempt(remote, 1000);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(attempt.taken);
  EXPECT_EQ(attempt.waited, -500);
  EXPECT_EQ(sleeps(), 2U);

  int timeout = 0;
  EXPECT_FALSE(remote.acquire(timeout, {}, nullptr, false));
}

TEST_F(ResultsLockTest, ReleaseDeletesTheLockAndOnlyItsOwn) {
  static_assert(noexcept(lock.release()));
  ASSERT_TRUE(Attempt(lock, 0).taken);
  lock.release();
  EXPECT_FALSE(exists(lockPath));

  leaveLockOfAge(0);
  lock.release();
  EXPECT_EQ(readFile(lockPath), "other");
}

// This client stood still for hours, and another one has taken its lock over.
TEST_F(ResultsLockTest, ReleaseLeavesTheLockOfWhoTookItOver) {
  ASSERT_TRUE(Attempt(lock, 0).taken);
  EXPECT_FALSE(lock.isLost());
  std::filesystem::remove(lockPath.c_str());
  EXPECT_TRUE(lock.isLost()) << "its client may be between deleting and creating";
  leaveLockOfAge(0);
  EXPECT_TRUE(lock.isLost());
  lock.release();
  EXPECT_EQ(readFile(lockPath), "other");
  EXPECT_FALSE(exists(asidePath));
}

TEST_F(ResultsLockTest, ReleaseOfALockNeverTakenDoesNothing) {
  leaveLockOfAge(0);
  writeFile(asidePath, "older");
  { ResultsLock never(wide(resultsPath)); }
  EXPECT_EQ(readFile(lockPath), "other");
  EXPECT_EQ(readFile(asidePath), "older");
}

TEST_F(ResultsLockTest, EndOfTheObjectReleases) {
  {
    ResultsLock held(wide(resultsPath));
    ASSERT_TRUE(Attempt(held, 0).taken);
  }
  EXPECT_FALSE(exists(lockPath));
  EXPECT_TRUE(Attempt(lock, 0).taken);
}

TEST_F(ResultsLockTest, InterruptionWaitsUntilTheLockIsGone) {
  static std::string watched;
  static volatile std::sig_atomic_t lockStood;
  watched = std::string(lockPath);
  const test::CaughtSignal caught(SIGTERM,
                                  [] { lockStood = access(watched.c_str(), F_OK) == 0 ? 1 : 0; });
  ASSERT_TRUE(Attempt(lock, 0).taken);
  (void)std::raise(SIGTERM);
  EXPECT_EQ(test::CaughtSignal::count(), 0);
  EXPECT_TRUE(exists(lockPath));
  lock.release();
  EXPECT_EQ(test::CaughtSignal::count(), 1);
  EXPECT_EQ(lockStood, 0) << "the lock was gone when it took effect";
}

TEST_F(ResultsLockTest, InterruptionIsNotHeldBackWithoutTheLock) {
  const test::CaughtSignal caught(SIGTERM);
  leaveLockOfAge(0);
  afterSleep({{2, [] { (void)std::raise(SIGTERM); }}});
  EXPECT_FALSE(Attempt(lock, 500).taken);
  EXPECT_EQ(test::CaughtSignal::count(), 1) << "while it waits for another client";

  std::filesystem::remove(lockPath.c_str());
  leaveDanglingLink();
  EXPECT_FALSE(Attempt(lock, 0).taken);
  (void)std::raise(SIGTERM);
  EXPECT_EQ(test::CaughtSignal::count(), 2) << "after a failed attempt";
}

TEST_F(ResultsLockTest, LockThatCannotBeDeletedIsMovedAside) {
  writeFile(asidePath, "older");
  undeletable() = lockPath.view();
  ASSERT_TRUE(Attempt(lock, 0).taken);
  lock.release();
  EXPECT_FALSE(exists(lockPath));
  EXPECT_EQ(readFile(asidePath).substr(0, 16), "\n File locked by");
}

// Names of 250 characters: created, looked for and deleted one character shorter than they are
// aged and moved.
class LongLockNameTest : public ResultsLockTest {
 protected:
  FixedString longResults = folder.fileOfLength(245);
  FixedString longName = FixedString(longResults).append("_lock");
  FixedString createdName = FixedString(longResults).append("_loc");
};

TEST_F(LongLockNameTest, KeepsCuttingTheNameAt250AndTheCreatedFileAt249) {
  const struct {
    std::size_t resultsLength;
    const char* created;
  } cases[] = {{240, "_lock.txt"}, {241, "_lock.tx"}, {242, "_lock.t"}, {245, "_loc"}};
  for (const auto& c : cases) {
    const FixedString results = folder.fileOfLength(c.resultsLength);
    ResultsLock held(wide(results));
    ASSERT_TRUE(Attempt(held, 0).taken) << c.resultsLength;
    const FixedString created = FixedString(results).append(c.created);
    EXPECT_TRUE(exists(created)) << c.resultsLength;
    held.release();
    EXPECT_FALSE(exists(created)) << c.resultsLength;
  }
}

TEST_F(LongLockNameTest, KeepsLookingForTheShorterName) {
  writeFile(longName, "other");
  ResultsLock held(wide(longResults));
  EXPECT_TRUE(Attempt(held, 0).taken);
  EXPECT_EQ(sleeps(), 0U);
  held.release();
  EXPECT_EQ(readFile(longName), "other");
}

TEST_F(LongLockNameTest, KeepsTestingTheAgeOfTheLongerName) {
  ResultsLock cut(wide(longResults));
  writeFile(createdName, "other");
  setModified(createdName, 1);
  writeFile(longName, "longer");
  setModified(longName, fakeClock().seconds());
  const Attempt young(cut, 250);
  EXPECT_FALSE(young.taken);
  EXPECT_EQ(young.waited, 250);
  EXPECT_EQ(readFile(longName), "longer");

  setModified(longName, fakeClock().seconds() - 10801);
  const Attempt stale(cut, 250);
  EXPECT_FALSE(stale.taken);  // the shorter name is in the way for ever
  EXPECT_EQ(stale.waited, -250);
  EXPECT_FALSE(exists(longName));
  EXPECT_EQ(readFile(createdName), "other");
}

TEST_F(LongLockNameTest, KeepsMovingTheLongerNameAside) {
  const FixedString results = folder.fileOfLength(238);  // 247 with "_lock.txt": room for ".no"
  const FixedString created = FixedString(results).append("_lock.txt");
  undeletable() = created.view();
  ResultsLock held(wide(results));
  ASSERT_TRUE(Attempt(held, 0).taken);
  held.release();
  EXPECT_FALSE(exists(created));
  EXPECT_TRUE(exists(FixedString(created).append(".no")));

  // At 250 characters there is no room left: what bears the longer name is deleted, not moved.
  undeletable() = createdName.view();
  writeFile(longName, "other");
  ResultsLock full(wide(longResults));
  ASSERT_TRUE(Attempt(full, 0).taken);
  full.release();
  EXPECT_FALSE(exists(longName));
  EXPECT_TRUE(exists(createdName));
}

// The name that would be aged and moved is the table's.
TEST_F(LongLockNameTest, TableOf250CharactersIsNeverTakenForAnOldLock) {
  const FixedString table = folder.fileOfLength(250);
  const FixedString created = FixedString(table.view().substr(0, 249));
  writeFile(table, "rows");
  setModified(table, fakeClock().seconds() - 20000);
  writeFile(created, "other");
  setModified(created, fakeClock().seconds() - 20000);
  ResultsLock cut(wide(table));
  EXPECT_FALSE(Attempt(cut, 250).taken);
  EXPECT_EQ(readFile(created), "other");
  EXPECT_EQ(readFile(table), "rows");

  std::filesystem::remove(created.c_str());
  undeletable() = created.view();
  ASSERT_TRUE(Attempt(cut, 250).taken);
  cut.release();
  EXPECT_EQ(readFile(table), "rows") << "not moved aside in place of its lock";
}

class MoveFileTest : public ResultsLockTest {
 protected:
  FixedString from = folder.file("from");
  FixedString to = folder.file("to");
};

TEST_F(MoveFileTest, RenamesAFile) {
  for (const bool overwrite : {false, true}) {
    writeFile(from, "new");
    std::filesystem::remove(to.c_str());
    EXPECT_TRUE(moveFile(from, to, overwrite));
    EXPECT_FALSE(exists(from));
    EXPECT_EQ(readFile(to), "new");
  }
}

TEST_F(MoveFileTest, ReplacesTheTargetOnlyWhenAsked) {
  writeFile(from, "new");
  writeFile(to, "old");
  EXPECT_TRUE(moveFile(from, to, false));  // the target is there: done
  EXPECT_EQ(readFile(from), "new");
  EXPECT_EQ(readFile(to), "old");
  EXPECT_TRUE(moveFile(from, to, true));
  EXPECT_FALSE(exists(from));
  EXPECT_EQ(readFile(to), "new");
}

TEST_F(MoveFileTest, TargetThatCannotBeDeletedFails) {
  writeFile(from, "new");
  writeFile(to, "old");
  undeletable() = to.view();
  EXPECT_FALSE(moveFile(from, to, true));
  EXPECT_EQ(readFile(from), "new");
  EXPECT_EQ(readFile(to), "old");
}

TEST_F(MoveFileTest, MovesFilesOnly) {
  EXPECT_FALSE(moveFile(from, to, true));
  std::filesystem::create_directory(from.c_str());
  EXPECT_FALSE(moveFile(from, to, true));
  EXPECT_TRUE(exists(from));
  EXPECT_FALSE(exists(to));
}

TEST_F(MoveFileTest, KeepsDeletingTheTargetBeforeItLooksAtTheSource) {
  writeFile(to, "old");
  EXPECT_FALSE(moveFile(from, to, true));
  EXPECT_FALSE(exists(to));
}

TEST_F(MoveFileTest, FailsWhereTheRenameFails) {
  writeFile(from, "new");
  EXPECT_FALSE(moveFile(from, folder.file("missing/to"), true));
  std::filesystem::create_directory(to.c_str());
  EXPECT_FALSE(moveFile(from, to, true));
  EXPECT_FALSE(moveFile(from, to, false));
  EXPECT_EQ(readFile(from), "new");
}

}  // namespace
}  // namespace marrowbench
