// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/comparison/Contents.h"
#include "addon/comparison/Digest.h"
#include "addon/packaging/Documents.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "text/JsonWriter.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/InfoFields.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::comparison::contentDigest;
using addon::comparison::Item;
using addon::comparison::readTree;
using addon::comparison::totalsOf;
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

std::string timeText(const boost::optional<boost::posix_time::ptime>& time) {
  return time ? detail::formatTime(*time) : std::string();
}

std::optional<report::Screenshot> readScreenshot(AddonPackage& package) {
  const std::string part = addon::packaging::screenshotPart(package);
  if (part.empty()) return std::nullopt;
  auto& model = package.logicalPackage();
  const opc::model::PartName name(opc::fromUtf8(part));
  if (!model.hasPart(name)) return std::nullopt;
  const auto found = model.getPart(name);
  return report::Screenshot{part, found->getContentType().ascii(),
                            model.partInfo(found->id()).size};
}

std::uint64_t fileSize(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw process::systemFailure("cannot access", path, errno);
  return static_cast<std::uint64_t>(info.st_size);
}

report::Info readInfo(const std::string& path, bool wantsDigest, const line::Settings& settings) {
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  report::Info info;
  info.file = path;
  info.size = fileSize(path);
  package->getAddonProperties(info.properties);
  const auto core = package->coreProperties().getCoreProperties();
  info.created = timeText(core.getCreatedTime());
  info.modified = timeText(core.getLastModifiedTime());
  for (const addon::packaging::PresentDocument& document :
       addon::packaging::presentDocuments(*package)) {
    info.documents.emplace_back(document.name);
  }
  info.screenshot = readScreenshot(*package);
  const std::vector<Item> items = readTree(*package);
  info.totals = totalsOf(items);
  if (!wantsDigest) return info;
  report::ProgressBar bar(settings);
  info.digest = contentDigest(*package, items, bar.function());
  return info;
}

void writeValue(const report::InfoField& field, const report::Info& info, text::JsonWriter& json) {
  if (field.kind == report::InfoKind::Number) {
    json.value(field.number(info));
  } else if (field.kind == report::InfoKind::Documents) {
    json.beginArray();
    for (const std::string& name : info.documents) json.value(std::string_view(name));
    json.endArray();
  } else if (field.kind == report::InfoKind::Screenshot && info.screenshot) {
    json.beginObject();
    json.member("part", std::string_view(info.screenshot->part));
    json.member("type", std::string_view(info.screenshot->type));
    json.member("size", info.screenshot->size);
    json.endObject();
  } else {
    json.textOrNull(valueOf(field, info));
  }
}

void writeJson(const report::Info& info, text::JsonWriter& json) {
  json.beginObject();
  json.member("schema", "kraddon.info/1");
  std::string_view object;  // the one that the last field was in
  for (const report::InfoField& field : report::infoFields()) {
    const std::string_view name = field.name;
    const std::size_t dot = name.find('.');
    const std::string_view parent = dot == name.npos ? std::string_view() : name.substr(0, dot);
    if (parent != object) {
      if (!object.empty()) json.endObject();
      if (!parent.empty()) {
        json.key(parent);
        json.beginObject();
      }
      object = parent;
    }
    json.key(parent.empty() ? name : name.substr(dot + 1));
    writeValue(field, info, json);
  }
  if (!object.empty()) json.endObject();
  json.endObject();
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
      writeJson(info, json_);
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
