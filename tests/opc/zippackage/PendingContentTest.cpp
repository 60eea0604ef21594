// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PendingContent.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::zippackage {
namespace {

using detail::PendingContent;
using detail::PendingStore;

constexpr std::size_t kMiB = 1024 * 1024;

Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string contentOf(PendingContent& content, std::size_t block = 100000) {
  const auto stream = content.getInputStream();
  std::string text;
  std::string piece(block, '\0');
  while (!stream->isEnd()) {
    text.append(piece, 0,
                stream->read(reinterpret_cast<unsigned char*>(piece.data()), piece.size()));
  }
  return text;
}

bool hasFiles(const test::TemporaryFolder& folder) {
  return !std::filesystem::is_empty(folder.path());
}

class PendingContents : public testing::Test {
 protected:
  test::TemporaryFolder folder_;
  PendingStore store_{folder_.path().string()};
};

TEST_F(PendingContents, BeginEmpty) {
  PendingContent content(store_, "a");

  EXPECT_EQ(content.size(), 0u);
  EXPECT_TRUE(content.getInputStream()->isEnd());
}

TEST_F(PendingContents, HoldWhatWasAppended) {
  PendingContent content(store_, "a");

  content.append(bytesOf("one "));
  content.append({});
  content.append(bytesOf("two"));

  EXPECT_EQ(content.size(), 7u);
  EXPECT_EQ(contentOf(content, 3), "one two");
}

TEST_F(PendingContents, BeyondMemoryComeBackFromTheFile) {
  const std::string text = test::randomText(3 * kMiB + 77);
  PendingContent content(store_, "a");
  std::string expected;
  for (int i = 0; i < 8; ++i) {
    content.append(bytesOf(text));
    content.append(bytesOf("odd bytes"));
    expected += text + "odd bytes";
  }

  EXPECT_EQ(content.size(), expected.size());
  EXPECT_TRUE(contentOf(content) == expected);
  EXPECT_FALSE(hasFiles(folder_)) << "the file has no name";
}

TEST_F(PendingContents, WrittenInTurnsDoNotMix) {
  PendingContent first(store_, "a");
  PendingContent second(store_, "b");
  std::string expectedFirst;
  std::string expectedSecond;
  for (unsigned i = 0; i < 30; ++i) {
    const std::string a = test::randomText(kMiB + i, i);
    const std::string b = test::randomText(kMiB / 2 + i * 3, i + 100);
    first.append(bytesOf(a));
    second.append(bytesOf(b));
    expectedFirst += a;
    expectedSecond += b;
  }

  EXPECT_TRUE(contentOf(first) == expectedFirst);
  EXPECT_TRUE(contentOf(second) == expectedSecond);
}

TEST_F(PendingContents, InOneLargePieceComeBack) {
  const std::string text = test::randomText(20 * kMiB);
  PendingContent content(store_, "a");

  content.append(bytesOf("x"));
  content.append(bytesOf(text));

  EXPECT_TRUE(contentOf(content) == "x" + text);
}

TEST_F(PendingContents, ThatAreClearedBeginAgain) {
  PendingContent content(store_, "a");
  content.append(bytesOf(std::string(20 * kMiB, 'x')));

  content.clear();
  content.append(bytesOf("new"));

  EXPECT_EQ(contentOf(content), "new");
}

TEST_F(PendingContents, ManyOfMediumSizeDoNotStayInMemory) {
  const std::string text(5 * kMiB, 'x');
  std::vector<std::unique_ptr<PendingContent>> contents;
  for (int i = 0; i < 30; ++i) {
    contents.push_back(std::make_unique<PendingContent>(store_, "a"));
    contents.back()->append(bytesOf(text));
    contents.back()->append(bytesOf(std::to_string(i)));
  }

  EXPECT_LT(store_.inMemory(), 70 * kMiB);
  for (int i = 0; i < 30; ++i) {
    EXPECT_TRUE(contentOf(*contents[std::size_t(i)]) == text + std::to_string(i)) << i;
  }
}

TEST_F(PendingContents, ManyOfSmallSizeDoNotStayInMemory) {
  const std::string text = test::randomText(900000);
  std::vector<std::unique_ptr<PendingContent>> contents;
  std::size_t most = 0;
  for (int i = 0; i < 150; ++i) {
    contents.push_back(std::make_unique<PendingContent>(store_, "a"));
    contents.back()->append(bytesOf(std::to_string(i)));
    contents.back()->append(bytesOf(text));
    most = std::max(most, store_.inMemory());
  }

  EXPECT_LT(most, 70 * kMiB);
  for (std::size_t i = 0; i < contents.size(); i += 10) {
    EXPECT_TRUE(contentOf(*contents[i]) == std::to_string(i) + text) << i;
  }
}

TEST_F(PendingContents, OfAFewBytesDoNotStayInMemoryHoweverManyTheyAre) {
  constexpr std::size_t kLimit = 100000;
  PendingStore store(folder_.path().string(), kLimit);
  std::vector<std::unique_ptr<PendingContent>> contents;
  std::size_t most = 0;
  for (int i = 0; i < 20000; ++i) {
    contents.push_back(std::make_unique<PendingContent>(store, "a"));
    contents.back()->append(bytesOf(std::to_string(i) + " and more"));
    most = std::max(most, store.inMemory());
  }

  EXPECT_LT(most, kLimit + 1000);
  for (std::size_t i = 0; i < contents.size(); i += 777) {
    EXPECT_EQ(contentOf(*contents[i]), std::to_string(i) + " and more");
  }
}

TEST_F(PendingContents, WrittenInTurnsWhileMemoryIsShortDoNotMix) {
  constexpr std::size_t kLimit = 50000;
  PendingStore store(folder_.path().string(), kLimit);
  std::vector<std::unique_ptr<PendingContent>> contents;
  for (int i = 0; i < 20; ++i) contents.push_back(std::make_unique<PendingContent>(store, "a"));
  std::vector<std::string> expected(contents.size());
  for (unsigned turn = 0; turn < 400; ++turn) {
    const std::size_t at = turn * 7 % contents.size();
    const std::string piece = test::randomText(500 + turn * 3, turn);
    contents[at]->append(bytesOf(piece));
    expected[at] += piece;
  }

  EXPECT_LT(store.inMemory(), kLimit + 10000);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    EXPECT_TRUE(contentOf(*contents[i]) == expected[i]) << i;
  }
}

