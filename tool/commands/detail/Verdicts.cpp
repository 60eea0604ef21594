// SPDX-License-Identifier: MIT
#include "tool/commands/detail/Verdicts.h"

#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/report/Progress.h"

namespace tool::commands::detail {

using addon::checks::judge;
using addon::checks::PackageVerdict;

namespace {

// Larger packages take long enough for two threads and a progress line each.
constexpr ::off_t kMaxSmallSize = ::off_t{1} << 20;
// Few ahead: each verdict may have many findings.
constexpr opc::interfaces::BatchLimits kBatches{.jobs = 1, .effort = 1, .batches = 8, .ahead = 8};

}  // namespace

Verdicts::Verdicts(const VerdictRequest& request)
    : request_(request),
      work_(
          request.paths.size(), kBatches, [](std::size_t) { return 1; },
          [this] {
            return [this](std::size_t i, std::vector<Result>& results) {
              results.push_back(checkSmall(request_.paths[i]));
            };
          },
          process::secondThread()) {}

PackageVerdict Verdicts::take() {
  const std::string& path = request_.paths[taken_++];
  const auto [results, at] = work_.take();
  Result& result = results[at];
  if (result.failure) std::rethrow_exception(result.failure);
  return result.verdict ? *std::move(result.verdict) : checkLarge(path);
}

bool Verdicts::isLeft(const std::string& path) const {
  struct ::stat status {};
  return request_.paths.size() == 1 ||
         (::stat(path.c_str(), &status) == 0 && status.st_size > kMaxSmallSize);
}

Verdicts::Result Verdicts::checkSmall(const std::string& path) const {
  Result result;
  try {
    if (isLeft(path)) return result;
    result.verdict =
        verdictOf(path, [&] { return request_.verify(path, nullptr, request_.demands, nullptr); });
  } catch (...) {
    // Whatever it is, it ends the command when it is the turn of this package.
    result.failure = std::current_exception();
  }
  return result;
}

PackageVerdict Verdicts::checkLarge(const std::string& path) const {
  return verdictOf(path, [&] {
    report::ProgressBar bar(request_.settings);
    return request_.verify(path, bar.function(), request_.demands, process::secondThread());
  });
}

template <typename Check>
PackageVerdict Verdicts::verdictOf(const std::string& path, const Check& check) const {
  PackageVerdict failed;
  failed.file = path;
  try {
    if (path.empty()) throw process::systemFailure("cannot open package", path, ENOENT);
    return judge(path, check(), request_.rules);
  } catch (const opc::Exception& error) {
    failed.failure = error.what();
  } catch (const process::Failure& error) {
    failed.failure = opc::printable(error.what());
    failed.file = opc::printable(path);
  }
  return failed;
}

}  // namespace tool::commands::detail
