// SPDX-License-Identifier: MIT
#include "python/RecordValues.h"

#include <fmt/format.h>

#include <string>

#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "python/RecordClasses.h"

namespace python {

namespace py = pybind11;

using addon::packaging::ConstRecord;
using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::Record;
using addon::packaging::RecordTable;

namespace {

py::object toPython(const std::u16string& text) {
  int order = -1;  // little-endian
  // Of a lone surrogate nothing is lost.
  return py::reinterpret_steal<py::object>(PyUnicode_DecodeUTF16(
      reinterpret_cast<const char*>(text.data()),
      static_cast<py::ssize_t>(text.size() * sizeof(char16_t)), "surrogatepass", &order));
}

py::object toPython(const ConstRecord& record);

py::object toPython(const ConstRecord& record, const Field& field) {
  switch (field.kind()) {
    case FieldKind::Text:
      return toPython(record.text(field));
    case FieldKind::Flag:
      return py::bool_(record.flag(field));
    case FieldKind::Texts: {
      py::list texts;
      for (const std::u16string& text : record.texts(field)) texts.append(toPython(text));
      return texts;
    }
    case FieldKind::Records:
      break;
  }
  py::list records;
  for (std::size_t i = 0; i < record.size(field); ++i)
    records.append(toPython(record.at(field, i)));
  return records;
}

py::object toPython(const ConstRecord& record) {
  py::tuple values(record.table().fields.size());
  std::size_t next = 0;
  for (const Field& field : record.table().fields) values[next++] = toPython(record, field);
  return values;
}

[[noreturn]] void refuse(const std::string& place, const char* expected, const py::handle& value) {
  throw py::type_error(
      fmt::format("{}: expected {}, not {}", place, expected, Py_TYPE(value.ptr())->tp_name));
}

std::u16string readText(const py::handle& value, const std::string& place) {
  if (!py::isinstance<py::str>(value)) refuse(place, "str", value);
  py::ssize_t size = 0;
  const char* utf8 = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
  if (utf8 == nullptr) {
    PyErr_Clear();
    throw py::value_error(place + ": it has a lone surrogate");
  }
  const std::string text(utf8, static_cast<std::size_t>(size));
  const std::string fault = addon::project::xmlTextFault(text);
  if (!fault.empty()) throw py::value_error(fmt::format("{}: {}", place, fault));
  return opc::fromUtf8(text);
}

void readRecord(const Record& record, const py::handle& value, const std::string& place);

py::sequence requireList(const py::handle& value, const std::string& place) {
  if (!py::isinstance<py::list>(value) && !py::isinstance<py::tuple>(value)) {
    refuse(place, "a list", value);
  }
  return py::reinterpret_borrow<py::sequence>(value);
}

void readField(const Record& record, const Field& field, const py::handle& value,
               const std::string& place) {
  if (field.kind() == FieldKind::Text) {
    record.text(field) = readText(value, place);
  } else if (field.kind() == FieldKind::Flag) {
    if (!py::isinstance<py::bool_>(value)) refuse(place, "bool", value);
    record.flag(field) = value.ptr() == Py_True;
  } else {
    std::size_t index = 0;
    for (const py::handle one : requireList(value, place)) {
      const std::string element = fmt::format("{}[{}]", place, index++);
      if (field.kind() == FieldKind::Texts) {
        record.texts(field).push_back(readText(one, element));
      } else {
        readRecord(record.append(field), one, element);
      }
    }
  }
}

void readRecord(const Record& record, const py::handle& value, const std::string& place) {
  const auto& fields = record.table().fields;
  const auto values = py::reinterpret_borrow<py::object>(value);
  if (!py::isinstance<py::tuple>(values) || py::len(values) != fields.size()) {
    refuse(place, record.table().noun, value);
  }
  std::size_t next = 0;
  for (const Field& field : fields) {
    const py::object one = values[py::int_(next++)];
    readField(record, field, one, fmt::format("{}.{}", place, attributeNameOf(field.name)));
  }
}

py::tuple describe(const Field& field) {
  py::object initial = py::str(field.initial);
  if (field.kind() == FieldKind::Flag) {
    initial = py::bool_(std::string_view(field.initial) == "true");
  } else if (field.isList()) {
    initial = py::none();
  }
  py::object records = py::none();
  if (field.kind() == FieldKind::Records) {
    records = py::str(classNameOf(field.table()));
  }
  return py::make_tuple(attributeNameOf(field.name), initial, records, field.help);
}

}  // namespace

py::object toPython(const DocumentTable& table, const ConstRecord& document) {
  return table.isList ? toPython(document, table.list()) : toPython(document);
}

void fromPython(const DocumentTable& table, const Record& document, const py::handle& value) {
  if (table.isList) {
    readField(document, table.list(), value, table.name());
  } else {
    readRecord(document, value, table.name());
  }
}

py::tuple describeTables() {
  py::list classes;
  for (const RecordTable* table : recordClasses()) {
    py::list fields;
    for (const Field& field : table->fields) fields.append(describe(field));
    classes.append(py::make_tuple(classNameOf(*table), table->help, py::tuple(fields)));
  }
  py::list documents;
  for (const DocumentTable* table : addon::packaging::documents()) {
    documents.append(py::make_tuple(table->name(), table->isList, classNameOf(table->records())));
  }
  return py::make_tuple(py::tuple(classes), py::tuple(documents));
}

}  // namespace python
