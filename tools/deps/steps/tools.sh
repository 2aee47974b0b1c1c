# SPDX-License-Identifier: GPL-2.0-or-later
# mpstat, whose statistics "show sys cpu-usage" prints, and logrotate, for which the
# packages carry a file. Unpacked, as installing them would add their collector and
# their daily run to the machine's timers.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

private_apt apt-get download sysstat/bookworm logrotate/bookworm libpopt0/bookworm
for package in *.deb; do dpkg -x "$package" unpacked; done

triplet=$(gcc -print-multiarch)
mkdir -p "$out/bin" "$out/lib"
cp unpacked/usr/bin/mpstat unpacked/usr/sbin/logrotate "$out/bin"
cp -a unpacked/usr/lib/"$triplet"/libpopt.so* "$out/lib"
patchelf --set-rpath '$ORIGIN/../lib' "$out/bin/logrotate"

# complete
ldd "$out"/bin/* | tee libraries
if grep 'not found' libraries; then exit 1; fi
"$out/bin/mpstat" -V
"$out/bin/logrotate" --version
