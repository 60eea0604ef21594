// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ZipCommit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/CommitsFixture.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

namespace fs = std::filesystem;
using interfaces::OpenMode;
using test::TextSource;

TEST_F(Commits, PutTheNewPackageInPlaceAndLeaveNothingElse) {
  const auto holder = changed();
  auto& package = *holder;

  package.close(false);

  EXPECT_FALSE(package.isOpen());
  EXPECT_EQ(filesInFolder(), 1u);
  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "a.txt"), "first");
  EXPECT_EQ(test::textOf(package, "new.txt"), "new content");
}

TEST_F(Commits, ShowTheNewFileBeforeItTakesItsPlace) {
  const auto holder = changed();
  const std::string before = bytes();
  std::string seen;
  WriteOptions options;
  options.inspect = [&](const std::string& file) {
    EXPECT_EQ(bytes(), before);
    auto package = test::packageAt(file);
    package.open(OpenMode::Read);
    seen = test::textOf(package, "new.txt");
  };
  holder->setWriteOptions(options);

  holder->close(false);

  EXPECT_EQ(seen, "new content");
  EXPECT_NE(bytes(), before);
}

TEST_F(Commits, ThatAreRefusedWhenTheNewFileIsShownChangeNothing) {
  const auto holder = changed();
  WriteOptions options;
  options.inspect = [](const std::string&) {
    throw Exception(ErrorCode::InvalidPackage, "it is not good enough");
  };
  holder->setWriteOptions(options);

  const std::string error = failureOf(*holder);

  EXPECT_EQ(error, "cannot write package '" + path().string() + "': it is not good enough");
}

TEST_F(Commits, ThatAreDiscardedChangeNothing) {
  const std::string before = bytes();
  const auto holder = changed();
  auto& package = *holder;

  package.close(true);

  EXPECT_FALSE(package.isOpen());
  EXPECT_EQ(bytes(), before);
  EXPECT_EQ(filesInFolder(), 1u);
}

TEST_F(Commits, WithoutAChangeDoNotTouchTheFile) {
  struct stat before {};
  ::stat(path().c_str(), &before);
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  package.removeItem(test::addText(package, {.name = "gone.txt"}, "never written"));

  package.close(false);

  struct stat after {};
  ::stat(path().c_str(), &after);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(Commits, FailWithASourceThatThrows) {
  for (const std::size_t size : {100u, 20000000u}) {
    auto package = test::packageAt(path());
    package.open(OpenMode::Modify);
    auto source = std::make_unique<TextSource>(std::string(size, 'x'));
    source->calling([size](std::size_t at) {
      if (at >= size / 2) throw SystemError("cannot read 'some file'", EIO);
    });
    package.addItem({.name = "x"}, std::move(source));

    EXPECT_EQ(failureOf(package), "cannot write package '" + path().string() +
                                      "': cannot read 'some file': Input/output error");
  }
}

TEST_F(Commits, EndWithWhatTheProgressFunctionThrows) {
  const std::string before = bytes();
  const auto holder = changed();
  auto& package = *holder;
  WriteOptions options;
  options.progress = [](const interfaces::Progress& progress) {
    if (progress.itemsDone > 2) throw std::runtime_error("interrupted");
  };
  package.setWriteOptions(options);

  EXPECT_THROW(package.close(false), std::runtime_error);

  EXPECT_EQ(bytes(), before);
  EXPECT_EQ(filesInFolder(), 1u);
  EXPECT_TRUE(package.isOpen());
}

TEST_F(Commits, ThatFailedCanBeTriedAgain) {
  const auto holder = changed();
  auto& package = *holder;
  bool fails = true;
  auto source = std::make_unique<TextSource>("text");
  source->calling([&](std::size_t) {
    if (fails) throw SystemError("cannot read", EIO);
  });
  package.addItem({.name = "x"}, std::move(source));
  failureOf(package);
  fails = false;

  package.close(false);

  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "new.txt"), "new content");
  EXPECT_EQ(test::textOf(package, "x"), "text");
}

