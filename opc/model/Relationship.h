// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

#include "opc/model/PartName.h"

namespace opc::model {

/// A URI reference, kept as it was given.
class URI {
 public:
  explicit URI(std::u16string text) : text_(std::move(text)) {}
  const std::u16string& toString() const { return text_; }

  friend bool operator==(const URI&, const URI&) = default;

 private:
  std::u16string text_;
};

enum class TargetMode { Internal, External };

/// One relationship, as a value.
///
/// The target of an internal one that was read from a package has been resolved against its source:
/// getTargetURI is then the absolute part name in canonical form. An external target is the text
/// that was stored.
class Relationship {
 public:
  Relationship(std::u16string id, std::u16string type, URI target, TargetMode mode)
      : id_(std::move(id)), type_(std::move(type)), target_(std::move(target)), mode_(mode) {}

  const std::u16string& getId() const { return id_; }
  const std::u16string& getType() const { return type_; }
  const URI& getTargetURI() const { return target_; }
  TargetMode getTargetMode() const { return mode_; }
  /// The target as a part name, which that of an internal relationship always is. Throws
  /// FormatError when it is none.
  PartName targetName() const { return PartName(target_.toString()); }

 private:
  std::u16string id_;
  std::u16string type_;
  URI target_;
  TargetMode mode_;
};

}  // namespace opc::model
