// SPDX-License-Identifier: MIT
#include "tests/support/GatewayCaller.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <stdexcept>

#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "tests/support/Paths.h"

namespace test {

namespace {

const HostFunctionTable& loadTable() {
  void* library = ::dlopen(buildPath("lib/libkraddon_packaging.so").c_str(), RTLD_NOW);
  if (library == nullptr) throw std::runtime_error(::dlerror());
  void* query = ::dlsym(library, "QueryKRFcnTable_kraddon_packaging");
  if (query == nullptr) throw std::runtime_error(::dlerror());
  return *reinterpret_cast<const HostFunctionTable* (*)()>(query)();
}

}  // namespace

const HostFunctionTable& functionTable() {
  static const HostFunctionTable& table = loadTable();
  return table;
}

HostArray makeText(const std::u16string& text) {
  const std::array<std::size_t, 2> sizes{1, text.size()};
  HostArray array(kxCreateCharArray(sizes.size(), sizes.data()));
  std::copy(text.begin(), text.end(), kxGetChars(array.get()));
  return array;
}

HostArray makeText(const std::filesystem::path& path) {
  return makeText(path.u16string());
}

HostArray makeNumber(double value) {
  return HostArray(kxCreateDoubleScalar(value));
}

HostArray makeCell(const Texts& texts) {
  const std::array<std::size_t, 2> sizes{1, texts.size()};
  HostArray cell(kxCreateCellArray(sizes.size(), sizes.data()));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    kxSetCell(cell.get(), i, makeText(texts[i]).release());
  }
  return cell;
}

HostArray makeStruct(const FieldTexts& fields) {
  std::vector<const char*> names;
  for (const auto& field : fields) names.push_back(field.first.c_str());
  const std::size_t one = 1;
  HostArray structure(kxCreateStructArray(1, &one, names.size(), names.data()));
  for (const auto& [name, text] : fields) {
    kxSetField(structure.get(), 0, name.c_str(), makeText(text).release());
  }
  return structure;
}

Texts cellTexts(const kxArray* cell) {
  Texts texts;
  for (std::size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
    texts.push_back(matrix::get_ustring(kxGetCell(cell, i)));
  }
  return texts;
}

FieldTexts fieldTexts(const kxArray* structure, std::size_t index) {
  FieldTexts fields;
  for (std::size_t i = 0; i < kxGetNumberOfFields(structure); ++i) {
    const char* name = kxGetFieldName(structure, i);
    fields.emplace_back(name, fieldText(structure, name, index));
  }
  return fields;
}

std::u16string fieldText(const kxArray* structure, const char* name, std::size_t index) {
  return matrix::get_ustring(kxGetField(structure, index, name));
}

Outcome call(Slot slot, int outputs, const Inputs& inputs) {
  const GatewayFunction gateway = functionTable().entryPoints[slot];
  Inputs prhs = inputs;
  kxArray* plhs[1] = {nullptr};
  Outcome outcome{};
  hostarray::standin::CallScope scope;
  try {
    gateway(outputs, plhs, static_cast<int>(prhs.size()), prhs.data());
  } catch (const matrix::HostError& error) {
    outcome.hostError = error.identifier();
    outcome.message = error.what();
  }
  outcome.output.reset(scope.keep(plhs[0]));
  outcome.leftBehind = scope.unowned();
  return outcome;
}

}  // namespace test
