// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/XMLPartType.h"
#include "opc/SystemPath.h"
#include "opc/model/Package.h"
#include "opc/plservices/CorePropertiesManager.h"
#include "opc/plservices/FileSystemManager.h"
#include "opc/zippackage/ZipPhysicalPackage.h"

namespace addon::packaging {

/// The usual end of a package's file name.
inline constexpr std::string_view kPackageExtension = ".kraddon";

/// What kind of add-on a package holds.
enum AddonType : std::int32_t { Toolbox = 0, Unknown = 1 };

/// One add-on package file, for the length of one piece of work.
///
/// Construct it with properties, which opens a new package, or with the path and call
/// logicalPackage().open(). At the end, call logicalPackage().close(false), which writes the
/// changes to disk. Functions throw opc::Exception if they fail. The package must then be closed
/// with close(true), since it still contains the changes made before the failure.
class AddonPackage {
 public:
  /// Creates and opens a new package of the type in `properties`, with core properties, the
  /// properties document and the current time. For an unknown type it does nothing and throws
  /// nothing: the package is then not open, and closing it writes nothing. Replaces a file at the
  /// path when committed. Throws std::runtime_error if the system cannot tell the date.
  AddonPackage(std::u16string& path, AddonProperties& properties);
  /// Binds to a package file; reads nothing.
  explicit AddonPackage(const std::u16string& path);
  /// The two constructors for a path in the bytes of the system, in any encoding.
  AddonPackage(const opc::SystemPath& path, AddonProperties& properties);
  explicit AddonPackage(const opc::SystemPath& path);
  /// Closes without committing.
  virtual ~AddonPackage();
  AddonPackage(const AddonPackage&) = delete;
  AddonPackage& operator=(const AddonPackage&) = delete;

  /// "Korvan Toolbox", to the letter, is AddonType::Toolbox; everything else AddonType::Unknown.
  static int getAddonTypeFromString(std::u16string type);

  /// Updates the core properties and replaces the properties document. Times, release and type stay
  /// as they were.
  void setAddonProperties(AddonProperties& properties);
  /// Fills `properties` from both; what the package does not hold keeps its value.
  void getAddonProperties(AddonProperties& properties);

  /// Sets the times of creation and of the last change, in seconds since 1970.
  void setTimes(std::int64_t seconds);

  /// Writes or replaces the document's part; its relationship, once made, is kept. After a failure
  /// there is no part.
  void addXMLPart(XMLPartType& document);
  /// Fills `document` from its part, found through the one relationship of its type. With none, or
  /// several, it keeps what it holds. Throws opc::Exception when the target is missing and
  /// opc::model::InvalidXMLDocument when it is not well-formed.
  void getXMLPart(XMLPartType& document);
  void setLicense(AddonLicense& license);
  void getLicense(AddonLicense& license);

  /// The media type of an image file by its extension (no dot, in any ASCII case): that of
  /// png, gif, tiff and bmp, and "image/jpeg" for anything else.
  static std::u16string getContentTypeFromImageExtension(const std::u16string& extension);
  /// Stores the image file at a path on disk, unchanged, as the package's one screenshot and
  /// thumbnail, replacing an earlier one. If the file cannot be read, the earlier screenshot is
  /// removed all the same and the new one is empty; only closing the package with close(true)
  /// restores it.
  void setScreenshot(const std::u16string& imagePath);
  /// The bytes of the screenshot; none when there is none.
  std::vector<unsigned char> getScreenshot();
  /// The bytes of the one part that the package points at with that relationship type; none unless
  /// there is exactly one. Throws opc::Exception when the part is missing.
  std::vector<unsigned char> getBinaryPart(std::u16string relationshipType);

  /// Adds files[i] on disk as paths[i] of the package. Throws FileSystemEntryAlreadyExists for a
  /// path that is taken, and std::out_of_range for a file without a path; the files before it stay
  /// added. The files are read when the package is closed.
  void addFiles(std::vector<std::u16string> files, std::vector<std::u16string> paths);
  /// Adds folders. Names that are already taken are skipped.
  void addFolders(std::vector<std::u16string> folders);
  /// Writes the file tree below a folder on disk, replacing files that exist there.
  void extractAllFiles(const std::u16string& destination);
  /// The paths of all files and of the empty folders, depth first, in code-unit order.
  std::vector<std::u16string> getFileList();
  /// Appends those below one folder.
  void addFilesFromFolder(opc::plservices::FileSystemEntry folder,
                          std::vector<std::u16string>& list);

  opc::zippackage::ZipPhysicalPackage& physicalPackage() { return physicalPackage_; }
  opc::model::Package& logicalPackage() { return logicalPackage_; }
  opc::plservices::CorePropertiesManager& coreProperties() { return corePropertiesManager_; }
  opc::plservices::FileSystemManager& fileSystem() { return fileSystemManager_; }

 private:
  std::string contextOf(const char* verb, const opc::model::PartName& part) const;
  void create(AddonProperties& properties);
  void write(XMLPartType& document, opc::model::Part& part) const;

  opc::zippackage::ZipPhysicalPackage physicalPackage_;
  opc::model::Package logicalPackage_;
  opc::plservices::CorePropertiesManager corePropertiesManager_;
  opc::plservices::FileSystemManager fileSystemManager_;
};

}  // namespace addon::packaging
