// SPDX-License-Identifier: MIT
#include <string>
#include <utility>

#include "hostarray/matrix.h"
#include "hostarray/standin/Array.h"
#include "hostarray/standin/Raise.h"

namespace hostarray::standin {

void raise(const char* word, const std::string& sentence) {
  throw matrix::HostError(std::string("Korvan:") + word, sentence);
}

}  // namespace hostarray::standin

namespace matrix {

using hostarray::standin::raise;

HostError::HostError(std::string identifier, const std::string& message)
    : std::runtime_error(message), identifier_(std::move(identifier)) {}

HostError::~HostError() = default;

std::u16string get_ustring(const kxArray* array) {
  const kxArray& text = hostarray::standin::require(array, kxCHAR_CLASS);
  if (text.count == 0) return {};
  if (text.count != text.sizes[1]) {
    raise("notText", "Text has one row; a char array with more than one was given.");
  }
  return {kxGetConstChars(array), text.count};
}

namespace detail {

void error_maxlhs() {
  raise("tooManyOutputs", "Too many output arguments.");
}

void error_maxrhs() {
  raise("tooManyInputs", "Too many input arguments.");
}

void error_minrhs() {
  raise("notEnoughInputs", "Not enough input arguments.");
}

}  // namespace detail
}  // namespace matrix
