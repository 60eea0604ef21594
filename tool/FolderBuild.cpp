// SPDX-License-Identifier: MIT
#include "tool/FolderBuild.h"

#include <utility>

#include "tool/ProjectDocuments.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/process/Background.h"

namespace tool {

using addon::checks::IgnoreRules;
using addon::packaging::AddonPackage;

void fillPackage(const Project& project, const FileChoice& choice, const IgnoreRules& rules,
                 AddonPackage& package) {
  storeFiles(treeOf(project, choice), false, package);
  storeAddedFiles(project, package);
  storeDocuments(project, package);
  checkReferences(project.manifest, rules, package);
}

void buildInto(const std::string& folder, const std::string& package,
               const std::vector<std::string>& leftOut) {
  const Project project = openProject(folder);
  FileChoice choice;
  choice.leftOut = leftOut;
  choice.leftOut.push_back(package);  // the folder may well hold the place for temporary files
  choice.leftOut.push_back(addon::project::outputPath(project.manifest));
  addon::packaging::AddonProperties properties = propertiesOf(project);

  AddonPackage made(opc::SystemPath{package}, properties);
  made.physicalPackage().setReplaceExisting(false);
  fillPackage(project, choice, ignoreRulesOf(project.manifest), made);
  opc::zippackage::WriteOptions options;
  options.level = 0;
  options.background = process::secondThread();
  made.physicalPackage().setWriteOptions(std::move(options));
  made.logicalPackage().close(false);
}

}  // namespace tool
