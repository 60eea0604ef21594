// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "gateway/FunctionTable.h"
#include "hostarray/kxarray.h"

namespace test {

/// The gateways by their slots.
enum Slot : std::size_t {
  kCreatePackage,
  kSetProperties,
  kGetProperties,
  kAddFiles,
  kAddFolders,
  kExtractAllFiles,
  kGetFileList,
  kSetLicense,
  kGetLicense,
  kSetRevisionHistory,
  kGetRevisionHistory,
  kSetConfiguration,
  kGetConfiguration,
  kSetScreenshot,
  kSetAppInstallList,
  kGetAppInstallList,
  kSetExamples,
  kGetExamples,
  kSetSystemRequirements,
  kGetSystemRequirements,
  kSlotCount,
};

/// The table of the real shared library, loaded as the host does, once a process.
const HostFunctionTable& functionTable();

struct HostArrayDeleter {
  void operator()(kxArray* array) const { kxDestroyArray(array); }
};
/// An array that the test owns.
using HostArray = std::unique_ptr<kxArray, HostArrayDeleter>;

using Texts = std::vector<std::u16string>;
using FieldTexts = std::vector<std::pair<std::string, std::u16string>>;

// Functions that make arrays from values. Texts may hold U+0000.
HostArray makeText(const std::u16string& text);
HostArray makeText(const std::filesystem::path& path);
HostArray makeNumber(double value);
/// A 1-by-N cell array.
HostArray makeCell(const Texts& texts);
/// A 1-by-1 struct of texts, fields in this order.
HostArray makeStruct(const FieldTexts& fields);

// Functions that read values from arrays. A missing field or cell is a host error.
Texts cellTexts(const kxArray* cell);
FieldTexts fieldTexts(const kxArray* structure, std::size_t index = 0);
std::u16string fieldText(const kxArray* structure, const char* name, std::size_t index = 0);

/// What a host observes of a call.
struct Outcome {
  HostArray output;        ///< null if plhs[0] was not set
  std::string hostError;   ///< its identifier; "" if the call returned
  std::string message;     ///< of the host error
  std::size_t leftBehind;  ///< arrays without an owner when the call ended
};

using Inputs = std::vector<const kxArray*>;

/// Calls a gateway in a call scope. Exceptions that are not host errors pass.
Outcome call(Slot slot, int outputs, const Inputs& inputs);

}  // namespace test
