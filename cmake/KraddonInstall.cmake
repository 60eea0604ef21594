# SPDX-License-Identifier: MIT
# `cmake --install` makes a tree that works wherever it is put: the program finds its libraries
# beside itself. CPack makes a .deb of it.
include(GNUInstallDirs)

set(KRADDON_INSTALLED kraddon kraddon_packaging kxarray)
set_target_properties(kraddon PROPERTIES INSTALL_RPATH "$ORIGIN/../lib")
set_target_properties(kraddon_packaging PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS ${KRADDON_INSTALLED}
  RUNTIME DESTINATION bin
  LIBRARY DESTINATION lib)

# What a host of its own needs: the arrays and the function table, both in C.
install(FILES ${PROJECT_SOURCE_DIR}/hostarray/kxarray.h ${PROJECT_SOURCE_DIR}/hostarray/matrix.h
  DESTINATION include/kraddon/hostarray)
install(FILES ${PROJECT_SOURCE_DIR}/gateway/FunctionTable.h DESTINATION include/kraddon/gateway)
configure_file(${PROJECT_SOURCE_DIR}/cmake/kraddon_packaging.pc.in
  ${PROJECT_BINARY_DIR}/kraddon_packaging.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kraddon_packaging.pc DESTINATION lib/pkgconfig)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/README.md
  DESTINATION share/doc/kraddon)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kraddon)
set(CPACK_PACKAGE_VENDOR "The kraddon maintainers")
set(CPACK_PACKAGE_CONTACT "The kraddon maintainers <maintainers@kraddon.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Make, inspect and unpack Korvan add-on packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The two shared libraries lie in the package itself.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_STRIP_FILES ON)
include(CPack)
