// SPDX-License-Identifier: MIT
#include "gateway/FileGateways.h"

#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/HostStruct.h"
#include "gateway/GatewayFrame.h"

namespace gateway {

using addon::packaging::AddonPackage;
using addon::packaging::readTextCell;
using addon::packaging::toTextCell;
using opc::interfaces::OpenMode;

namespace {

struct PathLists {
  std::vector<std::u16string> first;
  std::vector<std::u16string> second;
};

/// The texts of a cell array, or the one text; of anything else none.
std::vector<std::u16string> toTextList(const kxArray* input) {
  if (kxIsCell(input)) return readTextCell(input);
  if (kxIsChar(input)) return {matrix::get_ustring(input)};
  return {};
}

/// As many pairs as the first input has; a second one that is shorter is the host's error of an
/// index past the end. Inputs that are not of the same kind make no pairs.
PathLists toPathLists(const kxArray* first, const kxArray* second) {
  PathLists lists;
  if (kxIsCell(first) && kxIsCell(second)) {
    for (std::size_t i = 0; i < kxGetNumberOfElements(first); ++i) {
      lists.first.push_back(matrix::get_ustring(kxGetCell(first, i)));
      lists.second.push_back(matrix::get_ustring(kxGetCell(second, i)));
    }
  } else if (kxIsChar(first) && kxIsChar(second)) {
    lists.first.push_back(matrix::get_ustring(first));
    lists.second.push_back(matrix::get_ustring(second));
  }
  return lists;
}

/// Frees the package: together with its tree, the host's arrays would take too much memory.
std::vector<std::u16string> fileListOf(const std::u16string& path) {
  AddonPackage package(path);
  package.logicalPackage().open(OpenMode::Read);
  std::vector<std::u16string> names = package.getFileList();
  package.logicalPackage().close(false);
  return names;
}

}  // namespace

void addonAddFiles(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kPairWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    const PathLists lists = toPathLists(prhs[1], prhs[2]);
    if (lists.first.empty()) return;  // A file that gains nothing is not opened.

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Modify);
    package.addFiles(lists.first, lists.second);
    package.logicalPackage().close(false);
  });
}

void addonAddFolders(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    const std::vector<std::u16string> folders = toTextList(prhs[1]);
    if (folders.empty()) return;  // A file that gains nothing is not opened.

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Modify);
    package.addFolders(folders);
    package.logicalPackage().close(false);
  });
}

void addonExtractAllFiles(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    const std::u16string destination = matrix::get_ustring(prhs[1]);

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Read);
    package.extractAllFiles(destination);
    package.logicalPackage().close(false);
  });
}

void addonGetFileList(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  runGateway(kReader, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);

    plhs[0] = toTextCell(fileListOf(path)).release();
  });
}

void addonSetScreenshot(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    std::u16string image = matrix::get_ustring(prhs[1]);

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Modify);
    package.setScreenshot(image);
    package.logicalPackage().close(false);
  });
}

}  // namespace gateway
