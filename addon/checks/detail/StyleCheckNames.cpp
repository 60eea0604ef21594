// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "addon/checks/detail/StyleCheck.h"
#include "opc/Text.h"
#include "opc/plservices/TreePath.h"

namespace addon::checks::detail {
namespace {

constexpr std::size_t kLongestName = 255;  // bytes, of every usual file system

// Devices on Windows, whatever follows their name after a dot.
constexpr std::array<std::string_view, 28> kDevices{
    "con",  "prn",  "aux",  "nul",  "com1", "com2", "com3", "com4", "com5", "com6",
    "com7", "com8", "com9", "lpt1", "lpt2", "lpt3", "lpt4", "lpt5", "lpt6", "lpt7",
    "lpt8", "lpt9", "com¹", "com²", "com³", "lpt¹", "lpt²", "lpt³"};

bool isDevice(std::string_view name) {
  std::string_view stem = name.substr(0, name.find('.'));
  while (stem.ends_with(' ')) stem.remove_suffix(1);
  const std::string lower = opc::toLowerAscii(stem);
  return std::find(kDevices.begin(), kDevices.end(), lower) != kDevices.end();
}

constexpr std::array<std::string_view, 6> kKeyNames{"id_rsa",     "id_dsa",      "id_ecdsa",
                                                    "id_ed25519", "id_ecdsa_sk", "id_ed25519_sk"};
constexpr std::array<std::string_view, 3> kKeyExtensions{".pem", ".key", ".ppk"};
constexpr std::array<std::string_view, 3> kSecretNames{".env", ".netrc", "_netrc"};

}  // namespace

std::string_view findPortabilityFault(std::string_view name) {
  if (name.size() > kLongestName) return "it is longer than 255 bytes";
  if (name.find_first_of("<>:\"|?*\\") != std::string_view::npos) {
    return "it holds one of the characters < > : \" | ? * \\";
  }
  if (opc::plservices::hasControlCharacter(name)) return "it holds a control character";
  if (name.ends_with('.')) return "it ends in a dot";
  if (name.ends_with(' ')) return "it ends in a space";
  if (isDevice(name)) return "it is the name of a device on Windows";
  return "";
}

bool isSecretName(std::string_view name) {
  const std::string lower = opc::toLowerAscii(name);
  return std::find(kSecretNames.begin(), kSecretNames.end(), lower) != kSecretNames.end() ||
         std::find(kKeyNames.begin(), kKeyNames.end(), lower) != kKeyNames.end();
}

bool isKeyName(std::string_view name) {
  const std::string lower = opc::toLowerAscii(name);
  return std::any_of(kKeyExtensions.begin(), kKeyExtensions.end(),
                     [&](std::string_view extension) { return lower.ends_with(extension); });
}

bool beginsWithPrivateKey(std::string_view text) {
  if (text.starts_with("PuTTY-User-Key-File-")) return true;
  constexpr std::string_view kBegin = "-----BEGIN ";
  constexpr std::string_view kKey = "PRIVATE KEY-----";
  // Programs write attributes in front, and certificates.
  for (std::size_t at = text.find(kBegin); at != std::string_view::npos;
       at = text.find(kBegin, at + 1)) {
    const std::string_view line = text.substr(at, text.find_first_of("\r\n", at) - at);
    if (line.find(kKey) != std::string_view::npos) return true;
  }
  return false;
}

}  // namespace addon::checks::detail
