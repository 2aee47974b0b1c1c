# SPDX-License-Identifier: GPL-2.0-or-later
# mpstat, whose statistics "show sys cpu-usage" prints. Unpacked, as installing
# sysstat would add its collector to the machine's timers.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

private_apt apt-get download sysstat/bookworm
for package in *.deb; do dpkg -x "$package" unpacked; done

mkdir -p "$out/bin"
cp unpacked/usr/bin/mpstat "$out/bin"
"$out/bin/mpstat" -V
