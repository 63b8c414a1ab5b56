# shellcheck shell=bash

# The demonstration with the simulated panel of the debug build and an application that only tells its options.
play_demonstration() {
    mkdir -p programs
    ln -s "${PANEL_COMPANION_PROGRAMS:-$project_root/build/debug/bin}/panel-simulator" programs/
    # shellcheck disable=SC2016 # its own arguments
    printf '#!/bin/sh\necho "options: $*"\nexit 7\n' >programs/panel-companion
    chmod +x programs/panel-companion
    "$project_root/tools/lib/isolated.sh" /usr/bin/python3 -c '
import runpy, sys
sys.path.insert(0, sys.argv[1] + "/tools")
from harness import network
network.loopback_up()
sys.argv = ["desktop.py", "--programs", "programs", "--", "--touch-from", "panel"]
runpy.run_path(sys.path[0] + "/demo/desktop.py", run_name="__main__")' "$project_root" >report 2>&1 </dev/null
}

test_the_demonstration_tells_where_the_panel_can_be_touched() {
    play_demonstration
    expect status 7 $?
    grep -q ' http://127\.0\.0\.1:5000/$' report || cat report
    grep -q '^options: .*--touch-from panel$' report || cat report
}
