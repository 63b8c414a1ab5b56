# shellcheck shell=bash

isolated=$project_root/tools/lib/isolated.sh

# On a computer that allows no networks of one's own, on which a program listens at a panel's port; it is made in a network
# of its own, so these tests say nothing where there is none.
on_a_busy_computer() { # COMMAND...
    "$isolated" bash -c '
        [[ $PANEL_COMPANION_ISOLATION != none ]] || exit 0
        unset PANEL_COMPANION_ISOLATION
        /usr/bin/python3 -c "
import socket, sys, time
sys.path.insert(0, sys.argv[1])
from harness import network
network.loopback_up()
listener = socket.create_server((\"127.0.0.1\", 5000))
touches = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
touches.bind((\"127.0.0.1\", 41863))
print(flush=True)
time.sleep(20)" "$0/tools" >ready &
        while [[ ! -s ready ]]; do sleep 0.05; done
        PATH=$PWD/bin:$PATH
        "$@"
        kill $!' "$project_root" "$@"
}

test_suites_are_skipped_beside_a_running_panel() {
    pretend unshare <<<'exit 1'
    PATH=${PATH#"$PWD/bin:"}
    on_a_busy_computer bash -c '"$0" --or-skip echo "it was played"; echo "status $?"' "$isolated" >report
    [[ ! -s report ]] || expect report \
        'skipped: another program uses TCP 5000, UDP 41863, and this user may not create network namespaces (works as root)
status 77' "$(sed 's/works as root, .*/works as root)/' report)"
}

test_programs_that_are_no_suites_are_started_all_the_same() {
    pretend unshare <<<'exit 1'
    PATH=${PATH#"$PWD/bin:"}
    # shellcheck disable=SC2016 # expanded by the shell that is started
    on_a_busy_computer "$isolated" bash -c 'echo "$PANEL_COMPANION_ISOLATION: $PANEL_COMPANION_WHY_NOT_ISOLATED"' >report
    [[ ! -s report ]] || grep -q '^none: this user may not create network namespaces (works as root' report || cat report
}

test_each_isolated_command_has_a_home_of_its_own() {
    # shellcheck disable=SC2016 # expanded by the shell that is started
    "$isolated" bash -c '[[ $PANEL_COMPANION_ISOLATION == none || $HOME:$XDG_RUNTIME_DIR == /run/home:/run/runtime ]] || echo "$HOME"'
}
