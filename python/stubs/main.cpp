// SPDX-License-Identifier: MIT
//
// record_stubs FILE: writes the stubs of the record classes, from the tables of the documents.
#include <fmt/format.h>

#include <cstdio>
#include <fstream>

#include "python/RecordClasses.h"

using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::RecordTable;

namespace {

std::string typeOf(const Field& field) {
  switch (field.kind()) {
    case FieldKind::Text:
      return "str";
    case FieldKind::Flag:
      return "bool";
    case FieldKind::Texts:
      return "list[str]";
    case FieldKind::Records:
      break;
  }
  return fmt::format("list[{}]", python::classNameOf(field.table()));
}

void write(const RecordTable& table, std::ostream& out) {
  out << fmt::format("\n@dataclass\nclass {}:\n", python::classNameOf(table));
  for (const Field& field : table.fields) {
    out << fmt::format("    {}: {} = ...\n", python::attributeNameOf(field.name), typeOf(field));
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc != 2) return 2;
  std::ofstream out(argv[1]);
  out << "# Made from the tables of the documents; do not edit.\n"
         "from dataclasses import dataclass\n\n__all__ = [";
  for (const RecordTable* table : python::recordClasses()) {
    out << fmt::format("\"{}\", ", python::classNameOf(*table));
  }
  out << "]\n";
  for (const RecordTable* table : python::recordClasses()) write(*table, out);
  out.close();
  return out ? 0 : 1;
}
