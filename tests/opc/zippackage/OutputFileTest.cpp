// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/OutputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "opc/Exception.h"
#include "opc/FileDescriptor.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {
namespace {

using detail::OutputFile;

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// Files that stretches of another one are copied to.
class OutputFiles : public testing::Test {
 protected:
  OutputFiles() : source_(test::randomText(3 * kMiB)) { test::writeFile(sourcePath(), source_); }

  std::string sourcePath() const { return (folder_ / "source").string(); }
  std::string path() const { return (folder_ / "output").string(); }

  FileDescriptor created(int flags = 0) const {
    return FileDescriptor(::open(path().c_str(), O_RDWR | O_CREAT | O_CLOEXEC | flags, 0600));
  }

  static void write(OutputFile& out, std::string_view text) {
    out.write({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
  }

  test::TemporaryFolder folder_;
  std::string source_;
};

TEST_F(OutputFiles, CopyStretchesThatCrossTheEndOfTheBuffer) {
  constexpr std::size_t kStretch = std::size_t{255} << 10;
  const PackageFile source(sourcePath());
  const FileDescriptor file = created();
  OutputFile out(file.get());
  std::string expected;

  for (std::size_t i = 0; i < 60; ++i) {
    out.copyFrom(source, i * 1000, kStretch, [](std::uint64_t) {});
    expected.append(source_, i * 1000, kStretch);
  }
  out.flush();

  EXPECT_TRUE(test::readFile(path()) == expected);
}

TEST_F(OutputFiles, ReportWhatIsCopiedFromTheFirstByteToTheLast) {
  const PackageFile source(sourcePath());
  const FileDescriptor file = created();
  for (const std::size_t offset : {0u, 1000u, 5000u}) {
    OutputFile out(file.get());
    std::vector<std::uint64_t> reports;

    write(out, source_.substr(0, 1000));
    out.copyFrom(source, offset, 2 * kMiB, [&](std::uint64_t done) { reports.push_back(done); });
    out.flush();

    ASSERT_FALSE(reports.empty());
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end())) << offset;
    EXPECT_EQ(reports.back(), 2 * kMiB) << offset;
    EXPECT_TRUE(test::readFile(path()) ==
                source_.substr(0, 1000) + source_.substr(offset, 2 * kMiB))
        << offset;
  }
}

// Else no file system could share the blocks.
TEST_F(OutputFiles, LetTheSystemCopyFromTheBeginningOfABlockOn) {
  const PackageFile source(sourcePath());
  const FileDescriptor file = created();
  OutputFile out(file.get());
  std::vector<std::uint64_t> reports;

  write(out, std::string(1000, 'x'));
  out.copyFrom(source, OutputFile::kBlock + 1000, 2 * kMiB,
               [&](std::uint64_t done) { reports.push_back(done); });

  ASSERT_FALSE(reports.empty());
  EXPECT_EQ(reports.front(), OutputFile::kBlock - 1000);
}

// As it refuses to for files that are only appended to.
TEST_F(OutputFiles, CopyByThemselvesWhatTheSystemRefusesToCopy) {
  const PackageFile source(sourcePath());
  const FileDescriptor file = created(O_APPEND);
  OutputFile out(file.get());
  std::uint64_t last = 0;

  write(out, "before");
  out.copyFrom(source, 10, 2 * kMiB, [&](std::uint64_t done) { last = done; });
  write(out, "behind");
  out.flush();

  EXPECT_EQ(last, 2 * kMiB);
  EXPECT_TRUE(test::readFile(path()) == "before" + source_.substr(10, 2 * kMiB) + "behind");
}

TEST_F(OutputFiles, NoticeThatTheOtherFileIsCutMeanwhile) {
  const PackageFile source(sourcePath());
  std::filesystem::resize_file(sourcePath(), kMiB);
  const FileDescriptor file = created();
  OutputFile out(file.get());
  ErrorCode code{};

  const std::string error =
      test::errorOf([&] { out.copyFrom(source, 0, 2 * kMiB, [](std::uint64_t) {}); }, &code);

  EXPECT_EQ(error, "the file was cut while it was being read");
  EXPECT_EQ(code, ErrorCode::Damaged);
}

}  // namespace
}  // namespace opc::zippackage
