// SPDX-License-Identifier: MIT
#include "addon/packaging/DocumentSchema.h"

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "addon/packaging/DocumentXml.h"
#include "opc/Text.h"
#include "opc/plservices/FileTreePart.h"
#include "opc/plservices/FileTreeTable.h"
#include "opc/plservices/HostPropertiesPart.h"

namespace addon::packaging {

using opc::plservices::FileTreePart;
using opc::plservices::FileTreeTable;
using opc::plservices::HostPropertiesPart;

namespace {

using Attribute = const char16_t*;
using Child = const ElementSchema*;

constexpr bool kRequired = true;

// Innermost elements first. Each block ends with the root of one document.

constexpr Attribute kIdentifierAttributes[] = {PropertiesXml::kIdentifierType};
constexpr ElementSchema kIdentifier{
    PropertiesXml::kIdentifier, kIdentifierAttributes, {}, kRequired};
constexpr ElementSchema kDescription{PropertiesXml::kDescription};
constexpr ElementSchema kAuthorName{PropertiesXml::kName};
constexpr ElementSchema kAuthorContact{PropertiesXml::kContact};
constexpr ElementSchema kAuthorOrganization{PropertiesXml::kOrganization};
constexpr Child kAuthorChildren[] = {&kAuthorName, &kAuthorContact, &kAuthorOrganization};
constexpr ElementSchema kAuthor{PropertiesXml::kAuthor, {}, kAuthorChildren};
constexpr Child kAuthorsChildren[] = {&kAuthor};
constexpr ElementSchema kAuthors{PropertiesXml::kAuthors, {}, kAuthorsChildren};
constexpr Child kPropertiesChildren[] = {&kIdentifier, &kDescription, &kAuthors};
constexpr ElementSchema kProperties{PropertiesXml::kRoot, {}, kPropertiesChildren};

constexpr Attribute kLicenseTextAttributes[] = {LicenseXml::kType};
constexpr ElementSchema kLicenseText{
    LicenseXml::kLicenseText, kLicenseTextAttributes, {}, kRequired};
constexpr Child kLicenseChildren[] = {&kLicenseText};
constexpr ElementSchema kLicense{LicenseXml::kRoot, {}, kLicenseChildren};

constexpr ElementSchema kKorvanPath{ConfigurationXml::kKorvanPath};
constexpr Child kKorvanPathsChildren[] = {&kKorvanPath};
constexpr ElementSchema kKorvanPaths{ConfigurationXml::kKorvanPaths, {}, kKorvanPathsChildren};
constexpr ElementSchema kJavaClassPath{ConfigurationXml::kJavaClassPath};
constexpr Child kJavaClassPathsChildren[] = {&kJavaClassPath};
constexpr ElementSchema kJavaClassPaths{
    ConfigurationXml::kJavaClassPaths, {}, kJavaClassPathsChildren};
constexpr Child kConfigurationChildren[] = {&kKorvanPaths, &kJavaClassPaths};
constexpr ElementSchema kConfiguration{ConfigurationXml::kRoot, {}, kConfigurationChildren};

constexpr ElementSchema kAppFile{AppsXml::kFile, {}, {}, kRequired};
constexpr Attribute kApplicationAttributes[] = {AppsXml::kName, AppsXml::kGuid,
                                                AppsXml::kInstallByDefault};
constexpr Child kApplicationChildren[] = {&kAppFile};
constexpr ElementSchema kApplication{AppsXml::kApplication, kApplicationAttributes,
                                     kApplicationChildren};
constexpr Child kApplicationsChildren[] = {&kApplication};
constexpr ElementSchema kApplications{AppsXml::kRoot, {}, kApplicationsChildren};

constexpr Attribute kFileAttributes[] = {ExamplesXml::kType};
constexpr ElementSchema kFile{ExamplesXml::kFile, kFileAttributes};
constexpr Attribute kExampleAttributes[] = {ExamplesXml::kName, ExamplesXml::kType};
constexpr Child kExampleChildren[] = {&kFile};
constexpr ElementSchema kExample{ExamplesXml::kExample, kExampleAttributes, kExampleChildren};
constexpr Attribute kCategoryAttributes[] = {ExamplesXml::kName};
constexpr Child kCategoryChildren[] = {&kExample};
constexpr ElementSchema kCategory{ExamplesXml::kCategory, kCategoryAttributes, kCategoryChildren};
constexpr Child kExamplesChildren[] = {&kCategory};
constexpr ElementSchema kExamples{ExamplesXml::kRoot, {}, kExamplesChildren};

constexpr ElementSchema kChanges{RevisionsXml::kDescription, {}, {}, kRequired};
constexpr Attribute kRevisionAttributes[] = {RevisionsXml::kDate, RevisionsXml::kVersion};
constexpr Child kRevisionChildren[] = {&kChanges};
constexpr ElementSchema kRevision{RevisionsXml::kRevision, kRevisionAttributes, kRevisionChildren};
constexpr Child kRevisionsChildren[] = {&kRevision};
constexpr ElementSchema kRevisions{RevisionsXml::kRoot, {}, kRevisionsChildren};

constexpr Attribute kDependencyAttributes[] = {RequirementsXml::kName, RequirementsXml::kVersion,
                                               RequirementsXml::kIdentifier};
constexpr ElementSchema kProduct{RequirementsXml::kProduct, kDependencyAttributes};
constexpr Child kProductsChildren[] = {&kProduct};
constexpr ElementSchema kProducts{RequirementsXml::kProducts, {}, kProductsChildren};
constexpr ElementSchema kSupportPackage{RequirementsXml::kSupportPackage, kDependencyAttributes};
constexpr Child kSupportPackagesChildren[] = {&kSupportPackage};
constexpr ElementSchema kSupportPackages{
    RequirementsXml::kSupportPackages, {}, kSupportPackagesChildren};
constexpr Child kRequirementsChildren[] = {&kProducts, &kSupportPackages};
constexpr ElementSchema kRequirements{RequirementsXml::kRoot, {}, kRequirementsChildren};

constexpr ElementSchema kHostContentType{HostPropertiesPart::kContentTypeElement};
constexpr ElementSchema kHostFriendlyName{HostPropertiesPart::kFriendlyNameElement};
constexpr ElementSchema kHostRelease{HostPropertiesPart::kReleaseElement};
constexpr Child kHostChildren[] = {&kHostContentType, &kHostFriendlyName, &kHostRelease};
constexpr ElementSchema kHostProperties{HostPropertiesPart::kRoot, {}, kHostChildren};

constexpr Attribute kTreeFolderAttributes[] = {FileTreeTable::kPath};
constexpr ElementSchema kTreeFolder{FileTreeTable::kFolder, kTreeFolderAttributes};
constexpr Attribute kTreeFileAttributes[] = {FileTreeTable::kPath, FileTreeTable::kPart};
constexpr ElementSchema kTreeFile{FileTreeTable::kFile, kTreeFileAttributes};
constexpr Child kTreeChildren[] = {&kTreeFolder, &kTreeFile};
constexpr ElementSchema kFileTree{FileTreeTable::kRoot, {}, kTreeChildren};

template <typename Document>
DocumentSchema describe(const ElementSchema& root) {
  const Document document;
  return {document.partName, document.contentType, document.namespaceURI, document.relationshipType,
          &root};
}

}  // namespace

std::vector<DocumentSchema> documentSchemas() {
  return {
      describe<AddonProperties>(kProperties),
      describe<AddonLicense>(kLicense),
      describe<AddonConfiguration>(kConfiguration),
      describe<AddonAppInstallList>(kApplications),
      describe<AddonExamples>(kExamples),
      describe<AddonRevisionHistory>(kRevisions),
      describe<AddonSystemRequirements>(kRequirements),
      {HostPropertiesPart::kPartName, opc::fromUtf8(HostPropertiesPart::kContentType),
       HostPropertiesPart::namespaceURI(), HostPropertiesPart::relationshipType(),
       &kHostProperties},
      {FileTreePart::kDefaultName, opc::fromUtf8(FileTreePart::kContentType),
       FileTreeTable::namespaceURI(), FileTreePart::relationshipType(), &kFileTree},
  };
}

}  // namespace addon::packaging