TEST_F(Commits, ReportTheirProgressToTheEnd) {
  std::vector<interfaces::Progress> reports;
  const auto holder = changed();
  auto& package = *holder;
  WriteOptions options;
  options.progress = [&](const interfaces::Progress& progress) { reports.push_back(progress); };
  package.setWriteOptions(options);

  package.close(false);

  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.back().itemsTotal, 3u);
  EXPECT_EQ(reports.back().itemsDone, 3u);
  EXPECT_EQ(reports.back().bytesTotal, 5u + 3000 + 11);
  EXPECT_EQ(reports.back().bytesDone, 5u + 3000 + 11);
  for (std::size_t i = 1; i < reports.size(); ++i) {
    EXPECT_GE(reports[i].bytesDone, reports[i - 1].bytesDone);
  }
}

TEST_F(Commits, ReportNoStepBackWhenAnItemIsReadTwice) {
  const auto holder = changed();
  test::addText(*holder, {.name = "x"}, test::randomText(18000000));
  WriteOptions options;
  std::uint64_t reached = 0;
  options.progress = [&](const interfaces::Progress& progress) {
    EXPECT_GE(progress.bytesDone, reached);
    reached = progress.bytesDone;
  };
  holder->setWriteOptions(options);

  holder->close(false);

  EXPECT_EQ(reached, 18000000u + 5 + 3000 + 11);
}

TEST_F(Commits, EndWithinALargeItemWhenTheProgressFunctionThrows) {
  const std::string before = bytes();
  const auto holder = changed();
  holder->addItem({.name = "x"}, std::make_unique<TextSource>(test::packableText(18000000)));
  WriteOptions options;
  std::uint64_t reached = 0;
  options.progress = [&](const interfaces::Progress& progress) {
    reached = progress.bytesDone;
    if (reached > 10000000) throw std::runtime_error("interrupted");
  };
  holder->setWriteOptions(options);

  EXPECT_THROW(holder->close(false), std::runtime_error);

  EXPECT_LT(reached, 12000000u);
  EXPECT_EQ(bytes(), before);
  EXPECT_EQ(filesInFolder(), 1u);
}

TEST_F(Commits, NeverOverwriteAFileThatSomebodyElsePutThere) {
  const auto holder = changed();
  auto& package = *holder;
  test::makePackage(folder_ / "other", {"x", "y"});
  fs::rename(folder_ / "other", path());
  ErrorCode code{};

  EXPECT_EQ(failureOf(package, &code),
            "cannot write package '" + path().string() + "': it was replaced since it was opened");
  EXPECT_EQ(code, ErrorCode::ChangedOnDisk);
}

TEST_F(Commits, NeverOverwriteAFileThatWasWrittenTo) {
  const auto holder = changed();
  auto& package = *holder;
  test::writeFile(path(), bytes() + "\n");
  ErrorCode code{};

  EXPECT_EQ(failureOf(package, &code),
            "cannot write package '" + path().string() + "': it was changed since it was opened");
  EXPECT_EQ(code, ErrorCode::ChangedOnDisk);
}

TEST_F(Commits, NoticeAWriteThatKeepsTheSize) {
  const auto holder = changed();
  auto& package = *holder;
  std::string other = bytes();
  other[35] = 'F';
  test::writeFile(path(), other);
  ErrorCode code{};

  failureOf(package, &code);

  EXPECT_EQ(code, ErrorCode::ChangedOnDisk);
}

TEST_F(Commits, DoNotBringBackAFileThatWasRemoved) {
  const auto holder = changed();
  auto& package = *holder;
  fs::remove(path());
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { package.close(false); }, &code),
            "cannot write package '" + path().string() + "': it was removed since it was opened");

  EXPECT_EQ(code, ErrorCode::ChangedOnDisk);
  EXPECT_EQ(filesInFolder(), 0u);
}

