# SPDX-License-Identifier: MIT
# Everything from outside, as Debian 12 packages it.

find_package(PkgConfig REQUIRED)
pkg_check_modules(libdeflate REQUIRED IMPORTED_TARGET libdeflate)
find_package(ZLIB REQUIRED)
find_package(XercesC 3.1 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(Boost 1.49 REQUIRED)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(fmt REQUIRED)
pkg_check_modules(uuid REQUIRED IMPORTED_TARGET uuid)
pkg_check_modules(libmd REQUIRED IMPORTED_TARGET libmd)
