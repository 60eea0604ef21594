// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "hostarray/kxarray.h"

namespace hostarray::standin {

/// One gateway call as the host sees it. Frees at its end the arrays that were created meanwhile
/// and have no owner (results of kxSubscriptedReference, what a gateway that threw has left
/// behind), unless they were kept. Scopes nest; each thread has scopes of its own.
class KX_API CallScope {
 public:
  CallScope();
  ~CallScope();
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

  /// The caller takes `array` (null is fine) over from the scope and destroys it later.
  kxArray* keep(kxArray* array);

  /// How many arrays have no owner, temporaries of kxSubscriptedReference left out. A correct
  /// gateway leaves only its outputs.
  std::size_t unowned() const;

 private:
  CallScope* outer_;
  kxArray* arrays_ = nullptr;
  friend struct Registry;
};

}  // namespace hostarray::standin
