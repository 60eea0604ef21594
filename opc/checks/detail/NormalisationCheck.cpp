// SPDX-License-Identifier: MIT
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/PartName.h"

namespace opc::checks::detail {

using model::ItemRole;
using model::PartId;

namespace {

// The decoded name, composed and in ASCII lower case; "" if it does not decode, or decodes to
// ASCII, which has only one form.
std::string normalForm(std::string_view itemName) {
  if (isAscii(itemName) && itemName.find('%') == std::string_view::npos) return {};
  std::string decoded;
  try {
    decoded = model::percentDecodePath(itemName);
  } catch (const FormatError&) {
    return {};
  }
  if (isAscii(decoded)) return {};
  UErrorCode error = U_ZERO_ERROR;
  const icu::Normalizer2* composer = icu::Normalizer2::getNFCInstance(error);
  if (U_FAILURE(error)) return {};
  const icu::UnicodeString composed =
      composer->normalize(icu::UnicodeString::fromUTF8(decoded), error);
  std::string result;
  if (U_SUCCESS(error)) composed.toUTF8String(result);
  return toLowerAscii(result);
}

}  // namespace

void checkNormalisation(Packaging& packaging) {
  std::vector<std::pair<std::string, PartId>> forms;
  const auto report = [&](PartId part, PartId other) {
    packaging.add(kNormalisationClash, part,
                  "it differs only in how its characters are composed from " +
                      quoted(packaging.partName(other)),
                  "PN-7");
  };
  const auto take = [&](PartId part) {
    std::string form = normalForm(packaging.index.name(part));
    if (form.empty()) return;
    // Some characters, such as the Kelvin sign, become ASCII in the normal form.
    const auto ascii = isAscii(form) ? packaging.index.find(model::percentEncodePath(form))
                                     : std::optional<PartId>();
    if (ascii) report(part, *ascii);
    forms.emplace_back(std::move(form), part);
  };
  packaging.index.forEach(ItemRole::Part, take);
  packaging.index.forEach(ItemRole::Untyped, take);
  std::stable_sort(forms.begin(), forms.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t i = 1; i < forms.size(); ++i) {
    if (forms[i].first == forms[i - 1].first) report(forms[i].second, forms[i - 1].second);
  }
}

}  // namespace opc::checks::detail
