// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"

namespace test {

/// One of the seven kinds of documents.
struct DocumentType {
  const char* root;  ///< the name of its root element, and of its golden file without ".xml"
  std::unique_ptr<addon::packaging::XMLPartType> (*create)();
};

template <typename Document>
std::unique_ptr<addon::packaging::XMLPartType> createDocument() {
  return std::make_unique<Document>();
}

inline constexpr DocumentType kDocumentTypes[] = {
    {"addonProperties", createDocument<addon::packaging::AddonProperties>},
    {"license", createDocument<addon::packaging::AddonLicense>},
    {"configuration", createDocument<addon::packaging::AddonConfiguration>},
    {"applications", createDocument<addon::packaging::AddonAppInstallList>},
    {"examples", createDocument<addon::packaging::AddonExamples>},
    {"revisionHistory", createDocument<addon::packaging::AddonRevisionHistory>},
    {"systemRequirements", createDocument<addon::packaging::AddonSystemRequirements>},
};

inline std::string nameOfDocumentType(const testing::TestParamInfo<DocumentType>& test) {
  return test.param.root;
}

}  // namespace test
