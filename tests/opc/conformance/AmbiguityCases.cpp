// SPDX-License-Identifier: MIT
// What readers of ZIP files disagree on, by the rule of the container that it touches.
#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

std::string unicodePath(const std::string& path) {
  return extraField(0x7075, "\x01" + le32(crcOf("b.m")) + path);
}

auto fieldOfBoth(std::string field) {
  return [=](PackageSpec& p) { p.last().local.extra = p.last().central.extra = field; };
}

auto marked(std::string name, std::uint32_t attributes, std::uint16_t host) {
  return [=](PackageSpec& p) {
    p.add(name, "").central.externalAttributes = attributes;
    p.last().central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
  };
}

auto central(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageSpec& p) { change(p.last().central); };
}

auto local(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageSpec& p) { change(p.last().local); };
}

std::string recordThatLeadsNowhere() {
  return le32(0x06054b50) + le64(0) + le32(5000) + le32(4) + le16(0);
}

void announceOnlyInTheDirectory(PackageSpec& p) {
  p.last().central.flags = 1 << 3;
}

void leaveLocalSizesOpen(PackageSpec& p) {
  p.last().descriptor = true;
  p.last().local.size = p.last().local.packedSize = 0xFFFFFFFF;
}

std::vector<Case> headerCases() {
  return {
      {"ZP-7", "ADescriptorThatOnlyOneHeaderAnnouncesIsAnError", Accepted, Error,
       announceOnlyInTheDirectory},
      {"ZP-9", "LocalSizesThatStandNowhereAreAnError", Accepted, Error, leaveLocalSizesOpen},
      {"ZP-9", "AFieldOfOtherValuesDrawsAWarning", Accepted, Warning,
       central([](auto& header) { header.extra = extraField(1, le64(7)); })},
      {"ZP-9", "AFieldOfTheRightValuesIsAcceptedWithoutNeed", Accepted, Silent,
       central([](auto& header) { header.extra = extraField(1, le64(3000)); })},
      {"ZP-11", "AVersionThatOnlyOtherMethodsNeedIsRefused", Refused, Error,
       central([](auto& header) { header.versionNeeded = 63; })},
      {"ZP-11", "AVersionWithAnUpperByteIsAnError", Accepted, Error,
       central([](auto& header) { header.versionNeeded = 3 << 8 | 20; })},
      {"ZP-11", "ALocalVersionThatOnlyOtherMethodsNeedIsAnError", Accepted, Error,
       local([](auto& header) { header.versionNeeded = 63; })},
      {"ZP-11", "ReservedFlagsAreRefused", Refused, Error,
       central([](auto& header) { header.flags = 1 << 5; })},
      {"ZP-16", "AnEndRecordInTheCommentIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.comment = recordThatLeadsNowhere(); }},
      {"ZP-16", "AnEndRecordInTheCommentOfAnItemIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().comment = recordThatLeadsNowhere(); }},
      {"ZP-16", "ASignatureInTheCommentIsAnError", Accepted, Error,
       [](PackageSpec& p) { p.zip.comment = "PK\x05\x06"; }},
      {"ZP-14", "ALocatorOfNoVolumesIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.zip64 = true, p.zip.disks = 0; }},
  };
}

std::vector<Case> nameCases() {
  return {
      {"ZP-3", "AnotherNameInAUnicodePathFieldIsRefused", Refused, Error,
       fieldOfBoth(unicodePath("c.m"))},
      {"ZP-3", "AnotherNameInTheLocalUnicodePathFieldIsAnError", Accepted, Error,
       local([](auto& header) { header.extra = unicodePath("c.m"); })},
      {"ZP-3", "AnotherNameBeyondAsciiInAUnicodePathFieldIsAnError", Accepted, Error,
       fieldOfBoth(unicodePath("\xC3\xA9.m"))},
      {"ZP-3", "TheSameNameInAUnicodePathFieldIsAccepted", Accepted, Silent,
       fieldOfBoth(unicodePath("b.m"))},
      {"ZP-10", "AFolderModeWithoutSlashIsAnError", Ignored, Error, marked("d", 0040755u << 16, 3)},
      {"ZP-10", "AFolderBitWithoutSlashIsAnError", Accepted, Error, marked("d.m", 0x10, 0)},
      {"ZP-10", "ALinkOfASystemWithoutLinksIsAnError", Accepted, Error,
       marked("d.m", 0120777u << 16, 0)},
      {"ZP-10", "AFolderThatHoldsDataIsAnError", Ignored, Error, item("d/", "data")},
      {"ZP-10", "AModeInAFieldThatContradictsTheNameIsAnError", Accepted, Error,
       local([](auto& header) {
         header.extra = extraField(0x6C78, "\x05" + le16(3 << 8) + le32(0120777u << 16));
       })},
      {"RB-15", "ANameThatEndsInAVersionDrawsAWarning", Accepted, Warning,
       [](PackageSpec& p) {
         p.add("c;1/d.m;1");
         p.types = "<Override PartName=\"/c;1/d.m;1\" ContentType=\"text/plain\"/>";
       }},
  };
}

}  // namespace

std::vector<Case> ambiguityCases() {
  std::vector<Case> all = headerCases();
  const std::vector<Case> more = nameCases();
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace test::conformance
