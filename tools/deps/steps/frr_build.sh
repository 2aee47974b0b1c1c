# SPDX-License-Identifier: GPL-2.0-or-later
# One build of libfrr, $variant: library, headers, and clippy, the generator that
# builds with sanitizers take from the release build.
#
# Configured as the box has it: configuration in /etc/frr, run-time files in
# /run/frr; privileges by effective user id (--disable-capabilities), so that a
# raised daemon's child programs are raised, too. vtysh stays enabled because the
# library's own fd passing depends on it; only the library is built.
#
# libfrr makes arrays of length 0 and members of null on purpose (northbound.c,
# zlog_targets.c); unchecked, every report that is left is worth stopping for.
case $variant in
release) cflags="-O2 -g" ;;
asan) cflags="-O1 -g -fno-omit-frame-pointer -fsanitize=address,undefined -fno-sanitize=null,vla-bound" ;;
tsan) cflags="-O1 -g -fno-omit-frame-pointer -fsanitize=thread" ;;
esac
clippy=()
[[ $variant == release ]] || clippy=(--with-clippy="$deps/frr-release/bin/clippy")

yang=$deps/libyang2
LIBYANG_CFLAGS=-I$yang/include LIBYANG_LIBS="$yang/lib/libyang.a -lpcre2-8" \
	"$deps/frr-source/configure" CFLAGS="$cflags" "${clippy[@]}" \
	--prefix=/usr --sysconfdir=/etc/frr --localstatedir=/run/frr --sbindir=/usr/lib/frr \
	--enable-user=daemon --enable-group=daemon --enable-vty-group=daemon \
	--enable-configfile-mask=0640 --enable-logfile-mask=0640 \
	--disable-capabilities --disable-doc --disable-dependency-tracking --disable-version-build-config \
	--disable-zebra --disable-bgpd --disable-ripd --disable-ripngd --disable-ospfd --disable-ospf6d \
	--disable-ldpd --disable-nhrpd --disable-eigrpd --disable-babeld --disable-watchfrr --disable-isisd \
	--disable-pimd --disable-pim6d --disable-pbrd --disable-sharpd --disable-staticd --disable-fabricd \
	--disable-vrrpd --disable-pathd --disable-bfdd

make -j"$(nproc)" lib/libfrr.la \
	LIBYANG_LIBS="-Wl,$yang/lib/libyang.a -Wl,-l:libpcre2-8.a -Wl,--exclude-libs,libyang.a:libpcre2-8.a"

mkdir -p "$out/lib" "$out/include/frr" "$out/bin"
cp -a lib/.libs/libfrr.so* "$out/lib"
if [[ $variant == release ]]; then ./libtool --mode=install install -m 755 lib/clippy "$out/bin/clippy"; fi

# Code says <command.h> and <lib/version.h>; the library's private <getopt.h> and
# <assert.h> must not take the place of the system's.
cp "$deps"/frr-source/lib/*.h lib/*.h config.h "$out/include/frr"
rm "$out/include/frr/getopt.h"
ln -s . "$out/include/frr/lib"
cp -a "$yang/include/libyang" "$out/include/frr/libyang"

# what the rest relies on: libyang is inside, and none of it can be seen
names() { sed -n 's/^[0-9a-f]* [A-Z] //p' | sort -u; }
nm -D --defined-only "$out/lib/libfrr.so" | names >seen
nm -g --defined-only "$yang/lib/libyang.a" | names >yang_names
grep -qx vty_pass_fd seen
if comm -12 seen yang_names | grep . || grep pcre2_ seen; then
	echo "names of libyang or pcre2 can be seen outside of libfrr"
	exit 1
fi
