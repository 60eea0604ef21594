// SPDX-License-Identifier: MIT
#include "python/RecordClasses.h"

#include <algorithm>

#include "opc/Text.h"

namespace python {

using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::RecordTable;

namespace {

void append(const RecordTable& table, std::vector<const RecordTable*>& classes) {
  for (const Field& field : table.fields) {
    if (field.kind() == FieldKind::Records) append(field.table(), classes);
  }
  if (std::find(classes.begin(), classes.end(), &table) == classes.end()) {
    classes.push_back(&table);
  }
}

bool isUpper(char c) {
  return c != opc::toLowerAscii(c);
}

}  // namespace

std::vector<const RecordTable*> recordClasses() {
  std::vector<const RecordTable*> classes;
  for (const DocumentTable* table : addon::packaging::documents()) {
    append(table->records(), classes);
  }
  return classes;
}

std::string classNameOf(const RecordTable& table) {
  std::string name = table.noun;
  if (name == "category") return "ExampleCategory";
  if (name == "product") return "Dependency";
  name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

std::string attributeNameOf(std::string_view field) {
  std::string name;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const bool beginsWord = i != 0 && isUpper(field[i]) && !isUpper(field[i - 1]);
    if (beginsWord) name += '_';
    name += opc::toLowerAscii(field[i]);
  }
  return name;
}

}  // namespace python
