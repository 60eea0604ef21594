// SPDX-License-Identifier: MIT
// Included by every source of a build with mutants. The environment chooses at most one of them.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <type_traits>

namespace kraddon_mutation {

class Mutants {
 public:
  static constexpr int kMaxMutants = 4096;

  bool isChosen(int number) {
    if (reachedFile_ != nullptr) isReached_[number] = true;
    return number == chosen_;
  }

  /// Appends the numbers of those that were reached, one to a line.
  ~Mutants() {
    if (reachedFile_ == nullptr) return;
    std::string lines;
    for (int number = 0; number < kMaxMutants; ++number) {
      if (isReached_[number]) lines += std::to_string(number) + '\n';
    }
    const int file = ::open(reachedFile_, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return;
    [[maybe_unused]] const ::ssize_t written = ::write(file, lines.data(), lines.size());
    ::close(file);
  }

 private:
  const char* reachedFile_ = std::getenv("MUTANTS_REACHED");
  const int chosen_ = std::getenv("MUTANT") == nullptr ? -1 : std::atoi(std::getenv("MUTANT"));
  bool isReached_[kMaxMutants] = {};
};

inline Mutants& mutants() {
  static Mutants all;
  return all;
}

// What the compiler computes stays as it is.
constexpr bool isMutant(int number) {
  return !std::is_constant_evaluated() && mutants().isChosen(number);
}

}  // namespace kraddon_mutation
