// SPDX-License-Identifier: MIT
#include "tool/report/FindingPrinter.h"

#include "addon/checks/Catalogue.h"
#include "text/JsonWriter.h"
#include "tool/line/Arguments.h"

namespace tool::report {

using addon::checks::findInfo;
using addon::checks::groupOf;
using addon::checks::PackageVerdict;
using addon::checks::SourcePlace;
using opc::checks::Finding;
using opc::checks::FindingInfo;

namespace {

class JsonPrinter final : public FindingPrinter {
 public:
  JsonPrinter(bool isStrict, Output& output) : isStrict_(isStrict), output_(output) {}

  void begin() override {
    json_.beginObject();
    json_.member("schema", "kraddon.verify/1");
    json_.key("packages");
    json_.beginArray();
  }

  void print(const PackageVerdict& verdict) override {
    json_.beginObject();
    json_.member("file", std::string_view(verdict.file));
    json_.member("ok", verdict.isGood(isStrict_));
    json_.member("errors", std::uint64_t{verdict.errors});
    json_.member("warnings", std::uint64_t{verdict.warnings});
    json_.member("ignored", std::uint64_t{verdict.ignored});
    json_.key("findings");
    json_.beginArray();
    for (const Finding& finding : verdict.findings) {
      writeFinding(finding, json_);
      flush();
    }
    json_.endArray();
    json_.endObject();
    flush();
  }

  void end() override {
    json_.endArray();
    json_.endObject();
    text_ += '\n';
    flush();
  }

 private:
  void flush() {
    output_.write(text_);
    text_.clear();
  }

  bool isStrict_;
  Output& output_;
  std::string text_;
  text::JsonWriter json_{text_};
};

void writeText(std::string_view key, std::string_view text, text::JsonWriter& json) {
  json.key(key);
  json.textOrNull(text);
}

void writeNumber(std::string_view key, std::size_t number, text::JsonWriter& json) {
  json.key(key);
  number == 0 ? json.null() : json.value(std::uint64_t{number});
}

/// A finding as an object; `place` writes where in which text it is.
template <typename WritePlace>
void write(const Finding& finding, text::JsonWriter& json, const WritePlace& place) {
  const FindingInfo* info = findInfo(finding.id.number);
  json.beginObject();
  json.member("id", std::string_view(opc::checks::idOf(finding.id.number)));
  writeText("rule", finding.rule, json);
  json.member("severity", opc::checks::nameOf(finding.id.severity));
  json.member("group", groupOf(finding.id));
  writeText("part", finding.part, json);
  place();
  writeText("message", finding.message, json);
  writeText("hint", info == nullptr ? std::string_view() : info->remedy, json);
  json.endObject();
}

}  // namespace

void writeFinding(const Finding& finding, text::JsonWriter& json) {
  write(finding, json, [&] { writeNumber("line", finding.line, json); });
}

void writeLocatedFinding(const Finding& finding, const SourcePlace* place, text::JsonWriter& json) {
  write(finding, json, [&] { writePlace(place == nullptr ? SourcePlace() : *place, json); });
}

void writePlace(const SourcePlace& place, text::JsonWriter& json) {
  writeText("file", place.file, json);
  writeNumber("line", place.line, json);
  writeNumber("column", place.column, json);
}

std::unique_ptr<FindingPrinter> makeJsonPrinter(bool isStrict, Output& output) {
  return std::make_unique<JsonPrinter>(isStrict, output);
}

std::vector<std::string> findingFormats() {
  return {"text", "github", "sarif"};
}

std::unique_ptr<FindingPrinter> makePrinter(std::string_view format, bool isStrict, Output& output,
                                            bool isColored) {
  if (format == "text") return makeTextPrinter(output, isColored);
  if (format == "github") return makeGithubPrinter(output);
  if (format == "sarif") return makeSarifPrinter(output);
  if (format == "json") return makeJsonPrinter(isStrict, output);
  line::refuseValue("--format", format, findingFormats());
}

}  // namespace tool::report
