# The udev rule that lets people use the known USB readers, made of the table in link/usb_ids.h.
set(ids ${PROJECT_SOURCE_DIR}/link/usb_ids.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ids})
file(STRINGS ${ids} rows REGEX "^ *{0x[0-9A-F]+, *0x[0-9A-F]+},")
if(NOT rows)
  message(FATAL_ERROR "${ids} has no rows")
endif()

set(QL_UDEV_RULES "")
foreach(row ${rows})
  string(TOLOWER "${row}" row)
  string(REGEX REPLACE "^ *{0x([0-9a-f]+), *0x([0-9a-f]+)},.*" "\\1;\\2" pair "${row}")
  list(GET pair 0 product)
  list(GET pair 1 vendor)
  string(APPEND QL_UDEV_RULES "SUBSYSTEM==\"usb\", ENV{DEVTYPE}==\"usb_device\", "
    "ATTR{idVendor}==\"${vendor}\", ATTR{idProduct}==\"${product}\", "
    "MODE=\"0660\", GROUP=\"plugdev\", TAG+=\"uaccess\", ENV{ID_MM_DEVICE_IGNORE}=\"1\"\n")
endforeach()
string(STRIP "${QL_UDEV_RULES}" QL_UDEV_RULES)
configure_file(cmake/60-quillonid.rules.in ${PROJECT_BINARY_DIR}/60-quillonid.rules @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/60-quillonid.rules DESTINATION lib/udev/rules.d COMPONENT runtime)
