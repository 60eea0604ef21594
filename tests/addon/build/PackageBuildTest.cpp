// SPDX-License-Identifier: MIT
#include "addon/build/PackageBuild.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "opc/Exception.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using addon::build::BuildRequest;
using addon::build::BuildResult;
using opc::interfaces::Progress;

class PackageBuild : public testing::Test {
 protected:
  PackageBuild() {
    fs::create_directory(folder_ / "wave");
    test::writeFile(folder_ / "wave/kraddon.toml", "[package]\nname = \"Wave\"\nversion = \"1\"\n");
    for (const char* name : {"a.m", "b.m"}) {
      test::writeFile(folder_ / "wave" / name, std::string(std::size_t{1} << 20, *name));
    }
  }

  BuildRequest request() const {
    BuildRequest request;
    request.folder = (folder_ / "wave").string();
    request.output = (folder_ / "out.kraddon").string();
    request.wantsDigest = true;
    return request;
  }

  test::TemporaryFolder folder_;
};

TEST_F(PackageBuild, IsNotWrittenIfItCannotBePutInPlace) {
  BuildRequest request = this->request();
  bool wasToldWritten = false;
  request.onWritten = [&](const BuildResult& result) {
    wasToldWritten = result.isWritten;
    test::writeFile(*request.output, "made meanwhile");
  };
  addon::build::PackageBuild build(request);

  EXPECT_THROW(build.run(), opc::Exception);

  EXPECT_TRUE(wasToldWritten);
  EXPECT_FALSE(build.result.isWritten);
  EXPECT_EQ(test::readFile(*request.output), "made meanwhile");
}

TEST_F(PackageBuild, IsWrittenOnceItIsInPlace) {
  addon::build::PackageBuild build(request());

  build.run();

  EXPECT_TRUE(build.result.isWritten);
}

TEST_F(PackageBuild, StartsTheProgressOfEachPassAnew) {
  std::deque<std::vector<std::uint64_t>> passes;
  BuildRequest request = this->request();
  request.startProgress = [&] {
    return [&pass = passes.emplace_back()](const Progress& progress) {
      pass.push_back(progress.bytesDone);
    };
  };
  addon::build::PackageBuild build(request);

  build.run();

  ASSERT_EQ(passes.size(), 3u);  // packing, checking, the digest
  for (const auto& pass : passes) {
    EXPECT_FALSE(pass.empty());
    EXPECT_TRUE(std::is_sorted(pass.begin(), pass.end()));
  }
}

TEST_F(PackageBuild, OffersTheDigestASecondThread) {
  const auto offers = [this](bool wantsDigest) {
    int count = 0;
    BuildRequest request = this->request();
    request.output = (folder_ / (wantsDigest ? "with.kraddon" : "without.kraddon")).string();
    request.verifies = false;
    request.wantsDigest = wantsDigest;
    request.options.background = [&](const std::function<void()>&) {
      ++count;
      return nullptr;
    };
    addon::build::PackageBuild(request).run();
    return count;
  };

  EXPECT_EQ(offers(true), offers(false) + 1);
}

}  // namespace
