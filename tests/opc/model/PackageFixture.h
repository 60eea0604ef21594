// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Exception.h"
#include "opc/Streams.h"
#include "opc/model/Package.h"
#include "tests/support/MemoryPhysicalPackage.h"

namespace test {

inline constexpr std::string_view kTypesStart =
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">";
inline constexpr std::string_view kRelationshipsStart =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">";
inline constexpr std::string_view kRelationshipsTypeName =
    "application/vnd.openxmlformats-package.relationships+xml";

/// A content types stream with defaults for rels, xml and m, and `more`.
inline std::string typesXml(std::string_view more = {}) {
  return std::string(kTypesStart) + "<Default Extension=\"rels\" ContentType=\"" +
         std::string(kRelationshipsTypeName) +
         "\"/><Default Extension=\"xml\" ContentType=\"application/xml\"/>"
         "<Default Extension=\"m\" ContentType=\"text/plain\"/>" +
         std::string(more) + "</Types>";
}

/// A relationships part that holds `content`.
inline std::string relationshipsXml(std::string_view content) {
  return std::string(kRelationshipsStart) + std::string(content) + "</Relationships>";
}

/// One relationship of type "urn:t".
inline std::string relationshipXml(std::string_view id, std::string_view target,
                                   std::string_view more = {}) {
  return "<Relationship Id=\"" + std::string(id) + "\" Type=\"urn:t\" Target=\"" +
         std::string(target) + "\" " + std::string(more) + "/>";
}

inline opc::model::PartName partName(std::u16string_view name) {
  return opc::model::PartName(name);
}

inline std::string readAll(opc::InputStream& stream) {
  std::string text;
  unsigned char block[7];  // small, so that several reads are needed
  while (const std::size_t count = stream.read(block, sizeof block)) {
    text.append(reinterpret_cast<const char*>(block), count);
  }
  return text;
}

inline void writeText(opc::OutputStream& stream, std::string_view text) {
  stream.write(reinterpret_cast<const unsigned char*>(text.data()), text.size());
}

/// What an action throws, for checks on more than one thing at a time.
struct Fault {
  std::string rule;  ///< "" for errors without a rule, "none" when nothing was thrown
  std::string text;
  opc::ErrorCode code = opc::ErrorCode::InvalidArgument;
};

template <typename Action>
Fault faultOf(const Action& action) {
  try {
    action();
  } catch (const opc::FormatError& fault) {
    return {fault.rule(), fault.what(), fault.code()};
  } catch (const opc::Exception& fault) {
    return {"", fault.what(), fault.code()};
  }
  return {"none", "", opc::ErrorCode::InvalidArgument};
}

/// A package over a disk in memory.
struct MemoryPackage {
  MemoryDisk disk;
  MemoryPhysicalPackage physical{disk};
  opc::model::Package package{physical, true};

  /// Puts a package on the disk: a content types stream, and the items that follow.
  MemoryPackage& with(std::string name, std::string bytes = "data") {
    if (!disk.items) disk.add("[Content_Types].xml", typesXml());
    disk.add(std::move(name), std::move(bytes));
    return *this;
  }

  Fault faultOfOpening(opc::interfaces::OpenMode mode = opc::interfaces::OpenMode::Read) {
    return faultOf([&] { package.open(mode); });
  }

  std::string textOf(std::u16string_view name) {
    return readAll(*package.getPart(partName(name))->getInputStream());
  }

  void create(std::u16string_view name, std::u16string_view type, std::string_view text) {
    const auto part = package.createPart(
        partName(name), opc::model::ContentType(type),
        opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
    writeText(*part->getOutputStream(), text);
  }
};

}  // namespace test
