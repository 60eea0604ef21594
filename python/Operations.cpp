// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>
#include <sys/stat.h>

#include <functional>
#include <utility>

#include "addon/build/BuildError.h"
#include "addon/build/FolderBuild.h"
#include "addon/build/NewPackage.h"
#include "addon/build/PackageBuild.h"
#include "addon/build/Selection.h"
#include "addon/build/SourceFiles.h"
#include "addon/build/VerifyRules.h"
#include "addon/checks/AddonVerification.h"
#include "addon/checks/ChangeReview.h"
#include "addon/comparison/Digest.h"
#include "addon/comparison/OtherContent.h"
#include "addon/comparison/PackageComparison.h"
#include "addon/gallery/PackageImages.h"
#include "addon/gallery/PageReader.h"
#include "addon/gallery/PageWriter.h"
#include "addon/project/Guid.h"
#include "opc/Text.h"
#include "opc/checks/PackageVerification.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/signatures/XmlSignatureLibrary.h"
#include "python/Bindings.h"
#include "python/Progress.h"
#include "python/RecordValues.h"
#include "text/ByteCount.h"
#include "tool/process/Background.h"
#include "tool/report/BuildReport.h"
#include "tool/report/DifferencePrinter.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/InfoFields.h"

namespace python {

namespace py = pybind11;

using addon::build::BuildError;
using addon::build::BuildResult;
using addon::build::NewPackage;
using addon::build::SourceFile;
using addon::checks::PackageVerdict;
using addon::comparison::ComparedPackage;
using addon::comparison::contentDigest;
using addon::comparison::readTree;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::project::ManifestError;
using opc::zippackage::WriteOptions;
using Texts = std::vector<std::string>;

// Results are JSON, as the commands print it; the Python layer makes objects of it.
namespace {

/// A text that `write` makes through a sink.
std::string collect(const std::function<void(const tool::report::Sink&)>& write) {
  std::string text;
  write([&](std::string_view piece) { text += piece; });
  return text;
}

/// Runs `work`, and puts the path of the manifest into its faults.
template <typename Work>
auto withManifest(const std::string& folder, const Work& work) {
  try {
    return work();
  } catch (const ManifestError& error) {
    throw BuildError(error.in(addon::build::manifestPath(folder)));
  }
}

WriteOptions writeOptions(std::optional<std::int64_t> timestamp, int level) {
  WriteOptions options;
  options.timestamp = timestamp;
  options.level = level;
  options.counted = opc::plservices::kFilesFolder;
  options.background = tool::process::secondThread();
  return options;
}

std::string digestOfAll(AddonPackage& package) {
  return contentDigest(package, readTree(package), SignalCheck(), tool::process::secondThread());
}

std::string infoOf(PackageHandle& handle, bool wantsDigest) {
  return handle.use("", [&](AddonPackage& package) {
    tool::report::Info info = tool::report::readInfo(package, handle.path());
    if (wantsDigest) info.digest = digestOfAll(package);
    std::string text;
    text::JsonWriter json(text);
    tool::report::writeInfo(info, json);
    return text;
  });
}

std::string digestOf(PackageHandle& handle) {
  return handle.use("", digestOfAll);
}

/// What `create` is asked for, beside the properties.
struct Creation {
  std::string path;
  std::string folder;  ///< "" for none
  addon::build::SourceChoice choice;
  bool isForced;
  WriteOptions options;
  std::chrono::seconds patience;
};

void refuseErrors(const PackageVerdict& verdict) {
  if (verdict.errors == 0) return;
  const std::string why = "it would have " + text::counted(verdict.errors, "new error");
  throw BuildError(
      opc::sentence("cannot create", verdict.file, why + ": " + verdict.findings.front().message));
}

BuildResult create(Creation& creation, AddonProperties& properties) {
  const auto lock = lockPackage(creation.path, creation.patience);
  NewPackage target(creation.path, {.any = creation.isForced});
  std::vector<SourceFile> files;
  if (!creation.folder.empty()) {
    files = addon::build::sourcesBelow(creation.folder, "", creation.choice);
  }
  AddonPackage& package = target.open(properties, creation.options.timestamp);
  addon::build::storeFiles(files, false, package, creation.choice.stop);
  BuildResult result = addon::build::resultFor(creation.path, readTree(package));
  result.verdict = addon::checks::ChangeReview::ofNewPackage(package).judge(creation.path);
  refuseErrors(*result.verdict);
  creation.options.inspect = [&](const std::string& path) {
    AddonPackage made(opc::SystemPath{path});
    made.logicalPackage().open(opc::interfaces::OpenMode::Read);
    result.size = made.physicalPackage().fileSize();
    result.digest = digestOfAll(made);
  };
  target.commit(std::move(creation.options));
  result.isWritten = true;
  return result;
}

std::string jsonOf(const BuildResult& result) {
  return collect([&](const auto& sink) { tool::report::writeBuildAsJson(result, sink); });
}

std::string createPackage(const py::bytes& path, const py::bytes& folder, const py::object& values,
                          const Texts& excludes, bool leavesOutUsual, bool follows, bool isForced,
                          std::optional<std::int64_t> timestamp, int level, int patience,
                          const py::object& progress) {
  AddonProperties properties;
  fromPython(AddonProperties::kTable, addon::packaging::Record(properties), values);
  Creation creation{
      path, folder, {}, isForced, writeOptions(timestamp, level), std::chrono::seconds(patience)};
  creation.choice = {excludes, leavesOutUsual, follows, path, nullptr, SignalCheck()};
  creation.options.progress = progressFunction(progress);
  return withoutGil({path}, [&] { return jsonOf(create(creation, properties)); });
}

std::string buildPackage(const py::bytes& folder, const std::optional<py::bytes>& output,
                         const Texts& excludes, bool follows, bool isForced, bool isRehearsal,
                         bool isStrict, bool verifies, const Texts& ignore, const Texts& error,
                         const Texts& warn, std::optional<std::int64_t> timestamp,
                         std::optional<int> level, int patience, const py::object& progress) {
  addon::build::BuildRequest request;
  request.folder = folder;
  if (output) request.output = std::string(*output);
  request.isForced = isForced;
  request.followsOutside = follows;
  request.isStrict = isStrict;
  request.verifies = verifies;
  request.wantsDigest = true;
  request.excludes = excludes;
  request.rules = {ignore, error, warn};
  request.level = level;
  request.options = writeOptions(timestamp, 6);
  request.stop = SignalCheck();
  request.startProgress = [function = progressFunction(progress)] { return function; };
  request.lock = [patience](const std::string& path) {
    return lockPackage(path, std::chrono::seconds(patience));
  };
  const std::string place = folder;
  return withoutGil({place}, [&] {
    addon::build::PackageBuild build(std::move(request));
    withManifest(place, [&] { isRehearsal ? build.rehearse() : build.run(); });
    return jsonOf(build.result);
  });
}

std::string verify(const py::bytes& path, const Texts& ignore, const Texts& error,
                   const Texts& warn, const std::optional<py::bytes>& manifest,
                   const std::optional<py::bytes>& policy, bool isOpc, bool isStrict,
                   const std::vector<std::pair<std::string, std::string>>& certificates,
                   bool requiresSignature, const py::object& progress) {
  const auto function = progressFunction(progress);
  const std::string file = path;
  addon::build::RuleSources sources{{ignore, error, warn}, isStrict, {}, {}};
  if (manifest) sources.manifestFolder = std::string(*manifest);
  if (policy) sources.policy = std::string(*policy);
  const auto rules = withoutGil({sources.manifestFolder.value_or(sources.policy.value_or(""))},
                                [&] { return addon::build::rulesOf(sources); });
  std::unique_ptr<opc::interfaces::ITrustAnchors> anchors;
  for (const auto& each : certificates) {
    withoutGil({each.first}, [&] {
      opc::signatures::xmlSignatures().addAnchors(anchors, each.first, each.second);
    });
  }
  return withoutGil({file}, [&] {
    if (file.empty()) throw addon::build::systemError("cannot open package", file, ENOENT);
    const opc::checks::SignatureDemands demands{anchors.get(), requiresSignature};
    const auto check = isOpc ? opc::checks::verifyPackage : addon::checks::verifyAddon;
    const opc::checks::Report report =
        check(file, function, demands, tool::process::secondThread());
    PackageVerdict verdict = addon::checks::judge(file, report, rules.rules);
    std::string text;
    text::JsonWriter json(text);
    json.beginArray();
    for (opc::checks::Finding& finding : verdict.findings) {
      if (rules.isStrict) finding.id.severity = opc::checks::Severity::Error;
      tool::report::writeFinding(finding, json);
    }
    json.endArray();
    return text;
  });
}

/// Opens one of two packages to compare; a folder is first built to `built`.
ComparedPackage openCompared(const std::string& path, const std::string& built,
                             const Texts& others) {
  ComparedPackage compared{path};
  struct stat info {};
  const bool isFolder = ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  if (isFolder) {
    withManifest(path, [&] {
      addon::build::buildInto(path, built, {others, tool::process::secondThread(), SignalCheck()});
    });
  }
  const opc::SystemPath file{isFolder ? built : path};
  compared.package = std::make_unique<AddonPackage>(file);
  compared.package->logicalPackage().open(opc::interfaces::OpenMode::Read);
  compared.items = readTree(*compared.package);
  return compared;
}

std::string diff(const py::bytes& first, const py::bytes& second, const Texts& paths, bool areGlobs,
                 const py::bytes& scratch) {
  const std::string folder = scratch;
  const std::string nameOfA = first;
  const std::string nameOfB = second;
  const std::string builtA = folder + "/a.kraddon";
  auto a = withoutGil({nameOfA}, [&] { return openCompared(nameOfA, builtA, {nameOfB}); });
  auto b = withoutGil({nameOfB}, [&] {
    return openCompared(nameOfB, folder + "/b.kraddon", {nameOfA, builtA});
  });
  return withoutGil({}, [&] {
    addon::comparison::PackageDifferences differences;
    addon::build::chooseInBoth(a.items, b.items, paths, areGlobs);
    if (paths.empty()) {
      compareDescriptions(a, b, differences);
      compareOtherContent(a, b, differences);
    }
    differences.files = addon::comparison::compareFiles({*a.package, a.items},
                                                        {*b.package, b.items}, true, SignalCheck());
    return collect([&](const auto& sink) {
      tool::report::writeDifferencesAsJson({a, b, differences, !paths.empty()}, sink);
    });
  });
}

py::bytes preview(const py::bytes& path, const std::string& fallbackName) {
  const std::string file = path;
  return withoutGil({file}, [&] {
    AddonPackage package(opc::SystemPath{file});
    package.logicalPackage().open(opc::interfaces::OpenMode::Read);
    const addon::gallery::Page page = addon::gallery::readPage(package, fallbackName);
    addon::gallery::PackageImages images(package);
    SignalCheck check;
    return collect([&](const tool::report::Sink& sink) {
      addon::gallery::writePage(page, images, [&](std::string_view piece) {
        check();
        sink(piece);
      });
    });
  });
}

}  // namespace

void bindOperations(py::module_& module, PackageClass& package) {
  package.def("info", infoOf).def("digest", digestOf);
  module.def("create", createPackage);
  module.def("build", buildPackage);
  module.def("verify", verify);
  module.def("diff", diff);
  module.def("preview", preview);
  module.def("guid_of_name", addon::project::guidOfName);
  module.def("random_guid", addon::project::randomGuid);
}

}  // namespace python
