# SPDX-License-Identifier: GPL-2.0-or-later
#
# The libraries that tools/deps/setup provides under build/deps, as imported
# targets:
#   deps::frr      libfrr with our additions; libyang 2 headers, for its own use
#   deps::sysrepo  libsysrepo and libyang 1
#   deps::jsonc    json-c, the distribution's
# deps::frr and deps::sysrepo both bring <libyang/libyang.h>, of different
# versions: no target may link both privately and see both headers.

set(DIAGD_DEPS_DIR ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where tools/deps/setup put the libraries")
set(DIAGD_FRR_VARIANT release CACHE STRING "Build of libfrr: release, asan, tsan")
set_property(CACHE DIAGD_FRR_VARIANT PROPERTY STRINGS release asan tsan)

# A box has them under another name: there programs find them whose user may not look into the project's folder.
file(RELATIVE_PATH deps_from_programs ${CMAKE_BINARY_DIR}/lib ${DIAGD_DEPS_DIR})
list(APPEND CMAKE_BUILD_RPATH "$ORIGIN/${deps_from_programs}/sysrepo/lib"
  "$ORIGIN/${deps_from_programs}/frr-${DIAGD_FRR_VARIANT}/lib")

# diagd_dep(NAME FOLDER INCLUDE LIBRARY): a shared library with its headers.
function(diagd_dep name folder include library)
  set(dir ${DIAGD_DEPS_DIR}/${folder})
  if(NOT EXISTS ${dir}/lib/${library})
    message(FATAL_ERROR "${dir}/lib/${library} is missing: run tools/deps/setup ${DIAGD_FRR_VARIANT}")
  endif()
  add_library(deps::${name} SHARED IMPORTED GLOBAL)
  set_target_properties(deps::${name} PROPERTIES
    IMPORTED_LOCATION ${dir}/lib/${library}
    INTERFACE_INCLUDE_DIRECTORIES ${dir}/${include})
endfunction()

diagd_dep(frr frr-${DIAGD_FRR_VARIANT} include/frr libfrr.so)
target_compile_definitions(deps::frr INTERFACE HAVE_CONFIG_H _GNU_SOURCE)

diagd_dep(libyang1 sysrepo include libyang.so)
diagd_dep(sysrepo sysrepo include libsysrepo.so)
target_link_libraries(deps::sysrepo INTERFACE deps::libyang1)

find_package(PkgConfig REQUIRED)
pkg_check_modules(DIAGD_JSONC REQUIRED IMPORTED_TARGET GLOBAL json-c)
add_library(deps::jsonc ALIAS PkgConfig::DIAGD_JSONC)
