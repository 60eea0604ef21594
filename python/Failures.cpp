// SPDX-License-Identifier: MIT
#include "python/Failures.h"

#include <cerrno>

#include "addon/build/BuildError.h"
#include "opc/ErrnoError.h"
#include "opc/Exception.h"
#include "tool/process/Errors.h"

namespace python {

namespace py = pybind11;

using addon::build::BuildError;
using opc::ErrorCode;

namespace {

bool isMalformed(ErrorCode code) {
  return code == ErrorCode::InvalidPackage || code == ErrorCode::InvalidXml ||
         code == ErrorCode::Damaged;
}

bool isBadValue(ErrorCode code) {
  return code == ErrorCode::InvalidArgument || code == ErrorCode::InvalidName ||
         code == ErrorCode::InvalidState || code == ErrorCode::InvalidText;
}

/// The errno that says the same, or 0.
int numberOf(const opc::Exception& error) {
  if (const auto* refusal = dynamic_cast<const opc::SystemError*>(&error)) return refusal->number();
  if (error.code() == ErrorCode::NotFound) return ENOENT;
  if (error.code() == ErrorCode::AlreadyExists) return EEXIST;
  return 0;
}

/// `kind` and `number`, an errno value or 0, choose the class in kraddon._errors.
[[noreturn]] void raise(const char* message, const char* kind, int number, const Subject& subject) {
  const auto text = [](std::string_view utf8) -> py::object {
    if (utf8.empty()) return py::none();
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(utf8.data(), static_cast<py::ssize_t>(utf8.size()), "replace"));
  };
  const py::object error =
      py::module_::import("kraddon._errors")
          .attr("make")(kind, text(message), number, py::bytes(subject.path), text(subject.part));
  PyErr_SetObject(py::type::handle_of(error).ptr(), error.ptr());
  throw py::error_already_set();
}

}  // namespace

void raiseCurrent(const Subject& subject) {
  try {
    throw;
  } catch (const BuildError& error) {
    raise(error.what(), "", error.number(), subject);
  } catch (const opc::ErrnoError& error) {
    raise(error.what(), "", error.number(), subject);
  } catch (const opc::FormatError& error) {
    raise(error.what(), "malformed", 0, subject);
  } catch (const opc::Exception& error) {
    const char* kind = isMalformed(error.code()) ? "malformed" : "";
    if (isBadValue(error.code())) kind = "value";
    raise(error.what(), kind, numberOf(error), subject);
  } catch (const tool::process::Failure& error) {
    raise(error.what(), "", 0, subject);
  }
}

}  // namespace python
