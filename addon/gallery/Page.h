// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace addon::gallery {

// What a page shows, as plain values. Texts are UTF-8, not escaped, and "" if they are not set.

struct PageFile {
  std::string path;
  std::uint64_t size = 0;
  bool isFolder = false;  ///< an empty folder; others are implied by their files
};

struct PageExample {
  std::string name;
  std::string type;
  std::string source;
  std::string main;
  std::string thumbnail;
  std::vector<std::string> images;
};

struct PageCategory {
  std::string name;
  std::vector<PageExample> examples;
};

struct PageApp {
  std::string name;
  std::string guid;
  std::string path;
  bool isInstalledByDefault = false;
};

struct PageRevision {
  std::string date;  ///< free text
  std::string version;
  std::string description;
};

struct PageRequirement {
  std::string name;
  std::string version;
  std::string identifier;
};

/// A whole add-on.
struct Page {
  std::string name;  ///< never empty
  std::string type;
  std::string version;
  std::string release;
  std::string summary;
  std::string description;
  std::string author;
  std::string contact;
  std::string organization;
  std::string guid;
  std::string created;   ///< "2026-02-01T10:00:00Z"
  std::string modified;  ///< the same
  std::vector<PageRequirement> products;
  std::vector<PageRequirement> supportPackages;
  std::vector<PageCategory> categories;
  std::vector<PageApp> apps;
  std::vector<PageRevision> revisions;
  std::string licenseType;
  std::string licenseText;
  std::vector<std::string> searchPath;
  std::vector<std::string> javaClassPath;
  std::vector<PageFile> files;  ///< depth first, as the tree is ordered
  std::uint64_t packedSize = 0;
};

/// An image for a page, or the reason why there is none.
struct PageImage {
  std::string address;  ///< "data:image/png;base64,..."; "" if it cannot be shown
  std::string absence;  ///< "12 MB are too large for this page"; "" if none was given
};

/// Provides the images of a page one at a time, so that only one is in memory.
class PageImages {
 public:
  virtual ~PageImages() = default;
  virtual PageImage screenshot() = 0;
  /// A file of the add-on's tree.
  virtual PageImage file(const std::string& path) = 0;

 protected:
  PageImages() = default;
  PageImages(const PageImages&) = default;
  PageImages& operator=(const PageImages&) = default;
};

}  // namespace addon::gallery
