# SPDX-License-Identifier: GPL-2.0-or-later
# Warnings of our own code, errors unless DIAGD_WERROR is off, as for a compiler newer than the distribution's; link
# `diagd_warnings` privately into every target of ours.
add_library(diagd_warnings INTERFACE)
target_compile_options(
  diagd_warnings
  INTERFACE -Wall
            -Wextra
            -Wformat=2
            -Wconversion
            -Wshadow
            # designated initialisers name what matters and leave the rest zero
            $<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>
            $<$<BOOL:${DIAGD_WERROR}>:-Werror>)
