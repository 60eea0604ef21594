// SPDX-License-Identifier: MIT
#include "python/Progress.h"

namespace python {

namespace py = pybind11;

using opc::interfaces::Progress;
using opc::interfaces::ProgressFunction;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds kPause{100};

/// Calls a Python function. Owned by functions without the GIL, which copy and destroy it.
class Reporter {
 public:
  explicit Reporter(py::object callable) : callable_(std::move(callable)) {}
  ~Reporter() {
    const py::gil_scoped_acquire acquired;
    callable_ = py::object();
  }
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  void report(const Progress& progress) {
    const bool isEnd = progress.bytesDone >= progress.bytesTotal;
    const Clock::time_point now = Clock::now();
    if (now < next_ && !isEnd) return;
    next_ = now + kPause;
    const py::gil_scoped_acquire acquired;
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
    callable_(progress.bytesDone, progress.bytesTotal);
  }

 private:
  py::object callable_;
  Clock::time_point next_ = {};
};

}  // namespace

void SignalCheck::operator()() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kPause;
  const py::gil_scoped_acquire acquired;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
}

ProgressFunction progressFunction(const py::object& callable) {
  if (callable.is_none()) return SignalCheck();
  if (PyCallable_Check(callable.ptr()) == 0) throw py::type_error("progress must be callable");
  return [reporter = std::make_shared<Reporter>(callable)](const Progress& progress) {
    reporter->report(progress);
  };
}

std::shared_ptr<tool::process::PackageLock> lockPackage(const std::string& path,
                                                        std::chrono::seconds limit) {
  return std::make_shared<tool::process::PackageLock>(
      path, limit, [] {}, SignalCheck());
}

}  // namespace python
