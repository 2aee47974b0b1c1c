# SPDX-License-Identifier: GPL-2.0-or-later
# The daemon's way to the board: sessions, records, GPIO lines, the sensor.
set(diagd_dir ${CMAKE_SOURCE_DIR}/diagd)

diagd_unit_test(session_test session_test.cpp ${diagd_dir}/board/session.cpp ${diagd_dir}/board/cage.cpp
                ${diagd_dir}/board/semaphore.cpp
                ${diagd_dir}/core/privileges.cpp ${diagd_dir}/core/start_report.cpp ${diagd_dir}/core/state.cpp
                LIBS platform_headers deps::frr deps::jsonc)

# The interfaces that records list, and how interfaces are called.
foreach(test records interface)
  diagd_unit_test(${test}_test ${test}_test.cpp ${diagd_dir}/board/interface.cpp ${diagd_dir}/board/records.cpp
                  LIBS platform_headers deps::frr deps::jsonc)
endforeach()

diagd_unit_test(gpio_test gpio_test.cpp ${diagd_dir}/board/gpio.cpp ${diagd_dir}/core/privileges.cpp
                LIBS deps::frr deps::jsonc)

# On recording doubles in place of the bus and of sleeping.
diagd_unit_test(lm75_test lm75_test.cpp ${diagd_dir}/board/lm75.cpp LIBS platform_headers)
