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
