// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/KnownContents.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/opc/zippackage/PackageFixture.h"

namespace opc::zippackage {
namespace {

using detail::KnownContents;
using detail::PackJob;
using Size = KnownContents::Size;

std::vector<Size> sizesOf(const std::vector<PackJob>& jobs) {
  const KnownContents known(jobs, false);
  std::vector<Size> sizes;
  for (std::size_t job = 0; job < jobs.size(); ++job) sizes.push_back(known.sizeOf(job));
  return sizes;
}

TEST(KnownContents, MayRepeatOnlyWhereSizeAndLevelDo) {
  test::TextSource five("12345");
  test::TextSource six("123456");
  test::TextSource seven("1234567");

  EXPECT_EQ(sizesOf({{&six, 6}, {&seven, 6}, {&six, 6}, {&six, 9}, {&five, 6}, {&six, 6}}),
            (std::vector{Size::First, Size::Alone, Size::Repeated, Size::Alone, Size::Alone,
                         Size::Repeated}));
}

TEST(KnownContents, DoNotRepeatInJobsThatAreStoredOrEmpty) {
  test::TextSource text("12345");
  test::TextSource empty("");
  const std::vector<PackJob> packed(20, {&text, 6});
  std::vector<PackJob> others(20, {&empty, 6});
  others[0] = {&text, 6};
  others[1] = {&text, 0};

  const KnownContents known(packed, false);
  const KnownContents ofOthers(others, false);

  EXPECT_EQ(known.sizeOf(0), Size::First);
  EXPECT_EQ(known.sizeOf(19), Size::Repeated);
  for (std::size_t job = 0; job < others.size(); ++job) {
    EXPECT_EQ(ofOthers.sizeOf(job), Size::Alone) << job;
  }
}

}  // namespace
}  // namespace opc::zippackage
