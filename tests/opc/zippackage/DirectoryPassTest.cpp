// SPDX-License-Identifier: MIT
// Directories that are read in a shorter way than others have the same faults.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "opc/zippackage/ZipDirectory.h"
#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::directoryOf;
using test::extraField;
using test::le32;
using test::le64;
using test::ZipBuilder;

constexpr std::size_t kNameAt = 46;

// Kind, values and whether it is about an entry, of every fault.
using Faults = std::vector<std::tuple<ZipFaultKind, bool, std::uint64_t, std::uint64_t>>;

Faults faultsOf(const ZipDirectory& directory) {
  Faults faults;
  for (const ZipFault& fault : directory.faults()) {
    faults.emplace_back(fault.kind, fault.entry != kNoEntry, fault.first, fault.second);
  }
  return faults;
}

// Two dots in a row make a name one that is looked at in detail, and mean nothing here.
constexpr const char* kOrdinaryName = "abcd.txt";
constexpr const char* kOtherName = "a..d.txt";

struct Outcome {
  std::string refusal;
  Faults faults;
  std::vector<interfaces::ItemKind> kinds;

  bool operator==(const Outcome&) const = default;
};

Outcome outcomeOf(const std::string& bytes) {
  Outcome outcome;
  try {
    const ZipDirectory directory = directoryOf(bytes);
    outcome.faults = faultsOf(directory);
    for (const ZipEntry& entry : directory.entries()) outcome.kinds.push_back(entry.kind);
  } catch (const std::exception& e) {
    outcome.refusal = e.what();
  }
  return outcome;
}

std::string packageWith(const std::string& name, const std::string& extra, bool deflate) {
  ZipBuilder builder;
  builder.add({.name = name, .content = "text text text", .deflate = deflate});
  builder.items[0].central.extra = extra;
  return builder.build();
}

void expectSameOutcome(const std::string& extra, bool deflate, std::size_t at, char byte) {
  const auto changed = [&](const char* name) {
    std::string bytes = packageWith(name, extra, deflate);
    bytes[bytes.find("PK\x01\x02") + at] = byte;
    return bytes;
  };

  EXPECT_EQ(outcomeOf(changed(kOrdinaryName)), outcomeOf(changed(kOtherName)))
      << "byte " << at << " is " << static_cast<int>(byte);
}

TEST(DirectoryPass, NotesTheSameOfEachFieldOfARecordWhateverItsName) {
  constexpr std::size_t kSizesAt = 20;
  for (std::size_t at = 4; at < kNameAt; ++at) {
    for (const int byte : {0, 1, 8, 16, 46, 64, 128, 160, 255}) {
      expectSameOutcome("", at < kSizesAt, at, static_cast<char>(byte));
    }
  }
}

TEST(DirectoryPass, NotesTheSameOfExtraFieldsWhateverTheName) {
  const std::string time = extraField(0x5455, std::string("\1\2\3\4\5", 5));
  const std::string attributes("\4\0\0\0\x40", 5);  // a folder's
  const std::vector<std::string> extras = {
      time,
      time + "x",
      time.substr(0, 6),
      time + extraField(0x7875, "owner"),
      extraField(1, ""),
      extraField(1, le64(1)),
      time + extraField(1, ""),
      extraField(1, "") + extraField(1, ""),
      time + extraField(0x7075, "\1" + le32(0) + "other"),
      extraField(0x7075, "\1"),
      extraField(0x6C78, attributes),
      time + extraField(0x756E, std::string("\0\0\0\0\0\x40", 6)),
      extraField(0xFFFF, ""),
  };
  for (const std::string& extra : extras) {
    for (const std::size_t at : {std::size_t{8}, std::size_t{23}, std::size_t{27}}) {
      for (const int byte : {0, 255}) expectSameOutcome(extra, true, at, static_cast<char>(byte));
    }
  }
}

TEST(DirectoryPass, ReportsEachValueWhoseZip64FieldIsMissing) {
  for (const char* name : {kOrdinaryName, kOtherName}) {
    for (const std::size_t at : {20u, 24u, 42u}) {  // packed size, size, offset
      std::string bytes = packageWith(name, "", true);
      bytes.replace(bytes.find("PK\x01\x02") + at, 4, le32(0xFFFFFFFF));

      const Faults faults = outcomeOf(bytes).faults;

      const std::tuple expected(ZipFaultKind::Zip64ValueMissing, true, 0, 0);
      EXPECT_EQ(std::count(faults.begin(), faults.end(), expected), 1) << name << " " << at;
    }
  }
}

/// Bounds what the process may take on top of what it has.
class MemoryLimit {
 public:
  explicit MemoryLimit(std::size_t more) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    ::getrlimit(RLIMIT_AS, &before_);
    const rlimit limit{pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) + more,
                       before_.rlim_max};
    if (pages > 0) ::setrlimit(RLIMIT_AS, &limit);
  }
  ~MemoryLimit() { ::setrlimit(RLIMIT_AS, &before_); }
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

 private:
  rlimit before_{};
};

