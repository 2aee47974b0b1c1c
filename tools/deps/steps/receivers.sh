# SPDX-License-Identifier: GPL-2.0-or-later
# rsyslogd and snmptrapd, real receivers of alarms to test against. Unpacked, as
# installing the packages would start them. net-snmp's own libraries come with
# libsnmp-dev.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

private_apt apt-get download rsyslog/bookworm libestr0/bookworm libfastjson4/bookworm \
	liblognorm5/bookworm snmptrapd/bookworm
for package in *.deb; do dpkg -x "$package" unpacked; done

triplet=$(gcc -print-multiarch)
mkdir -p "$out/sbin" "$out/lib/rsyslog"
cp unpacked/usr/sbin/{rsyslogd,snmptrapd} "$out/sbin"
cp unpacked/usr/lib/"$triplet"/rsyslog/{lmnet,imudp}.so "$out/lib/rsyslog"
cp -a unpacked/usr/lib/"$triplet"/lib{estr,fastjson,lognorm}.so* "$out/lib"
patchelf --set-rpath '$ORIGIN/../lib' "$out"/sbin/*
patchelf --set-rpath '$ORIGIN/..' "$out"/lib/rsyslog/*.so
patchelf --set-rpath '$ORIGIN' "$out"/lib/*.so.*

# complete
ldd "$out"/sbin/* "$out"/lib/rsyslog/*.so | tee libraries
if grep 'not found' libraries; then exit 1; fi
"$out/sbin/rsyslogd" -v
"$out/sbin/snmptrapd" -v
