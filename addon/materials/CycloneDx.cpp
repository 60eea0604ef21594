// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include "addon/materials/Materials.h"
#include "addon/materials/detail/JsonDocument.h"

namespace addon::materials {

namespace {

constexpr std::string_view kAddon = "addon";

class CycloneDxWriter : detail::JsonDocument {
 public:
  CycloneDxWriter(const Materials& materials, const Sink& sink) : JsonDocument(materials, sink) {}

  void write(std::string_view tool) {
    json_.beginObject();
    json_.member("$schema", "http://cyclonedx.org/schema/bom-1.6.schema.json");
    json_.member("bomFormat", "CycloneDX");
    json_.member("specVersion", "1.6");
    json_.member("serialNumber",
                 std::string_view("urn:uuid:" + guidOf(materials_, "sbom/cyclonedx")));
    json_.member("version", std::uint64_t{1});
    json_.key("metadata");
    json_.beginObject();
    json_.member("timestamp", std::string_view(materials_.time));
    writeTool(tool);
    writeAddon();
    json_.endObject();
    writeRequirements();
    writeDependencies();
    end();
  }

 private:
  void writeTool(std::string_view version) {
    json_.key("tools");
    json_.beginObject();
    json_.key("components");
    json_.beginArray();
    json_.beginObject();
    json_.member("type", "application");
    json_.member("name", "kraddon");
    json_.member("version", version);
    json_.endObject();
    json_.endArray();
    json_.endObject();
  }

  void writeAddon() {
    const packaging::AddonProperties& properties = materials_.properties;
    json_.key("component");
    json_.beginObject();
    json_.member("type", "library");
    json_.member("bom-ref", kAddon);
    writeSupplier(properties);
    writeAuthor(properties);
    json_.member("name", std::u16string_view(properties.name));
    writeUnlessEmpty("version", properties.version);
    writeUnlessEmpty("description",
                     properties.description.empty() ? properties.summary : properties.description);
    writeLicense();
    writeFiles();
    json_.key("properties");
    json_.beginArray();
    writeProperty("kraddon:digest", std::string_view(materials_.digest));
    if (!properties.GUID.empty()) {
      writeProperty("kraddon:guid", std::u16string_view(properties.GUID));
    }
    json_.endArray();
    json_.endObject();
  }

  void writeSupplier(const packaging::AddonProperties& properties) {
    const std::u16string& name = properties.authorOrganization.empty()
                                     ? properties.authorName
                                     : properties.authorOrganization;
    if (name.empty()) return;
    json_.key("supplier");
    json_.beginObject();
    json_.member("name", std::u16string_view(name));
    json_.endObject();
  }

  void writeAuthor(const packaging::AddonProperties& properties) {
    if (properties.authorName.empty()) return;
    json_.key("authors");
    json_.beginArray();
    json_.beginObject();
    json_.member("name", std::u16string_view(properties.authorName));
    json_.endObject();
    json_.endArray();
  }

  /// An expression of names that SPDX lists, else the author's label and the text.
  void writeLicense() {
    const LicenseTerms& terms = materials_.terms;
    if (terms.expression.empty()) return;
    json_.key("licenses");
    json_.beginArray();
    json_.beginObject();
    if (terms.references.empty()) {
      json_.member("expression", std::string_view(terms.expression));
    } else {
      writeOwnLicense();
    }
    json_.endObject();
    json_.endArray();
  }

  void writeOwnLicense() {
    const packaging::AddonLicense& license = materials_.license;
    json_.key("license");
    json_.beginObject();
    if (license.type.empty()) {
      json_.member("name", std::string_view(materials_.terms.expression));
    } else {
      json_.member("name", std::u16string_view(license.type));
    }
    if (!license.text.empty()) {
      json_.key("text");
      json_.beginObject();
      json_.member("content", std::u16string_view(license.text));
      json_.endObject();
    }
    json_.endObject();
  }

  void writeFiles() {
    json_.key("components");
    json_.beginArray();
    for (std::size_t i = 0; i < materials_.files.size(); ++i) {
      json_.beginObject();
      json_.member("type", "file");
      json_.member("bom-ref", std::string_view(fmt::format("file-{}", i + 1)));
      json_.member("name", std::string_view(materials_.files[i].path));
      json_.key("hashes");
      json_.beginArray();
      json_.beginObject();
      json_.member("alg", "SHA-256");
      json_.member("content", std::string_view(materials_.sums[i].sha256));
      json_.endObject();
      json_.endArray();
      json_.endObject();
      passOn();
    }
    json_.endArray();
  }

  void writeRequirements() {
    json_.key("components");
    json_.beginArray();
    for (std::size_t i = 0; i < materials_.requirements.size(); ++i) {
      const packaging::ProductDependency& requirement = materials_.requirements[i];
      json_.beginObject();
      json_.member("type", "library");
      json_.member("bom-ref", std::string_view(requirementId(i)));
      json_.member("name", std::u16string_view(requirement.name));
      writeUnlessEmpty("version", requirement.version);
      if (!requirement.identifier.empty()) {
        json_.key("properties");
        json_.beginArray();
        writeProperty("kraddon:identifier", std::u16string_view(requirement.identifier));
        json_.endArray();
      }
      json_.endObject();
      passOn();
    }
    json_.endArray();
  }

  void writeDependencies() {
    json_.key("dependencies");
    json_.beginArray();
    json_.beginObject();
    json_.member("ref", kAddon);
    json_.key("dependsOn");
    json_.beginArray();
    for (std::size_t i = 0; i < materials_.requirements.size(); ++i) {
      json_.value(std::string_view(requirementId(i)));
    }
    json_.endArray();
    json_.endObject();
    json_.endArray();
  }

  template <typename Text>
  void writeProperty(std::string_view name, Text value) {
    json_.beginObject();
    json_.member("name", name);
    json_.member("value", value);
    json_.endObject();
  }

  static std::string requirementId(std::size_t index) {
    return fmt::format("requirement-{}", index + 1);
  }
};

}  // namespace

void writeCycloneDx(const Materials& materials, std::string_view tool, const Sink& sink) {
  CycloneDxWriter(materials, sink).write(tool);
}

}  // namespace addon::materials
