// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace opc::model {

/// A media type: "token/token", with parameters if any. Checked when it exists.
class ContentType {
 public:
  /// Throws FormatError (ErrorCode::InvalidArgument) with the rule that it breaks.
  explicit ContentType(std::u16string_view type);
  static ContentType fromAscii(std::string_view type);

  std::u16string toString() const;
  const std::string& ascii() const { return type_; }  ///< as given; always ASCII
  std::string withoutSpaces() const;  ///< the blanks around ';' left out, as it is written

  /// Whether it is registered for one product or use (vnd., prs., x.) rather than for a format that
  /// any file of an extension may have.
  bool isParticular() const;

  /// Without ASCII case; parameters count, blanks around them do not.
  friend bool operator==(const ContentType& a, const ContentType& b);

 private:
  explicit ContentType(std::string type) : type_(std::move(type)) {}
  bool hasParameters() const;

  std::string type_;
};

}  // namespace opc::model
