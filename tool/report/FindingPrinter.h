// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "addon/checks/PackageVerdict.h"
#include "text/JsonWriter.h"
#include "tool/report/Output.h"

namespace tool::report {

/// Prints the findings of verify, package by package, in one of several formats.
class FindingPrinter {
 public:
  virtual ~FindingPrinter() = default;
  virtual void begin() {}
  virtual void print(const addon::checks::PackageVerdict& verdict) = 0;
  virtual void end() {}
};

/// The formats of --format.
std::vector<std::string> findingFormats();

/// The printer for a format of --format, or for "json". Throws UsageError for any other name.
/// `output` must outlive the printer. Only text can be coloured.
std::unique_ptr<FindingPrinter> makePrinter(std::string_view format, bool isStrict, Output& output,
                                            bool isColored = false);

/// The lines of --format text.
std::string describeFindings(const addon::checks::PackageVerdict& verdict, bool isColored);
/// A finding as an object.
void writeFinding(const opc::checks::Finding& finding, text::JsonWriter& json);
/// The same with its place in the files that the package was made from, which may be null.
void writeLocatedFinding(const opc::checks::Finding& finding,
                         const addon::checks::SourcePlace* place, text::JsonWriter& json);
/// The members "file", "line" and "column", null as far as they are not known.
void writePlace(const addon::checks::SourcePlace& place, text::JsonWriter& json);

// The printers, one each.
std::unique_ptr<FindingPrinter> makeTextPrinter(Output& output, bool isColored);
std::unique_ptr<FindingPrinter> makeGithubPrinter(Output& output);
std::unique_ptr<FindingPrinter> makeJsonPrinter(bool isStrict, Output& output);
std::unique_ptr<FindingPrinter> makeSarifPrinter(Output& output);

}  // namespace tool::report
