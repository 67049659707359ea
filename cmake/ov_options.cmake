# What every target of ours is compiled with. Link it PRIVATE: the warnings are for our code, not for libraries.
option(OV_SANITIZE "Sanitizers to build with, as in -fsanitize= (address,undefined or thread)" "")

find_package(Threads REQUIRED)

add_library(ov_options INTERFACE)
target_compile_features(ov_options INTERFACE cxx_std_17)
target_compile_options(ov_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Werror)
# Log records and assertions name source files; the builder's own folders don't belong in them.
target_compile_options(ov_options INTERFACE -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)

if(OV_SANITIZE)
  string(REPLACE ";" "," ov_sanitize "${OV_SANITIZE}")
  add_compile_options(-fsanitize=${ov_sanitize} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ov_sanitize})
endif()

option(OV_FUZZ "Build the fuzzers, with libFuzzer; for clang++" OFF)
if(OV_FUZZ) # the fuzzer sees which ways the code took
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(WIN32)
  # The programs and the module stand alone: no compiler runtime beside them.
  add_link_options(-static -static-libgcc -static-libstdc++)
  # And no library offers the compiler runtime inside it to the next one.
  add_link_options(-Wl,--exclude-libs,ALL)
endif()
