// SPDX-License-Identifier: MIT
#pragma once

#include "hostarray/kxarray.h"

// The gateways that create a package, set and read its properties. Input 0 is the package path.
// How they fail, and whose the output is, is in gateway/GatewayFrame.h.

namespace gateway {

void addonCreatePackage(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetProperties(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetProperties(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

}  // namespace gateway
