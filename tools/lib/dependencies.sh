# shellcheck shell=bash
# Installs what tools/dependencies.txt lists. To be sourced; expects $project_root.
#
#   install_dependencies build run    the packages of these sections, or a clear message and status 1; what of the
#                                     section "optional" cannot be installed is told and done without

dependency_list="$project_root/tools/dependencies.txt"

# One line per dependency of the given sections: its name, or its alternative names joined by "|".
dependencies_of() {
    local wanted=" $* " section names _
    while read -r section names _; do
        [[ -n $section && $section != \#* && $wanted == *" $section "* ]] && printf '%s\n' "$names"
    done <"$dependency_list"
    return 0
}

# Of the dependencies on standard input, those of which no alternative is installed.
missing_of() {
    local installed=$'\n' wanted names name status
    wanted=$(cat)
    # One call for all of them: this runs at every start, and mostly there is nothing to do.
    # It fails when one is unknown, which ends no caller that runs with errexit and pipefail.
    # shellcheck disable=SC2016 # the braces are dpkg-query's
    installed+=$(tr '|' '\n' <<<"$wanted" | { xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null || true; } |
        sed -n 's/^installed //p')
    installed+=$'\n'
    while read -r names; do
        status=missing
        for name in ${names//|/ }; do
            [[ $installed == *$'\n'"$name"$'\n'* ]] && status=installed
        done
        [[ -z $names || $status == installed ]] || printf '%s\n' "$names"
    done <<<"$wanted"
}

# The first alternative that the distribution has; none and status 1 when it has none.
choose_name() {
    local name policy
    for name in ${1//|/ }; do
        policy=$(LC_ALL=C apt-cache policy "$name" 2>/dev/null)
        if [[ $policy == *'Candidate: '[^\(]* ]]; then
            printf '%s\n' "$name"
            return
        fi
    done
    return 1
}

as_root() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo -- "$@"
    fi
}

# Explains itself when this computer gives no way to install packages.
can_install() {
    if ! command -v apt-get >/dev/null; then
        printf 'This is no Debian or Ubuntu system (there is no apt-get). Please install the counterparts of:\n'
    elif ((EUID != 0)) && ! command -v sudo >/dev/null; then
        printf 'Packages are missing, and there is neither root nor sudo to install them. As root:\n  apt-get install'
    else
        return 0
    fi >&2
    printf ' %s' "$@" >&2
    printf '\n' >&2
    return 1
}

apt() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y "$@" </dev/null >&2
}

update_package_lists() {
    apt update || printf 'The package lists could not be fetched; trying with those that are here.\n' >&2
}

install_packages() {
    # Another installation may be under way, as on a computer that has just been started.
    if ! apt -o Acquire::Retries=3 -o DPkg::Lock::Timeout=300 install --no-install-recommends "$@"; then
        printf 'These packages could not be installed (is the network up?): %s\n' "$*" >&2
        return 1
    fi
}

install_needed() { # DEPENDENCY...
    local -a names=()
    local dependency
    for dependency in "$@"; do
        # Of what it does not know the first name, so that apt names it.
        names+=("$(choose_name "$dependency" || printf '%s\n' "${dependency%%|*}")")
    done
    install_packages "${names[@]}"
}

# Together if that goes, else one by one, so that one of them keeps no other away.
install_optional() { # DEPENDENCY...
    local -a names=() unknown=()
    local dependency name
    for dependency in "$@"; do
        if name=$(choose_name "$dependency"); then names+=("$name"); else unknown+=("${dependency%%|*}"); fi
    done
    ((!${#unknown[@]})) || printf 'This distribution has no package of: %s\n' "${unknown[*]}" >&2
    ((${#names[@]})) || return 0
    install_packages "${names[@]}" && return
    for name in "${names[@]}"; do
        install_packages "$name"
    done
    return 0
}

install_dependencies() { # SECTION...
    local -a needed optional=() sections=()
    local section
    for section in "$@"; do
        [[ $section == optional ]] || sections+=("$section")
    done
    mapfile -t needed < <(dependencies_of "${sections[@]}" | missing_of)
    [[ " $* " != *" optional "* ]] || mapfile -t optional < <(dependencies_of optional | missing_of)
    ((${#needed[@]} + ${#optional[@]})) || return 0
    if ! can_install "${needed[@]%%|*}" "${optional[@]%%|*}"; then
        return $((${#needed[@]} > 0))
    fi
    printf 'Installing %s\n' "$(printf '%s ' "${needed[@]%%|*}" "${optional[@]%%|*}")" >&2
    update_package_lists
    ((!${#needed[@]})) || install_needed "${needed[@]}" || return
    ((!${#optional[@]})) || install_optional "${optional[@]}"
}
