// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <ctime>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "addon/checks/AddonVerification.h"
#include "addon/checks/Catalogue.h"
#include "addon/checks/FindingRules.h"
#include "opc/signatures/Signing.h"
#include "opc/signatures/XmlSignatureLibrary.h"
#include "text/ByteCount.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Secret.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"

namespace tool::commands {

using addon::checks::PackageVerdict;
using addon::packaging::AddonPackage;
using opc::checks::Finding;
using opc::interfaces::ISigner;
using opc::interfaces::KeyFiles;
using opc::signatures::ItemDigests;
using process::Secret;

namespace {

constexpr std::array kOperands{detail::kPackageOperand};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "key", .valueName = "FILE", .help = "the private key, in PEM"},
    line::OptionSpec{.longName = "certificate",
                     .valueName = "FILE",
                     .help = "certificates, in PEM: the signer's, then its chain"},
    line::OptionSpec{.longName = "pkcs12",
                     .valueName = "FILE",
                     .help = "key and certificates in one file, in PKCS #12"},
    line::OptionSpec{.longName = "passphrase-file",
                     .valueName = "FILE",
                     .help = "the passphrase of the key is the first line of FILE"},
    detail::kTimestampOption,
    detail::kLevelOption,
    detail::kLockTimeoutOption};

constexpr const char* kPassphraseVariable = "KRADDON_PASSPHRASE";

/// What the options name. Overwritten at the end.
struct KeyMaterial {
  Secret key;
  Secret certificates;
  Secret pkcs12;
  Secret passphrase;
};

void readPrivate(const std::string& path, const line::Invocation& invocation, Secret& secret) {
  secret.readFile(path);
  if (!secret.isExposed()) return;
  report::printWarning(
      invocation, process::sentence("file", path,
                                    "other users may read it; 'chmod 600' keeps it to its owner"));
}

/// Whether there is a passphrase.
bool readPassphrase(const line::Invocation& invocation, Secret& passphrase) {
  const auto path = invocation.value("passphrase-file");
  if (!path) return passphrase.takeEnvironment(kPassphraseVariable);
  readPrivate(*path, invocation, passphrase);
  passphrase.keepFirstLine();
  return true;
}

void checkOptions(const line::Invocation& invocation) {
  invocation.refuseTogether("pkcs12", "key");
  invocation.refuseTogether("pkcs12", "certificate");
  if (invocation.has("pkcs12")) return;
  for (const char* name : {"key", "certificate"}) {
    if (invocation.has(name)) continue;
    throw process::UsageError(
        process::sentence("missing option", fmt::format("--{}", name),
                          "a signature needs --key and --certificate, or --pkcs12"));
  }
}

std::unique_ptr<ISigner> openSigner(const line::Invocation& invocation, std::int64_t time) {
  KeyMaterial material;
  KeyFiles files;
  if (readPassphrase(invocation, material.passphrase)) {
    files.passphrase = &material.passphrase.text();
  }
  if (const auto path = invocation.value("pkcs12")) {
    readPrivate(*path, invocation, material.pkcs12);
    files.keyName = files.certificateName = *path;
    files.pkcs12 = material.pkcs12.bytes();
  } else {
    files.keyName = *invocation.value("key");
    files.certificateName = *invocation.value("certificate");
    readPrivate(files.keyName, invocation, material.key);
    material.certificates.readFile(files.certificateName);
    files.key = material.key.bytes();
    files.certificates = material.certificates.bytes();
  }
  try {
    return opc::signatures::xmlSignatures().openSigner(files, time);
  } catch (const opc::Exception& error) {
    if (error.code() != opc::ErrorCode::NotFound) throw;
    throw process::Failure(error.what(),
                           fmt::format("--passphrase-file or {} gives it", kPassphraseVariable));
  }
}

/// Looks for errors in the package, and takes the digests of its parts on the way, in a second
/// thread if there is one. Meanwhile the package can be copied.
class Inspection {
 public:
  explicit Inspection(std::string path) : path_(std::move(path)) {
    if (const auto start = process::secondThread()) task_ = start([this] { inspect(); });
    if (!task_) isLate_ = true;
  }
  ~Inspection() { isStopped_ = true; }
  Inspection(const Inspection&) = delete;
  Inspection& operator=(const Inspection&) = delete;

