# Chooses the three headers that the plug-in includes: ov_host_sdk has <arxHeaders.h>, ov_device_sdk has
# <ov_devlink.h>, and ov_system has <windows.h> and the POSIX threads. Link one to get its headers and libraries.
#
# The first two are this project's stand-ins, unless both folders are named here. Each holds inc, inc-x64 and
# lib-x64, as an SDK has them.
set(OV_HOST_SDK "" CACHE PATH "The host's SDK; empty: the stand-in")
set(OV_DEVICE_SDK "" CACHE PATH "Header and import library of ov_devlink_64; empty: the stand-in")
set(OV_HOST_LIBRARIES acdb23 AcGe23 ac1st23 accore AcDrawBridge CACHE STRING "Libraries of the host's SDK to link")
set(OV_POSIX_THREADS "" CACHE PATH "A port of POSIX threads, for compilers that have none: inc, and pthread.lib in lib-x64")

foreach(seam ov_host_sdk ov_device_sdk ov_system)
  add_library(${seam} INTERFACE)
endforeach()

function(ov_use_sdk seam folder) # libraries...
  target_include_directories(${seam} SYSTEM INTERFACE ${folder}/inc ${folder}/inc-x64)
  foreach(name ${ARGN})
    if(NOT EXISTS ${folder}/lib-x64/${name}.lib)
      message(FATAL_ERROR "${folder}/lib-x64/${name}.lib is missing")
    endif()
    target_link_libraries(${seam} INTERFACE ${folder}/lib-x64/${name}.lib)
  endforeach()
endfunction()

if(OV_HOST_SDK AND OV_DEVICE_SDK)
  ov_use_sdk(ov_host_sdk ${OV_HOST_SDK} ${OV_HOST_LIBRARIES})
  ov_use_sdk(ov_device_sdk ${OV_DEVICE_SDK} ov_devlink_64)
elseif(OV_HOST_SDK OR OV_DEVICE_SDK)
  message(FATAL_ERROR "OV_HOST_SDK and OV_DEVICE_SDK go together")
else()
  target_link_libraries(ov_host_sdk INTERFACE ov_acad_host)
  target_link_libraries(ov_device_sdk INTERFACE ov_devlink_64)
endif()

if(OV_POSIX_THREADS)
  ov_use_sdk(ov_system ${OV_POSIX_THREADS} pthread)
else()
  find_package(Threads REQUIRED)
  target_link_libraries(ov_system INTERFACE Threads::Threads)
endif()
if(NOT WIN32)
  target_link_libraries(ov_system INTERFACE ov_windows)
endif()