TEST_F(PendingContents, ThatAreGoneNoLongerCount) {
  PendingStore store(folder_.path().string(), 1000);
  {
    PendingContent first(store, "a");
    first.append(bytesOf(std::string(3000, 'x')));
    EXPECT_GE(store.inMemory(), 3000u);
  }
  EXPECT_EQ(store.inMemory(), 0u);

  PendingContent second(store, "b");
  second.append(bytesOf("text"));

  EXPECT_EQ(contentOf(second), "text");
}

TEST_F(PendingContents, SpillToTheDiskAfterTheGrowingOneIsGone) {
  PendingStore store(folder_.path().string(), 1000);
  PendingContent first(store, "a");
  first.append(bytesOf(std::string(3000, 'x')));
  { const PendingContent gone(store, "b"); }
  PendingContent next(store, "c");

  next.append(bytesOf("text"));

  EXPECT_LT(store.inMemory(), 1000u);
  EXPECT_EQ(contentOf(first), std::string(3000, 'x'));
  EXPECT_EQ(contentOf(next), "text");
}

TEST_F(PendingContents, FailWithoutAFolderToSpillInto) {
  PendingStore store((folder_ / "missing").string());
  PendingContent content(store, "a");

  const std::string error =
      test::errorOf([&] { content.append(bytesOf(std::string(17 * kMiB, 'x'))); });

  EXPECT_EQ(error, "cannot make a temporary file in '" + (folder_ / "missing").string() +
                       "': No such file or directory");
}

}  // namespace
}  // namespace opc::zippackage
