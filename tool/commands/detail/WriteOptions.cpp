// SPDX-License-Identifier: MIT
#include "tool/commands/detail/WriteOptions.h"

#include <memory>

#include "opc/plservices/LoadedFileTree.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/Times.h"
#include "tool/process/Background.h"
#include "tool/report/Progress.h"

namespace tool::commands::detail {

opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation) {
  opc::zippackage::WriteOptions options;
  options.timestamp = timestampOf(invocation);
  options.background = process::secondThread();
  options.counted = opc::plservices::kFilesFolder;
  options.level =
      static_cast<int>(invocation.number(kLevelOption.longName, 0, 9).value_or(options.level));
  return options;
}

opc::interfaces::ProgressFunction startProgressBar(const line::Settings& settings) {
  const auto bar = std::make_shared<report::ProgressBar>(settings);
  return [bar, show = bar->function()](const opc::interfaces::Progress& progress) {
    if (show) show(progress);
  };
}

}  // namespace tool::commands::detail
