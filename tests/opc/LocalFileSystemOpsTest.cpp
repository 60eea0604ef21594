// SPDX-License-Identifier: MIT
#include "opc/LocalFileSystemOps.h"

#include <gtest/gtest.h>

namespace opc {
namespace {

struct Path {
  const char16_t* path;
  const char16_t* extension;
};

class ExtensionOf : public testing::TestWithParam<Path> {};

TEST_P(ExtensionOf, IsWhatFollowsTheLastDotOfTheName) {
  EXPECT_EQ(LocalFileSystemOps::getExtension(GetParam().path), GetParam().extension);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, ExtensionOf,
    testing::Values(Path{u"a.png", u"png"}, Path{u"/x/y/a.tar.gz", u"gz"}, Path{u"a.PNG", u"PNG"},
                    Path{u"", u""}, Path{u"a", u""}, Path{u"a.", u""}, Path{u".profile", u""},
                    Path{u"/home/.profile", u""}, Path{u".profile.txt", u"txt"},
                    Path{u"a.b/c", u""}, Path{u"a.b/", u""}, Path{u"/", u""}, Path{u".", u""},
                    Path{u"a/..", u""}, Path{u"a.\u00E9", u"\u00E9"}, Path{u"a.b c", u"b c"}));

}  // namespace
}  // namespace opc
