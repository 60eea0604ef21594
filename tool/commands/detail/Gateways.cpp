// SPDX-License-Identifier: MIT
#include "tool/commands/detail/Gateways.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <array>
#include <vector>

#include "text/Suggest.h"
#include "tool/process/Errors.h"

namespace tool::commands::detail {

namespace {

// In slot order, which is part of the host's contract.
constexpr std::array<Gateway, 20> kGateways{{{"addonCreatePackage", 0},
                                             {"addonSetProperties", 0},
                                             {"addonGetProperties", 1},
                                             {"addonAddFiles", 0},
                                             {"addonAddFolders", 0},
                                             {"addonExtractAllFiles", 0},
                                             {"addonGetFileList", 1},
                                             {"addonSetLicense", 0},
                                             {"addonGetLicense", 1},
                                             {"addonSetRevisionHistory", 0},
                                             {"addonGetRevisionHistory", 1},
                                             {"addonSetConfiguration", 0},
                                             {"addonGetConfiguration", 1},
                                             {"addonSetScreenshot", 0},
                                             {"addonSetAppInstallList", 0},
                                             {"addonGetAppInstallList", 1},
                                             {"addonSetExamples", 0},
                                             {"addonGetExamples", 1},
                                             {"addonSetSystemRequirements", 0},
                                             {"addonGetSystemRequirements", 1}}};

/// A bare name: the loader finds it by the program's own search path.
constexpr const char* kOwnLibrary = "libkraddon_packaging.so";
constexpr const char* kQueryFunction = "QueryKRFcnTable_kraddon_packaging";

/// dlopen searches its own paths for a bare name.
std::string asPath(const std::string& file) {
  return file.find('/') == std::string::npos ? "./" + file : file;
}

/// The loader's message, without the name in front, which ours already has.
std::string lastError(const std::string& path) {
  const char* error = ::dlerror();
  const std::string text = error == nullptr ? "the loader gives no reason" : error;
  const std::string prefix = path + ": ";
  return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

}  // namespace

std::vector<std::string> gatewayNames() {
  std::vector<std::string> names;
  names.reserve(std::size(kGateways));
  for (const Gateway& gateway : kGateways) names.emplace_back(gateway.name);
  return names;
}

std::size_t gatewaySlot(std::string_view name) {
  std::vector<std::string_view> names;
  for (std::size_t slot = 0; slot < kGateways.size(); ++slot) {
    if (kGateways[slot].name == name) return slot;
    names.push_back(kGateways[slot].name);
  }
  throw process::UsageError(
      process::sentence("unknown gateway", name,
                        text::suggestion(name, names, "'kraddon help call' lists the gateways")));
}

const Gateway& gatewayAt(std::size_t slot) {
  return kGateways.at(slot);
}

const HostFunctionTable& loadFunctionTable(const std::string& file) {
  const std::string path = file.empty() ? kOwnLibrary : asPath(file);
  void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr)
    throw process::Failure(process::sentence("cannot load", path, lastError(path)));
  using Query = decltype(&QueryKRFcnTable_kraddon_packaging);
  const auto query = reinterpret_cast<Query>(::dlsym(library, kQueryFunction));
  if (query == nullptr) {
    throw process::Failure(
        process::sentence("cannot use", path, fmt::format("it has no {}", kQueryFunction)));
  }
  const HostFunctionTable* table = query();
  if (table == nullptr || table->entryPointCount < kGateways.size()) {
    throw process::Failure(process::sentence("cannot use", path, "its table lacks gateways"));
  }
  return *table;
}

}  // namespace tool::commands::detail