TEST_F(Commits, OfSeveralThreadsAreInThePackageOrFail) {
  std::atomic<int> succeeded = 0;
  const auto work = [&](int thread) {
    for (int turn = 0; turn < 20; ++turn) {
      auto package = test::packageAt(path());
      package.open(OpenMode::Modify);
      test::addText(package, {.name = std::to_string(thread) + "-" + std::to_string(turn)}, "x");
      if (test::errorOf([&] { package.close(false); }).empty()) ++succeeded;
    }
  };

  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int thread = 0; thread < 4; ++thread) threads.emplace_back(work, thread);
  for (std::thread& thread : threads) thread.join();

  auto package = test::packageAt(path());
  package.open(OpenMode::Read);
  EXPECT_EQ(package.itemCount(), 2u + static_cast<std::size_t>(succeeded));
  EXPECT_GE(succeeded, 20);
  EXPECT_EQ(filesInFolder(), 1u);
}

TEST_F(Commits, FailWhenTheFileOutgrowsWhatIsAllowed) {
  auto package = test::packageAt(path());
  package.open(OpenMode::Modify);
  test::addText(package, {.name = "x"}, test::randomText(3000000));
  struct rlimit old {};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const struct rlimit small { 100000, old.rlim_max };
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);

  const std::string error = failureOf(package);

  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(error, "cannot write package '" + path().string() +
                       "': cannot write to a temporary file: File too large");
}

TEST_F(Commits, KeepASymbolicLinkAndReplaceWhatItNames) {
  fs::create_directory(folder_ / "real");
  fs::rename(path(), folder_ / "real" / "p");
  fs::create_symlink("real/p", path());

  changed()->close(false);

  EXPECT_TRUE(fs::is_symlink(path()));
  auto package = test::packageAt(folder_ / "real" / "p");
  package.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(package, "new.txt"), "new content");
  EXPECT_EQ(filesInFolder(), 2u);
}

TEST_F(Commits, NoticeThatALinkLeadsElsewhereMeanwhile) {
  fs::create_directory(folder_ / "real");
  fs::rename(path(), folder_ / "real" / "p");
  fs::copy_file(folder_ / "real" / "p", folder_ / "real" / "q");
  fs::create_symlink("real/p", path());
  const auto holder = changed();
  fs::remove(path());
  fs::create_symlink("real/q", path());
  ErrorCode code{};

  test::errorOf([&] { holder->close(false); }, &code);

  EXPECT_EQ(code, ErrorCode::ChangedOnDisk);
}

TEST_F(Commits, DoNotDependOnTheCurrentFolder) {
  const fs::path before = fs::current_path();
  fs::current_path(folder_.path());
  ZipPhysicalPackage package(path().filename().u16string(), true, u"");
  package.open(OpenMode::Modify);
  test::addText(package, {.name = "new.txt"}, "new content");
  fs::current_path("/");

  package.close(false);

  fs::current_path(before);
  auto again = test::packageAt(path());
  again.open(OpenMode::Read);
  EXPECT_EQ(test::textOf(again, "new.txt"), "new content");
}

TEST_F(Commits, OfANewPackageGoWhereADanglingLinkPoints) {
  fs::create_symlink("target", folder_ / "link");

  test::makePackage(folder_ / "link", {"a", "b"});

  EXPECT_TRUE(fs::is_symlink(folder_ / "link"));
  EXPECT_TRUE(fs::is_regular_file(folder_ / "target"));
}

TEST_F(Commits, ToALongNameFindATemporaryName) {
  const fs::path longest = folder_ / std::string(255, 'n');

  test::makePackage(longest, {"a", "b"});

  EXPECT_TRUE(fs::is_regular_file(longest));
  EXPECT_EQ(filesInFolder(), 2u);
}

TEST_F(Commits, DoNotReplaceAFileThatAppearedMeanwhile) {
  auto package = test::packageAt(folder_ / "new", false);
  package.open(OpenMode::Create);
  test::addText(package, {.name = "x"}, "y");
  test::writeFile(folder_ / "new", "precious");
  ErrorCode code{};

  EXPECT_EQ(test::errorOf([&] { package.close(false); }, &code),
            "cannot write package '" + (folder_ / "new").string() + "': it already exists");

  EXPECT_EQ(code, ErrorCode::AlreadyExists);
  EXPECT_EQ(test::readFile(folder_ / "new"), "precious");
  EXPECT_EQ(filesInFolder(), 2u);
}

}  // namespace
}  // namespace opc::zippackage
