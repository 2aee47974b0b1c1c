# SPDX-License-Identifier: GPL-2.0-or-later
# Every header of the C API compiles by itself and twice over, in C and in C++: other programs of a board include
# them, too.  Compiling is the test.
add_library(platform_header_check OBJECT)
target_link_libraries(platform_header_check PRIVATE diagd_warnings platform_headers)
file(GLOB api_headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/platform/include/*.h)
foreach(header IN LISTS api_headers)
  get_filename_component(name ${header} NAME)
  foreach(language c cpp)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/headers/${name}.${language})
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${name}\"\n#include \"${name}\"\n")
    target_sources(platform_header_check PRIVATE ${source})
  endforeach()
endforeach()
