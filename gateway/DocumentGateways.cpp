// SPDX-License-Identifier: MIT
#include "gateway/DocumentGateways.h"

#include <string>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "gateway/GatewayFrame.h"

namespace gateway {

using addon::packaging::AddonAppInstallList;
using addon::packaging::AddonConfiguration;
using addon::packaging::AddonExamples;
using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::AddonRevisionHistory;
using addon::packaging::AddonSystemRequirements;
using opc::interfaces::OpenMode;

namespace {

/// What a setter constructs first; a struct that is not a document ends the call at that point.
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

void addonSetRevisionHistory(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonRevisionHistory>(Order::DocumentFirst, &AddonPackage::addXMLPart, nlhs, nrhs, prhs);
}

void addonGetRevisionHistory(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonRevisionHistory>(&AddonPackage::getXMLPart, nlhs, plhs, nrhs, prhs);
}

void addonSetConfiguration(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonConfiguration>(Order::DocumentFirst, &AddonPackage::addXMLPart, nlhs, nrhs, prhs);
}

void addonGetConfiguration(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonConfiguration>(&AddonPackage::getXMLPart, nlhs, plhs, nrhs, prhs);
}

void addonSetAppInstallList(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonAppInstallList>(Order::PackageFirst, &AddonPackage::addXMLPart, nlhs, nrhs, prhs);
}

void addonGetAppInstallList(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonAppInstallList>(&AddonPackage::getXMLPart, nlhs, plhs, nrhs, prhs);
}

void addonSetExamples(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonExamples>(Order::PackageFirst, &AddonPackage::addXMLPart, nlhs, nrhs, prhs);
}

void addonGetExamples(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonExamples>(&AddonPackage::getXMLPart, nlhs, plhs, nrhs, prhs);
}

void addonSetSystemRequirements(int nlhs, kxArray*[], int nrhs, const kxArray* prhs[]) {
  store<AddonSystemRequirements>(Order::PackageFirst, &AddonPackage::addXMLPart, nlhs, nrhs, prhs);
}

void addonGetSystemRequirements(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]) {
  load<AddonSystemRequirements>(&AddonPackage::getXMLPart, nlhs, plhs, nrhs, prhs);
}

}  // namespace gateway
