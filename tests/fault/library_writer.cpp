// SPDX-License-Identifier: MIT
//
// A host that stores a license through the shared library: library_writer PACKAGE TEXT
#include <cstdio>
#include <filesystem>
#include <string>

#include "tests/support/GatewayCaller.h"

int main(int count, char** words) {
  if (count != 3) {
    std::fputs("usage: library_writer PACKAGE TEXT\n", stderr);
    return 2;
  }
  const test::HostArray path = test::makeText(std::filesystem::path(words[1]));
  const std::string text = words[2];
  const test::HostArray license =
      test::makeStruct({{"type", u"x"}, {"text", std::u16string(text.begin(), text.end())}});
  return test::call(test::kSetLicense, 0, {path.get(), license.get()}).hostError.empty() ? 0 : 1;
}
