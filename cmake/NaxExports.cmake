# Version script of libnax.so from abi/exports.txt: the listed names are exported, all others stay inside.
set(exports_list ${CMAKE_CURRENT_SOURCE_DIR}/abi/exports.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_list})
file(STRINGS ${exports_list} exported_names)
list(JOIN exported_names ";\n    " exported_names)
set(version_script ${CMAKE_CURRENT_BINARY_DIR}/nax_exports.map)
file(CONFIGURE OUTPUT ${version_script} CONTENT "{\n  global:\n    @exported_names@;\n  local:\n    *;\n};\n" @ONLY)

function(nax_export_listed library)
  target_link_options(${library} PRIVATE -Wl,--version-script=${version_script})
  set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${version_script})
endfunction()
