// SPDX-License-Identifier: MIT
#include "opc/zippackage/PackageFile.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "opc/Exception.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {
namespace {

TEST(PackageFile, ReadsUpToItsEndAndNotBeyond) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "p", "12345");
  const PackageFile file((folder / "p").string());
  std::array<unsigned char, 8> bytes{};

  file.readAt(3, bytes.data(), 2);
  file.readAt(5, bytes.data(), 0);

  EXPECT_EQ(bytes[0], '4');
  EXPECT_EQ(bytes[1], '5');
  for (const std::uint64_t offset : {std::uint64_t{4}, std::uint64_t{6}, UINT64_MAX}) {
    ErrorCode code{};
    EXPECT_EQ(test::errorOf([&] { file.readAt(offset, bytes.data(), 2); }, &code),
              "the file ends before the data that it declares");
    EXPECT_EQ(code, ErrorCode::Damaged);
  }
}

}  // namespace
}  // namespace opc::zippackage
