#!/bin/sh
# SPDX-License-Identifier: GPL-2.0-or-later
#
# install_modules.sh [USER]
# Installs the YANG modules of the OLT into the repository $SYSREPO_REPOSITORY_PATH (made when absent), which
# belongs to USER (default: daemon) then: sysrepo's files have the identity of whoever makes them, and the
# daemons that use them run as that user.  Needs root, or to be USER; modules that are there stay.
# sysrepo keeps state in /dev/shm that belongs to one repository: where several are used, each needs a
# /dev/shm (or SYSREPO_SHM_PREFIX) of its own, here as well.
set -eu

user=${1:-daemon}
yang=$(cd "$(dirname "$0")/yang" && pwd)
: "${SYSREPO_REPOSITORY_PATH:?is not set}"

mkdir -p "$SYSREPO_REPOSITORY_PATH"
if [ "$(id -u)" = 0 ]; then
	chown "$user": "$SYSREPO_REPOSITORY_PATH"
	as_user() { setpriv --reuid="$user" --regid="$(id -g "$user")" --clear-groups "$@"; }
else
	as_user() { "$@"; }
fi

installed=$(as_user sysrepoctl -l)
for module in olt-alarm-log olt-ntp; do
	case $installed in
	*"$module "*) ;;
	*) as_user sysrepoctl --install "$yang/$module.yang" --search-dirs "$yang" ;;
	esac
done

# An installation takes effect when the next connection is made.
as_user sysrepoctl -l | grep -q '^olt-ntp '
