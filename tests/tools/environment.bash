# shellcheck shell=bash

. "$project_root/tools/lib/environment.sh"

test_programs_in_sbin_are_found_by_ordinary_users() {
    PATH=/usr/local/bin:/usr/bin:/bin
    tidy_environment
    expect PATH /usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin "$PATH"
}

test_a_home_that_is_private_is_given_to_the_command_only() {
    local home=$HOME scratch=$PWD/scratch
    expect home "$PWD/scratch/home" "$(in_private_home bash -c 'echo "$HOME"')"
    expect "home outside" "$home" "$HOME"
}

test_mounts_of_ones_own_are_had_in_a_root_that_is_no_mount_point() {
    unshare --mount true 2>/dev/null || return 0
    mkdir -p root/{dev,mnt,proc,project,usr}
    ln -s usr/bin usr/lib usr/lib64 root
    cat >root/script <<'SCRIPT'
#!/bin/bash
[[ ${1-} ]] || ! unshare --mount true 2>/dev/null || echo 'this root is a mount point already'
. /project/tools/lib/environment.sh
leave_bare_chroot "$0" again
unshare --mount mount -t tmpfs tmpfs /mnt && echo "once $1"
SCRIPT
    chmod +x root/script
    # shellcheck disable=SC2016 # expanded by the shell that is started
    unshare --mount bash -c 'mount --rbind /usr root/usr && mount --rbind /proc root/proc && mount --rbind /dev root/dev &&
        mount --bind "$project_root" root/project && chroot root /script' >report 2>&1
    expect report 'once again' "$(<report)"
}
