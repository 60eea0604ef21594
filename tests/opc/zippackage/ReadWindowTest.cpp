// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/ReadWindow.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "opc/Exception.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {
namespace {

using detail::ReadWindow;

/// What was read ahead shows when the file is cut.
class ReadWindows : public testing::Test {
 protected:
  std::string written() const {
    test::writeFile(folder_ / "file", content_);
    return (folder_ / "file").string();
  }
  void cut() { std::filesystem::resize_file(folder_ / "file", 0); }
  std::string at(std::uint64_t offset) {
    const Bytes bytes = window_.at(offset, kStep);
    return {bytes.begin(), bytes.end()};
  }
  std::string expectedAt(std::uint64_t offset) const { return content_.substr(offset, kStep); }

  static constexpr std::size_t kStep = 1000;

  test::TemporaryFolder folder_;
  std::string content_ = test::randomText(1000000);
  PackageFile file_{written()};
  ReadWindow window_{file_};
};

TEST_F(ReadWindows, ReadFurtherAheadWhenAFileIsReadSequentially) {
  for (std::uint64_t offset = 0; offset < 100000; offset += kStep) {
    ASSERT_EQ(at(offset), expectedAt(offset)) << offset;
  }

  cut();

  EXPECT_EQ(at(150000), expectedAt(150000));
}

TEST_F(ReadWindows, ReadLittleMoreThanASingleStretch) {
  EXPECT_EQ(at(500000), expectedAt(500000));

  cut();

  EXPECT_EQ(test::errorOf([&] { at(520000); }), "the file was cut while it was being read");
}

}  // namespace
}  // namespace opc::zippackage
