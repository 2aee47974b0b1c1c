# SPDX-License-Identifier: GPL-2.0-or-later
#
# Packages of the suite before this one, which the archive will not keep for ever:
# out of the folder that DIAGD_PACKAGES names, if it has them, else from the archive.
# Those of the folder are taken as they are; whoever names it vouches for them.
# Needs apt.sh; source it.

# Copies the package file of $1, NAME=VERSION, to here, whatever its name is.
package_from_folder() {
	local file
	for file in "$DIAGD_PACKAGES"/*.deb; do
		if [[ $(dpkg-deb --show --showformat='${Package}=${Version} ${Architecture}' "$file" 2>/dev/null) == \
			"$1 "@("$(dpkg --print-architecture)"|all) ]]; then
			cp "$file" .
			return
		fi
	done
	return 1
}

# fetch_older NAME=VERSION...: puts the packages here. Failure policy: what nobody has
# is said in one line, with where it was looked for; the line also goes to $why.
fetch_older() {
	# shellcheck disable=SC2034 # private_apt of apt.sh looks at it
	local package uri apt_dir=$deps/apt-older
	uri=$(archive_uri | sed -n '1s,/*$,,p')
	local places="bullseye main of ${uri:-no archive that /etc/apt names}"
	local -a wanted=("$@") missing=()
	if [[ ${DIAGD_PACKAGES-} ]]; then
		places="$DIAGD_PACKAGES and $places"
		for package in "${wanted[@]}"; do
			package_from_folder "$package" || missing+=("$package")
		done
		wanted=("${missing[@]}") missing=()
	else
		places+="; DIAGD_PACKAGES names no folder"
	fi
	((${#wanted[@]} > 0)) || return 0
	if lists_ready "deb [signed-by=$apt_keyring] $uri bullseye main"; then
		for package in "${wanted[@]}"; do
			private_apt apt-get download "$package" || missing+=("$package")
		done
	else
		missing=("${wanted[@]}")
	fi
	((${#missing[@]} > 0)) || return 0
	echo "missing: ${missing[*]}; looked in $places" | tee "${why:-/dev/null}"
	return 1
}
