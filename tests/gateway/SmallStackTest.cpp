// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"

// The gateways on a thread of the host whose stack is small.

namespace {

using test::HostArray;

// The sanitizers make frames larger.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t kStackSize = std::size_t{1} << 20;
#else
constexpr std::size_t kStackSize = std::size_t{128} << 10;
#endif

void* runBody(void* body) {
  (*static_cast<const std::function<void()>*>(body))();
  return nullptr;
}

void onASmallStack(const std::function<void()>& body) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  pthread_t thread{};
  auto argument = body;
  ASSERT_EQ(pthread_create(&thread, &attributes, runBody, &argument), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

class SmallStack : public test::GatewayTest {
 protected:
  void addFile(const std::u16string& place) const {
    const HostArray source = test::makeText(diskFile("input.png", "content"));
    write(test::kAddFiles, {source.get(), test::makeText(place).get()});
  }
};

TEST_F(SmallStack, IsEnoughForEveryGateway) {
  onASmallStack([&] {
    createPackage();
    write(test::kSetProperties, {test::makeStruct(toolbox()).get()});
    addFile(u"a/b.m");
    write(test::kAddFolders, {test::makeText(u"empty").get()});
    write(test::kSetScreenshot, {test::makeText(diskFile("i.png", "image")).get()});
    for (const auto& document : test::kDocumentSlots) {
      write(document.set, {document.sample().get()});
      EXPECT_EQ(test::describe(read(document.get).get()), test::describe(document.sample().get()));
    }
    EXPECT_EQ(test::cellTexts(read(test::kGetFileList).get()), (test::Texts{u"a/b.m", u"empty"}));
    EXPECT_NE(read(test::kGetProperties), nullptr);
    write(test::kExtractAllFiles, {test::makeText(*this / "out").get()});
  });

  EXPECT_EQ(test::readFile(*this / "out/a/b.m"), "content");
}

TEST_F(SmallStack, IsEnoughForVeryDeepFolders) {
  std::u16string place;
  for (int i = 0; i < 1000; ++i) place += u"d/";

  onASmallStack([&] {
    createPackage();
    addFile(place + u"x.m");
    EXPECT_EQ(test::cellTexts(read(test::kGetFileList).get()), (test::Texts{place + u"x.m"}));
    write(test::kExtractAllFiles, {test::makeText(*this / "out").get()});
  });
}

TEST_F(SmallStack, IsEnoughForDocumentsAsDeepAsTheyMayBe) {
  createPackage();
  setLicense(u"MIT", u"text");
  std::string xml =
      "<license xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/license\">";
  constexpr int kDepth = 250;
  for (int i = 0; i < kDepth; ++i) xml += "<x>";
  for (int i = 0; i < kDepth; ++i) xml += "</x>";
  inspector().replace("metadata/license.xml", xml + "</license>");

  onASmallStack([&] { EXPECT_NE(read(test::kGetLicense), nullptr); });
}

}  // namespace
