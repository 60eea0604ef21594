// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"

// A host that calls the gateways from several threads. Together the tests make 100,000 calls, or as
// many as KRADDON_THREAD_CALLS says.

namespace {

using test::HostArray;
using test::Inputs;
using test::Outcome;

constexpr std::size_t kThreads = 8;

std::size_t callsOfThread() {
  const char* const calls = std::getenv("KRADDON_THREAD_CALLS");
  return (calls == nullptr ? 100'000 : std::stoul(calls)) / kThreads;
}

/// Runs `body` on all threads, which begin together; `body` gets the number of its thread.
void onAllThreads(const std::function<void(std::size_t)>& body) {
  std::atomic<std::size_t> ready = 0;
  std::vector<std::jthread> threads;
  for (std::size_t number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      body(number);
    });
  }
}

class Threads : public test::GatewayTest {
 protected:
  /// The part of a host that works on one thread, with arrays of its own.
  class Caller {
   public:
    explicit Caller(const std::filesystem::path& package) : path_(test::makeText(package)) {}

    Outcome call(test::Slot slot, const Inputs& more = {}) {
      ++calls_;
      Inputs inputs{path_.get()};
      inputs.insert(inputs.end(), more.begin(), more.end());
      return callCleanly(slot, more.empty() ? 1 : 0, inputs);
    }
    void write(test::Slot slot, const Inputs& more) { EXPECT_EQ(call(slot, more).hostError, ""); }
    void create() { write(test::kCreatePackage, {test::makeStruct(toolbox()).get()}); }
    std::string read(test::Slot slot) { return test::describe(call(slot).output.get()); }
    std::size_t calls() const { return calls_; }

   private:
    HostArray path_;
    std::size_t calls_ = 0;
  };

  /// Every gateway but those of `readEverything`, with values that vary with `step`.
  static void changeEverything(Caller& caller, const std::filesystem::path& folder,
                               std::size_t step) {
    const std::string digits = std::to_string(step);
    const std::u16string text = opc::fromUtf8(digits);
    const HostArray image = test::makeText(folder / "input.png");
    test::FieldTexts properties = toolbox();
    properties[2].second = text;
    caller.write(test::kSetProperties, {test::makeStruct(properties).get()});
    caller.write(test::kAddFiles, {image.get(), test::makeText(u"code/" + text + u".m").get()});
    caller.write(test::kAddFolders, {test::makeText(u"empty/" + text).get()});
    caller.write(test::kSetScreenshot, {image.get()});
    for (const auto& document : test::kDocumentSlots) {
      caller.write(document.set, {valueOf(document, step).get()});
    }
    caller.write(test::kExtractAllFiles, {test::makeText(folder / "out").get()});
    EXPECT_EQ(test::readFile(folder / "out/code" / (digits + ".m")), "an image");
  }

  /// Finds what `changeEverything` stored last.
  static void readEverything(Caller& caller, std::size_t step) {
    for (const auto& document : test::kDocumentSlots) {
      EXPECT_EQ(caller.read(document.get), test::describe(valueOf(document, step).get()));
    }
    const Outcome list = caller.call(test::kGetFileList);
    ASSERT_NE(list.output, nullptr);
    EXPECT_EQ(test::cellTexts(list.output.get()).size(), (step + 1) * 2);
    const Outcome properties = caller.call(test::kGetProperties);
    ASSERT_NE(properties.output, nullptr);
    EXPECT_EQ(test::fieldText(properties.output.get(), "version"),
              opc::fromUtf8(std::to_string(step)));
  }

 private:
  static HostArray valueOf(const test::DocumentSlots& document, std::size_t step) {
    return step % 2 == 0 ? document.sample() : document.other();
  }
};

// First, so that the library makes on eight threads at once what it makes only once.
TEST_F(Threads, EachWithAPackageOfItsOwnFindsInItWhatItStored) {
  std::array<std::size_t, kThreads> calls{};

  onAllThreads([&](std::size_t number) {
    const std::filesystem::path folder = *this / std::to_string(number).c_str();
    std::filesystem::create_directory(folder);
    test::writeFile(folder / "input.png", "an image");
    Caller caller(folder / "a.kraddon");
    caller.create();
    for (std::size_t step = 0; caller.calls() < callsOfThread() * 9 / 10; ++step) {
      changeEverything(caller, folder, step);
      for (int again = 0; again < 32; ++again) readEverything(caller, step);
    }
    calls[number] = caller.calls();
  });

  for (const std::size_t count : calls) EXPECT_GE(count, callsOfThread() * 9 / 10);
}

TEST_F(Threads, OnOnePackageReadEachChangeWholeOrNotAtAll) {
  createPackage();
  setLicense(u"0", std::u16string(5000, u'0'));
  std::atomic<std::size_t> stored = 0;

  onAllThreads([&](std::size_t number) {
    Caller caller(file());
    while (caller.calls() < callsOfThread() / 10) {
      if (number < 2 && caller.calls() % 3 == 0) {
        const auto letter = static_cast<char16_t>(u'a' + caller.calls() % 26);
        const std::u16string text(letter % 7 * 1000u, letter);
        caller.write(test::kSetLicense,
                     {test::sampleLicense(std::u16string(1, letter).c_str(), text.c_str()).get()});
        ++stored;
      }
      const Outcome license = caller.call(test::kGetLicense);
      ASSERT_NE(license.output, nullptr);
      const std::u16string type = test::fieldText(license.output.get(), "type");
      ASSERT_EQ(type.size(), 1u);
      const std::size_t size = type == u"0" ? 5000 : type[0] % 7 * 1000u;
      EXPECT_EQ(test::fieldText(license.output.get(), "text"), std::u16string(size, type[0]));
    }
  });

  EXPECT_GT(stored, callsOfThread() / 100);
  EXPECT_EQ(inspector().names().size(), 6u);
}

}  // namespace
