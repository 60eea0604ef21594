// SPDX-License-Identifier: MIT
#include "addon/build/FolderBuild.h"

#include <utility>

#include "addon/build/VerifyRules.h"
#include "addon/build/detail/ProjectDocuments.h"
#include "addon/build/detail/ReadFile.h"

namespace addon::build {

using addon::checks::FindingRules;
using addon::packaging::AddonPackage;

void fillPackage(const Project& project, const FileChoice& choice, const FindingRules& rules,
                 AddonPackage& package) {
  storeFiles(treeOf(project, choice), false, package, choice.stop);
  storeAddedFiles(project, choice.stop, package);
  detail::storeDocuments(project, package);
  checkReferences(project.manifest, rules, package);
}

void buildInto(const std::string& folder, const std::string& package,
               const FolderBuildOptions& buildOptions) {
  const Project project = openProject(folder);
  FileChoice choice;
  choice.leftOut = buildOptions.leftOut;
  choice.stop = buildOptions.stop;
  choice.leftOut.push_back(package);  // the folder may well hold the place for temporary files
  choice.leftOut.push_back(addon::project::outputPath(project.manifest));
  addon::packaging::AddonProperties properties = propertiesOf(project);

  AddonPackage made(opc::SystemPath{package}, properties);
  made.physicalPackage().setReplaceExisting(false);
  fillPackage(project, choice, FindingRules(ruleListsOf(project.manifest.verify)), made);
  opc::zippackage::WriteOptions options;
  options.level = 0;
  options.background = buildOptions.background;
  made.physicalPackage().setWriteOptions(std::move(options));
  made.logicalPackage().close(false);
}

}  // namespace addon::build
