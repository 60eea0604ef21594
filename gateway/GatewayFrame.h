// SPDX-License-Identifier: MIT
#pragma once

#include "hostarray/matrix.h"
#include "opc/Exception.h"

namespace gateway {

/// How many arguments a gateway takes.
struct Arity {
  int maxOutputs;
  int inputs;
};
inline constexpr Arity kReader{1, 1};
inline constexpr Arity kWriter{0, 2};
inline constexpr Arity kPairWriter{0, 3};

/// Ends the call in the host's own error unless the counts are right.
inline void checkCounts(Arity arity, int nlhs, int nrhs) {
  if (nlhs > arity.maxOutputs) matrix::detail::error_maxlhs();
  if (nrhs > arity.inputs) matrix::detail::error_maxrhs();
  if (nrhs < arity.inputs) matrix::detail::error_minrhs();
}

/// Runs `body` as one gateway call.
///
/// A wrong argument count ends in the host's own error before `body` starts. An opc::Exception from
/// `body` ends the call in silence: to the host, an output left unset is what failure looks like.
/// Whatever else `body` throws reaches the host unchanged: the host's own errors, lack of memory.
/// An output that is stored belongs to the caller, and inputs stay the caller's.
template <typename Body>
void runGateway(Arity arity, int nlhs, int nrhs, Body body) {
  checkCounts(arity, nlhs, nrhs);
  try {
    body();
  } catch (const opc::Exception&) {
    // Dropped on purpose, see above.
  }
}

}  // namespace gateway
