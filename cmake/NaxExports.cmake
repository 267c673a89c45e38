# Version script of libnax.so from abi/exports.txt: the listed names are exported, all others stay inside. Without the
# list, as in a tree that just begins, everything is exported.
set(exports_list ${CMAKE_SOURCE_DIR}/abi/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/abi)
if(EXISTS ${exports_list})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_list})
  file(STRINGS ${exports_list} exported_names)
  list(JOIN exported_names ";\n    " exported_names)
  set(version_script ${CMAKE_BINARY_DIR}/nax_exports.map)
  file(CONFIGURE OUTPUT ${version_script} CONTENT "{\n  global:\n    @exported_names@;\n  local:\n    *;\n};\n" @ONLY)
  target_link_options(nax PRIVATE -Wl,--version-script=${version_script})
  set_property(TARGET nax APPEND PROPERTY LINK_DEPENDS ${version_script})
endif()
