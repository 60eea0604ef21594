// SPDX-License-Identifier: MIT
#pragma once

// The names of elements and attributes in the XML of the documents, a struct a document. Nothing
// else spells them out: reading, writing and checking go by these.

namespace addon::packaging {

struct PropertiesXml {
  static constexpr const char16_t* kRoot = u"addonProperties";
  static constexpr const char16_t* kIdentifier = u"identifier";
  static constexpr const char16_t* kIdentifierType = u"type";
  static constexpr const char16_t* kGuid = u"GUID";  ///< the type that is written
  static constexpr const char16_t* kDescription = u"description";
  static constexpr const char16_t* kAuthors = u"authors";
  static constexpr const char16_t* kAuthor = u"author";
  static constexpr const char16_t* kName = u"name";
  static constexpr const char16_t* kContact = u"contact";
  static constexpr const char16_t* kOrganization = u"organization";
};

struct LicenseXml {
  static constexpr const char16_t* kRoot = u"license";
  static constexpr const char16_t* kLicenseText = u"licenseText";
  static constexpr const char16_t* kType = u"type";
};

struct ConfigurationXml {
  static constexpr const char16_t* kRoot = u"configuration";
  static constexpr const char16_t* kKorvanPaths = u"korvanPaths";
  static constexpr const char16_t* kKorvanPath = u"korvanPath";
  static constexpr const char16_t* kJavaClassPaths = u"javaClassPaths";
  static constexpr const char16_t* kJavaClassPath = u"javaClassPath";
};

struct AppsXml {
  static constexpr const char16_t* kRoot = u"applications";
  static constexpr const char16_t* kApplication = u"application";
  static constexpr const char16_t* kName = u"name";
  static constexpr const char16_t* kGuid = u"guid";
  static constexpr const char16_t* kInstallByDefault = u"installByDefault";
  // The path goes by two names: "relativePath" to the host, "file" in XML.
  static constexpr const char16_t* kFile = u"file";
};

struct ExamplesXml {
  static constexpr const char16_t* kRoot = u"examples";
  static constexpr const char16_t* kCategory = u"exampleCategory";
  static constexpr const char16_t* kExample = u"example";
  static constexpr const char16_t* kName = u"name";  ///< of a category and of an example
  static constexpr const char16_t* kType = u"type";  ///< of an example and of a file
  static constexpr const char16_t* kFile = u"file";
  // What a file's type says.
  static constexpr const char16_t* kSource = u"source";
  static constexpr const char16_t* kMain = u"main";
  static constexpr const char16_t* kThumbnail = u"thumbnail";
  static constexpr const char16_t* kImage = u"image";
};

struct RevisionsXml {
  static constexpr const char16_t* kRoot = u"revisionHistory";
  static constexpr const char16_t* kRevision = u"revision";
  static constexpr const char16_t* kDate = u"date";
  static constexpr const char16_t* kVersion = u"version";
  static constexpr const char16_t* kDescription = u"description";
};

struct RequirementsXml {
  static constexpr const char16_t* kRoot = u"systemRequirements";
  static constexpr const char16_t* kProducts = u"requiredProducts";
  static constexpr const char16_t* kProduct = u"product";
  static constexpr const char16_t* kSupportPackages = u"requiredSupportPackages";
  static constexpr const char16_t* kSupportPackage = u"supportPackage";
  static constexpr const char16_t* kName = u"name";
  static constexpr const char16_t* kVersion = u"version";
  static constexpr const char16_t* kIdentifier = u"identifier";
};

}  // namespace addon::packaging
