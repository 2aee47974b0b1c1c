# SPDX-License-Identifier: GPL-2.0-or-later
# Source packages of libfrr and libyang 2, with the distribution's patches applied.
. "$here/versions"
. "$here/apt.sh"
private_apt_ready

# unpack PACKAGE UPSTREAM_VERSION
unpack() {
	local version
	version=$(source_version "$1" "$2")
	[[ -n $version ]] || { echo "the archive has no source of $1 $2"; return 1; }
	private_apt apt-get source --download-only --only-source "$1=$version"
	dpkg-source --no-check -x "$1_${version#*:}.dsc" "$out/$1"
}
unpack frr "$FRR_VERSION"
unpack libyang2 "$LIBYANG2_VERSION"
