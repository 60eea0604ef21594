// SPDX-License-Identifier: MIT
#include "gateway/DocumentGateways.h"

#include <string>

#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonPackage.h"
#include "gateway/GatewayFrame.h"
#include "gateway/NotAvailable.h"

namespace gateway {

using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using opc::interfaces::OpenMode;

namespace {

/// What a setter constructs first; a struct that is no document ends the call at that point.
enum class Order { DocumentFirst, PackageFirst };

template <typename Document, typename Operation>
void commit(AddonPackage& package, Document& document, Operation operation) {
  package.logicalPackage().open(OpenMode::Modify);
  (package.*operation)(document);
  package.logicalPackage().close(false);
}

/// A whole setter: `operation` is the member of AddonPackage that stores the document.
template <typename Document, typename Operation>
void store(Order order, Operation operation, int nlhs, int nrhs, const kxArray* prhs[]) {
  runGateway(kWriter, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    if (order == Order::DocumentFirst) {
      Document document(prhs[1]);
      AddonPackage package(path);
      commit(package, document, operation);
    } else {
      AddonPackage package(path);
      Document document(prhs[1]);
      commit(package, document, operation);
    }
  });
}

/// A whole getter: `operation` is the member of AddonPackage that fills the document.
template <typename Document, typename Operation>
void load(Operation operation, int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  runGateway(kReader, nlhs, nrhs, [&] {
    const std::u16string path = matrix::get_ustring(prhs[0]);
    Document document;

    AddonPackage package(path);
    package.logicalPackage().open(OpenMode::Read);
    (package.*operation)(document);
    package.logicalPackage().close(false);
    plhs[0] = document.getStructArray();
  });
}

}  // namespace

void addonSetLicense(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonLicense>(Order::DocumentFirst, &AddonPackage::setLicense, nlhs, nrhs, prhs);
}

void addonGetLicense(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonLicense>(&AddonPackage::getLicense, nlhs, plhs, nrhs, prhs);
}

void addonSetRevisionHistory(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonSetRevisionHistory", kWriter, nlhs, nrhs);
}

void addonGetRevisionHistory(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonGetRevisionHistory", kReader, nlhs, nrhs);
}

void addonSetConfiguration(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonSetConfiguration", kWriter, nlhs, nrhs);
}

void addonGetConfiguration(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonGetConfiguration", kReader, nlhs, nrhs);
}

void addonSetAppInstallList(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonSetAppInstallList", kWriter, nlhs, nrhs);
}

void addonGetAppInstallList(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonGetAppInstallList", kReader, nlhs, nrhs);
}

void addonSetExamples(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonSetExamples", kWriter, nlhs, nrhs);
}

void addonGetExamples(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonGetExamples", kReader, nlhs, nrhs);
}

void addonSetSystemRequirements(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonSetSystemRequirements", kWriter, nlhs, nrhs);
}

void addonGetSystemRequirements(int nlhs, kxArray*[], int nrhs, const kxArray*[]) {
  raiseNotAvailable("addonGetSystemRequirements", kReader, nlhs, nrhs);
}

}  // namespace gateway
