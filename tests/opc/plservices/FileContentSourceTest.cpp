// SPDX-License-Identifier: MIT
#include "opc/plservices/FileContentSource.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "opc/Exception.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using opc::plservices::FileContentSource;
using opc::plservices::FileFacts;
using testing::HasSubstr;

std::string readAll(opc::InputStream& stream, std::size_t block) {
  std::string text;
  std::string buffer(block, '\0');
  while (const std::size_t count =
             stream.read(reinterpret_cast<unsigned char*>(buffer.data()), block)) {
    text.append(buffer, 0, count);
  }
  return text;
}

template <typename... Facts>
std::string errorOf(const std::string& path, const Facts&... facts) {
  try {
    const FileContentSource source(path, facts...);
  } catch (const opc::Exception& error) {
    return error.what();
  }
  return "no error";
}

TEST(FileContentSource, KnowsSizeTimeAndExecutableBit) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "run.sh", "12345");
  const struct timespec times[2] = {{0, 0}, {1'234'567'890, 500'000'000}};
  ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "run.sh").c_str(), times, 0), 0);
  ASSERT_EQ(::chmod((folder / "run.sh").c_str(), 0700), 0);

  const FileContentSource source((folder / "run.sh").string());

  EXPECT_EQ(source.size(), 5u);
  EXPECT_EQ(source.modified(), 1'234'567'890);
  EXPECT_TRUE(source.executable());
  EXPECT_EQ(source.description(), (folder / "run.sh").string());
}

TEST(FileContentSource, AFileThatOnlyOthersMayExecuteIsNotExecutable) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "");
  ASSERT_EQ(::chmod((folder / "a").c_str(), 0611), 0);

  EXPECT_FALSE(FileContentSource((folder / "a").string()).executable());
}

TEST(FileContentSource, AStreamGivesTheBytesOfTheMoment) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "old");
  FileContentSource source((folder / "a").u16string());
  test::writeFile(folder / "a", "new and longer");

  const auto stream = source.getInputStream();

  EXPECT_EQ(readAll(*stream, 4), "new and longer");
}

TEST(FileContentSource, LookingForTheEndLosesNothing) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "xy");
  FileContentSource source((folder / "a").string());
  const auto stream = source.getInputStream();

  EXPECT_FALSE(stream->isEnd());
  EXPECT_FALSE(stream->isEnd());
  EXPECT_EQ(readAll(*stream, 10), "xy");
  EXPECT_TRUE(stream->isEnd());
}

TEST(FileContentSource, ReadingNoBytesReturnsNone) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "xy");
  FileContentSource source((folder / "a").string());
  const auto stream = source.getInputStream();
  unsigned char byte = 0;

  EXPECT_FALSE(stream->isEnd());
  EXPECT_EQ(stream->read(&byte, 0), 0u);
  EXPECT_EQ(readAll(*stream, 10), "xy");
}

TEST(FileContentSource, WhatIsAppendedAfterTheEndWasReadIsNotPartOfTheFile) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "xy");
  FileContentSource source((folder / "a").string());
  const auto stream = source.getInputStream();
  unsigned char bytes[10];
  ASSERT_EQ(stream->read(bytes, sizeof bytes), 2u);
  test::writeFile(folder / "a", "xyz");

  EXPECT_EQ(stream->read(bytes, sizeof bytes), 0u);
}

TEST(FileContentSource, AStreamOutlivesItsSource) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "kept");
  auto source = std::make_unique<FileContentSource>((folder / "a").string());
  const auto stream = source->getInputStream();
  source.reset();

  EXPECT_EQ(readAll(*stream, 3), "kept");
}

TEST(FileContentSource, ALinkStandsForItsTarget) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "123");
  std::filesystem::create_symlink("a", folder / "link");

  EXPECT_EQ(FileContentSource((folder / "link").string()).size(), 3u);
}

TEST(FileContentSource, AMissingFileIsNamedWithTheReason) {
  test::TemporaryFolder folder;

  EXPECT_EQ(errorOf((folder / "gone").string()),
            "cannot open '" + (folder / "gone").string() + "': No such file or directory");
}

TEST(FileContentSource, AFolderIsRefused) {
  test::TemporaryFolder folder;

  EXPECT_THAT(errorOf(folder.path().string()), HasSubstr("it is a folder"));
}

TEST(FileContentSource, APipeIsRefusedWithoutWaitingForItsWriter) {
  test::TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);

  EXPECT_THAT(errorOf((folder / "pipe").string()), HasSubstr("no regular file"));
}

TEST(FileContentSource, AnUnreadableFileIsRefused) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads everything";
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "x");
  ASSERT_EQ(::chmod((folder / "a").c_str(), 0), 0);

  EXPECT_THAT(errorOf((folder / "a").string()), HasSubstr("Permission denied"));
}

TEST(FileContentSource, OfKnownFactsKeepsThem) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "123");
  FileFacts facts;
  facts.size = 7;
  facts.modified = 1000;
  facts.executable = true;

  const FileContentSource source((folder / "a").string(), facts);

  EXPECT_EQ(source.size(), 7u);
  EXPECT_EQ(source.modified(), 1000);
  EXPECT_TRUE(source.executable());
}

TEST(FileContentSource, OfKnownFactsRefusesWhatCannotBeOpened) {
  test::TemporaryFolder folder;
  const std::string gone = (folder / "gone").string();

  EXPECT_EQ(errorOf(gone, FileFacts()), "cannot open '" + gone + "': No such file or directory");
}

TEST(FileContentSource, APathWithANulIsRefusedRatherThanCutOff) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "x");

  EXPECT_THAT(errorOf((folder / "a").string() + std::string(1, '\0') + "b"), HasSubstr("NUL"));
}

TEST(FileContentSource, AFileThatIsGoneWhenItIsReadIsNamed) {
  test::TemporaryFolder folder;
  test::writeFile(folder / "a", "x");
  FileContentSource source((folder / "a").string());
  std::filesystem::remove(folder / "a");

  try {
    source.getInputStream();
    FAIL() << "read";
  } catch (const opc::Exception& error) {
    EXPECT_THAT(error.what(), HasSubstr((folder / "a").string()));
  }
}

}  // namespace
