// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "addon/gallery/PageFiles.h"
#include "addon/packaging/DocumentTable.h"

namespace addon::gallery {

/// What a page shows: the documents, and what the package says beside them.
struct Page {
  Page();

  std::string name;                                 ///< never empty
  std::string created;                              ///< "2026-02-01T10:00:00Z"
  std::string modified;                             ///< the same
  std::vector<packaging::OwnedDocument> documents;  ///< all kinds, in the order of their list
  PageFiles files;
  std::uint64_t downloadSize = 0;  ///< of the package itself

  /// Those of one class, "" and no entries when the package has none.
  template <typename Document>
  Document& get() const {
    return dynamic_cast<Document&>(*find(Document::kTable).part);
  }
  const packaging::OwnedDocument& find(const packaging::DocumentTable& table) const;
};

/// A text of the package, in UTF-8. Nothing is escaped.
std::string utf8(const std::u16string& text);

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
