#!/bin/bash
# tools/lib/isolated.sh COMMAND...: runs a command in a network of its own, with private folders for run-time files and
# X sockets, so that fixed ports, announcements and displays meet nothing of this computer and leave nothing behind.
# As an ordinary user this takes a user namespace. Where neither is allowed the command runs as it is.
# Tells by PANEL_COMPANION_ISOLATION: "root", "user" or "none".

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
PANEL_COMPANION_ISOLATION=none exec "$@"
