# SPDX-License-Identifier: GPL-2.0-or-later
# What our build of libfrr adds.
diagd_unit_test(zclient_route_type_test frr/zclient_route_type_test.cpp LIBS deps::frr)
diagd_unit_test(thread_privileges_test frr/thread_privileges_test.cpp LIBS deps::frr)
