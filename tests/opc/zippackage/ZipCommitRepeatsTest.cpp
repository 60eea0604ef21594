// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/opc/zippackage/ZipPackagesFixture.h"
#include "tests/support/Threads.h"

namespace opc::zippackage {
namespace {

using interfaces::OpenMode;

constexpr std::size_t kLarge = std::size_t{17} << 20;  // more than is packed in memory

/// What the streams of a file hold, one after the other; the last one again and again.
struct Content {
  std::vector<std::string> texts;
  std::size_t size = texts.front().size();  // that it declares
};

class ChangingSource final : public interfaces::IContentSource {
 public:
  explicit ChangingSource(Content content) : content_(std::move(content)) {}
  std::unique_ptr<InputStream> getInputStream() override {
    const std::size_t last = content_.texts.size() - 1;
    return std::make_unique<TextInputStream>(content_.texts[std::min(opened++, last)]);
  }
  std::uint64_t size() const override { return content_.size; }
  std::string description() const override { return "changing"; }

  std::size_t opened = 0;

 private:
  Content content_;
};

class Repeats : public ZipPackages {
 protected:
  /// Packs items with these contents, and returns how often the streams of all were opened.
  std::size_t pack(const std::vector<Content>& contents,
                   const interfaces::BackgroundStarter& starter = nullptr) {
    const auto package = opened(OpenMode::Create);
    std::vector<ChangingSource*> sources;
    for (const Content& content : contents) {
      auto source = std::make_unique<ChangingSource>(content);
      sources.push_back(source.get());
      package->addItem({.name = std::to_string(sources.size())}, std::move(source));
    }
    std::size_t opened = 0;
    WriteOptions options;
    options.timestamp = 0;
    options.background = starter;
    options.inspect = [&](const std::string&) {
      for (const ChangingSource* source : sources) opened += source->opened;
    };
    package->setWriteOptions(options);
    package->close(false);
    return opened;
  }

  std::vector<std::string> texts(std::size_t count) {
    const auto package = opened(OpenMode::Read);
    std::vector<std::string> found;
    for (std::size_t i = 1; i <= count; ++i) {
      found.push_back(test::textOf(*package, std::to_string(i)));
    }
    return found;
  }
};

class RepeatsWays : public Repeats, public testing::WithParamInterface<test::Starter> {};

TEST_P(RepeatsWays, OfAContentHaveDataOfTheirOwn) {
  const std::string text = test::packableText(300000);
  std::vector<Content> contents;
  for (std::size_t i = 0; i < 50; ++i) {
    contents.push_back({{i % 2 == 0 ? text : test::randomText(300000, unsigned(i % 3))}});
  }

  pack(contents, GetParam().starter);

  const auto found = texts(contents.size());
  for (std::size_t i = 0; i < contents.size(); ++i)
    EXPECT_TRUE(found[i] == contents[i].texts[0]) << i;
  EXPECT_EQ(python("z.testzip(), len(set(i.header_offset for i in z.infolist()))"), "None 50\n");
}

INSTANTIATE_TEST_SUITE_P(, RepeatsWays, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

// What does not pack is read twice; a copy of it only once, to see that it is one.
TEST_F(Repeats, OfALargeContentAreNotPackedAgain) {
  const std::string noise = test::randomText(kLarge);

  const std::size_t opened = pack({{{noise}}, {{noise}}, {{noise}}});

  EXPECT_EQ(opened, 2u + 1 + 1);
  for (const std::string& text : texts(3)) EXPECT_TRUE(text == noise);
}

TEST_F(Repeats, AreFoundAmongLargeContentsOfEqualSizes) {
  const std::string first = test::packableText(kLarge);
  std::string second = first;
  second[kLarge / 2] = '!';

  pack({{{first}}, {{second}}, {{first}}, {{second}}});

  const auto found = texts(4);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(found[i] == (i % 2 == 0 ? first : second)) << i;
}

TEST_F(Repeats, CountAsProgressOnceTheyAreWritten) {
  const std::string text(kLarge, 'x');
  const auto package = opened(OpenMode::Create);
  for (const char* name : {"1", "2"}) {
    package->addItem({.name = name}, std::make_unique<ChangingSource>(Content{{text}}));
  }
  std::set<std::uint64_t> reports;
  WriteOptions options;
  options.progress = [&](const interfaces::Progress& progress) {
    if (progress.bytesDone >= kLarge) reports.insert(progress.bytesDone);
  };
  package->setWriteOptions(options);

  package->close(false);

  EXPECT_EQ(reports, (std::set<std::uint64_t>{kLarge, 2 * kLarge}));
}

// What was read to look for it, and never packed, is not there to be repeated.
TEST_F(Repeats, AreNotTakenFromAFileThatChangedMeanwhile) {
  const std::string first(kLarge, 'a');
  const std::string second(kLarge, 'b');
  const std::string third(kLarge, 'c');

  pack({{{first}}, {{second, third}}, {{second}}, {{third}}});

  const auto found = texts(4);
  EXPECT_TRUE(found[0] == first);
  EXPECT_TRUE(found[1] == third);
  EXPECT_TRUE(found[2] == second);
  EXPECT_TRUE(found[3] == third);
}

// The same with a file that became small enough to be packed in memory.
TEST_F(Repeats, AreNotTakenFromAFileThatShrankMeanwhile) {
  const std::string large(kLarge, 'a');
  const std::string small(1000, 'b');
  const std::string other(1000, 'c');

  pack({{{large}}, {{small, other}, kLarge}, {{small}}, {{small}}, {{other}}});

  const auto found = texts(5);
  EXPECT_TRUE(found[0] == large);
  EXPECT_EQ(found[1], other);
  EXPECT_EQ(found[2], small);
  EXPECT_EQ(found[3], small);
  EXPECT_EQ(found[4], other);
}

TEST_F(Repeats, AreFoundWhenFilesAreAdded) {
  const std::string noise = test::randomText(kLarge);
  pack({{{"old"}}});
  const auto package = opened(OpenMode::Modify);
  auto source = std::make_unique<ChangingSource>(Content{{noise, noise, "changed"}});
  auto copy = std::make_unique<ChangingSource>(Content{{noise, "changed"}});
  package->addItem({.name = "2"}, std::move(source));
  package->addItem({.name = "3"}, std::move(copy));

  package->close(false);

  const auto found = texts(3);
  EXPECT_EQ(found[0], "old");
  EXPECT_TRUE(found[1] == noise);
  EXPECT_TRUE(found[2] == noise);
}

}  // namespace
}  // namespace opc::zippackage
