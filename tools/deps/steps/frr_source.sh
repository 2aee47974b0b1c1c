# SPDX-License-Identifier: GPL-2.0-or-later
# The source tree of libfrr with our additions, ready to be configured. It stays:
# debuggers find the source lines here.
additions=$root/platform/frr
cp -a "$deps/sources/frr/." "$out"
cd "$out"
while read -r patch; do
	patch -p1 --fuzz=0 --no-backup-if-mismatch <"$additions/$patch"
done <"$additions/series"
./bootstrap.sh
