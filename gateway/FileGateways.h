// SPDX-License-Identifier: MIT
#pragma once

#include "hostarray/kxarray.h"

// The gateways that work on the file tree and the screenshot. Input 0 is the package path.
// How they fail, and whose the output is, is in gateway/GatewayFrame.h.

namespace gateway {

void addonAddFiles(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonAddFolders(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonExtractAllFiles(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonGetFileList(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);
void addonSetScreenshot(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

}  // namespace gateway
