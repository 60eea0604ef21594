// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/ReadAhead.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "opc/Exception.h"
#include "tests/support/MemoryPhysicalPackage.h"
#include "tests/support/Threads.h"

namespace {

using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::PartId;
using opc::plservices::detail::PartReader;
using opc::plservices::detail::ReadAhead;

const char* const kContentTypes =
    "<Types xmlns='http://schemas.openxmlformats.org/package/2006/content-types'>"
    "<Default Extension='m' ContentType='text/plain'/></Types>";

class ReadAheadWays : public testing::TestWithParam<test::Starter> {
 protected:
  ReadAheadWays() { disk_.add("[Content_Types].xml", kContentTypes); }

  void add(const std::string& text) {
    disk_.add("p" + std::to_string(texts_.size()) + ".m", text);
    texts_.push_back(text);
  }

  void open() {
    package_.open(OpenMode::Read);
    package_.visitParts("p", [this](PartId part) { parts_.push_back(part); });
  }

  ReadAhead reader() { return {PartReader(package_, parts_), GetParam().starter}; }

  static std::string readPart(ReadAhead& reader) {
    std::string text;
    for (;;) {
      const auto block = reader.read();
      text.append(block.data.begin(), block.data.end());
      if (block.isLast) return text;
    }
  }

  test::MemoryDisk disk_;
  test::MemoryPhysicalPackage physical_{disk_};
  Package package_{physical_, true};
  std::vector<std::string> texts_;
  std::vector<PartId> parts_;
};

TEST_P(ReadAheadWays, EveryPartComesWholeAndInOrder) {
  for (std::size_t i = 0; i < 2000; ++i)
    add(std::string(i * 37 % 9000, static_cast<char>('a' + i % 26)));
  open();
  ReadAhead ahead = reader();

  for (const std::string& text : texts_) {
    const auto block = ahead.read();

    ASSERT_EQ(std::string(block.data.begin(), block.data.end()), text);
    ASSERT_EQ(block.info.size, text.size());
    ASSERT_TRUE(block.isLast);
  }
}

TEST_P(ReadAheadWays, ALargePartComesInBlocks) {
  add("before");
  add(std::string((std::size_t{40} << 20) + 7, 'x'));
  add("after");
  open();
  ReadAhead ahead = reader();

  EXPECT_EQ(readPart(ahead), texts_[0]);
  const auto first = ahead.read();
  EXPECT_FALSE(first.isLast);
  const std::size_t firstSize = first.data.size();
  EXPECT_LE(firstSize, std::size_t{1} << 20);
  EXPECT_EQ(readPart(ahead).size(), texts_[1].size() - firstSize);
  EXPECT_EQ(readPart(ahead), texts_[2]);
}

TEST_P(ReadAheadWays, StoppingInTheMiddleWaitsForNothing) {
  for (int i = 0; i < 100; ++i) add(std::string(std::size_t{1} << 20, 'x'));
  open();
  auto ahead = std::make_unique<ReadAhead>(PartReader(package_, parts_), GetParam().starter);

  ahead->read();
  ahead.reset();

  EXPECT_TRUE(package_.isOpen());
}

TEST_P(ReadAheadWays, AFailureComesAfterThePartsBeforeIt) {
  add("sound");
  add("gone");
  open();
  parts_.insert(parts_.begin() + 1, PartId{4711});
  ReadAhead ahead = reader();

  EXPECT_EQ(readPart(ahead), "sound");
  EXPECT_THROW(ahead.read(), opc::Exception);
}

INSTANTIATE_TEST_SUITE_P(, ReadAheadWays, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
