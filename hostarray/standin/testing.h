// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "hostarray/kxarray.h"

/// What the stand-in offers beside the host's own interface: the role of the host itself.
namespace hostarray::standin {

/// One gateway call as the host sees it. Arrays that come into being while it lives and are owned
/// by nobody when it ends (results of kxSubscriptedReference, what a gateway that threw has left
/// behind) are freed then, unless they were kept. Scopes nest; each thread has
/// scopes of its own.
class KX_API CallScope {
 public:
  CallScope();
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  /// The caller takes `array` (null is fine) over from the scope and destroys it later.
  kxArray* keep(kxArray* array);

  /// How many arrays, temporaries of kxSubscriptedReference left out, would be freed now because
  /// nobody owns them: what a correct gateway leaves is 0 plus its outputs.
  std::size_t unowned() const;

 private:
  CallScope* outer_;
  kxArray* arrays_ = nullptr;
  friend struct Registry;
};

/// Arrays alive in the process.
KX_API std::size_t liveArrays() noexcept;

/// Makes the `n`-th creation of this thread from now (1 is the next) fail with Korvan:outOfMemory;
/// 0 switches it off. Creations are those of the kxCreate... functions and kxSubscriptedReference.
KX_API void failCreation(std::size_t n) noexcept;

}  // namespace hostarray::standin
