# What we build on, under one name on every system: ov::asio, ov::cli11, ov::json, ov::dxflib.
#
# On Linux they are the system's packages. For Windows there are none: scripts/install stages the header-only ones
# and dxflib's source in the build tree.
include_guard(GLOBAL)

if(WIN32)
  set(ov_staged ${CMAKE_BINARY_DIR}/third_party)
  if(NOT EXISTS ${ov_staged}/include/asio.hpp OR NOT EXISTS ${ov_staged}/dxflib/src/dl_dxf.h)
    message(FATAL_ERROR "Nothing is staged in ${ov_staged}; run scripts/install windows")
  endif()
  set(OV_ASIO_INCLUDE ${ov_staged}/include)
  set(OV_CLI11_INCLUDE ${ov_staged}/include)
  set(OV_JSON_INCLUDE ${ov_staged}/include)
else()
  find_path(OV_ASIO_INCLUDE asio.hpp REQUIRED)
  find_path(OV_CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
  find_path(OV_JSON_INCLUDE nlohmann/json.hpp REQUIRED)
endif()

function(ov_add_headers name include)
  add_library(ov::${name} INTERFACE IMPORTED GLOBAL)
  # Imported, and so system headers: their warnings aren't ours.
  if(NOT include STREQUAL "/usr/include")
    set_target_properties(ov::${name} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${include})
  endif()
endfunction()

ov_add_headers(cli11 ${OV_CLI11_INCLUDE})
ov_add_headers(json ${OV_JSON_INCLUDE})
ov_add_headers(asio ${OV_ASIO_INCLUDE})
set_target_properties(ov::asio PROPERTIES INTERFACE_COMPILE_DEFINITIONS ASIO_STANDALONE)
if(WIN32)
  set_property(TARGET ov::asio PROPERTY INTERFACE_LINK_LIBRARIES ws2_32 mswsock)
else()
  set_property(TARGET ov::asio PROPERTY INTERFACE_LINK_LIBRARIES Threads::Threads)
endif()

# Under the GPL: for the host program alone.
if(WIN32)
  set(ov_dxflib ${ov_staged}/dxflib/src)
  add_library(ov_dxflib STATIC EXCLUDE_FROM_ALL ${ov_dxflib}/dl_dxf.cpp ${ov_dxflib}/dl_writer_ascii.cpp)
  target_include_directories(ov_dxflib SYSTEM PUBLIC ${ov_dxflib})
  target_compile_options(ov_dxflib PRIVATE -w)
  add_library(ov::dxflib ALIAS ov_dxflib)
else()
  find_path(OV_DXFLIB_INCLUDE dl_dxf.h PATH_SUFFIXES dxflib REQUIRED)
  find_library(OV_DXFLIB_LIBRARY dxflib REQUIRED)
  add_library(ov::dxflib UNKNOWN IMPORTED GLOBAL)
  set_target_properties(ov::dxflib PROPERTIES
    IMPORTED_LOCATION ${OV_DXFLIB_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${OV_DXFLIB_INCLUDE})
endif()
