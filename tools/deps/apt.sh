# SPDX-License-Identifier: GPL-2.0-or-later
#
# A private view of the package archive, for steps that fetch source packages and
# packages that are not installed: lists and cache of its own, the machine's apt stays
# as it is. Where the archive is comes from the machine's own sources; signatures
# are checked with the distribution's keyring. Needs $deps; source it.

apt_dir=$deps/apt
apt_keyring=/usr/share/keyrings/debian-archive-keyring.gpg
apt_lists_max_age_minutes=1440

# The address of the archive's bookworm main, out of deb822 and one-line sources.
archive_uri() {
	find /etc/apt -name '*.sources' -exec cat {} \; -exec echo \; | awk '
		function done() {
			if (types ~ / deb / && suites ~ / bookworm / && components ~ / main / && enabled != "no")
				print uri
			types = suites = components = uri = enabled = ""
		}
		{ key = tolower($1); value = $0; sub(/^[^:]*:[ \t]*/, "", value); gsub(/[ \t]+/, " ", value) }
		/^[ \t]*$/ { done() }
		key == "types:" { types = " " value " " }
		key == "suites:" { suites = " " value " " }
		key == "components:" { components = " " value " " }
		key == "enabled:" { enabled = tolower(value) }
		key == "uris:" { uri = $2 }
		END { done() }'
	find /etc/apt -name '*.list' -exec cat {} + | sed -n 's/^[ \t]*deb[ \t]\+\(\[[^]]*\][ \t]*\)\?//p' |
		awk '$2 == "bookworm" && / main( |$)/ { print $1 }'
}

private_apt() {
	local command=$1
	shift
	"$command" -q -o Dir::Etc::sourcelist="$apt_dir/sources.list" -o Dir::Etc::sourceparts=/dev/null \
		-o Dir::State::Lists="$apt_dir/lists" -o Dir::Cache="$apt_dir/cache" \
		-o APT::Sandbox::User=root "$@"
}

# Makes the private lists of sources $1 ready for use, fetching them unless they are fresh.
lists_ready() {
	local sources=$1
	if [[ -f $apt_dir/sources.list && $(<"$apt_dir/sources.list") == "$sources" ]] &&
		[[ -n $(find "$apt_dir/updated" -mmin "-$apt_lists_max_age_minutes" 2>/dev/null) ]]; then
		return
	fi
	rm -rf "$apt_dir"
	mkdir -p "$apt_dir/lists/partial" "$apt_dir/cache/archives/partial"
	echo "$sources" >"$apt_dir/sources.list"
	private_apt apt-get update --error-on=any && touch "$apt_dir/updated"
}

# Those of this suite.
private_apt_ready() {
	local uri
	uri=$(archive_uri | sed -n '1s,/*$,,p')
	[[ -n $uri ]] || { echo "no source of bookworm main in /etc/apt"; return 1; }
	lists_ready "deb [signed-by=$apt_keyring] $uri bookworm main
deb-src [signed-by=$apt_keyring] $uri bookworm main"
}

# The newest revision of source package $1 with upstream version $2.
source_version() {
	private_apt apt-cache showsrc --only-source "$1" | sed -n 's/^Version: //p' |
		grep -F -- "$2-" | sort -V | tail -n 1
}
