# Libraries of others, for the stand-ins and their programs only: ov::asio, ov::beast, ov::cli11,
# ov::json, ov::utfcpp.
#
# Natively they are Debian's packages. For Windows scripts/install puts the headers below build/windows/third_party: the
# compiler there mustn't see the rest of /usr/include.
set(ov_third_party ${CMAKE_SOURCE_DIR}/build/windows/third_party)

if(WIN32)
  if(NOT EXISTS ${ov_third_party}/include/asio.hpp)
    message(FATAL_ERROR "third-party headers are missing; run: scripts/install windows")
  endif()
  add_library(ov_third_party_headers INTERFACE)
  target_include_directories(ov_third_party_headers SYSTEM INTERFACE ${ov_third_party}/include ${ov_third_party}/include/utf8cpp)
  add_library(ov_asio INTERFACE)
  target_link_libraries(ov_asio INTERFACE ov_third_party_headers ws2_32 mswsock)
  # Windows 7 and later, what the host of that year asks for.
  target_compile_definitions(ov_asio INTERFACE _WIN32_WINNT=0x0601)
  add_library(ov_beast INTERFACE)
  target_link_libraries(ov_beast INTERFACE ov_asio)
  add_library(ov::cli11 ALIAS ov_third_party_headers)
  add_library(ov::json ALIAS ov_third_party_headers)
  add_library(ov::utfcpp ALIAS ov_third_party_headers)
else()
  find_package(CLI11 REQUIRED)
  add_library(ov::cli11 ALIAS CLI11::CLI11)
  find_package(nlohmann_json REQUIRED)
  add_library(ov::json ALIAS nlohmann_json::nlohmann_json)
  find_package(utf8cpp REQUIRED)
  add_library(ov::utfcpp ALIAS utf8cpp)
  find_path(OV_ASIO_INCLUDE_DIR asio.hpp REQUIRED)
  add_library(ov_asio INTERFACE)
  target_include_directories(ov_asio SYSTEM INTERFACE ${OV_ASIO_INCLUDE_DIR})
  target_link_libraries(ov_asio INTERFACE Threads::Threads)
  # Boost's own copy of Asio comes with it; the two have different names and don't meet.
  find_path(OV_BEAST_INCLUDE_DIR boost/beast.hpp REQUIRED)
  add_library(ov_beast INTERFACE)
  target_include_directories(ov_beast SYSTEM INTERFACE ${OV_BEAST_INCLUDE_DIR})
  target_link_libraries(ov_beast INTERFACE Threads::Threads)
endif()
target_compile_definitions(ov_asio INTERFACE ASIO_STANDALONE)
add_library(ov::asio ALIAS ov_asio)
add_library(ov::beast ALIAS ov_beast)
