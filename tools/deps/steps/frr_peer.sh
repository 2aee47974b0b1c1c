# SPDX-License-Identifier: GPL-2.0-or-later
# The distribution's own zebra, staticd and watchfrr with their own libfrr: real
# peers to test against. Unpacked, as installing the package would start them.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

private_apt apt-get download frr/bookworm libyang2/bookworm
for package in *.deb; do dpkg -x "$package" unpacked; done

triplet=$(gcc -print-multiarch)
mkdir -p "$out/sbin" "$out/lib"
cp unpacked/usr/lib/frr/{zebra,staticd,watchfrr} "$out/sbin"
cp -a unpacked/usr/lib/"$triplet"/frr/libfrr.so* unpacked/usr/lib/"$triplet"/libyang.so* "$out/lib"
patchelf --set-rpath '$ORIGIN/../lib' "$out"/sbin/*
patchelf --set-rpath '$ORIGIN' "$out"/lib/libfrr.so.0

# complete, and of the version that our libfrr is made for
ldd "$out"/sbin/* | tee libraries
if grep 'not found' libraries; then exit 1; fi
for daemon in zebra staticd watchfrr; do
	"$out/sbin/$daemon" --version | tee words
	grep -F "$FRR_VERSION" words
done
