# shellcheck shell=bash
# shellcheck disable=SC2034 # what is set here is used by the library

. "$project_root/tools/lib/dependencies.sh"

dependency_list=$PWD/dependencies.txt
cat >"$dependency_list" <<'LIST'
build     g++            the compiler
run       new|old        two names
optional  chromium       a browser
optional  zsh            a shell
LIST

# A distribution that has the packages of the arguments, and nothing is installed; apt-get's calls go to the file "apt".
pretend_distribution() {
    printf '%s\n' "$@" >available
    pretend dpkg-query <<<'exit 1'
    pretend apt-cache <<<"grep -qxF -- \"\$2\" '$PWD/available' && echo '  Candidate: 1.0' || echo '  Candidate: (none)'; seq 100000"
    pretend apt-get <<<"echo \"\${*#-q -y }\" >>'$PWD/apt'; [[ ! -f '$PWD/broken' ]] || ! grep -qwf '$PWD/broken' <<<\"\$*\""
    as_root() { "$@"; }
    can_install() { :; }
}

installs() {
    sed -n 's/.* install --no-install-recommends //p' apt
}

test_needed_packages_are_installed_by_the_name_that_the_distribution_has() {
    pretend_distribution g++ old chromium zsh
    install_dependencies build run 2>/dev/null
    expect status 0 $?
    expect installed 'g++ old' "$(installs)"
}

test_a_script_that_ends_at_errors_installs_what_is_missing() {
    pretend_distribution g++ new chromium zsh
    (set -euo pipefail && install_dependencies build run 2>/dev/null)
    expect status 0 $?
    expect installed 'g++ new' "$(installs)"
}

test_a_needed_package_that_does_not_exist_is_named_and_a_failure() {
    pretend_distribution g++ chromium zsh
    echo new >broken
    install_dependencies build run optional 2>messages
    expect status 1 $?
    grep -qxF 'These packages could not be installed (is the network up?): g++ new' messages || cat messages
}

test_optional_packages_that_the_distribution_has_not_are_told_and_done_without() {
    pretend_distribution g++ new zsh
    install_dependencies build run optional 2>messages
    expect status 0 $?
    expect installed "$(printf 'g++ new\nzsh')" "$(installs)"
    grep -qxF 'This distribution has no package of: chromium' messages || cat messages
}

test_an_optional_package_that_cannot_be_installed_keeps_no_other_away() {
    pretend_distribution g++ new chromium zsh
    echo chromium >broken
    install_dependencies build run optional 2>/dev/null
    expect status 0 $?
    expect installed "$(printf 'g++ new\nchromium zsh\nchromium\nzsh')" "$(installs)"
}

test_optional_packages_without_a_way_to_install_them_are_done_without() {
    pretend_distribution g++ new chromium zsh
    missing_of() { grep -E '^(chromium|zsh)$'; }
    can_install() { return 1; }
    install_dependencies build run optional 2>/dev/null
    expect status 0 $?
    [[ ! -f apt ]] || cat apt
}

test_continuous_integration_installs_what_optional_checks_need() {
    mkdir -p project/.ci
    cp "$project_root/.ci/run" project/.ci/
    echo 'printf "%s\n" "$*"' >project/test
    expect arguments '--with-optional --no-sanitizers' "$(bash project/.ci/run --no-sanitizers)"
}

test_packages_are_listed_once() {
    expect doubles '' "$(sed -E '/^(#|$)/d' "$project_root/tools/dependencies.txt" | awk '{ print $2 }' | sort | uniq -d)"
}
