// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/FileWriting.h"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "opc/Exception.h"
#include "opc/SystemCall.h"

namespace opc::zippackage::detail {

void writeFully(int descriptor, std::uint64_t offset, Bytes data, const char* what) {
  while (!data.empty()) {
    const ssize_t count =
        ::pwrite(descriptor, data.data(), data.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw SystemError(what, errno);
    offset += static_cast<std::uint64_t>(count);
    data = data.subspan(static_cast<std::size_t>(count));
  }
}

FileDescriptor makeNamelessFile(const std::string& folder) {
  FileDescriptor file(
      uninterrupted([&] { return ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600); }));
  if (file) return file;
  // Not every file system can do it: with a name, then, for a moment.
  std::string pattern;
  file.reset(uninterrupted([&] {
    pattern = folder + "/.kraddon-XXXXXX";
    return ::mkostemp(pattern.data(), O_CLOEXEC);
  }));
  if (!file) throw SystemError("cannot make a temporary file in '" + folder + "'", errno);
  ::unlink(pattern.c_str());
  return file;
}

std::string chanceLetters(std::size_t length) {
  constexpr char kLetters[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::string letters(length, '\0');
  if (::getrandom(letters.data(), length, GRND_NONBLOCK) != static_cast<ssize_t>(length)) {
    // Early after the machine's start there may be none yet. Whoever asks copes with a name that
    // is taken.
    std::timespec now{};
    std::timespec_get(&now, TIME_UTC);
    auto state = static_cast<std::uint64_t>(now.tv_nsec) ^ static_cast<std::uint64_t>(::getpid());
    for (char& letter : letters) {
      state = state * 6364136223846793005u + 1442695040888963407u;
      letter = static_cast<char>(state >> 56);
    }
  }
  for (char& letter : letters) {
    letter = kLetters[static_cast<unsigned char>(letter) % (sizeof kLetters - 1)];
  }
  return letters;
}

}  // namespace opc::zippackage::detail
