# SPDX-License-Identifier: GPL-2.0-or-later
#
# The platform libraries that a box brings, in place of ours: the targets that platform/ would make, found in
# DIAGD_PLATFORM_DIR, behind the same C headers.  What is built on the inside of our platform (the simulated board,
# the tests, the benchmarks) is left out.
add_library(platform_headers INTERFACE)
target_include_directories(platform_headers INTERFACE ${CMAKE_SOURCE_DIR}/platform/include)

foreach(library tqdatabase tqapi util_cpld util_i2c util_phy)
  set(file ${DIAGD_PLATFORM_DIR}/lib${library}.so)
  if(NOT EXISTS ${file})
    message(FATAL_ERROR "${file} is missing: DIAGD_PLATFORM_DIR must hold all five platform libraries")
  endif()
  add_library(${library} SHARED IMPORTED GLOBAL)
  set_target_properties(${library} PROPERTIES IMPORTED_LOCATION ${file})
  target_link_libraries(${library} INTERFACE platform_headers)
endforeach()
