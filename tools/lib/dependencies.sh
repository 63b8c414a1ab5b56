# shellcheck shell=bash
# Installs what tools/dependencies.txt lists. To be sourced; expects $project_root.
#
#   install_dependencies build run    the packages of these sections, or a clear message and status 1

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
    # shellcheck disable=SC2016 # the braces are dpkg-query's
    installed+=$(tr '|' '\n' <<<"$wanted" | xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
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

# The first alternative that the distribution has; the first of all when it has none, so that apt names it.
choose_name() {
    local name
    for name in ${1//|/ }; do
        if apt-cache policy "$name" 2>/dev/null | grep -q 'Candidate: [^(]'; then
            printf '%s\n' "$name"
            return
        fi
    done
    printf '%s\n' "${1%%|*}"
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

install_packages() {
    local -a apt=(as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y)
    local -a names=()
    local dependency
    "${apt[@]}" update >&2 ||
        printf 'The package lists could not be fetched; trying with those that are here.\n' >&2
    for dependency in "$@"; do
        names+=("$(choose_name "$dependency")")
    done
    if ! "${apt[@]}" -o Acquire::Retries=3 install --no-install-recommends "${names[@]}" </dev/null >&2; then
        printf 'These packages could not be installed (is the network up?): %s\n' "${names[*]}" >&2
        return 1
    fi
}

install_dependencies() {
    local -a missing
    mapfile -t missing < <(dependencies_of "$@" | missing_of)
    ((${#missing[@]})) || return 0
    can_install "${missing[@]%%|*}" || return 1
    printf 'Installing %s\n' "${missing[*]%%|*}" >&2
    install_packages "${missing[@]}"
}
