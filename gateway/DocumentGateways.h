// SPDX-License-Identifier: MIT
#pragma once

#include "hostarray/kxarray.h"

// The gateways that store and read one metadata document. Input 0 is the package path.
// How they fail, and whose the output is, is in gateway/GatewayFrame.h.

namespace gateway {

void addonSetLicense(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetLicense(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetRevisionHistory(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetRevisionHistory(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetConfiguration(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetConfiguration(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetAppInstallList(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetAppInstallList(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetExamples(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetExamples(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetSystemRequirements(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetSystemRequirements(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

}  // namespace gateway
