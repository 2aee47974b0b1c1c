# SPDX-License-Identifier: GPL-2.0-or-later
# libyang 2 as a static library, to be hidden inside libfrr: the database library
# brings libyang 1 into the same process, and the two share symbol names.
cmake -G Ninja "$deps/sources/libyang2" -DCMAKE_BUILD_TYPE=Release -DENABLE_STATIC=ON \
	-DCMAKE_POSITION_INDEPENDENT_CODE=ON -DENABLE_TESTS=OFF -DENABLE_VALGRIND_TESTS=OFF \
	-DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_INSTALL_LIBDIR=lib
ninja
DESTDIR=$PWD/installed ninja install
mv installed/usr/{include,lib} "$out"
