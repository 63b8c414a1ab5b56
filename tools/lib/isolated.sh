#!/bin/bash
# tools/lib/isolated.sh [--tap] COMMAND...: runs a command in a network of its own, with private folders for run-time
# files and X sockets, so that fixed ports, announcements and displays meet nothing of this computer and leave nothing
# behind. As an ordinary user this takes a user namespace. Where neither is allowed the command runs as it is.
# Tells by PANEL_COMPANION_ISOLATION: "root", "user" or "none", and why by PANEL_COMPANION_WHY_NOT_ISOLATED.
#
#   --tap   the command is a test of the Test Anything Protocol: without isolation it is skipped if another program has
#           one of a panel's ports

inside() {
    mkdir -p -m 1777 /tmp/.X11-unix
    mount -t tmpfs -o mode=1777 tmpfs /tmp/.X11-unix
    [[ $PANEL_COMPANION_ISOLATION != user ]] || become_only_user
    mount -t tmpfs -o mode=755 tmpfs /run
    exec "$@"
}

# Only one user exists in the namespace; programs that change their files' owner to a system user get that one.
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

# What would let this user have a network of his own.
remedy() {
    local setting=/proc/sys/kernel
    printf 'works as root'
    if [[ $(cat $setting/apparmor_restrict_unprivileged_userns 2>/dev/null) == 1 ]]; then
        printf ', or after "sudo sysctl kernel.apparmor_restrict_unprivileged_userns=0"'
    elif [[ $(cat $setting/unprivileged_userns_clone 2>/dev/null) == 0 ]]; then
        printf ', or after "sudo sysctl kernel.unprivileged_userns_clone=1"'
    fi
}

# Which of the ports of panels and of the application other programs have, one a line: proc(5) has them in hexadecimal.
taken_ports() {
    awk '
        BEGIN { name["1388"] = "TCP 5000"; name["1581"] = "TCP 5505"; name["A387"] = "UDP 41863" }
        { sub(/.*:/, "", $2) }
        FILENAME ~ /tcp/ ? $4 == "0A" && $2 != "A387" : $2 == "A387" { if ($2 in name) print name[$2] }' \
        /proc/net/{tcp,udp}* 2>/dev/null | sort -u
}

is_tap=no
if [[ ${1-} == --tap ]]; then
    is_tap=yes
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

PANEL_COMPANION_WHY_NOT_ISOLATED="this user may have no network of his own ($(remedy))"
taken=$(taken_ports | paste -sd ',' | sed 's/,/, /g')
if [[ $is_tap == yes && -n $taken ]]; then
    printf '1..0 # SKIP another program has %s, and %s\n' "$taken" "$PANEL_COMPANION_WHY_NOT_ISOLATED"
    exit 0
fi
export PANEL_COMPANION_WHY_NOT_ISOLATED
PANEL_COMPANION_ISOLATION=none exec "$@"
