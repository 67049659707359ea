# ov_add_test(NAME name SOURCES files... [LIBRARIES targets...] [DESKTOP])
#
# DESKTOP: on Windows the test moves or reads the mouse pointer, so no other such test may run beside it.
#
# One GoogleTest program, run as one CTest test. Its single results go to build/PRESET/results/NAME.xml, from
# which scripts/test counts; a program that dies leaves no such file and counts as one failure.
if(WIN32 AND NOT TARGET GTest::gtest)
  # Debian has GoogleTest as sources; a library for Windows is made from them.
  set(gtest_force_shared_crt OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()

function(ov_add_test)
  cmake_parse_arguments(T "DESKTOP" "NAME" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${T_NAME} ${T_SOURCES})
  target_link_libraries(${T_NAME} PRIVATE ov_options ${T_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
  add_test(NAME ${T_NAME} COMMAND ${T_NAME})
  set_tests_properties(${T_NAME} PROPERTIES
    ENVIRONMENT "GTEST_OUTPUT=xml:${CMAKE_BINARY_DIR}/results/"
    TIMEOUT 900)
  if(WIN32 AND T_DESKTOP)
    set_tests_properties(${T_NAME} PROPERTIES RESOURCE_LOCK desktop)
  endif()
endfunction()
