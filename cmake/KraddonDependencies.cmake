# SPDX-License-Identifier: MIT
# The libraries that the project uses, as Debian 12 packages them.

find_package(PkgConfig REQUIRED)
pkg_check_modules(libdeflate REQUIRED IMPORTED_TARGET libdeflate)
find_package(ZLIB REQUIRED)
find_package(XercesC 3.1 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(Boost 1.49 REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(fmt REQUIRED)
pkg_check_modules(uuid REQUIRED IMPORTED_TARGET uuid)
pkg_check_modules(tomlplusplus REQUIRED tomlplusplus)  # headers only

# kraddon_archive(NAME TARGET): a library that programs link as an archive, because each shared one
# takes them a twentieth of a millisecond at their start. The shared library links TARGET.
function(kraddon_archive name target)
  string(TOUPPER KRADDON_${name}_ARCHIVE archive)
  find_library(${archive} lib${name}.a REQUIRED)
  mark_as_advanced(${archive})
  add_library(kraddon_${name} INTERFACE)
  target_link_libraries(kraddon_${name} INTERFACE
    $<IF:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>,${${archive}},${target}>)
endfunction()
kraddon_archive(deflate PkgConfig::libdeflate)
kraddon_archive(uuid PkgConfig::uuid)

# Programs link Xerces-C statically, without some of its parts: opc/model/detail/No*.cpp.
# The shared library cannot, since Debian's archive is not position independent.
find_library(KRADDON_XERCES_ARCHIVE libxerces-c.a)
mark_as_advanced(KRADDON_XERCES_ARCHIVE)
add_library(kraddon_xerces INTERFACE)
target_include_directories(kraddon_xerces SYSTEM INTERFACE ${XercesC_INCLUDE_DIRS})
if(KRADDON_XERCES_ARCHIVE)
  set(is_program $<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>)
  target_link_libraries(kraddon_xerces INTERFACE
    $<${is_program}:$<TARGET_OBJECTS:opc_xerces_parts>>
    $<IF:${is_program},${KRADDON_XERCES_ARCHIVE},XercesC::XercesC> ICU::uc)
else()
  target_link_libraries(kraddon_xerces INTERFACE XercesC::XercesC)
endif()

# The archives, so that the program starts no slower for what few commands need.
find_library(KRADDON_CMARK_ARCHIVE libcmark-gfm.a REQUIRED)
find_library(KRADDON_CMARK_EXTENSIONS_ARCHIVE libcmark-gfm-extensions.a REQUIRED)
find_path(KRADDON_CMARK_INCLUDE_DIR cmark-gfm-core-extensions.h REQUIRED)
mark_as_advanced(
  KRADDON_CMARK_ARCHIVE KRADDON_CMARK_EXTENSIONS_ARCHIVE KRADDON_CMARK_INCLUDE_DIR)
add_library(kraddon_cmark INTERFACE)
target_include_directories(kraddon_cmark SYSTEM INTERFACE ${KRADDON_CMARK_INCLUDE_DIR})
target_link_libraries(kraddon_cmark INTERFACE
  ${KRADDON_CMARK_EXTENSIONS_ARCHIVE} ${KRADDON_CMARK_ARCHIVE})

# Only its header: the program loads the library when it needs it.
find_path(KRADDON_SQLITE_INCLUDE_DIR sqlite3.h REQUIRED)
mark_as_advanced(KRADDON_SQLITE_INCLUDE_DIR)

# Only the SHA-256 of libcrypto, which uses the processor's own instructions. To load all of libcrypto
# would take as long as the program's whole start.
find_library(KRADDON_CRYPTO_ARCHIVE libcrypto.a REQUIRED)
mark_as_advanced(KRADDON_CRYPTO_ARCHIVE)
add_library(kraddon_sha256 INTERFACE)
target_compile_definitions(kraddon_sha256 INTERFACE OPENSSL_SUPPRESS_DEPRECATED)
target_link_libraries(kraddon_sha256 INTERFACE ${KRADDON_CRYPTO_ARCHIVE})

# Only for a library that is loaded when it is needed: the program would start in twice the time.
pkg_check_modules(xmlsec REQUIRED IMPORTED_TARGET xmlsec1-openssl)
add_library(kraddon_xmlsec INTERFACE)
target_link_libraries(kraddon_xmlsec INTERFACE PkgConfig::xmlsec)
