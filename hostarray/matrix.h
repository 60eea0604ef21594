// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

#include "hostarray/kxarray.h"

namespace matrix {

/// An error of the host: it ends the gateway call and is reported by the host. It is no
/// opc::Exception, so gateways let it pass.
class KX_API HostError : public std::runtime_error {
 public:
  HostError(std::string identifier, const std::string& message);
  ~HostError() override;

  /// "Korvan:" and a word: missingValue, notText, notStruct, notCell, notDouble, tooManyInputs,
  /// notEnoughInputs, tooManyOutputs, indexOutOfRange, outOfMemory, badArgument.
  const std::string& identifier() const noexcept { return identifier_; }

 private:
  std::string identifier_;
};

/// The text of a char array with at most one row; an empty char array of any shape is "".
/// Raises Korvan:missingValue for null and Korvan:notText for anything else.
KX_API std::u16string get_ustring(const kxArray* array);

namespace detail {

/// The host's standard errors for a call with wrong argument counts.
[[noreturn]] KX_API void error_maxlhs();
[[noreturn]] KX_API void error_maxrhs();
[[noreturn]] KX_API void error_minrhs();

}  // namespace detail
}  // namespace matrix
