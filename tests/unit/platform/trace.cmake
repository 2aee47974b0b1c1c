# SPDX-License-Identifier: GPL-2.0-or-later
# Call trace and fault table of the platform libraries: switched on, and off as a daemon runs.
diagd_unit_test(tq_trace_test trace/tq_trace_test.cpp LIBS platform_trace)
diagd_unit_test(tq_trace_off_test trace/tq_trace_off_test.cpp LIBS platform_trace)
