// SPDX-License-Identifier: MIT
// Pieces of the tool that need no file of their own.
#include <gtest/gtest.h>

#include <string>

#include "opc/Streams.h"
#include "text/Sha256.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/Times.h"
#include "tool/report/Progress.h"

namespace {

TEST(Sha256, AgreesWithPublishedValues) {
  EXPECT_EQ(text::sha256Of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(text::sha256Of("abc"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Sha256, OfAStreamIsThatOfItsBytes) {
  const std::string text(300000, 'x');
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(text.data()), text.size());

  EXPECT_EQ(text::sha256Of(stream), text::sha256Of(text));
}

TEST(Progress, ShowsFilesBytesRateAndTimeLeft) {
  const opc::interfaces::Progress progress{3, 10, 2000000, 6000000};

  EXPECT_EQ(tool::report::describeProgress(progress, 2.0, 100),
            "3 of 10 files, 2.0 MB of 6.0 MB, 1.0 MB/s, 4 s left");
  EXPECT_EQ(tool::report::describeProgress(progress, 2.0, 11), "3 of 10 fi");
}

TEST(Times, AreWrittenInUtc) {
  EXPECT_EQ(tool::commands::detail::formatTime(0), "1970-01-01T00:00:00Z");
  EXPECT_EQ(tool::commands::detail::formatTime(1767225599), "2025-12-31T23:59:59Z");
  EXPECT_EQ(tool::commands::detail::formatTime(-1), "1969-12-31T23:59:59Z");
  EXPECT_EQ(tool::commands::detail::formatTime(253402300799), "9999-12-31T23:59:59Z");
}

TEST(Names, OfPathsAreTakenApart) {
  EXPECT_EQ(tool::commands::detail::baseNameOf("a.b/wave.kraddon"), "wave");
  EXPECT_EQ(tool::commands::detail::baseNameOf("wave"), "wave");
  EXPECT_EQ(tool::commands::detail::baseNameOf("a/.hidden"), ".hidden");
  EXPECT_EQ(tool::commands::detail::fileNameOf("a/b/c"), "c");
}

}  // namespace
