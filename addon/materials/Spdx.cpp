// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>

#include "addon/materials/Materials.h"
#include "addon/materials/detail/JsonDocument.h"
#include "text/Sha1.h"

namespace addon::materials {

namespace {

constexpr std::string_view kDocument = "SPDXRef-DOCUMENT";
constexpr std::string_view kAddonId = "SPDXRef-Addon";
constexpr std::string_view kUnknown = "NOASSERTION";

/// The package verification code: the SHA-1 of the files' sums, sorted and joined.
std::string verificationCodeOf(const std::vector<FileSums>& sums) {
  std::vector<std::string_view> sorted;
  sorted.reserve(sums.size());
  for (const FileSums& each : sums) sorted.emplace_back(each.sha1);
  std::sort(sorted.begin(), sorted.end());
  text::Sha1 code;
  for (const std::string_view sum : sorted) code.update(sum.data(), sum.size());
  return code.finish();
}

class SpdxWriter : detail::JsonDocument {
 public:
  SpdxWriter(const Materials& materials, const Sink& sink) : JsonDocument(materials, sink) {}

  void write(std::string_view tool) {
    json_.beginObject();
    json_.member("spdxVersion", "SPDX-2.3");
    json_.member("dataLicense", "CC0-1.0");
    json_.member("SPDXID", kDocument);
    json_.member("name", std::u16string_view(materials_.properties.name));
    json_.member("documentNamespace",
                 std::string_view("urn:uuid:" + guidOf(materials_, "sbom/spdx")));
    writeCreation(tool);
    writePackages();
    writeReferences();
    writeFiles();
    writeRelationships();
    end();
  }

 private:
  void writeCreation(std::string_view tool) {
    json_.key("creationInfo");
    json_.beginObject();
    json_.member("created", std::string_view(materials_.time));
    json_.key("creators");
    json_.beginArray();
    json_.value(std::string_view(fmt::format("Tool: kraddon-{}", tool)));
    json_.endArray();
    json_.endObject();
  }

  void writePackages() {
    json_.key("packages");
    json_.beginArray();
    writeAddon();
    for (std::size_t i = 0; i < materials_.requirements.size(); ++i) writeRequirement(i);
    json_.endArray();
  }

  void writeAddon() {
    const packaging::AddonProperties& properties = materials_.properties;
    json_.beginObject();
    json_.member("SPDXID", kAddonId);
    json_.member("name", std::u16string_view(properties.name));
    writeUnlessEmpty("versionInfo", properties.version);
    writeSupplier(properties);
    if (!properties.authorName.empty()) {
      json_.member("originator", std::u16string_view(u"Person: " + properties.authorName));
    }
    json_.member("downloadLocation", kUnknown);
    json_.member("filesAnalyzed", true);
    json_.key("packageVerificationCode");
    json_.beginObject();
    json_.member("packageVerificationCodeValue",
                 std::string_view(verificationCodeOf(materials_.sums)));
    json_.endObject();
    json_.member("licenseConcluded", kUnknown);
    const std::string& license = materials_.terms.expression;
    json_.member("licenseDeclared", license.empty() ? kUnknown : std::string_view(license));
    json_.member("copyrightText", kUnknown);
    writeUnlessEmpty("summary", properties.summary);
    writeUnlessEmpty("description", properties.description);
    json_.member("comment", std::string_view("content digest " + materials_.digest));
    json_.member("primaryPackagePurpose", "LIBRARY");
    json_.endObject();
    passOn();
  }

  void writeSupplier(const packaging::AddonProperties& properties) {
    if (!properties.authorOrganization.empty()) {
      json_.member("supplier",
                   std::u16string_view(u"Organization: " + properties.authorOrganization));
    } else if (!properties.authorName.empty()) {
      json_.member("supplier", std::u16string_view(u"Person: " + properties.authorName));
    } else {
      json_.member("supplier", kUnknown);
    }
  }

  void writeRequirement(std::size_t index) {
    const packaging::ProductDependency& requirement = materials_.requirements[index];
    json_.beginObject();
    json_.member("SPDXID", std::string_view(requirementId(index)));
    json_.member("name", std::u16string_view(requirement.name));
    writeUnlessEmpty("versionInfo", requirement.version);
    json_.member("downloadLocation", kUnknown);
    json_.member("filesAnalyzed", false);
    if (!requirement.identifier.empty()) {
      json_.member("comment", std::u16string_view(u"identifier " + requirement.identifier));
    }
    json_.endObject();
    passOn();
  }

  /// The text of each license that SPDX does not list, or its label if the text is missing.
  void writeReferences() {
    if (materials_.terms.references.empty()) return;
    const packaging::AddonLicense& license = materials_.license;
    json_.key("hasExtractedLicensingInfos");
    json_.beginArray();
    for (const std::string& reference : materials_.terms.references) {
      json_.beginObject();
      json_.member("licenseId", std::string_view(reference));
      json_.member("extractedText",
                   std::u16string_view(license.text.empty() ? license.type : license.text));
      writeUnlessEmpty("name", license.type);
      json_.endObject();
    }
    json_.endArray();
  }

  void writeFiles() {
    json_.key("files");
    json_.beginArray();
    for (std::size_t i = 0; i < materials_.files.size(); ++i) {
      json_.beginObject();
      json_.member("SPDXID", std::string_view(fileId(i)));
      json_.member("fileName", std::string_view(materials_.files[i].path));
      json_.key("checksums");
      json_.beginArray();
      writeSum("SHA1", materials_.sums[i].sha1);
      writeSum("SHA256", materials_.sums[i].sha256);
      json_.endArray();
      json_.endObject();
      passOn();
    }
    json_.endArray();
  }

  void writeSum(std::string_view algorithm, std::string_view sum) {
    json_.beginObject();
    json_.member("algorithm", algorithm);
    json_.member("checksumValue", sum);
    json_.endObject();
  }

  void writeRelationships() {
    json_.key("relationships");
    json_.beginArray();
    writeRelationship(kDocument, "DESCRIBES", kAddonId);
    for (std::size_t i = 0; i < materials_.requirements.size(); ++i) {
      writeRelationship(kAddonId, "DEPENDS_ON", requirementId(i));
    }
    for (std::size_t i = 0; i < materials_.files.size(); ++i) {
      writeRelationship(kAddonId, "CONTAINS", fileId(i));
    }
    json_.endArray();
  }

  void writeRelationship(std::string_view from, std::string_view type, std::string_view to) {
    json_.beginObject();
    json_.member("spdxElementId", from);
    json_.member("relationshipType", type);
    json_.member("relatedSpdxElement", to);
    json_.endObject();
    passOn();
  }

  static std::string fileId(std::size_t index) { return fmt::format("SPDXRef-File-{}", index + 1); }

  static std::string requirementId(std::size_t index) {
    return fmt::format("SPDXRef-Requirement-{}", index + 1);
  }
};

}  // namespace

void writeSpdx(const Materials& materials, std::string_view tool, const Sink& sink) {
  SpdxWriter(materials, sink).write(tool);
}

}  // namespace addon::materials
