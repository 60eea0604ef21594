// SPDX-License-Identifier: MIT
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/optional.hpp>
#include <string>

namespace opc::plservices {

/// The properties of a package that any host shows. Times are UTC, in whole seconds.
class CoreProperties {
 public:
  /// Everything else absent.
  CoreProperties(std::u16string contentType, std::u16string contentTypeFriendlyName,
                 std::u16string korvanRelease);

  const std::u16string& getContentType() const { return contentType_; }
  const std::u16string& getContentTypeFriendlyName() const { return contentTypeFriendlyName_; }
  const std::u16string& getKorvanRelease() const { return korvanRelease_; }

  const boost::optional<std::u16string>& getTitle() const { return title_; }
  const boost::optional<std::u16string>& getDescription() const { return description_; }
  const boost::optional<std::u16string>& getVersion() const { return version_; }
  const boost::optional<std::u16string>& getCreatedBy() const { return createdBy_; }
  const boost::optional<boost::posix_time::ptime>& getCreatedTime() const { return created_; }
  const boost::optional<boost::posix_time::ptime>& getLastModifiedTime() const { return modified_; }

  void setTitle(const std::u16string& title) { title_ = title; }
  void setDescription(const std::u16string& description) { description_ = description; }
  void setVersion(const std::u16string& version) { version_ = version; }
  void setCreatedBy(const std::u16string& createdBy) { createdBy_ = createdBy; }
  void setCreatedTime(const boost::posix_time::ptime& time) { created_ = time; }
  void setLastModifiedTime(const boost::posix_time::ptime& time) { modified_ = time; }

 private:
  std::u16string contentType_;
  std::u16string contentTypeFriendlyName_;
  std::u16string korvanRelease_;
  boost::optional<std::u16string> title_;
  boost::optional<std::u16string> description_;
  boost::optional<std::u16string> version_;
  boost::optional<std::u16string> createdBy_;
  boost::optional<boost::posix_time::ptime> created_;
  boost::optional<boost::posix_time::ptime> modified_;
};

}  // namespace opc::plservices
