# SPDX-License-Identifier: GPL-2.0-or-later
# sysrepo and libyang 1, which run on this suite but are packages of the one
# before: unpacked, and made to find each other without a library path. What they
# still need from the environment is in the file env, to be sourced.
. "$here/versions"
. "$here/apt.sh"
. "$here/older_suite.sh"

fetch_older sysrepo="$SYSREPO_VERSION" libsysrepo5="$SYSREPO_VERSION" \
	libsysrepo-dev="$SYSREPO_VERSION" libyang1="$LIBYANG1_VERSION" libyang-dev="$LIBYANG1_VERSION" \
	libpcre3="$LIBPCRE3_VERSION"
for package in *.deb; do dpkg -x "$package" unpacked; done

triplet=$(gcc -print-multiarch)
mkdir -p "$out/lib"
cp -a unpacked/usr/bin unpacked/usr/include "$out"
cp -a unpacked/usr/lib/"$triplet"/{libsysrepo.so*,libyang.so*,libyang1} "$out/lib"
cp -a unpacked/lib/"$triplet"/libpcre.so.3* "$out/lib"

patchelf --set-rpath '$ORIGIN' "$out"/lib/libsysrepo.so.5 "$out"/lib/libyang.so.1
patchelf --set-rpath '$ORIGIN/../..' "$out"/lib/libyang1/*/*.so
patchelf --set-rpath '$ORIGIN/../lib' "$out"/bin/*

# where libyang 1 looks for its plugins; without them it makes no context
cat >"$out/env" <<END
export LIBYANG_EXTENSIONS_PLUGINS_DIR=$deps/sysrepo/lib/libyang1/extensions
export LIBYANG_USER_TYPES_PLUGINS_DIR=$deps/sysrepo/lib/libyang1/user_types
END

"$out/bin/sysrepoctl" --version
"$out/bin/sysrepocfg" --version
