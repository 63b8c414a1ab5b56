# shellcheck shell=bash
# The same surroundings for every test, whoever starts it: nothing of the user's desktop, files or network settings.
# Expects $project_root. The compilers still see the user's home, for their cache.

# Sets $scratch, a private directory with a short name (names of sockets are limited), removed at the end.
make_scratch() {
    scratch=$(mktemp -d /tmp/panel-companion.XXXXXX) || exit 2
    trap 'rm -rf "$scratch"' EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
}

tidy_environment() {
    unset LANGUAGE
    export LC_ALL=C.UTF-8 PANEL_COMPANION_ROOT=$project_root
    # Debian keeps daemons where it lets ordinary users not look.
    export PATH=$PATH:/usr/sbin:/sbin
    unset DISPLAY WAYLAND_DISPLAY XAUTHORITY DBUS_SESSION_BUS_ADDRESS DBUS_SYSTEM_BUS_ADDRESS SESSION_MANAGER
    unset http_proxy https_proxy ftp_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY FTP_PROXY ALL_PROXY NO_PROXY
    unset QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME QT_STYLE_OVERRIDE QT_SCALE_FACTOR QT_PLUGIN_PATH XDG_CURRENT_DESKTOP
    [[ -w ${HOME-} ]] || export CCACHE_DISABLE=1
}

# Runs a command with a home and a run-time directory of its own.
in_private_home() {
    mkdir -p "$scratch/home" "$scratch/run"
    chmod 700 "$scratch/run"
    HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/run XDG_CONFIG_HOME='' XDG_CACHE_HOME='' XDG_DATA_HOME='' "$@"
}

# The kernel gives nobody mounts of their own whose root folder is no mount point, as with chroot(8). So this starts the
# script again in a root that is one, whose mounts stay its own; where that is not allowed, it returns.
leave_bare_chroot() { # SCRIPT ARGUMENT...
    ((EUID == 0)) && ! unshare --mount true 2>/dev/null || return 0
    # shellcheck disable=SC2016 # expanded by the shell that is started
    local -a own=(unshare --mount --propagation unchanged sh -c '
        nsenter --mount=/proc/self/ns/mnt mount --make-rprivate / && mount --rbind / /mnt && exec chroot /mnt "$@"' sh)
    if "${own[@]}" true 2>/dev/null; then
        exec "${own[@]}" "$@"
    fi
}

tell() {
    printf '\n== %s\n' "$*"
}
