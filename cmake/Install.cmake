# SPDX-License-Identifier: GPL-2.0-or-later
#
# What `cmake --install BUILD --component NAME` puts where.  The components:
#   daemon       diagd, and what keeps its log small, for /etc/logrotate.d
#   platform     the platform libraries, the models of their database, the MIB of their traps
#   runtime      the libraries of others that both run on, as tools/deps/setup made them: libfrr with our additions,
#                sysrepo and libyang 1 with their tools
#   simulator    boardsim, boardctl, the stand-in for the GPIO driver, boards and modules
#   shell        diagsh
#   optics       optics, which decodes dumps of modules
#   development  the C headers of the platform libraries
# Nothing of it is looked for where the build was: programs find the libraries by their place, in a folder of their
# own, since a box may have a libfrr of another make.  The manual page of a program goes with it.
include(GNUInstallDirs)
set(libraries_dir ${CMAKE_INSTALL_LIBDIR}/diagd)
set(data_dir ${CMAKE_INSTALL_DATADIR}/diagd)

# diagd_install(COMPONENT DESTINATION target...)
function(diagd_install component destination)
  file(RELATIVE_PATH libraries /${destination} /${libraries_dir})
  string(REGEX REPLACE "/$" "" rpath "$ORIGIN/${libraries}")
  set_target_properties(${ARGN} PROPERTIES INSTALL_RPATH "${rpath}")
  install(TARGETS ${ARGN}
          RUNTIME DESTINATION ${destination} COMPONENT ${component}
          LIBRARY DESTINATION ${destination} COMPONENT ${component})
endfunction()

# diagd_manual(COMPONENT PAGE...)
function(diagd_manual component)
  foreach(page IN LISTS ARGN)
    set(source ${CMAKE_SOURCE_DIR}/docs/man/${page}.md)
    set(made ${CMAKE_BINARY_DIR}/man/${page})
    add_custom_command(
      OUTPUT ${made}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/man
      COMMAND /usr/bin/python3 -B ${CMAKE_SOURCE_DIR}/tools/make_man.py ${source} ${PROJECT_VERSION} > ${made}
      DEPENDS ${source} ${CMAKE_SOURCE_DIR}/tools/make_man.py ${CMAKE_SOURCE_DIR}/VERSION
      VERBATIM)
    add_custom_target(manual_${page} ALL DEPENDS ${made})
    string(REGEX REPLACE ".*[.]" "man" section ${page})
    install(FILES ${made} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section} COMPONENT ${component})
  endforeach()
endfunction()

diagd_install(daemon ${CMAKE_INSTALL_SBINDIR} diagd)
diagd_manual(daemon diagd.8)
install(FILES packaging/logrotate/diagd DESTINATION ${data_dir}/logrotate.d COMPONENT daemon)
diagd_install(shell ${CMAKE_INSTALL_BINDIR} diagsh)
install(PROGRAMS ${CMAKE_SOURCE_DIR}/shell/board-thresholds DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT shell)
diagd_manual(shell diagsh.1)
diagd_install(optics ${CMAKE_INSTALL_BINDIR} optics_program)
diagd_manual(optics optics.1)

if(NOT DIAGD_PLATFORM_DIR)
  diagd_install(platform ${libraries_dir} tqapi tqdatabase tqdatabase_guard tqtrap util_cpld util_i2c util_phy)
  diagd_install(simulator ${CMAKE_INSTALL_SBINDIR} boardsim)
  diagd_install(simulator ${CMAKE_INSTALL_BINDIR} boardctl)
  diagd_install(simulator ${libraries_dir} gpio_sim)
  diagd_manual(simulator boardctl.1 boardsim.8)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/yang platform/mibs DESTINATION ${data_dir} COMPONENT platform)
  install(DIRECTORY sim/boards sim/modules DESTINATION ${data_dir} COMPONENT simulator FILES_MATCHING PATTERN *.json)
endif()
install(DIRECTORY platform/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/diagd COMPONENT development)

install(DIRECTORY ${DIAGD_DEPS_DIR}/frr-${DIAGD_FRR_VARIANT}/lib/ ${DIAGD_DEPS_DIR}/sysrepo/lib/
        DESTINATION ${libraries_dir} COMPONENT runtime
        PATTERN *.so EXCLUDE # for the linker
        PATTERN libyang1 EXCLUDE)
install(DIRECTORY ${DIAGD_DEPS_DIR}/sysrepo/lib/libyang1 DESTINATION ${libraries_dir} COMPONENT runtime)
install(PROGRAMS ${DIAGD_DEPS_DIR}/sysrepo/bin/sysrepoctl ${DIAGD_DEPS_DIR}/sysrepo/bin/sysrepocfg
        DESTINATION ${libraries_dir}/bin COMPONENT runtime)
# The tools look for their libraries where they were unpacked, beside the folder; here they are one above.
install(CODE "
  foreach(tool sysrepoctl sysrepocfg)
    file(RPATH_CHANGE FILE \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${libraries_dir}/bin/\${tool}\"
         OLD_RPATH \"\$ORIGIN/../lib\" NEW_RPATH \"\$ORIGIN/..\")
  endforeach()" COMPONENT runtime)
