// SPDX-License-Identifier: MIT
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <thread>
#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "tests/gateway/DocumentSlots.h"
#include "tests/gateway/GatewayFixture.h"
#include "tests/support/Paths.h"

// Hosts that load and unload the library, use Xerces-C themselves, or fork. Each test is a host in
// a process of its own, in which nothing was loaded before.

namespace {

using xercesc::XMLPlatformUtils;

/// Whether `host` returns true in a process of its own, which then ends as a host does.
bool works(const std::function<bool()>& host) {
  const pid_t child = ::fork();
  if (child == 0) std::exit(host() ? 0 : 1);
  int status = -1;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool createAndRead(const std::filesystem::path& package) {
  const test::HostArray path = test::makeText(package);
  const test::HostArray properties = test::makeStruct({{"type", u"Korvan Toolbox"},
                                                       {"name", u"Curves"},
                                                       {"version", u"1.2"},
                                                       {"KorvanRelease", u"R1999a"},
                                                       {"summary", u""},
                                                       {"authorName", u""},
                                                       {"authorContact", u""},
                                                       {"authorOrganization", u""},
                                                       {"GUID", u"g-1"},
                                                       {"description", u""}});
  test::call(test::kCreatePackage, 0, {path.get(), properties.get()});
  const test::HostArray license = test::sampleLicense(u"MIT", u"text");
  test::call(test::kSetLicense, 0, {path.get(), license.get()});
  const test::Outcome read = test::call(test::kGetLicense, 1, {path.get()});
  return test::describe(read.output.get()) == test::describe(license.get());
}

bool parsesXml() {
  const std::string_view text = "<a><b/></a>";
  xercesc::XercesDOMParser parser;
  parser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(text.data()),
                                          text.size(), u"text"));
  return parser.getErrorCount() == 0 && parser.getDocument()->getDocumentElement() != nullptr;
}

class Loading : public testing::Test {
 protected:
  std::filesystem::path package() const { return folder_ / "a.kraddon"; }
  static void* load() {
    return ::dlopen(test::buildPath("lib/libkraddon_packaging.so").c_str(), RTLD_NOW);
  }

 private:
  test::TemporaryFolder folder_;
};

TEST_F(Loading, AndUnloadingAHundredTimesTheGatewaysWork) {
  EXPECT_TRUE(works([&] {
    for (int i = 0; i < 100; ++i) {
      void* library = load();
      if (library == nullptr || ::dlclose(library) != 0) return false;
    }
    return createAndRead(package());
  }));
}

TEST_F(Loading, ByAHostThatStartedXercesBeforeAndStopsItTheGatewaysWork) {
  EXPECT_TRUE(works([&] {
    XMLPlatformUtils::Initialize();
    const bool parsed = load() != nullptr && parsesXml();
    XMLPlatformUtils::Terminate();
    return parsed && createAndRead(package());
  }));
}

TEST_F(Loading, ByAHostThatStartsAndStopsXercesBetweenCallsTheGatewaysWork) {
  EXPECT_TRUE(works([&] {
    for (int i = 0; i < 10; ++i) {
      XMLPlatformUtils::Initialize();
      if (!parsesXml()) return false;
      XMLPlatformUtils::Terminate();
      if (!createAndRead(package())) return false;
    }
    return true;
  }));
}

TEST_F(Loading, AHostGoesOnUsingXercesAfterUnloading) {
  EXPECT_TRUE(works([&] {
    void* library = load();
    XMLPlatformUtils::Initialize();
    ::dlclose(library);
    const bool parsed = parsesXml();
    XMLPlatformUtils::Terminate();
    return parsed;
  }));
}

TEST_F(Loading, AndForkingTheGatewaysWorkInBothProcesses) {
  EXPECT_TRUE(works([&] {
    if (!createAndRead(package())) return false;
    const bool inChild = works([&] { return createAndRead(package()); });
    return inChild && createAndRead(package());
  }));
}

TEST_F(Loading, WhileOtherThreadsUseXercesTheGatewaysWork) {
  EXPECT_TRUE(works([&] {
    XMLPlatformUtils::Initialize();
    load();
    bool parsed = true;
    std::jthread other([&](const std::stop_token& stop) {
      while (!stop.stop_requested()) parsed = parsesXml() && parsed;
    });
    for (int i = 0; i < 50; ++i) {
      if (!createAndRead(package())) return false;
    }
    other.request_stop();
    other.join();
    return parsed;
  }));
}

}  // namespace
