// SPDX-License-Identifier: MIT
#include "opc/TemporaryFile.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "opc/Random.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"

namespace opc {
namespace {

constexpr std::string_view kEnd = ".tmp";
constexpr std::size_t kLetters = 6;
constexpr std::size_t kAround = sizeof ".." - 1 + kLetters + kEnd.size();

std::string randomLetters() {
  constexpr std::string_view kAlphabet =
      "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::uint64_t random[1];
  fillRandom(random);
  std::string letters;
  for (std::size_t i = 0; i < kLetters; ++i, random[0] /= kAlphabet.size()) {
    letters += kAlphabet[random[0] % kAlphabet.size()];
  }
  return letters;
}

}  // namespace

std::string temporaryName(std::string_view name) {
  return temporaryName(name, randomLetters());
}

std::string temporaryName(std::string_view name, std::string_view letters) {
  constexpr std::size_t kMostBytes = 255;
  std::string made = ".";
  made += clipUtf8(name, kMostBytes - kAround);
  made += ".";
  made += letters;
  return made += kEnd;
}

bool isTemporaryName(std::string_view name) noexcept {
  return !lettersOfTemporaryName(name).empty();
}

std::string_view lettersOfTemporaryName(std::string_view name) noexcept {
  if (name.size() <= kAround || name[0] != '.' || !name.ends_with(kEnd)) return {};
  name.remove_suffix(kEnd.size());
  const std::string_view letters = name.substr(name.size() - kLetters);
  const bool isOurs = name[name.size() - kLetters - 1] == '.' &&
                      std::all_of(letters.begin(), letters.end(), isAsciiLetterOrDigit);
  return isOurs ? letters : std::string_view();
}

FileDescriptor createTemporaryFile(int folder, std::string& path, int access, mode_t mode) {
  const std::size_t start = path.rfind('/') + 1;  // npos + 1 is 0
  const std::string name = path.substr(start);
  const int flags = access | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  constexpr int kAttempts = 100;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    path.replace(start, std::string::npos, temporaryName(name));
    FileDescriptor file(uninterrupted([&] { return ::openat(folder, path.c_str(), flags, mode); }));
    if (file || errno != EEXIST) return file;
  }
  return FileDescriptor();
}

}  // namespace opc
