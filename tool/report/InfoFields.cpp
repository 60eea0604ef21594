// SPDX-License-Identifier: MIT
#include "tool/report/InfoFields.h"

#include <fmt/format.h>

#include <array>

#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "opc/plservices/W3cDateTime.h"
#include "opc/signatures/SignatureParts.h"
#include "tool/json/JsonSchema.h"
#include "tool/report/Schemas.h"

namespace tool::report {

namespace schema = json::schema;

using addon::comparison::Totals;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;

namespace {

template <auto kPointer>
constexpr InfoField property(const char* name, const char* label) {
  return {name, label, InfoKind::Property, "", &addon::packaging::kMember<kPointer>};
}

constexpr InfoField text(const char* name, const char* label, const char* help,
                         std::string Info::*member, InfoKind kind = InfoKind::Text) {
  return {name, label, kind, help, nullptr, member};
}

constexpr InfoField number(const char* name, const char* label, const char* help,
                           std::uint64_t (*value)(const Info&),
                           std::string (*line)(const Info&) = nullptr) {
  return {name, label, InfoKind::Number, help, nullptr, nullptr, value, line};
}

std::string sizeLine(const Info& info) {
  return fmt::format("{} bytes", info.size);
}

std::string documentsLine(const Info& info) {
  return fmt::format("{}", fmt::join(info.documents, ", "));
}

std::string screenshotLine(const Info& info) {
  if (!info.screenshot) return {};
  return fmt::format("{}, {}, {} bytes", info.screenshot->part, info.screenshot->type,
                     info.screenshot->size);
}

std::string contentLine(const Info& info) {
  return fmt::format("{} bytes, {} packed", info.totals.bytes, info.totals.packed);
}

std::string signaturesLine(const Info& info) {
  return info.signatures == 0 ? std::string() : std::to_string(info.signatures);
}

constexpr std::array kFields{
    text("file", "file", "The package, as it was given.", &Info::file),
    number(
        "size", "size", "Of the package itself, in bytes.",
        [](const Info& info) { return info.size; }, sizeLine),
    property<&AddonProperties::type>("type", "type"),
    property<&AddonProperties::KorvanRelease>("release", "release"),
    property<&AddonProperties::name>("name", "name"),
    property<&AddonProperties::version>("version", "version"),
    property<&AddonProperties::summary>("summary", "summary"),
    property<&AddonProperties::description>("description", "description"),
    property<&AddonProperties::authorName>("author.name", "author"),
    property<&AddonProperties::authorContact>("author.contact", "contact"),
    property<&AddonProperties::authorOrganization>("author.organization", "organization"),
    property<&AddonProperties::GUID>("guid", "guid"),
    text("created", "created", "When the package was made, in UTC.", &Info::created,
         InfoKind::Time),
    text("modified", "modified", "The modification time in the core properties, in UTC.",
         &Info::modified, InfoKind::Time),
    InfoField{.name = "documents",
              .label = "documents",
              .kind = InfoKind::Documents,
              .help = "The documents that are there.",
              .line = documentsLine},
    InfoField{.name = "screenshot",
              .label = "screenshot",
              .kind = InfoKind::Screenshot,
              .help = "The screenshot, or null without one.",
              .line = screenshotLine},
    number("files", "files", "How many files there are.",
           [](const Info& info) { return info.totals.files; }),
    number("folders", "empty folders", "How many empty folders there are.",
           [](const Info& info) { return info.totals.folders; }),
    number(
        "bytes", "content", "Of all files, unpacked.",
        [](const Info& info) { return info.totals.bytes; }, contentLine),
    number("packed", "", "Of all files, as they lie in the package.",
           [](const Info& info) { return info.totals.packed; }),
    number(
        "signatures", "signatures", "How many digital signatures there are, valid or not.",
        [](const Info& info) { return info.signatures; }, signaturesLine),
    text("digest", "digest",
         "Of all that a package says, whatever its packing and its times; null if it was not asked "
         "for.",
         &Info::digest)};

JsonValue schemaOf(const InfoField& field) {
  switch (field.kind) {
    case InfoKind::Property:
      return {{"type", {"string", "null"}}, {"minLength", 1}};
    case InfoKind::Text:
      return field.text == &Info::digest ? schema::orNull(schema::digest()) : schema::text();
    case InfoKind::Time:
      return schema::orNull(schema::time());
    case InfoKind::Number:
      return schema::number();
    case InfoKind::Documents: {
      JsonValue documents = schema::list(schema::words(schema::documentNames()));
      documents["uniqueItems"] = true;
      return documents;
    }
    case InfoKind::Screenshot:
      break;
  }
  return schema::orNull(
      schema::object("Screenshot", "The image that stands for the add-on.",
                     {{"part", schema::described(schema::matching("^/"), "Its part name.")},
                      {"type", schema::described(schema::text(), "Its media type.")},
                      {"size", schema::described(schema::number(), "In bytes.")}}));
}

template <typename Time>
std::string timeText(const Time& time) {
  return time && !time->is_special() ? opc::plservices::formatTime(*time) : std::string();
}

std::optional<Screenshot> readScreenshot(AddonPackage& package) {
  const std::string part = addon::packaging::screenshotPart(package);
  if (part.empty()) return std::nullopt;
  auto& model = package.logicalPackage();
  const opc::model::PartName name(opc::fromUtf8(part));
  if (!model.hasPart(name)) return std::nullopt;
  const auto found = model.getPart(name);
  return Screenshot{part, found->getContentType().ascii(), model.partInfo(found->id()).size};
}

void writeValue(const InfoField& field, const Info& info, text::JsonWriter& json) {
  if (field.kind == InfoKind::Number) {
    json.value(field.number(info));
  } else if (field.kind == InfoKind::Documents) {
    json.beginArray();
    for (const std::string& name : info.documents) json.value(std::string_view(name));
    json.endArray();
  } else if (field.kind == InfoKind::Screenshot && info.screenshot) {
    json.beginObject();
    json.member("part", std::string_view(info.screenshot->part));
    json.member("type", std::string_view(info.screenshot->type));
    json.member("size", info.screenshot->size);
    json.endObject();
  } else {
    json.textOrNull(valueOf(field, info));
  }
}

// Sorting the tree and building its paths would take longer than the rest of opening a package.
Totals readTotals(AddonPackage& package) {
  Totals totals;
  opc::plservices::FileTree& tree = package.fileSystem().nodes();
  for (opc::plservices::NodeId node = 0; node < tree.size(); ++node) {
    if (tree.isEmptyFolder(node)) ++totals.folders;
    if (!tree.isFile(node)) continue;
    const opc::model::PartInfo info = package.logicalPackage().partInfo(tree.part(node));
    ++totals.files;
    totals.bytes += info.size;
    totals.packed += info.packedSize;
  }
  return totals;
}

}  // namespace

Info readInfo(AddonPackage& package, const std::string& path) {
  Info info;
  info.file = path;
  info.size = package.physicalPackage().fileSize();
  package.getAddonProperties(info.properties);
  const auto core = package.coreProperties().getCoreProperties();
  info.created = timeText(core.getCreatedTime());
  info.modified = timeText(core.getLastModifiedTime());
  for (const addon::packaging::PresentDocument& document :
       addon::packaging::presentDocuments(package)) {
    info.documents.emplace_back(document.name);
  }
  info.screenshot = readScreenshot(package);
  info.totals = readTotals(package);
  info.signatures = opc::signatures::countSignatures(package.logicalPackage());
  return info;
}

void writeInfo(const Info& info, text::JsonWriter& json) {
  json.beginObject();
  json.member("schema", "kraddon.info/1");
  std::string_view object;  // the one that the last field was in
  for (const InfoField& field : infoFields()) {
    const std::string_view name = field.name;
    const std::size_t dot = name.find('.');
    const std::string_view parent = dot == name.npos ? std::string_view() : name.substr(0, dot);
    if (parent != object) {
      if (!object.empty()) json.endObject();
      if (!parent.empty()) {
        json.key(parent);
        json.beginObject();
      }
      object = parent;
    }
    json.key(parent.empty() ? name : name.substr(dot + 1));
    writeValue(field, info, json);
  }
  if (!object.empty()) json.endObject();
  json.endObject();
}

std::span<const InfoField> infoFields() {
  return kFields;
}

const addon::packaging::Field& propertyOf(const InfoField& field) {
  return AddonProperties::kTable.record.of(*field.property);
}

std::string valueOf(const InfoField& field, const Info& info) {
  switch (field.kind) {
    case InfoKind::Property:
      return opc::toUtf8ForDisplay(
          addon::packaging::ConstRecord(info.properties).text(propertyOf(field)));
    case InfoKind::Text:
    case InfoKind::Time:
      return info.*field.text;
    case InfoKind::Number:
      return std::to_string(field.number(info));
    case InfoKind::Documents:
      return fmt::format("{}", fmt::join(info.documents, "\n"));
    case InfoKind::Screenshot:
      break;
  }
  return info.screenshot ? info.screenshot->part : std::string();
}

JsonValue infoSchema() {
  std::vector<schema::Member> members{schema::shape("kraddon.info/1")};
  std::vector<schema::Member> author;
  for (const InfoField& field : kFields) {
    const char* help = field.kind == InfoKind::Property ? propertyOf(field).help : field.help;
    const std::string_view name = field.name;
    const std::size_t dot = name.find('.');
    const JsonValue schema = schema::described(schemaOf(field), help);
    if (dot == name.npos) {
      members.push_back({field.name, schema});
      continue;
    }
    if (author.empty()) members.push_back({std::string(name.substr(0, dot)), {}});
    author.push_back({std::string(name.substr(dot + 1)), schema});
    // The object stands where its first member does.
    members.back().schema = schema::object("Author", "Who wrote the add-on.", author);
  }
  return schema::object("Output of 'info --json'", "What a package is and how much is in it.",
                        members);
}

JsonValue infosSchema() {
  return schema::object(
      "Output of 'info --json' for several packages", "What each of the packages is.",
      {schema::shape("kraddon.infos/1"),
       {"packages", schema::described(schema::list(infoSchema()),
                                      "In the order given, without those that cannot be read.")}});
}

}  // namespace tool::report
