// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "tests/gateway/GatewayFixture.h"

namespace {

using test::HostArray;
using test::makeCell;
using test::makeText;
using test::readFile;
using test::Texts;

/// Sees whether anybody opens a file.
class OpenWatch {
 public:
  explicit OpenWatch(const std::filesystem::path& file) : fd_(::inotify_init1(IN_NONBLOCK)) {
    if (fd_ < 0 || ::inotify_add_watch(fd_, file.c_str(), IN_OPEN) < 0) {
      throw std::runtime_error("inotify failed");
    }
  }
  ~OpenWatch() { ::close(fd_); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  bool wasOpened() const {
    std::array<char, 4096> events{};
    return ::read(fd_, events.data(), events.size()) > 0;
  }

 private:
  int fd_;
};

class FileGateways : public test::GatewayTest {
 protected:
  void SetUp() override { createPackage(); }

  Texts fileList() const {
    const HostArray output = read(test::kGetFileList);
    return output ? test::cellTexts(output.get()) : Texts{u"no output"};
  }
  void addFiles(const HostArray& first, const HostArray& second) const {
    write(test::kAddFiles, {first.get(), second.get()});
  }
};

TEST_F(FileGateways, APackageWithoutFilesListsAOneByZeroCell) {
  const HostArray output = read(test::kGetFileList);

  ASSERT_TRUE(output);
  ASSERT_TRUE(kxIsCell(output.get()));
  ASSERT_EQ(kxGetNumberOfDimensions(output.get()), 2u);
  EXPECT_EQ(kxGetDimensions(output.get())[0], 1u);
  EXPECT_EQ(kxGetDimensions(output.get())[1], 0u);
}

TEST_F(FileGateways, FilesAndEmptyFoldersAreListedInTheOrderOfTheTree) {
  const std::u16string x = diskFile("x.m", "x");

  addFiles(makeCell({x, x}), makeCell({u"c.m", u"a/x.m"}));
  write(test::kAddFolders, {makeCell({u"a/b"}).get()});

  EXPECT_EQ(fileList(), (Texts{u"a/b", u"a/x.m", u"c.m"}));
}

TEST_F(FileGateways, OneTextInEachListAddsOnePair) {
  const std::u16string x = diskFile("x.m", "x");

  addFiles(makeText(x), makeText(std::u16string(u"one.m")));

  EXPECT_EQ(fileList(), Texts{u"one.m"});
}

TEST_F(FileGateways, TheFirstListNamesTheDiskAndTheSecondThePackage) {
  const std::u16string a = diskFile("a.m", "content of a");
  const std::u16string b = diskFile("b.m", "content of b");

  addFiles(makeCell({a, b}), makeCell({u"x.m", u"sub/y.m"}));

  EXPECT_EQ(inspector().content("files/x.m"), "content of a");
  EXPECT_EQ(inspector().content("files/sub/y.m"), "content of b");
}

TEST_F(FileGateways, MoreSecondTextsThanFirstAreIgnored) {
  const std::u16string x = diskFile("x.m", "x");

  addFiles(makeCell({x}), makeCell({u"x.m", u"y.m"}));

  EXPECT_EQ(fileList(), Texts{u"x.m"});
}

TEST_F(FileGateways, FewerSecondTextsThanFirstAreTheHostsError) {
  const std::u16string x = diskFile("x.m", "x");
  const std::string before = packageBytes();
  const HostArray first = makeCell({x, x});
  const HostArray second = makeCell({u"x.m"});

  const auto outcome = callCleanly(test::kAddFiles, 0, {path(), first.get(), second.get()});

  EXPECT_EQ(outcome.hostError, "Korvan:indexOutOfRange");
  EXPECT_EQ(packageBytes(), before);
}

TEST_F(FileGateways, CellsOfAnyShapeAreReadInLinearOrder) {
  const std::u16string x = diskFile("x.m", "x");
  const std::array<std::size_t, 2> sizes{2, 2};
  const HostArray first(kxCreateCellArray(2, sizes.data()));
  const HostArray second(kxCreateCellArray(2, sizes.data()));
  for (std::size_t i = 0; i < 4; ++i) {
    kxSetCell(first.get(), i, makeText(x).release());
    kxSetCell(second.get(), i, makeText(u"f" + std::u16string(i + 1, u'x')).release());
  }

  addFiles(first, second);

  EXPECT_EQ(fileList(), (Texts{u"fx", u"fxx", u"fxxx", u"fxxxx"}));
}

TEST_F(FileGateways, AnElementThatIsNotTextIsTheHostsErrorAndNothingIsAdded) {
  const std::u16string x = diskFile("x.m", "x");
  const std::string before = packageBytes();
  const HostArray files = makeCell({x, x});
  const HostArray names = makeCell({u"x.m", u"y.m"});
  kxSetCell(names.get(), 1, kxCreateDoubleScalar(1));
  const HostArray unset = makeCell({u"x", u"y"});
  kxSetCell(unset.get(), 1, nullptr);

  EXPECT_EQ(callCleanly(test::kAddFiles, 0, {path(), files.get(), names.get()}).hostError,
            "Korvan:notText");
  EXPECT_EQ(callCleanly(test::kAddFolders, 0, {path(), names.get()}).hostError, "Korvan:notText");
  EXPECT_EQ(callCleanly(test::kAddFolders, 0, {path(), unset.get()}).hostError,
            "Korvan:missingValue");
  EXPECT_EQ(packageBytes(), before);
}

TEST_F(FileGateways, InputsThatMakeNoPairsNeverOpenThePackage) {
  const HostArray text = makeText(diskFile("x.m", "x"));
  const HostArray cell = makeCell({u"x.m"});
  const HostArray empty = makeCell({});
  const HostArray number = test::makeNumber(1);
  const OpenWatch watch(file());

  addFiles(cell, text);
  addFiles(text, cell);
  addFiles(empty, empty);
  addFiles(empty, cell);
  addFiles(number, number);
  write(test::kAddFolders, {empty.get()});
  write(test::kAddFolders, {number.get()});

  EXPECT_FALSE(watch.wasOpened());
  addFiles(text, makeText(std::u16string(u"x.m")));
  EXPECT_TRUE(watch.wasOpened());
}

TEST_F(FileGateways, ASourceThatIsMissingAddsNothingAtAll) {
  const std::u16string x = diskFile("x.m", "x");
  const std::string before = packageBytes();

  addFiles(makeCell({x, x + u".missing"}), makeCell({u"x.m", u"y.m"}));

  EXPECT_EQ(packageBytes(), before);
}

TEST_F(FileGateways, APathThatIsTakenAddsNothingAtAll) {
  const std::u16string x = diskFile("x.m", "x");
  addFiles(makeText(x), makeText(std::u16string(u"x.m")));
  const std::string before = packageBytes();

  addFiles(makeCell({x, x}), makeCell({u"new.m", u"x.m"}));

  EXPECT_EQ(packageBytes(), before);
}

TEST_F(FileGateways, AnExistingFolderIsNotAnErrorAndTheNextIsMade) {
  write(test::kAddFolders, {makeText(std::u16string(u"a")).get()});

  write(test::kAddFolders, {makeCell({u"a", u"b"}).get()});

  EXPECT_EQ(fileList(), (Texts{u"a", u"b"}));
}

TEST_F(FileGateways, ExtractingWritesFilesAndEmptyFoldersOverWhatIsThere) {
  addFiles(makeText(diskFile("x.m", "new")), makeText(std::u16string(u"a/x.m")));
  write(test::kAddFolders, {makeText(std::u16string(u"empty")).get()});
  const auto out = *this / "out";
  std::filesystem::create_directories(out / "a");
  test::writeFile(out / "a" / "x.m", "old");
  const std::string before = packageBytes();

  write(test::kExtractAllFiles, {makeText(out).get()});

  EXPECT_EQ(readFile(out / "a" / "x.m"), "new");
  EXPECT_TRUE(std::filesystem::is_directory(out / "empty"));
  EXPECT_EQ(packageBytes(), before);
}

TEST_F(FileGateways, PathsOfAllScriptsComeBackAsTheyWere) {
  const std::u16string x = diskFile("x.m", "x");
  const Texts names{u"\u00e4 b/c%.m", u"\u65e5\u672c/\U0001F600.m"};

  addFiles(makeCell({x, x}), makeCell(names));

  EXPECT_EQ(fileList(), names);
}

TEST_F(FileGateways, AThousandFilesAreListedWithoutALeftOverArray) {
  const std::u16string x = diskFile("x.m", "x");
  Texts names;
  for (char16_t i = 0; i < 1000; ++i) names.push_back({u'f', static_cast<char16_t>(u'\u4e00' + i)});

  addFiles(makeCell(Texts(names.size(), x)), makeCell(names));

  EXPECT_EQ(fileList(), names);
}

}  // namespace
