// SPDX-License-Identifier: MIT
#pragma once

#include <pybind11/pybind11.h>

#include <string_view>

// How calls leave Python, and how their failures come back.

namespace python {

/// What a call is about, for the attributes of what it raises: a file on disk (the system's
/// bytes) and a path or part in the package. Both may be "", and outlive the call.
struct Subject {
  std::string_view path;
  std::string_view part = {};
};

/// Raises kraddon.Error, or its subclass for that kind of failure, for the C++ exception that is
/// being handled. What Python itself raised in a callback passes through, and so does
/// std::bad_alloc. The caller holds the GIL.
[[noreturn]] void raiseCurrent(const Subject& subject);

/// Runs `work` without the GIL.
template <typename Work>
auto withoutGil(const Subject& subject, const Work& work) {
  try {
    const pybind11::gil_scoped_release released;
    return work();
  } catch (...) {
    raiseCurrent(subject);
  }
}

}  // namespace python
