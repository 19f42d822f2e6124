# What the library exports: the names in exported_names.txt, one a line, under one version node. A name that is taken out
# or changes its meaning needs a new node and a new SONAME.
file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/exported_names.txt QL_EXPORTED_NAMES)
list(JOIN QL_EXPORTED_NAMES ";\n    " names)
set(QL_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/quillonid.map)
file(CONFIGURE OUTPUT ${QL_VERSION_SCRIPT} @ONLY CONTENT
"QUILLONID_1 {
  global:
    ${names};
  local:
    *;
};
")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/exported_names.txt)
target_link_options(quillonid PRIVATE LINKER:--version-script=${QL_VERSION_SCRIPT})
set_property(TARGET quillonid APPEND PROPERTY LINK_DEPENDS ${QL_VERSION_SCRIPT})
