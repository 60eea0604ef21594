// SPDX-License-Identifier: MIT
#include "opc/LockFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "opc/TemporaryFile.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using Kind = LockFile::Kind;
using State = LockFile::State;

class LockFiles : public testing::Test {
 protected:
  LockFiles() { test::writeFile(path(), "a package"); }

  fs::path path() const { return folder_ / "p.kraddon"; }

  State take(LockFile& lock, LockFile::Clock::duration limit = 0s, Kind kind = Kind::Change) {
    lock.take(path().string(), kind, limit, {});
    return lock.state();
  }
  mode_t modeOf(const std::string& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  test::TemporaryFolder folder_;
};

TEST_F(LockFiles, ExistWhileTheyAreHeld) {
  LockFile lock;

  EXPECT_EQ(take(lock), State::Held);

  EXPECT_TRUE(fs::exists(lock.path()));
  EXPECT_EQ(fs::path(lock.path()).parent_path(), path().parent_path());
  lock.release();
  EXPECT_FALSE(fs::exists(lock.path()));
}

TEST_F(LockFiles, HaveNamesThatAreNeverPacked) {
  LockFile change;
  LockFile commit;

  take(change);
  take(commit, 0s, Kind::Commit);

  for (const std::string& path : {change.path(), commit.path()}) {
    EXPECT_TRUE(isTemporaryName(fs::path(path).filename().string()));
    EXPECT_TRUE(isLockName(fs::path(path).filename().string()));
  }
  EXPECT_FALSE(isLockName(".p.kraddon.abcdef.tmp"));
  EXPECT_FALSE(isLockName("change"));
}

TEST_F(LockFiles, ExcludeOthers) {
  LockFile first;
  LockFile second;
  take(first);

  EXPECT_EQ(take(second), State::Busy);
  first.release();
  EXPECT_EQ(take(second), State::Held);
}

TEST_F(LockFiles, OfTwoKindsAreTwoLocks) {
  LockFile change;
  LockFile commit;

  EXPECT_EQ(take(change), State::Held);
  EXPECT_EQ(take(commit, 0s, Kind::Commit), State::Held);
}

TEST_F(LockFiles, ThatThreadsTakeInTurnAreHeldByOneAtATime) {
  std::atomic<int> holders = 0;
  std::atomic<int> most = 0;
  std::atomic<int> taken = 0;
  const auto work = [&] {
    for (int turn = 0; turn < 30; ++turn) {
      LockFile lock;
      if (take(lock, 60s) == State::Held) ++taken;
      const int now = ++holders;
      if (now > most) most = now;
      --holders;
    }
  };

  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();

  EXPECT_EQ(most, 1);
  EXPECT_EQ(taken, 120);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 1);
}

TEST_F(LockFiles, ThatAKilledProcessLeftLockNothing) {
  LockFile first;
  take(first);
  const std::string left = first.path();
  first.release();
  test::writeFile(left, "");

  LockFile lock;
  EXPECT_EQ(take(lock), State::Held);
  lock.release();

  EXPECT_FALSE(fs::exists(left));
}

TEST_F(LockFiles, CallBackWhileTheyWait) {
  LockFile first;
  take(first);
  LockFile second;
  int calls = 0;

  second.take(path().string(), Kind::Change, 60s, [&](LockFile::Clock::duration) {
    if (++calls == 3) first.release();
  });

  EXPECT_EQ(second.state(), State::Held);
  EXPECT_EQ(calls, 3);
}

TEST_F(LockFiles, EndTheWaitWithWhatTheCallbackThrows) {
  LockFile first;
  take(first);
  LockFile second;

  EXPECT_THROW(second.take(path().string(), Kind::Change, 60s,
                           [](LockFile::Clock::duration) { throw std::runtime_error("stop"); }),
               std::runtime_error);

  second.release();
  EXPECT_TRUE(fs::exists(first.path()));
}

TEST_F(LockFiles, CanBeOpenedByWritersOnlyAndOnlyForWriting) {
  for (const auto& [mode, expected] : {std::pair<mode_t, mode_t>{0644, 0200},
                                       {0600, 0200},
                                       {0664, 0220},
                                       {0666, 0222},
                                       {0642, 0202},
                                       {0444, 0200}}) {
    ASSERT_EQ(::chmod(path().c_str(), mode), 0);
    LockFile lock;

    ASSERT_EQ(take(lock), State::Held);

    EXPECT_EQ(modeOf(lock.path()), expected) << std::oct << mode;
  }
}

TEST_F(LockFiles, BelongToTheOwnerOfThePackage) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  ASSERT_EQ(::chown(path().c_str(), 12345, 23456), 0);
  LockFile lock;

  take(lock);

  struct stat status {};
  ::stat(lock.path().c_str(), &status);
  EXPECT_EQ(status.st_uid, 12345u);
  EXPECT_EQ(status.st_gid, 23456u);
}

TEST_F(LockFiles, OfANewPackageAreForThoseWhoCouldWriteToIt) {
  fs::remove(path());
  const mode_t old = ::umask(027);
  LockFile lock;

  const State state = take(lock);

  ::umask(old);
  EXPECT_EQ(state, State::Held);
  EXPECT_EQ(modeOf(lock.path()), 0200u);
}

TEST_F(LockFiles, FollowNoLink) {
  LockFile lock;
  take(lock);
  const std::string name = lock.path();
  lock.release();
  fs::create_symlink(path(), name);

  EXPECT_EQ(take(lock), State::Inaccessible);
  EXPECT_EQ(lock.number(), ELOOP);
  EXPECT_TRUE(fs::is_symlink(name));
}

TEST_F(LockFiles, DoNotWaitForTheReaderOfAPipe) {
  LockFile lock;
  take(lock);
  const std::string name = lock.path();
  lock.release();
  ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);

  EXPECT_EQ(take(lock), State::Inaccessible);
}

TEST_F(LockFiles, AreImpossibleWithoutTheFolder) {
  LockFile lock;

  lock.take((folder_ / "missing" / "p").string(), Kind::Change, 60s, {});

  EXPECT_EQ(lock.state(), State::CannotCreate);
  EXPECT_EQ(lock.number(), ENOENT);
}

}  // namespace
}  // namespace opc
