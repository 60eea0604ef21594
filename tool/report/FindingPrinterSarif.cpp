// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <string>
#include <vector>

#include "addon/checks/Catalogue.h"
#include "opc/model/NameCharacters.h"
#include "text/JsonWriter.h"
#include "tool/report/FindingPrinter.h"

namespace tool::report {

using addon::checks::catalogue;
using addon::checks::findInfo;
using addon::checks::groupOf;
using addon::checks::PackageVerdict;
using addon::checks::SourcePlace;
using opc::checks::Finding;
using opc::checks::FindingInfo;

namespace {

// A path as a relative reference: a colon in it would look like a scheme.
std::string toUri(std::string_view path) {
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char c : path) {
    if (c == '/' || opc::model::isUnreserved(c)) {
      uri += c;
    } else {
      opc::model::appendPercentEncoded(uri, c);
    }
  }
  return uri;
}

/// SARIF 2.1.0: one run of one tool, whose rules are the catalogue.
class SarifPrinter final : public FindingPrinter {
 public:
  explicit SarifPrinter(Output& output) : output_(output) {}

  void begin() override {
    json_.beginObject();
    json_.member("$schema", "https://json.schemastore.org/sarif-2.1.0.json");
    json_.member("version", "2.1.0");
    json_.key("runs");
    json_.beginArray();
    json_.beginObject();
    writeTool();
    json_.member("columnKind", "unicodeCodePoints");
    json_.key("results");
    json_.beginArray();
    flush();
  }

  void print(const PackageVerdict& verdict) override {
    if (!verdict.failure.empty()) {
      failures_.push_back(verdict.failure);
      if (!verdict.failurePlace.file.empty()) writeFailure(verdict);
    }
    for (std::size_t i = 0; i < verdict.findings.size(); ++i) writeResult(verdict, i);
  }

  // Whether the run succeeded is known last, and members may come in any order.
  void end() override {
    json_.endArray();
    writeInvocation();
    json_.endObject();
    json_.endArray();
    json_.endObject();
    text_ += '\n';
    flush();
  }

 private:
  void writeTool() {
    json_.key("tool");
    json_.beginObject();
    json_.key("driver");
    json_.beginObject();
    json_.member("name", "kraddon");
    json_.member("version", KRADDON_VERSION);
    json_.key("rules");
    json_.beginArray();
    for (const FindingInfo& info : catalogue()) writeRule(info);
    json_.endArray();
    json_.endObject();
    json_.endObject();
  }

  void writeRule(const FindingInfo& info) {
    json_.beginObject();
    json_.member("id", std::string_view(opc::checks::idOf(info.id.number)));
    writeMessage("shortDescription", info.title);
    writeMessage("fullDescription", info.explanation);
    writeMessage("help", info.remedy);
    json_.key("defaultConfiguration");
    json_.beginObject();
    json_.member("level", opc::checks::nameOf(info.id.severity));
    json_.endObject();
    json_.key("properties");
    json_.beginObject();
    json_.key("tags");
    json_.beginArray();
    json_.value(groupOf(info.id));
    json_.endArray();
    json_.endObject();
    json_.endObject();
  }

  /// What has a place, and so is shown there.
  void writeFailure(const PackageVerdict& verdict) {
    json_.beginObject();
    json_.member("level", "error");
    writeMessage("message", verdict.failure);
    json_.key("locations");
    json_.beginArray();
    json_.beginObject();
    writePlace(verdict.failurePlace);
    json_.endObject();
    json_.endArray();
    json_.endObject();
    flush();
  }

  void writeResult(const PackageVerdict& verdict, std::size_t index) {
    const Finding& finding = verdict.findings[index];
    const FindingInfo* info = findInfo(finding.id.number);
    json_.beginObject();
    json_.member("ruleId", std::string_view(opc::checks::idOf(finding.id.number)));
    if (info != nullptr) {
      const auto rule = info - catalogue().data();
      json_.member("ruleIndex", static_cast<std::uint64_t>(rule));
    }
    json_.member("level", opc::checks::nameOf(finding.id.severity));
    writeMessage("message", finding.message);
    json_.key("locations");
    json_.beginArray();
    const SourcePlace* place = verdict.placeOf(index);
    writeLocation(place == nullptr ? SourcePlace{verdict.file} : *place, finding);
    json_.endArray();
    if (!finding.rule.empty()) writeProperty("rule", std::string_view(finding.rule));
    json_.endObject();
    flush();
  }

  void writeLocation(const SourcePlace& place, const Finding& finding) {
    json_.beginObject();
    writePlace(place);
    if (!finding.part.empty()) writePart(finding);
    json_.endObject();
  }

  void writePlace(const SourcePlace& place) {
    json_.key("physicalLocation");
    json_.beginObject();
    json_.key("artifactLocation");
    json_.beginObject();
    json_.member("uri", std::string_view(toUri(place.file)));
    json_.endObject();
    if (place.line != 0) {
      json_.key("region");
      json_.beginObject();
      json_.member("startLine", std::uint64_t{place.line});
      if (place.column != 0) json_.member("startColumn", std::uint64_t{place.column});
      json_.endObject();
    }
    json_.endObject();
  }

  // A line is one of the part's text; a region would be one of the package's.
  void writePart(const Finding& finding) {
    json_.key("logicalLocations");
    json_.beginArray();
    json_.beginObject();
    json_.member("fullyQualifiedName", std::string_view(finding.part));
    json_.member("kind", "resource");
    if (finding.line != 0) writeProperty("line", std::uint64_t{finding.line});
    json_.endObject();
    json_.endArray();
  }

  void writeInvocation() {
    json_.key("invocations");
    json_.beginArray();
    json_.beginObject();
    json_.member("executionSuccessful", failures_.empty());
    json_.key("toolExecutionNotifications");
    json_.beginArray();
    for (const std::string& failure : failures_) {
      json_.beginObject();
      json_.member("level", "error");
      writeMessage("message", failure);
      json_.endObject();
    }
    json_.endArray();
    json_.endObject();
    json_.endArray();
  }

  void writeMessage(std::string_view key, std::string_view text) {
    json_.key(key);
    json_.beginObject();
    json_.member("text", text);
    json_.endObject();
  }

  template <typename Value>
  void writeProperty(std::string_view name, const Value& value) {
    json_.key("properties");
    json_.beginObject();
    json_.member(name, value);
    json_.endObject();
  }

  void flush() {
    output_.write(text_);
    text_.clear();
  }

  Output& output_;
  std::string text_;
  text::JsonWriter json_{text_};
  std::vector<std::string> failures_;
};

}  // namespace

std::unique_ptr<FindingPrinter> makeSarifPrinter(Output& output) {
  return std::make_unique<SarifPrinter>(output);
}

}  // namespace tool::report
