// SPDX-License-Identifier: MIT
// The content types stream: what is read is written, and what is written reads back equal.
#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/NameKey.h"
#include "opc/model/PartName.h"
#include "opc/model/XercesHelper.h"

namespace {

using fuzz::require;
using opc::model::ContentType;
using opc::model::ContentTypes;

ContentTypes read(std::string_view xml) {
  opc::MemoryInputStream stream = fuzz::streamOver(xml);
  return ContentTypes::read(stream);
}

bool isSame(const ContentType* found, const ContentType& expected) {
  return found != nullptr && *found == expected;
}

void checkEntries(const ContentTypes& types) {
  for (const ContentTypes::Default& entry : types.defaults()) {
    const std::string folded = opc::toLowerAscii(entry.extension);
    require(isSame(types.findDefault(folded), entry.type), "a default is found in any case");
  }
  for (const ContentTypes::Override& entry : types.overrides()) {
    require(opc::model::findNameFault(entry.itemName) == nullptr, "an override is of a part name");
    const std::string folded = opc::toLowerAscii(entry.itemName);
    require(isSame(types.findOverride(opc::model::nameHash(folded), folded), entry.type),
            "an override is found in any case");
    require(isSame(types.find(entry.itemName), entry.type), "an override wins");
  }
}

void checkEqual(const ContentTypes& a, const ContentTypes& b) {
  require(a.defaults().size() == b.defaults().size(), "as many defaults come back");
  require(a.overrides().size() == b.overrides().size(), "as many overrides come back");
  for (const ContentTypes::Default& entry : a.defaults()) {
    require(isSame(b.findDefault(entry.extension), entry.type), "a default comes back");
  }
  for (const ContentTypes::Override& entry : a.overrides()) {
    require(
        isSame(b.findOverride(opc::model::nameHash(entry.itemName), entry.itemName), entry.type),
        "an override comes back");
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto types = fuzz::unlessRefused([&] { return read(fuzz::textOf(data, size)); });
  if (!types) return 0;

  checkEntries(*types);
  require(!types->isChanged(), "reading changes nothing");
  const std::string xml = types->toXml();
  const ContentTypes again = read(xml);
  checkEqual(*types, again);
  require(again.toXml() == xml, "equal entries give equal text");
  return 0;
}
