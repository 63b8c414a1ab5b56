#!/bin/bash
# tools/lib/isolated.sh [--or-skip] COMMAND...: runs a command in a network namespace with a home, run-time folder and X
# sockets of its own, so that fixed ports, announcements and displays neither meet this machine's nor outlive the command.
# An ordinary user needs user namespaces for that. Where neither is allowed, the command runs without, one at a time.
# Sets PANEL_COMPANION_ISOLATION to "root", "user" or "none", and PANEL_COMPANION_WHY_NOT_ISOLATED.
#
#   --or-skip   without isolation, exit with status 77 if another program has one of a panel's ports

inside() {
    mkdir -p -m 1777 /tmp/.X11-unix
    mount -t tmpfs -o mode=1777 tmpfs /tmp/.X11-unix
    # X servers name the keymap that they compile after their display, which is number 0 in every such namespace.
    [[ ! -d /var/lib/xkb ]] || mount -t tmpfs tmpfs /var/lib/xkb
    [[ $PANEL_COMPANION_ISOLATION != user ]] || become_only_user
    mount -t tmpfs -o mode=755 tmpfs /run
    mkdir -m 700 /run/home /run/runtime
    export HOME=/run/home XDG_RUNTIME_DIR=/run/runtime
    unset XDG_CONFIG_HOME XDG_CACHE_HOME XDG_DATA_HOME
    exec "$@"
}

# Only one user exists in the namespace; daemons that switch to a system user get that one.
become_only_user() {
    local file changed
    for file in passwd group; do
        changed=$(mktemp /tmp/panel-companion-"$file".XXXXXX)
        sed -E 's/^(avahi|messagebus):([^:]*):[0-9]+/\1:\2:0/; s/^(avahi|messagebus):([^:]*):0:[0-9]+:/\1:\2:0:0:/' \
            "/etc/$file" >"$changed"
        mount --bind "$changed" "/etc/$file"
        rm -f "$changed"
    done
}

# What would allow this user a network namespace.
remedy() {
    local setting=/proc/sys/kernel
    printf 'works as root'
    if [[ $(cat $setting/apparmor_restrict_unprivileged_userns 2>/dev/null) == 1 ]]; then
        printf ', or after "sudo sysctl kernel.apparmor_restrict_unprivileged_userns=0"'
    elif [[ $(cat $setting/unprivileged_userns_clone 2>/dev/null) == 0 ]]; then
        printf ', or after "sudo sysctl kernel.unprivileged_userns_clone=1"'
    fi
}

# Ports of panels and of the application that are in use, one a line: proc(5) has them in hexadecimal.
taken_ports() {
    awk '
        BEGIN { name["1388"] = "TCP 5000"; name["1581"] = "TCP 5505"; name["A387"] = "UDP 41863" }
        { sub(/.*:/, "", $2) }
        FILENAME ~ /tcp/ ? $4 == "0A" && $2 != "A387" : $2 == "A387" { if ($2 in name) print name[$2] }' \
        /proc/net/{tcp,udp}* 2>/dev/null | sort -u
}

or_skip=no
if [[ ${1-} == --or-skip ]]; then
    or_skip=yes
    shift
fi
if [[ ${1-} == --inside ]]; then
    shift
    inside "$@"
fi

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
if [[ -n ${PANEL_COMPANION_ISOLATION-} ]]; then
    exec "$@"
elif ((EUID == 0)) && unshare --net --mount mount -t tmpfs tmpfs /run 2>/dev/null; then
    PANEL_COMPANION_ISOLATION=root exec unshare --net --mount "$here/isolated.sh" --inside "$@"
elif unshare --user --map-root-user --net --mount mount -t tmpfs tmpfs /run 2>/dev/null; then
    PANEL_COMPANION_ISOLATION=user exec unshare --user --map-root-user --net --mount "$here/isolated.sh" --inside "$@"
fi

PANEL_COMPANION_WHY_NOT_ISOLATED="this user may not create network namespaces ($(remedy))"
exec 9>"/tmp/panel-companion-$EUID.lock"
flock 9
taken=$(taken_ports | paste -sd ',' | sed 's/,/, /g')
if [[ $or_skip == yes && -n $taken ]]; then
    printf 'skipped: another program uses %s, and %s\n' "$taken" "$PANEL_COMPANION_WHY_NOT_ISOLATED"
    exit 77
fi
export PANEL_COMPANION_WHY_NOT_ISOLATED
PANEL_COMPANION_ISOLATION=none exec "$@"
