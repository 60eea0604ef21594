// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace fuzz {

// Made by tests/interop/signatures/make_fuzz_inputs.py, as the inputs are.
/// The certificate behind the signatures of the inputs.
inline constexpr std::string_view kTrusted = R"(-----BEGIN CERTIFICATE-----
MIIBQjCB6aADAgECAhRboWztGwBfKmM8wccg2xKv53Ok1TAKBggqhkjOPQQDAjAP
MQ0wCwYDVQQDDARSb290MB4XDTIwMDEwMTAwMDAwMFoXDTQwMDEwMTAwMDAwMFow
DzENMAsGA1UEAwwEUm9vdDBZMBMGByqGSM49AgEGCCqGSM49AwEHA0IABMP4qU5G
FR6aOMzYXw8hy1zkbj6mhxWpg4J8d066/71INYuMvKvUp7kp3o2sZ1GsdbVxF3ZU
7FR7u23jJR8epnujIzAhMA8GA1UdEwEB/wQFMAMBAf8wDgYDVR0PAQH/BAQDAgEG
MAoGCCqGSM49BAMCA0gAMEUCIHUTbn2PDAoeIO2LEbnZY11mXO2j8sJPKDmC5HLq
1lVkAiEAo98iLmufigxVESVolgVDeXFPyNmvCOd14uEptTrOHP4=
-----END CERTIFICATE-----
)";
/// The SHA-256 of their content.
inline constexpr std::string_view kSignedContent =
    "3c148fdb1c7e2ce9881eb5489fc03eff5f555709918134e3c5298fc43b411a56";

}  // namespace fuzz
