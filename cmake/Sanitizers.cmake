# SPDX-License-Identifier: GPL-2.0-or-later
# DIAGD_SANITIZE: empty, "address,undefined" or "thread"; the libfrr variant follows it.
set(DIAGD_SANITIZE "" CACHE STRING "Sanitizers for our code")
if(DIAGD_SANITIZE)
  add_compile_options(-fsanitize=${DIAGD_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${DIAGD_SANITIZE})
endif()
