// SPDX-License-Identifier: MIT
// Calls a gateway repeatedly in one process, as a host does, and prints the seconds of CPU that it
// took.
//
//   host_calls GATEWAY PACKAGE COUNT
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>

#include "opc/Text.h"
#include "tests/support/GatewayCaller.h"

namespace {

const std::map<std::string, test::Slot> kSlots = {{"addonGetLicense", test::kGetLicense},
                                                  {"addonGetProperties", test::kGetProperties},
                                                  {"addonGetFileList", test::kGetFileList}};

double secondsFor(test::Slot slot, const kxArray* path, long count) {
  const std::clock_t start = std::clock();
  for (long i = 0; i < count; ++i) test::call(slot, 1, {path});
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

}  // namespace

int main(int argc, char** argv) {
  const auto slot = argc == 4 ? kSlots.find(argv[1]) : kSlots.end();
  if (slot == kSlots.end()) {
    std::fputs("usage: host_calls GATEWAY PACKAGE COUNT\n", stderr);
    return 2;
  }
  const test::HostArray path = test::makeText(opc::fromUtf8(argv[2]));
  test::call(slot->second, 1, {path.get()});
  std::printf("%.9f\n", secondsFor(slot->second, path.get(), std::atol(argv[3])));
  return 0;
}