  /// Waits for the end. Throws Exception if the package has errors or could not be read.
  const ItemDigests& digests() {
    finish();
    if (failure_) std::rethrow_exception(failure_);
    if (verdict_.errors != 0) throw opc::Exception(opc::ErrorCode::InvalidPackage, "it has errors");
    return digests_;
  }

  /// Waits for the end, and throws Failure if the package has errors.
  void refuseErrors(const line::Invocation& invocation) {
    finish();
    if (verdict_.errors != 0) refuse(invocation);
  }

 private:
  void finish() {
    task_.reset();
    if (std::exchange(isLate_, false)) inspect();
  }

  void inspect() noexcept {
    try {
      const auto look = [this](const opc::interfaces::Progress&) {
        if (isStopped_) throw opc::Exception(opc::ErrorCode::InvalidState, "it is not needed");
      };
      verdict_ = judge(path_,
                       addon::checks::verifyAddon(path_, look, {nullptr, false, &digests_},
                                                  process::secondThread()),
                       addon::checks::FindingRules());
    } catch (...) {
      // The main thread throws it again.
      failure_ = std::current_exception();
    }
  }

  [[noreturn]] void refuse(const line::Invocation& invocation) {
    std::erase_if(verdict_.findings, [](const Finding& finding) {
      return finding.id.severity != opc::checks::Severity::Error;
    });
    report::printToStandardError(
        report::describeFindings(verdict_, report::wantsErrorColor(invocation.settings())));
    const bool isBroken = std::any_of(
        verdict_.findings.begin(), verdict_.findings.end(),
        [](const Finding& finding) { return addon::checks::groupOf(finding.id) == "signature"; });
    throw process::Failure(process::sentence("cannot sign", path_,
                                             "it has " + text::counted(verdict_.errors, "error")),
                           isBroken ? "'kraddon unsign' removes its signatures" : "");
  }

  std::string path_;
  ItemDigests digests_;
  PackageVerdict verdict_;
  std::exception_ptr failure_;
  std::atomic<bool> isStopped_ = false;
  bool isLate_ = false;
  std::unique_ptr<opc::interfaces::BackgroundTask> task_;  // the last one: it uses the others
};

process::ExitCode run(const line::Invocation& invocation) {
  checkOptions(invocation);
  const std::string& path = invocation.operands()[0];
  auto options = detail::writeOptionsOf(invocation);
  options.background = nullptr;  // there is one new part, and other work for a second thread
  const std::int64_t time = options.timestamp.value_or(std::time(nullptr));
  std::shared_ptr<const ISigner> signer = openSigner(invocation, time);
  std::optional<Inspection> inspection;
  const auto sign = [&](AddonPackage& package) {
    inspection.emplace(path);  // the package is locked by now
    opc::signatures::addSignature(package.logicalPackage(), std::move(signer), time,
                                  [&]() -> const ItemDigests& { return inspection->digests(); });
  };
  try {
    detail::changePackage(
        path, options, invocation, sign,
        {.kind = detail::ReviewRules::Kind::None, .replaced = nullptr, .isAboutSignatures = true});
  } catch (const opc::Exception&) {
    if (inspection) inspection->refuseErrors(invocation);
    throw;
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon sign kit.kraddon --key key.pem --certificate chain.pem",
                      "signs with a key and its certificate"},
    line::ExampleSpec{
        "kraddon sign kit.kraddon --pkcs12 maker.p12 --passphrase-file passphrase.txt",
        "signs with a file that holds both"}};

constexpr const char* kDescription =
    "Adds a digital signature over every part of the package and every relationship. Apart from "
    "the parts, content types and relationships of signatures, nothing is changed, and earlier "
    "signatures stay valid. Later changes of the package break the signature. A package in which "
    "'verify' finds an error is refused, and so are keys that do not match the certificate or are "
    "too short, and certificates that are not valid at the time of the signature, which is "
    "--timestamp, SOURCE_DATE_EPOCH in the environment, or the current time.\n"
    "\n"
    "The passphrase of an encrypted key comes from --passphrase-file or from the environment "
    "variable KRADDON_PASSPHRASE. RSA keys have 2048 bits or more, ECDSA keys are on the curves "
    "P-256, P-384 or P-521.";

}  // namespace

constexpr line::CommandSpec kSignCommand{.name = "sign",
                                         .summary = "signs a package",
                                         .description = kDescription,
                                         .operands = kOperands,
                                         .options = kOptions,
                                         .run = run,
                                         .examples = kExamples};

}  // namespace tool::commands
