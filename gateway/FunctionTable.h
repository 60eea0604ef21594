/* SPDX-License-Identifier: MIT */
#ifndef GATEWAY_FUNCTIONTABLE_H
#define GATEWAY_FUNCTIONTABLE_H

#include <stdint.h>

#include "hostarray/kxarray.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One host-callable operation: outputs asked for, output slots, inputs given, inputs. `plhs` always
 * has room for one output; a gateway that fails leaves it as it was. */
typedef void (*GatewayFunction)(int nlhs, kxArray* plhs[], int nrhs, const kxArray* prhs[]);

/* What the host reads: static, never written. */
typedef struct HostFunctionTable {
  const GatewayFunction* entryPoints; /* `entryPointCount` of them, in slot order */
  uint64_t interfaceConstant;         /* identifies this version of the interface */
  uint64_t buildTimeStamp;            /* fixed; seconds since 1970-01-01 00:00:00 UTC */
  uint64_t entryPointCount;
} HostFunctionTable;

/* The one function that the library exports. */
__attribute__((visibility("default"))) const HostFunctionTable* QueryKRFcnTable_kraddon_packaging(
    void);

#ifdef __cplusplus
}
#endif

#endif /* GATEWAY_FUNCTIONTABLE_H */
