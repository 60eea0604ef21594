// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/interfaces/MemoryContentSource.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/model/PackageFixture.h"
#include "tests/support/MemoryPhysicalPackage.h"
#include "tests/support/TemporaryFolder.h"

using opc::ErrorCode;
using opc::interfaces::IPhysicalPackage;
using opc::interfaces::ItemIndex;
using opc::interfaces::MemoryContentSource;
using opc::interfaces::NewItem;
using opc::interfaces::OpenMode;
using test::faultOf;

namespace {

class MemoryContainer {
 public:
  std::unique_ptr<IPhysicalPackage> make() {
    return std::make_unique<test::MemoryPhysicalPackage>(disk_);
  }

 private:
  test::MemoryDisk disk_;
};

class ZipContainer {
 public:
  std::unique_ptr<IPhysicalPackage> make() {
    return std::make_unique<opc::zippackage::ZipPhysicalPackage>(
        (folder_ / "package.kraddon").u16string(), true, u"");
  }

 private:
  test::TemporaryFolder folder_;
};

NewItem item(std::string name) {
  NewItem result;
  result.name = std::move(name);
  return result;
}

ItemIndex add(IPhysicalPackage& package, const NewItem& what, std::string text) {
  return package.addItem(what, std::make_unique<MemoryContentSource>(std::move(text), "source"));
}

std::string textOf(IPhysicalPackage& package, ItemIndex index) {
  return test::readAll(*package.openItem(index));
}

// What a container holds: names in order, and bytes.
using Content = std::vector<std::pair<std::string, std::string>>;

Content contentOf(IPhysicalPackage& package) {
  Content content;
  for (ItemIndex index = 0; index < package.itemCount(); ++index) {
    if (package.isRemoved(index)) continue;
    content.emplace_back(package.itemInfo(index).name, textOf(package, index));
  }
  return content;
}

// What any container must do, whatever it is kept in.
template <typename Container>
class PhysicalPackage : public testing::Test {
 protected:
  // The container with two items in it.
  void fill() {
    package_->open(OpenMode::Create);
    add(*package_, item("a"), "first");
    add(*package_, item("b/c"), "second");
    package_->close(false);
  }

  Content stored() {
    const auto again = container_.make();
    again->open(OpenMode::Read);
    return contentOf(*again);
  }

  Container container_;
  std::unique_ptr<IPhysicalPackage> package_ = container_.make();
};

using Containers = testing::Types<MemoryContainer, ZipContainer>;
TYPED_TEST_SUITE(PhysicalPackage, Containers);

const Content kFilled = {{"a", "first"}, {"b/c", "second"}};

}  // namespace

TYPED_TEST(PhysicalPackage, WhatWasCommittedIsThereAgain) {
  this->fill();

  EXPECT_FALSE(this->package_->isOpen());
  EXPECT_EQ(this->stored(), kFilled);
}

TYPED_TEST(PhysicalPackage, AnEmptyOneIsWrittenToo) {
  this->package_->open(OpenMode::Create);

  this->package_->close(false);

  EXPECT_EQ(this->stored(), Content());
}

TYPED_TEST(PhysicalPackage, ADiscardedNewOneIsNotStored) {
  this->package_->open(OpenMode::Create);
  add(*this->package_, item("a"), "");
  this->package_->close(true);

  EXPECT_THROW(this->package_->open(OpenMode::Read), opc::Exception);

  EXPECT_FALSE(this->package_->isOpen());
}

TYPED_TEST(PhysicalPackage, DiscardedChangesAreNotStored) {
  this->fill();
  this->package_->open(OpenMode::Modify);
  this->package_->removeItem(0);
  add(*this->package_, item("d"), "third");

  this->package_->close(true);

  EXPECT_EQ(this->stored(), kFilled);
}

TYPED_TEST(PhysicalPackage, CreatingForgetsWhatWasThere) {
  this->fill();
  this->package_->open(OpenMode::Create);
  EXPECT_EQ(this->package_->itemCount(), 0u);
  add(*this->package_, item("new"), "x");

  this->package_->close(false);

  EXPECT_EQ(this->stored(), (Content{{"new", "x"}}));
}

TYPED_TEST(PhysicalPackage, ClosingWhatIsNotOpenDoesNothing) {
  this->package_->close(false);
  this->package_->close(true);

  EXPECT_FALSE(this->package_->isOpen());
}

