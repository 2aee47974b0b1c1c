# SPDX-License-Identifier: GPL-2.0-or-later
# in.tftpd and vsftpd, real servers to fetch from in tests. Unpacked, as installing
# the packages would start them. The library that they share, libwrap, comes with
# libsnmp-dev.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

private_apt apt-get download tftpd-hpa/bookworm vsftpd/bookworm
for package in *.deb; do dpkg -x "$package" unpacked; done

mkdir -p "$out/sbin"
cp unpacked/usr/sbin/{in.tftpd,vsftpd} "$out/sbin"

# complete
ldd "$out"/sbin/* | tee libraries
if grep 'not found' libraries; then exit 1; fi
"$out/sbin/in.tftpd" --version
"$out/sbin/vsftpd" -v 0>&1
