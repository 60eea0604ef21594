// SPDX-License-Identifier: MIT
// Calls a gateway repeatedly in one process, as a host does, and prints the seconds of CPU that it
// took, by how many KiB the memory in use grew, and how many more files are open.
//
//   host_calls GATEWAY PACKAGE COUNT
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
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

struct Usage {
  long memory = 0;  // KiB
  long files = 0;

  static Usage now() {
    Usage usage;
    std::ifstream("/proc/self/statm") >> usage.memory >> usage.memory;  // the second is resident
    usage.memory *= ::sysconf(_SC_PAGESIZE) / 1024;
    usage.files = std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                std::filesystem::directory_iterator());
    return usage;
  }
};

constexpr long kToWarmUp = 100;  // calls, until each buffer has its size

}  // namespace

int main(int argc, char** argv) {
  const auto slot = argc == 4 ? kSlots.find(argv[1]) : kSlots.end();
  if (slot == kSlots.end()) {
    std::fputs("usage: host_calls GATEWAY PACKAGE COUNT\n", stderr);
    return 2;
  }
  const test::HostArray path = test::makeText(opc::fromUtf8(argv[2]));
  secondsFor(slot->second, path.get(), kToWarmUp);
  const Usage before = Usage::now();
  const double seconds = secondsFor(slot->second, path.get(), std::atol(argv[3]));
  const Usage after = Usage::now();
  std::printf("%.9f %ld %ld\n", seconds, after.memory - before.memory, after.files - before.files);
  return 0;
}
