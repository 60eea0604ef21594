// SPDX-License-Identifier: MIT
// The seven documents. The first byte chooses one, and whether the rest is UTF-8 or bare UTF-16
// code units. What is read goes to XML and back, and to the host and back, unchanged.
#include <array>
#include <memory>
#include <string>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "fuzz/Require.h"
#include "hostarray/standin/CallScope.h"
#include "hostarray/standin/testing.h"
#include "opc/Text.h"
#include "opc/model/XercesHelper.h"
#include "tool/json/HostJson.h"

namespace {

using fuzz::require;

std::string describe(const kxArray* array) {
  std::string text;
  text::JsonWriter writer(text);
  tool::json::writeHostArray(array, writer);
  return text;
}

template <typename Document>
void checkXml(Document& document, const std::string& description) {
  const std::u16string xml = document.getAsXMLString();
  Document again;
  again.populateFromXML(xml);
  const tool::json::HostArrayPointer array(again.getStructArray());
  require(describe(array.get()) == description, "a document reads back equal");
  require(again.getAsXMLString() == xml, "equal documents give equal text");
}

template <typename Document>
void checkHost(Document& document, const kxArray* array, const std::string& description) {
  Document again(array);
  require(again.getAsXMLString() == document.getAsXMLString(), "the host hands a document back");
  const tool::json::HostArrayPointer other(again.getStructArray());
  require(describe(other.get()) == description, "the host is handed the same again");
}

template <typename Document>
void check(const std::u16string& xml) {
  Document document;
  const std::u16string before = document.getAsXMLString();
  if (!fuzz::isAccepted([&] { document.populateFromXML(xml); })) {
    require(document.getAsXMLString() == before, "a refused text changes nothing");
    return;
  }
  const hostarray::standin::CallScope scope;
  const tool::json::HostArrayPointer array(document.getStructArray());
  const std::string description = describe(array.get());
  checkXml(document, description);
  checkHost(document, array.get(), description);
}

constexpr std::array kChecks{
    check<addon::packaging::AddonProperties>,         check<addon::packaging::AddonLicense>,
    check<addon::packaging::AddonConfiguration>,      check<addon::packaging::AddonAppInstallList>,
    check<addon::packaging::AddonExamples>,           check<addon::packaging::AddonRevisionHistory>,
    check<addon::packaging::AddonSystemRequirements>,
};

std::u16string codeUnits(std::string_view bytes) {
  std::u16string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const unsigned low = static_cast<unsigned char>(bytes[i]);
    const unsigned high = static_cast<unsigned char>(bytes[i + 1]);
    text += static_cast<char16_t>(high << 8 | low);
  }
  return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::textOf(data, size);
  const std::size_t choice = fuzz::takeChoice(input, 2 * kChecks.size());
  const bool isWide = choice >= kChecks.size();
  const auto xml =
      fuzz::unlessRefused([&] { return isWide ? codeUnits(input) : opc::fromUtf8(input); });
  if (xml) kChecks[choice % kChecks.size()](*xml);
  require(hostarray::standin::liveArrays() == 0, "no array is left behind");
  return 0;
}