TYPED_TEST(PhysicalPackage, ItemsThatDidNotChangeStay) {
  this->fill();
  this->package_->open(OpenMode::Modify);
  const ItemIndex added = add(*this->package_, item("d"), "third");
  this->package_->removeItem(0);
  EXPECT_TRUE(this->package_->isRemoved(0));
  EXPECT_FALSE(this->package_->isRemoved(1));
  EXPECT_EQ(added, 2u);

  this->package_->close(false);

  EXPECT_EQ(this->stored(), (Content{{"b/c", "second"}, {"d", "third"}}));
}

TYPED_TEST(PhysicalPackage, ItemsAtTheFrontStandBeforeAllOthersInTheirOrder) {
  this->fill();
  this->package_->open(OpenMode::Modify);
  NewItem front = item("1");
  front.atFront = true;
  add(*this->package_, item("z"), "");
  add(*this->package_, front, "");
  front.name = "2";
  add(*this->package_, front, "");

  this->package_->close(false);

  EXPECT_EQ(this->stored(),
            (Content{{"1", ""}, {"2", ""}, {"a", "first"}, {"b/c", "second"}, {"z", ""}}));
}

TYPED_TEST(PhysicalPackage, StreamFillsAnItemAndEmptiesItFirst) {
  this->package_->open(OpenMode::Create);
  const ItemIndex index = this->package_->addItem(item("a"));
  EXPECT_EQ(textOf(*this->package_, index), "");
  test::writeText(*this->package_->openForWriting(index), "a longer text");

  {
    const auto stream = this->package_->openForWriting(index);
    test::writeText(*stream, "sho");
    test::writeText(*stream, "rt");
  }

  EXPECT_EQ(textOf(*this->package_, index), "short");
  this->package_->close(false);
  EXPECT_EQ(this->stored(), (Content{{"a", "short"}}));
}

TYPED_TEST(PhysicalPackage, OnlyNewItemsWithoutASourceAreWrittenTo) {
  this->fill();
  this->package_->open(OpenMode::Modify);
  const ItemIndex added = add(*this->package_, item("d"), "");

  EXPECT_THROW(this->package_->openForWriting(0), opc::Exception);
  EXPECT_THROW(this->package_->openForWriting(added), opc::Exception);
}

TYPED_TEST(PhysicalPackage, OpenedForReadingRefusesChanges) {
  this->fill();
  this->package_->open(OpenMode::Read);

  EXPECT_EQ(faultOf([&] { this->package_->addItem(item("d")); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { add(*this->package_, item("d"), ""); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { this->package_->openForWriting(0); }).code, ErrorCode::InvalidState);
  EXPECT_EQ(faultOf([&] { this->package_->removeItem(0); }).code, ErrorCode::InvalidState);
}

TYPED_TEST(PhysicalPackage, ReadingAllStopsAtTheLimit) {
  this->fill();
  this->package_->open(OpenMode::Read);
  opc::ByteBuffer buffer;

  EXPECT_EQ(faultOf([&] { this->package_->readItem(0, buffer, 4); }).code, ErrorCode::TooLarge);
  this->package_->readItem(0, buffer, 5);

  EXPECT_EQ(std::string(reinterpret_cast<const char*>(buffer.data()), buffer.size()), "first");
}

TYPED_TEST(PhysicalPackage, ItemKnowsItsSizeTimeAndMode) {
  this->package_->open(OpenMode::Create);
  NewItem what = item("run.sh");
  what.executable = true;
  what.modified = 1234567891;
  add(*this->package_, what, "12345");
  this->package_->close(false);
  this->package_->open(OpenMode::Read);

  const opc::interfaces::ItemInfo info = this->package_->itemInfo(0);

  EXPECT_EQ(info.name, "run.sh");
  EXPECT_EQ(info.kind, opc::interfaces::ItemKind::File);
  EXPECT_EQ(info.size, 5u);
  EXPECT_TRUE(info.executable);
  EXPECT_EQ(info.modified, 1234567891);
}

TYPED_TEST(PhysicalPackage, NamesStayWhereTheyAreUntilItIsClosed) {
  this->fill();
  this->package_->open(OpenMode::Modify);
  const ItemIndex added = add(*this->package_, item("kept"), "");
  const std::string_view first = this->package_->itemInfo(0).name;
  const std::string_view kept = this->package_->itemInfo(added).name;

  for (int i = 0; i < 2000; ++i) add(*this->package_, item("x" + std::to_string(i)), "");
  this->package_->removeItem(0);
  this->package_->removeItem(added);

  EXPECT_EQ(first, "a");
  EXPECT_EQ(kept, "kept");
}
