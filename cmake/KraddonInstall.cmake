# SPDX-License-Identifier: MIT
# `cmake --install` makes a tree that can be moved: programs and libraries find each other by
# relative paths. CPack makes Debian packages from it, for users, for developers and for Python.

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)

# ---- The program and the shared libraries. These are loaded by hosts and by the program, which know
# where they are; without a version in their names, they do not belong where every linker looks.

install(TARGETS kraddon kraddon_packaging kxarray EXPORT kraddonTargets
  RUNTIME DESTINATION bin COMPONENT runtime
  LIBRARY DESTINATION lib/kraddon/host COMPONENT runtime
  INCLUDES DESTINATION include/kraddon)

install(TARGETS kraddon_xmlsignatures LIBRARY DESTINATION lib/kraddon/host COMPONENT runtime)

# ---- Manual pages, completion scripts, documentation.

install(DIRECTORY ${PROJECT_BINARY_DIR}/pages/ DESTINATION share/man/man1 COMPONENT runtime
  FILES_MATCHING PATTERN "*.1")
install(FILES ${PROJECT_BINARY_DIR}/pages/kraddon.toml.5 DESTINATION share/man/man5
  COMPONENT runtime)
# Its address is in the manifests that 'init' writes.
install(FILES ${PROJECT_BINARY_DIR}/pages/manifest.schema.json DESTINATION share/kraddon
  COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/pages/kraddon.bash RENAME kraddon
  DESTINATION share/bash-completion/completions COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/pages/kraddon.zsh RENAME _kraddon
  DESTINATION share/zsh/site-functions COMPONENT runtime)
install(FILES ${PROJECT_BINARY_DIR}/pages/kraddon.fish
  DESTINATION share/fish/vendor_completions.d COMPONENT runtime)
install(FILES cmake/debian/copyright LICENSE README.md CHANGELOG.md DESTINATION share/doc/kraddon COMPONENT runtime)
install(DIRECTORY docs DESTINATION share/doc/kraddon COMPONENT runtime)
install(FILES examples/host/host.c DESTINATION share/doc/kraddon/examples/host COMPONENT runtime)

# ---- For file managers: the type of packages, its icon, and their screenshots.

install(FILES desktop/kraddon.xml DESTINATION share/mime/packages COMPONENT runtime)
install(FILES desktop/kraddon.svg RENAME application-vnd.pellandry.korvan.toolbox.svg
  DESTINATION share/icons/hicolor/scalable/mimetypes COMPONENT runtime)
install(FILES desktop/kraddon.thumbnailer DESTINATION share/thumbnailers COMPONENT runtime)
install(PROGRAMS desktop/thumbnailer DESTINATION lib/kraddon COMPONENT runtime)

# ---- For programs that link the classes, and for hosts that load the library.

# In the order that a linker needs.
set(KRADDON_ARCHIVES
  addon_packaging opc_plservices opc_zippackage opc_model fl_i18n opc_core)
install(TARGETS ${KRADDON_ARCHIVES} opc_interfaces EXPORT kraddonTargets
  ARCHIVE DESTINATION lib/kraddon COMPONENT development
  INCLUDES DESTINATION include/kraddon)
# Headers of a folder's own use are in detail/. Some outside of it include one; beyond their folders
# only opc/checks uses them, which is not installed either.
set(internal "opc/checks|opc/signatures|opc/xmlsignatures|opc/interfaces/IXmlSignatures.h|opc/zippackage/ZipItemReader.h|opc/model/(ContentTypes|PartIndex|RelationshipSet).h")
foreach(folder addon/packaging fl/i18n hostarray opc)
  install(DIRECTORY ${folder}/ DESTINATION include/kraddon/${folder} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN detail EXCLUDE REGEX "/(${internal})$" EXCLUDE)
endforeach()
install(FILES gateway/FunctionTable.h DESTINATION include/kraddon/gateway COMPONENT development)

# Everything that an install copies, and no tests.
add_custom_target(installed)
add_dependencies(installed
  kraddon kraddon_packaging kraddon_xmlsignatures kxarray pages ${KRADDON_ARCHIVES})

# ---- The Python package, where Debian's interpreter looks.

if(KRADDON_PYTHON)
  add_dependencies(installed kraddon_python_package)
  set(folder lib/python3/dist-packages)
  install(DIRECTORY ${KRADDON_PYTHON_FOLDER}/kraddon DESTINATION ${folder} COMPONENT python
    PATTERN __pycache__ EXCLUDE PATTERN lib EXCLUDE PATTERN "*.so" EXCLUDE)
  # Only what is installed as a target is stripped.
  install(TARGETS kraddon_python LIBRARY DESTINATION ${folder}/kraddon COMPONENT python)
  install(TARGETS kraddon_xmlsignatures LIBRARY DESTINATION ${folder}/kraddon/lib COMPONENT python)
endif()

include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/kraddonConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kraddonConfig.cmake INSTALL_DESTINATION lib/cmake/kraddon)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kraddonConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kraddonConfig.cmake
  ${PROJECT_BINARY_DIR}/kraddonConfigVersion.cmake
  DESTINATION lib/cmake/kraddon COMPONENT development)
install(EXPORT kraddonTargets NAMESPACE kraddon:: DESTINATION lib/cmake/kraddon
  COMPONENT development)

list(TRANSFORM KRADDON_ARCHIVES PREPEND "-l" OUTPUT_VARIABLE KRADDON_ARCHIVE_WORDS)
list(JOIN KRADDON_ARCHIVE_WORDS " " KRADDON_ARCHIVE_WORDS)
foreach(name kraddon kraddon_packaging)
  configure_file(cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION lib/pkgconfig COMPONENT development)
endforeach()

# ---- Debian packages: kraddon, kraddon-dev and, with KRADDON_PYTHON, python3-kraddon.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kraddon)
set(CPACK_PACKAGE_VENDOR "The kraddon maintainers")
set(CPACK_PACKAGE_CONTACT "The kraddon maintainers <maintainers@kraddon.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(KRADDON_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME kraddon)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS libsqlite3-0)  # loaded when it is needed
# Where the shared libraries of the package itself are.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SUGGESTS libgdk-pixbuf2.0-bin)  # for the thumbnailer
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "tool and library for Korvan add-on packages
Creates, shows, checks, unpacks and changes Korvan add-on packages, which
follow the Open Packaging Conventions, and checks any other such package.
The package includes the library that a host loads.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME kraddon-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "kraddon (= ${PROJECT_VERSION}), libboost-dev, libdeflate-dev, libicu-dev, libxerces-c-dev, zlib1g-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "library for Korvan add-on packages - development files
The classes that read and write Korvan add-on packages as static libraries,
their headers, the interface to the host's arrays, a CMake package and files
for pkg-config.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kraddon)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.11), python3 (<< 3.12)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS python3-fsspec)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/cmake/debian/python/postinst
  ${PROJECT_SOURCE_DIR}/cmake/debian/python/prerm)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
  "Korvan add-on packages in Python
A module that reads, changes, builds and checks Korvan add-on packages, for
build scripts and galleries. It works without the program.")

# Changes for Debian to the installed tree.
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/FinishPackages.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/KraddonPackageConfig.cmake)
file(CONFIGURE OUTPUT KraddonPackageConfig.cmake @ONLY CONTENT
  "set(KRADDON_DEBIAN_FOLDER [[@PROJECT_SOURCE_DIR@/cmake/debian]])\n")
include(CPack)
