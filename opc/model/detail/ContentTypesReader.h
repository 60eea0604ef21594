// SPDX-License-Identifier: MIT
#pragma once

#include "opc/model/ContentTypes.h"
#include "opc/model/DocumentPieces.h"
#include "opc/model/FaultSink.h"

namespace opc::model::detail {

/// Adds the entries of a content types stream to `types`.
class ContentTypesReader final : public DocumentPieces {
 public:
  /// Both must outlive it.
  ContentTypesReader(ContentTypes& types, FaultSink& faults) : types_(types), faults_(faults) {}

  void startRoot(const XmlNode& root) override;
  void takeChild(const XmlNode& child) override;

 private:
  ContentTypes& types_;
  FaultSink& faults_;
  bool isRead_ = false;  // not below another root
};

}  // namespace opc::model::detail
