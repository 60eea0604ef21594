// SPDX-License-Identifier: MIT
#include "addon/packaging/Field.h"

#include <algorithm>

namespace addon::packaging {

const Field* RecordTable::find(std::string_view name) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const Field& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

bool ConstRecord::isEmpty(const Field& field) const {
  switch (field.kind()) {
    case FieldKind::Text:
      return text(field).empty();
    case FieldKind::Texts:
      return texts(field).empty();
    case FieldKind::Records:
      return size(field) == 0;
    case FieldKind::Flag:
      break;
  }
  return false;
}

bool ConstRecord::isUnset(const Field& field) const {
  const bool mayBe = field.isUnsetWhenEmpty || field.kind() == FieldKind::Records;
  return mayBe && isEmpty(field);
}

void Record::clear(const Field& field) const {
  if (field.kind() == FieldKind::Texts) return texts(field).clear();
  field.member->clear(member(field));
}

}  // namespace addon::packaging
