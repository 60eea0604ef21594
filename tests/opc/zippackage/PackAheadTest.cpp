// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PackAhead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "opc/Exception.h"
#include "tests/support/Threads.h"

namespace {

using opc::zippackage::kStored;
using opc::zippackage::kWholeLimit;
using opc::zippackage::WholeInflater;
using opc::zippackage::detail::KnownContents;
using opc::zippackage::detail::PackAhead;
using opc::zippackage::detail::PackedItem;
using opc::zippackage::detail::PackJob;

class TextSource final : public opc::interfaces::IContentSource {
 public:
  explicit TextSource(std::string text) : text_(std::move(text)) {}
  std::unique_ptr<opc::InputStream> getInputStream() override {
    if (text_ == "unreadable") throw opc::SystemError("cannot open 'unreadable'", EACCES);
    ++opened;
    return std::make_unique<opc::MemoryInputStream>(
        reinterpret_cast<const unsigned char*>(text_.data()), text_.size());
  }
  std::uint64_t size() const override { return text_.size(); }
  std::string description() const override { return "text"; }

  static inline std::atomic<int> opened = 0;

 private:
  std::string text_;
};

using Sources = std::vector<std::unique_ptr<TextSource>>;

Sources makeSources(const std::vector<std::string>& texts) {
  Sources sources;
  for (const std::string& text : texts) sources.push_back(std::make_unique<TextSource>(text));
  return sources;
}

std::vector<PackJob> jobsOf(const Sources& sources) {
  std::vector<PackJob> jobs;
  for (const auto& source : sources) jobs.push_back({source.get(), 6});
  return jobs;
}

// Texts of all kinds and sizes, far more than may wait at once.
std::vector<std::string> manyTexts() {
  std::mt19937 random(7);
  std::vector<std::string> texts;
  for (int i = 0; i < 3000; ++i) {
    std::string text(random() % 4000, 'a');
    const auto letters = 1 + random() % 255;
    for (char& c : text) c = static_cast<char>(random() % letters);
    texts.push_back(std::move(text));
  }
  texts[10] = std::string(std::size_t{3} << 20, 'x');
  texts[20].clear();
  return texts;
}

class PackAheadWays : public testing::TestWithParam<test::Starter> {
 protected:
  PackAhead& pack(const Sources& sources) {
    known_ =
        std::make_unique<KnownContents>(jobsOf(sources), static_cast<bool>(GetParam().starter));
    packer_ = std::make_unique<PackAhead>(jobsOf(sources), *known_, test_, GetParam().starter);
    return *packer_;
  }

  opc::interfaces::PackedContents::Test test_;
  std::unique_ptr<KnownContents> known_;
  std::unique_ptr<PackAhead> packer_;
};

std::string unpacked(const PackedItem& item) {
  std::string text(item.size, '\0');
  if (item.method == kStored) return {item.data.begin(), item.data.end()};
  WholeInflater().unpack(item.data, reinterpret_cast<unsigned char*>(text.data()), text.size());
  return text;
}

TEST_P(PackAheadWays, ItemsComeInOrderAndUnpackToWhatTheyWere) {
  const std::vector<std::string> texts = manyTexts();
  const Sources sources = makeSources(texts);
  PackAhead& packer = pack(sources);

  for (std::size_t i = 0; i < texts.size(); ++i) {
    const auto item = packer.take();

    ASSERT_TRUE(item.has_value()) << i;
    ASSERT_EQ(unpacked(*item), texts[i]) << i;
  }
}

TEST_P(PackAheadWays, AnItemThatIsTooLargeIsLeftToTheCallerUnread) {
  const Sources sources = makeSources({"before", std::string(kWholeLimit + 1, 'x'), "after"});
  PackAhead& packer = pack(sources);
  TextSource::opened = 0;

  const bool isFirstWhole = packer.take().has_value();
  const bool isSecondWhole = packer.take().has_value();
  const auto third = packer.take();

  EXPECT_TRUE(isFirstWhole);
  EXPECT_FALSE(isSecondWhole);
  ASSERT_TRUE(third.has_value());
  EXPECT_EQ(unpacked(*third), "after");
}

TEST_P(PackAheadWays, AFailureComesWithTheItemThatFailedAndNotBefore) {
  const Sources sources = makeSources({"one", "unreadable", "three"});
  PackAhead& packer = pack(sources);

  const auto first = packer.take();

  ASSERT_TRUE(first.has_value());
  EXPECT_EQ(unpacked(*first), "one");
  EXPECT_THROW(packer.take(), opc::SystemError);
  EXPECT_EQ(unpacked(packer.take().value()), "three");
}

TEST_P(PackAheadWays, StoppingInTheMiddleWaitsForNothing) {
  const Sources sources = makeSources(manyTexts());
  PackAhead& packer = pack(sources);

  for (int i = 0; i < 100; ++i) packer.take();
  packer_.reset();

  EXPECT_EQ(packer_, nullptr);
}

// Twice as many as wait at once, so that no two threads pack the first and its copy together.
TEST_P(PackAheadWays, AContentIsPackedOnce) {
  std::vector<std::string> texts = manyTexts();
  const std::size_t half = texts.size();
  texts.insert(texts.end(), texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(half));
  const Sources sources = makeSources(texts);
  PackAhead& packer = pack(sources);
  std::map<std::uint32_t, std::string> contents;
  std::size_t packed = 0;

  for (const std::string& text : texts) {
    const auto item = packer.take().value();

    const bool isRepeated = item.content && !item.content->isFirst;
    packed += isRepeated || text.empty() ? 0 : 1;
    if (isRepeated) {
      ASSERT_EQ(item.data.size(), 0u);
      ASSERT_EQ(contents.at(item.content->number), text);
    } else if (item.content) {
      contents[item.content->number] = unpacked(item);
    }
  }

  EXPECT_EQ(packed, std::set<std::string>(texts.begin(), texts.end()).size() - 1);
}

TEST_P(PackAheadWays, ContentsOfEqualSizesAreToldApart) {
  std::vector<std::string> texts;
  for (char letter = 'a'; letter <= 'z'; ++letter) texts.emplace_back(1000, letter);
  const Sources sources = makeSources(texts);
  PackAhead& packer = pack(sources);

  for (const std::string& text : texts) EXPECT_EQ(unpacked(packer.take().value()), text);
}

TEST_P(PackAheadWays, OnlySoMuchIsPackedBeforeItIsWanted) {
  const std::vector<std::string> texts(200, std::string(std::size_t{1} << 20, 'x'));
  const Sources sources = makeSources(texts);
  TextSource::opened = 0;
  PackAhead& packer = pack(sources);

  packer.take();
  std::this_thread::sleep_for(std::chrono::milliseconds(300));

  EXPECT_LE(TextSource::opened, 40);
}

INSTANTIATE_TEST_SUITE_P(, PackAheadWays, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
