// SPDX-License-Identifier: MIT
// A relationships part; the first byte chooses its source. It is read, written, and read back
// equal, also with relationships added to it.
#include <array>
#include <string>

#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/model/PartName.h"
#include "opc/model/RelationshipSet.h"
#include "opc/model/XercesHelper.h"

namespace {

using fuzz::require;
using opc::model::PartName;
using opc::model::Relationship;
using opc::model::RelationshipSet;
using opc::model::TargetMode;
using opc::model::URI;

constexpr std::array<const char*, 3> kSources{"", "top.xml", "files/deep/%C3%A9.m"};

RelationshipSet read(const char* source, std::string_view xml) {
  opc::MemoryInputStream stream = fuzz::streamOver(xml);
  return RelationshipSet::read(source, stream);
}

void checkEntry(const RelationshipSet& set, const RelationshipSet::Entry& entry) {
  const Relationship& relationship = entry.relationship;
  require(set.find(relationship.getId()) == &relationship, "a relationship is found by its id");
  require(!relationship.getType().empty(), "a relationship has a type");
  if (relationship.getTargetMode() == TargetMode::External) {
    require(entry.fragment.empty() && !entry.corrected, "an external target is not changed");
    return;
  }
  const PartName target = relationship.targetName();
  require(opc::fromUtf8(target.canonical()) == relationship.getTargetURI().toString(),
          "an internal target is a canonical part name");
  require(!target.isRelationshipsPartName(), "an internal target is not a relationships part");
  require(entry.fragment.empty() || entry.fragment.front() == u'#', "a fragment has its '#'");
}

void checkEqual(const RelationshipSet& a, const RelationshipSet& b) {
  require(a.entries().size() == b.entries().size(), "as many relationships come back");
  auto other = b.entries().begin();
  for (const RelationshipSet::Entry& entry : a.entries()) {
    const Relationship& x = entry.relationship;
    const Relationship& y = other->relationship;
    require(x.getId() == y.getId(), "an id comes back");
    require(x.getType() == y.getType(), "a type comes back");
    require(x.getTargetURI() == y.getTargetURI(), "a target comes back");
    require(x.getTargetMode() == y.getTargetMode(), "a target mode comes back");
    require(entry.fragment == other->fragment, "a fragment comes back");
    require(!other->corrected, "a written target needs no correction");
    ++other;
  }
}

void checkRoundTrip(const char* source, const RelationshipSet& set) {
  const std::string xml = set.toXml();
  const RelationshipSet again = read(source, xml);
  checkEqual(set, again);
  require(again.toXml() == xml, "equal relationships give equal text");
}

void checkAdding(const char* source, RelationshipSet& set) {
  const std::size_t before = set.entries().size();
  const std::u16string first = set.addInternal(u"urn:added", URI(u"/added.xml"), u"").getId();
  const std::u16string second = set.addExternal(u"urn:added", URI(u"http://a b"), u"").getId();
  require(first != second && set.entries().size() == before + 2, "a fresh id is fresh");
  require(set.isChanged(), "adding is a change");
  checkRoundTrip(source, set);
  set.remove(first);
  require(set.find(first) == nullptr && set.find(second) != nullptr, "only one is removed");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::textOf(data, size);
  const char* source = kSources[fuzz::takeChoice(input, kSources.size())];
  auto set = fuzz::unlessRefused([&] { return read(source, input); });
  if (!set) return 0;

  for (const RelationshipSet::Entry& entry : set->entries()) checkEntry(*set, entry);
  checkRoundTrip(source, *set);
  checkAdding(source, *set);
  return 0;
}
