// SPDX-License-Identifier: MIT
#include "addon/project/detail/LicenseGuess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace {

using addon::project::detail::licenseTypeOf;

const std::string kBsdStart =
    "Redistribution and use in source and binary forms, with or without\nmodification, are "
    "permitted provided that the following conditions are met:\n* Redistributions of source code "
    "must retain the above.\n* Redistributions in binary form must reproduce the above.\n";
const std::string kMitStart =
    "Permission is hereby granted, free of charge, to any person obtaining a copy\nof this "
    "software\n";
const std::string kMit =
    kMitStart + "The above copyright notice and this permission notice shall be included\n";
const std::string kIscStart =
    "Permission to use, copy, modify, and/or distribute this software for any purpose with or "
    "without fee is hereby granted";

struct Text {
  std::string text;
  const char* type;
};

class LicenseTexts : public testing::TestWithParam<Text> {};

TEST_P(LicenseTexts, HaveTheirType) {
  EXPECT_EQ(licenseTypeOf(GetParam().text), GetParam().type) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    All, LicenseTexts,
    testing::Values(
        Text{"", "Other"}, Text{"All rights reserved.", "Other"}, Text{kMit, "MIT"},
        Text{kMitStart, "Other"}, Text{kMit + "Except as contained in this notice", "Other"},
        Text{kBsdStart, "BSD-2-Clause"},
        Text{kBsdStart + "may be used to endorse or promote products", "BSD-3-Clause"},
        Text{kBsdStart + "All advertising materials mentioning features", "Other"},
        Text{kBsdStart.substr(0, kBsdStart.find("* Redistributions in")), "Other"},
        Text{kBsdStart + kMit, "Other"},
        Text{kIscStart + ", provided that the above\ncopyright notice and this permission notice "
                         "appear in all copies.",
             "ISC"},
        Text{kIscStart + ".", "Other"},
        Text{"This is free and unencumbered software released into the public domain.",
             "Unlicense"},
        Text{"Boost Software License - Version 1.0 - August 17th, 2003", "BSL-1.0"},
        Text{"GNU AFFERO GENERAL PUBLIC LICENSE\n   Version 3, 19 November 2007", "AGPL-3.0"},
        Text{"### GNU LESSER GENERAL PUBLIC LICENSE\n\nVersion 2.1, February 1999", "LGPL-2.1"},
        Text{"GNU GENERAL PUBLIC LICENSE\nVersion 1, February 1989", "Other"},
        Text{"under the terms of the GNU General Public License as published by\nthe Free Software "
             "Foundation, either version 3 of the License, or later",
             "GPL-3.0"},
        Text{"under the terms of the GNU General Public License as published by the Free Software "
             "Foundation; either version 2 of the License",
             "GPL-2.0"},
        Text{"the GNU Lesser General Public License as published by the Free Software Foundation; "
             "either version 2.1 of the License",
             "LGPL-2.1"},
        Text{"the GNU Affero General Public License as published by the Free Software Foundation, "
             "either version 3 of the License",
             "AGPL-3.0"},
        Text{"Licensed under the Apache License, Version 2.0 (the \"License\")", "Apache-2.0"},
        Text{"subject to the terms of the Mozilla Public\nLicense, v. 2.0.", "MPL-2.0"}));

struct File {
  const char* name;
  const char* type;
};

class LicenseFiles : public testing::TestWithParam<File> {};

TEST_P(LicenseFiles, HaveTheirType) {
  const std::filesystem::path path =
      std::filesystem::path("/usr/share/common-licenses") / GetParam().name;
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "no " << path;

  EXPECT_EQ(licenseTypeOf(test::readFile(path)), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(All, LicenseFiles,
                         testing::Values(File{"Apache-2.0", "Apache-2.0"},
                                         File{"Artistic", "Other"}, File{"BSD", "BSD-3-Clause"},
                                         File{"CC0-1.0", "CC0-1.0"}, File{"GFDL-1.3", "Other"},
                                         File{"GPL-1", "Other"}, File{"GPL-2", "GPL-2.0"},
                                         File{"GPL-3", "GPL-3.0"}, File{"LGPL-2", "Other"},
                                         File{"LGPL-2.1", "LGPL-2.1"}, File{"LGPL-3", "LGPL-3.0"},
                                         File{"MPL-1.1", "Other"}, File{"MPL-2.0", "MPL-2.0"}));

}  // namespace
