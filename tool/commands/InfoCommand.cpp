// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/comparison/Digest.h"
#include "opc/Exception.h"
#include "text/JsonWriter.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/report/InfoFields.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

std::vector<std::string> fieldNames();

constexpr std::array kOperands{
    line::OperandSpec{.name = "PACKAGE", .help = "the packages", .isRepeatable = true}};

constexpr std::array kOptions{
    detail::kJsonOption,
    line::OptionSpec{.longName = "field",
                     .valueName = "NAME",
                     .help = "print only this value, named as in the JSON",
                     .choices = fieldNames},
    line::OptionSpec{.longName = "digest", .help = "add the digest, which reads all content"}};

report::Info readInfo(const std::string& path, bool wantsDigest, const line::Settings& settings) {
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  report::Info info = report::readInfo(*package, path);
  if (!wantsDigest) return info;
  report::ProgressBar bar(settings);
  info.digest = addon::comparison::contentDigest(*package, addon::comparison::readTree(*package),
                                                 bar.function(), process::secondThread());
  return info;
}

std::vector<std::string> fieldNames() {
  std::vector<std::string> names;
  for (const report::InfoField& field : report::infoFields()) names.emplace_back(field.name);
  return names;
}

const report::InfoField* findField(std::string_view name) {
  const auto fields = report::infoFields();
  const auto found =
      std::find_if(fields.begin(), fields.end(),
                   [&](const report::InfoField& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

/// "label         value", further lines of the value below its first one; nothing for "".
void writeLine(std::string_view label, std::string_view value, bool isColored,
               report::Output& output) {
  while (!value.empty()) {
    const std::size_t end = std::min(value.find('\n'), value.size());
    const std::string_view text = value.substr(0, end);
    // No blanks at the end of a line.
    const std::string padded = text.empty() ? std::string(label) : fmt::format("{:13} ", label);
    output.write(isColored ? fmt::format("\x1b[1m{}\x1b[0m", padded) : padded);
    output.write(output.shown(text) + "\n");
    value.remove_prefix(std::min(end + 1, value.size()));
    label = {};
  }
}

void writeText(const report::Info& info, bool isColored, report::Output& output) {
  for (const report::InfoField& field : report::infoFields()) {
    if (*field.label == '\0') continue;
    writeLine(field.label, field.line != nullptr ? field.line(info) : valueOf(field, info),
              isColored, output);
  }
}

void checkField(const line::Invocation& invocation) {
  const std::optional<std::string> field = invocation.value("field");
  if (!field) return;
  invocation.refuseTogether("field", "json");
  invocation.refuseTogether("field", "digest");
  if (findField(*field) != nullptr) return;
  std::vector<std::string_view> names;
  for (const report::InfoField& known : report::infoFields()) names.emplace_back(known.name);
  const std::string all = fmt::format("the fields are {}", fmt::join(names, ", "));
  throw process::UsageError(
      process::sentence("unknown field", *field, text::suggestion(*field, names, all)));
}

/// Nothing, and a message, if a package cannot be read: the others are of interest all the same.
template <typename Read>
std::optional<report::Info> readOrReport(const Read& read) {
  try {
    return read();
  } catch (const process::Failure& failure) {
    report::printError("info", failure.what(), failure.hint());
  } catch (const opc::Exception& error) {
    report::printError("info", error.what());
  }
  return std::nullopt;
}

/// Prints what was asked for of one package after the other.
class InfoPrinter {
 public:
  explicit InfoPrinter(const line::Invocation& invocation)
      : invocation_(invocation),
        isJson_(invocation.has("json")),
        isList_(invocation.operands().size() > 1) {
    if (const auto field = invocation.value("field")) field_ = findField(*field);
    if (!isJson_ || !isList_) return;
    json_.beginObject();
    json_.member("schema", "kraddon.infos/1");
    json_.key("packages");
    json_.beginArray();
  }

  bool wantsDigest() const {
    return invocation_.has("digest") ||
           (field_ != nullptr && std::string_view(field_->name) == "digest");
  }

  void print(const report::Info& info) {
    if (field_ != nullptr) {
      output_.write(output_.shown(valueOf(*field_, info)) + "\n");
    } else if (isJson_) {
      report::writeInfo(info, json_);
      output_.write(std::exchange(text_, {}));
    } else {
      if (!isFirst_) output_.write("\n");
      writeText(info, report::wantsColor(invocation_.settings(), output_), output_);
    }
    isFirst_ = false;
    output_.flush();  // before what goes to standard error
  }

  void end() {
    if (isJson_ && isList_) {
      json_.endArray();
      json_.endObject();
    }
    if (isJson_) output_.write(text_ + "\n");
    output_.flush();
  }

 private:
  const line::Invocation& invocation_;
  bool isJson_;
  bool isList_;
  const report::InfoField* field_ = nullptr;
  bool isFirst_ = true;
  report::Output output_;
  std::string text_;
  text::JsonWriter json_{text_};
};

process::ExitCode run(const line::Invocation& invocation) {
  checkField(invocation);
  InfoPrinter printer(invocation);
  const std::vector<std::string>& paths = invocation.operands();
  const auto read = [&](const std::string& path) {
    return readInfo(path, printer.wantsDigest(), invocation.settings());
  };
  process::ExitCode code = process::ExitCode::Done;
  if (paths.size() == 1) {
    printer.print(read(paths[0]));
  } else {
    for (const std::string& path : paths) {
      const auto info = readOrReport([&] { return read(path); });
      if (info)
        printer.print(*info);
      else
        code = process::ExitCode::Failed;
    }
  }
  printer.end();
  return code;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon info kit.kraddon", "shows an overview"},
    line::ExampleSpec{"kraddon info kit.kraddon --field version",
                      "prints only the add-on's version"},
    line::ExampleSpec{"kraddon info --json *.kraddon", "lists all packages for other programs"},
    line::ExampleSpec{"kraddon info kit.kraddon --json", "prints the overview for other programs"}};

}  // namespace

constexpr line::CommandSpec kInfoCommand{
    .name = "info",
    .summary = "shows the properties and sizes of a package",
    .description =
        "Prints the properties, the number and sizes of the files, and the documents in the "
        "package. Packages with the same content have the same digest, however and whenever they "
        "were packed; computing it takes time, since it reads everything. Values that are not set "
        "are left out; with --field they are empty. Of several packages each gets a block or, with "
        "--field, a line; one that cannot be read does not hide the others.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