TEST(DirectoryPass, AllocatesNoMoreEntriesThanTheDirectoryCanHold) {
  ZipBuilder builder;
  for (const char letter : std::string("abcdefghijklmnop")) {
    builder.add({.name = {letter}, .comment = std::string(65000, ' ')});
  }
  builder.zip64 = true;
  builder.entries = std::uint64_t{1} << 60;
  const std::string bytes = builder.build();
  const MemoryLimit limit(std::size_t{256} << 20);

  const ZipDirectory directory = directoryOf(bytes);

  EXPECT_EQ(directory.entries().size(), 16u);
  EXPECT_EQ(faultsOf(directory),
            (Faults{{ZipFaultKind::CountDiffers, false, 16, std::uint64_t{1} << 60}}));
}

ZipBuilder withNames(const std::vector<std::string>& names) {
  ZipBuilder builder;
  for (const std::string& name : names) builder.add({.name = name, .content = "x"});
  return builder;
}

// The entries that have the name of one before, with the first that has it.
std::vector<std::pair<std::uint64_t, std::uint64_t>> doublesAmong(
    const std::vector<std::string>& names) {
  std::map<std::string, std::uint64_t> first;
  std::vector<std::pair<std::uint64_t, std::uint64_t>> doubles;
  for (std::uint64_t entry = 0; entry < names.size(); ++entry) {
    const auto [same, isNew] = first.emplace(names[entry], entry);
    if (!isNew) doubles.emplace_back(entry, same->second);
  }
  return doubles;
}

std::vector<std::pair<std::uint64_t, std::uint64_t>> notedDoubles(const ZipDirectory& directory) {
  std::vector<std::pair<std::uint64_t, std::uint64_t>> doubles;
  for (const ZipFault& fault : directory.faults()) {
    const bool isDouble =
        fault.kind == ZipFaultKind::DuplicateName || fault.kind == ZipFaultKind::DuplicateFolder;
    if (isDouble) doubles.emplace_back(fault.entry, fault.first);
  }
  return doubles;
}

class NamesInSomeOrder : public testing::TestWithParam<unsigned> {
 protected:
  std::mt19937 random_{GetParam()};

  std::size_t below(std::size_t limit) { return random_() % limit; }

  std::vector<std::string> someNames() {
    std::vector<std::string> names;
    const std::size_t count = 1 + below(200);
    for (std::size_t i = 0; i < count; ++i) {
      std::string name = "f" + std::to_string(below(9)) + "/" + std::to_string(i);
      names.push_back(name + (below(3) == 0 ? ".m" : "/deep/file.m"));
    }
    return names;
  }

  // Sorted, in two sequences one behind the other, sorted from somewhere on, or not at all.
  void arrange(std::vector<std::string>& names) {
    std::sort(names.begin(), names.end());
    const auto half = names.begin() + static_cast<std::ptrdiff_t>(below(names.size()));
    const std::size_t order = below(4);
    if (order == 0) std::rotate(names.begin(), half, names.end());
    if (order == 1) std::shuffle(names.begin(), half, random_);
    if (order == 2) std::shuffle(names.begin(), names.end(), random_);
  }

  void repeatSome(std::vector<std::string>& names) {
    for (std::size_t left = below(4); left > 0; --left) {
      const std::string name = names[below(names.size())];
      names.insert(names.begin() + static_cast<std::ptrdiff_t>(below(names.size() + 1)), name);
    }
  }
};

TEST_P(NamesInSomeOrder, DuplicatesAreFound) {
  std::vector<std::string> names = someNames();
  arrange(names);
  repeatSome(names);

  EXPECT_EQ(notedDoubles(directoryOf(withNames(names))), doublesAmong(names));
}

INSTANTIATE_TEST_SUITE_P(DirectoryPass, NamesInSomeOrder, testing::Range(0u, 150u));

TEST(DirectoryPass, FindsADuplicateOfANameInAnOldCodePage) {
  ZipBuilder builder = withNames({"a", "b\x81", "c", "b\x81", "d"});

  EXPECT_EQ(notedDoubles(directoryOf(builder)),
            (std::vector<std::pair<std::uint64_t, std::uint64_t>>{{3, 1}}));
}

TEST(DirectoryPass, ReportsADuplicateWithTheFirstEntryOfThatName) {
  EXPECT_EQ(faultsOf(directoryOf(withNames({"a", "b", "b"}))),
            (Faults{{ZipFaultKind::DuplicateName, true, 1, 0}}));

  ZipBuilder folders;
  folders.add({.name = "a/"}).add({.name = "b/"}).add({.name = "b/"});
  EXPECT_EQ(faultsOf(directoryOf(folders)), (Faults{{ZipFaultKind::DuplicateFolder, true, 1, 0}}));
}

}  // namespace
}  // namespace opc::zippackage
