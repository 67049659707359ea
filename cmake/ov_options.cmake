# What every target of ours is compiled with. Link it PRIVATE: the warnings are for our code, not for libraries.
option(OV_SANITIZE "Sanitizers to build with, as in -fsanitize= (address,undefined or thread)" "")

add_library(ov_options INTERFACE)
target_compile_features(ov_options INTERFACE cxx_std_17)
if(MSVC)
  # Handlers for any exception have to see faults in hardware, too; CMake's own /EHsc would keep them out.
  string(REPLACE "/EHsc" "" CMAKE_CXX_FLAGS "${CMAKE_CXX_FLAGS}")
  # Resources are compiled with the same list, by a compiler that knows none of these.
  target_compile_options(ov_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:/W3;/EHa;/utf-8;/Zc:wchar_t;/guard:cf>")
  add_link_options(/guard:cf /Brepro) # as for MinGW below
  target_compile_definitions(ov_options INTERFACE UNICODE _UNICODE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(ov_options INTERFACE
    "$<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wnon-virtual-dtor>")
  # Log records and assertions name source files; the builder's own folders don't belong in them.
  target_compile_options(ov_options INTERFACE "$<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=>")
endif()

if(OV_SANITIZE)
  string(REPLACE ";" "," ov_sanitize "${OV_SANITIZE}")
  add_compile_options(-fsanitize=${ov_sanitize} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ov_sanitize})
endif()

option(OV_FUZZ "Build the fuzzers, with libFuzzer; for clang++" OFF)
if(OV_FUZZ) # records coverage for the fuzzer
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(MINGW)
  # The programs and the module need no compiler runtime beside them.
  add_link_options(-static -static-libgcc -static-libstdc++)
  # Libraries don't export the compiler runtime that they contain.
  add_link_options(-Wl,--exclude-libs,ALL)
  # Loaded anywhere in the address space, and data never runs. This compiler has no control flow guard.
  add_link_options(-Wl,--dynamicbase,--high-entropy-va,--nxcompat)
  # The same sources give the same bytes.
  add_link_options(-Wl,--no-insert-timestamp)
endif()

# Gives a program or library what Windows shows as its version.
function(ov_describe target file description)
  if(WIN32)
    configure_file(${PROJECT_SOURCE_DIR}/package/version.rc.in ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  endif()
endfunction()
