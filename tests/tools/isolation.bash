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
    on_a_busy_computer "$isolated" --tap echo 'it was played' >report
    [[ ! -s report ]] || expect report \
        '1..0 # SKIP another program has TCP 5000, UDP 41863, and this user may have no network of his own (works as root)' \
        "$(sed 's/works as root, .*/works as root)/' report)"
}

test_programs_that_are_no_suites_are_started_all_the_same() {
    pretend unshare <<<'exit 1'
    PATH=${PATH#"$PWD/bin:"}
    # shellcheck disable=SC2016 # expanded by the shell that is started
    on_a_busy_computer "$isolated" bash -c 'echo "$PANEL_COMPANION_ISOLATION: $PANEL_COMPANION_WHY_NOT_ISOLATED"' >report
    [[ ! -s report ]] || grep -q '^none: this user may have no network of his own (works as root' report || cat report
}

test_a_lab_that_is_skipped_says_so_once() {
    mkdir -p project/tests/lab project/tools/lib
    printf '#!/bin/sh\necho "1..0 # SKIP another program has TCP 5000"\n' >project/tools/lib/isolated.sh
    chmod +x project/tools/lib/isolated.sh
    echo 'print("one\ntwo")' >project/tests/lab/scenarios.py
    expect lines '1..0 # SKIP another program has TCP 5000' \
        "$(PANEL_COMPANION_ROOT=$PWD/project "$project_root/tests/lab/run-lab.sh")"
}
