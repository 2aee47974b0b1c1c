# SPDX-License-Identifier: GPL-2.0-or-later
# Module memories and the simulated board.
diagd_board_test(module_generator_test modules/module_generator_test.cpp LIBS)
diagd_board_test(simulated_board_test boardsim/simulated_board_test.cpp LIBS sim_board)
diagd_board_test(phys_test boardsim/devices/phys_test.cpp LIBS sim_board)
diagd_board_test(i2c_devices_test boardsim/devices/i2c_devices_test.cpp LIBS sim_board)
diagd_board_test(board_control_test boardsim/control/board_control_test.cpp LIBS)
diagd_unit_test(thermal_test boardsim/physics/thermal_test.cpp LIBS sim_board)
diagd_board_test(gpio_sim_test gpio/gpio_sim_test.cpp LIBS gpio_sim)
