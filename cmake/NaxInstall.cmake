# Installation: three libraries, the headers, a CMake package (find_package(nax) gives nax::nax) and nax.pc.
include(CMakePackageConfigHelpers)

# The libraries find each other next to themselves.
set_target_properties(nax nax_serv nax_threads PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(nax_avx512 PROPERTIES INSTALL_RPATH "$ORIGIN;$ORIGIN/../..")
set_target_properties(nax_serv PROPERTIES EXPORT_NAME serv)
add_library(nax::serv ALIAS nax_serv)

install(TARGETS nax nax_serv EXPORT nax_targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
# Loaded at run time in place of the former where the processor has AVX-512.
install(TARGETS nax_avx512 LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${hwcaps} NAMELINK_SKIP)
# Loaded at run time by its name with version, so there is nothing to link with.
install(TARGETS nax_threads LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP)
install(DIRECTORY include/nax DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nax)
install(EXPORT nax_targets NAMESPACE nax:: FILE nax-targets.cmake DESTINATION ${package_dir})
configure_package_config_file(cmake/nax-config.cmake.in ${CMAKE_BINARY_DIR}/nax-config.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/nax-config-version.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/nax-config.cmake ${CMAKE_BINARY_DIR}/nax-config-version.cmake DESTINATION ${package_dir})

configure_file(cmake/nax.pc.in ${CMAKE_BINARY_DIR}/nax.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/nax.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
