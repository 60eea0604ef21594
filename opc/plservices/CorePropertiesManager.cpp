// SPDX-License-Identifier: MIT
#include "opc/plservices/CorePropertiesManager.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "opc/ByteBuffer.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/XercesHelper.h"
#include "opc/plservices/CorePropertiesPart.h"
#include "opc/plservices/HostPropertiesPart.h"
#include "opc/plservices/W3cDateTime.h"

namespace opc::plservices {
namespace {

using boost::posix_time::ptime;
using model::PartName;
using model::Relationship;

constexpr const char16_t* kCorePart = u"/metadata/coreProperties.xml";

template <typename T>
std::optional<T> toStd(const boost::optional<T>& value) {
  return value ? std::optional<T>(*value) : std::nullopt;
}

std::optional<ptime> toStdTime(const boost::optional<ptime>& time) {
  return time ? std::optional<ptime>(inWholeSeconds(*time)) : std::nullopt;
}

void write(const std::string& bytes, OutputStream& to) {
  to.write(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
}

// Reads `name` as a value of type `Value`, which knows how.
template <typename Value>
Value readPart(model::Package& package, const PartName& name) {
  const std::shared_ptr<model::Part> part = package.getPart(name);
  ByteBuffer buffer;
  package.readPart(part->id(), buffer, model::XercesHelper::kMaxDocumentSize);
  MemoryInputStream stream(buffer.data(), buffer.size());
  const auto context = [&] {
    return "cannot read part '" + name.canonical() + "' of '" + package.physical().description() +
           "'";
  };
  return inContext(context, [&] { return Value::read(stream); });
}

// In memory first: nothing changes in the package until the bytes are right.
template <typename Value>
std::string serialise(const Value& value, const std::string& what, model::Package& package) {
  TextOutputStream stream;
  inContext(
      [&] { return "cannot write the " + what + " of '" + package.physical().description() + "'"; },
      [&] { value.write(stream); });
  return std::move(stream.text);
}

// The standard part, by the one relationship that leads to it; absent when there is none.
std::optional<PartName> findCorePart(model::Package& package) {
  const std::vector<Relationship> found =
      package.getRelationshipsByType(model::kCorePropertiesRelationship);
  if (found.empty()) return std::nullopt;
  const std::string where = "package '" + package.physical().description() + "'";
  if (found.size() > 1) {
    throw FormatError("CP-1", where + ": " + std::to_string(found.size()) +
                                  " relationships lead to core properties");
  }
  const std::string id = toUtf8ForDisplay(found.front().getId());
  if (found.front().getTargetMode() == model::TargetMode::External) {
    throw FormatError(
        "CP-2", where + ": relationship '" + id + "' leads to core properties outside the package");
  }
  PartName name = found.front().targetName();
  if (!package.hasPart(name)) {
    throw FormatError("CP-2", where + ": relationship '" + id + "' leads to core properties '" +
                                  name.canonical() + "', which are not in the package");
  }
  const model::ContentType type = package.getPart(name)->getContentType();
  if (!(type == model::ContentType::fromAscii(CorePropertiesPart::kContentType))) {
    throw FormatError("CP-2", where + ": core properties '" + name.canonical() +
                                  "' have the content type '" + type.ascii() + "'");
  }
  return name;
}

// The first of its relationships that leads to a part: no rule of the format binds this one.
std::optional<PartName> findHostPart(model::Package& package) {
  for (const Relationship& found :
       package.getRelationshipsByType(HostPropertiesPart::relationshipType())) {
    if (found.getTargetMode() == model::TargetMode::External) continue;
    PartName name = found.targetName();
    if (package.hasPart(name)) return name;
  }
  return std::nullopt;
}

CorePropertiesPart readCorePart(model::Package& package, const std::optional<PartName>& name) {
  return name ? readPart<CorePropertiesPart>(package, *name) : CorePropertiesPart();
}

HostPropertiesPart readHostPart(model::Package& package, const std::optional<PartName>& name) {
  return name ? readPart<HostPropertiesPart>(package, *name) : HostPropertiesPart();
}

// Whether what a part says may stay in memory.
bool isShort(model::Package& package, const std::optional<PartName>& name) {
  constexpr std::uint64_t kMaxLength = 65536;  // bytes
  return !name || package.partInfo(package.getPart(*name)->id()).size <= kMaxLength;
}

// Takes over what CoreProperties knows and leaves the rest. Returns whether that changed anything.
bool update(CorePropertiesPart& part, const CoreProperties& properties) {
  bool isChanged = false;
  const auto setText = [&](TextProperty property, const boost::optional<std::u16string>& text) {
    std::optional<std::u16string> wanted = toStd(text);
    if (part.text(property) == wanted) return;
    part.setText(property, std::move(wanted));
    isChanged = true;
  };
  const auto setDate = [&](DateProperty property, const boost::optional<ptime>& time) {
    const std::optional<ptime> wanted = toStdTime(time);
    if (part.date(property) == wanted) return;
    part.setDate(property, wanted);
    isChanged = true;
  };
  setText(TextProperty::Title, properties.getTitle());
  setText(TextProperty::Description, properties.getDescription());
  setText(TextProperty::Version, properties.getVersion());
  setText(TextProperty::Creator, properties.getCreatedBy());
  setDate(DateProperty::Created, properties.getCreatedTime());
  setDate(DateProperty::Modified, properties.getLastModifiedTime());
  return isChanged;
}

struct NewPart {
  const char16_t* name;
  std::string_view contentType;
  std::u16string relationshipType;
};

// Replaces the part at `existing`, or makes it together with its relationship.
void store(model::Package& package, const std::optional<PartName>& existing, const NewPart& fresh,
           const std::string& bytes) {
  if (existing) {
    write(bytes, *package.getPart(*existing)->getOutputStream());
    return;
  }
  const PartName name(fresh.name);
  // A part of that name to which no relationship leads belongs to no document.
  if (package.hasPart(name)) package.deletePart(name);
  const model::StandardPartInfo info(interfaces::CompressionType::Normal, bytes.size());
  const auto part =
      package.createPart(name, model::ContentType::fromAscii(fresh.contentType), info);
  write(bytes, *part->getOutputStream());
  package.createInternalRelationship(fresh.relationshipType, model::URI(name.toString()), u"");
}

}  // namespace

CoreProperties CorePropertiesManager::getCoreProperties() {
  if (kept_ && keptAt_ == package_.openCount() && package_.isReadOnly()) return *kept_;
  const std::optional<PartName> corePart = findCorePart(package_);
  const std::optional<PartName> hostPart = findHostPart(package_);
  const CorePropertiesPart core = readCorePart(package_, corePart);
  HostPropertiesPart host = readHostPart(package_, hostPart);
  if (host.contentType.empty())
    host.contentType = core.text(TextProperty::ContentType).value_or(u"");

  CoreProperties properties(host.contentType, host.contentTypeFriendlyName, host.korvanRelease);
  if (const auto& title = core.text(TextProperty::Title)) properties.setTitle(*title);
  if (const auto& text = core.text(TextProperty::Description)) properties.setDescription(*text);
  if (const auto& version = core.text(TextProperty::Version)) properties.setVersion(*version);
  if (const auto& creator = core.text(TextProperty::Creator)) properties.setCreatedBy(*creator);
  if (const auto& time = core.date(DateProperty::Created)) properties.setCreatedTime(*time);
  if (const auto& time = core.date(DateProperty::Modified)) properties.setLastModifiedTime(*time);
  if (package_.isReadOnly() && isShort(package_, corePart) && isShort(package_, hostPart)) {
    kept_ = properties;
    keptAt_ = package_.openCount();
  }
  return properties;
}

void CorePropertiesManager::setCoreProperties(const CoreProperties& properties) {
  const std::optional<PartName> corePart = findCorePart(package_);
  const std::optional<PartName> hostPart = findHostPart(package_);
  CorePropertiesPart core = readCorePart(package_, corePart);
  const HostPropertiesPart host{properties.getContentType(),
                                properties.getContentTypeFriendlyName(),
                                properties.getKorvanRelease()};
  const bool isCoreChanged = update(core, properties);
  const bool isHostChanged = !(readHostPart(package_, hostPart) == host);

  const std::string coreBytes = serialise(core, "core properties", package_);
  const std::string hostBytes = serialise(host, "host properties", package_);
  if (isCoreChanged) {
    store(package_, corePart,
          {kCorePart, CorePropertiesPart::kContentType,
           std::u16string(model::kCorePropertiesRelationship)},
          coreBytes);
  }
  if (isHostChanged) {
    store(package_, hostPart,
          {HostPropertiesPart::kPartName, HostPropertiesPart::kContentType,
           HostPropertiesPart::relationshipType()},
          hostBytes);
  }
}

}  // namespace opc::plservices
