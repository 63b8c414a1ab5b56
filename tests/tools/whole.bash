# shellcheck shell=bash

# ./test in a project that has nothing but it, whose builds succeed and whose only test is "touchback/1".
pretend_project() {
    mkdir -p project/tools
    cp "$project_root/test" project/
    cp -r "$project_root/tools/lib" project/tools/
    pretend cmake <<<'exit 0'
    pretend ctest <<'SCRIPT'
if [[ $* == *--show-only* ]]; then
    echo '{"tests": [{"name": "touchback/1", "command": ["tap.sh"]}]}'
    exit
fi
while (($#)); do
    [[ $1 != --output-junit ]] || report=$2
    [[ $1 != -LE ]] || case='<testcase name="touchback/1" status="run"/>'
    shift
done
printf '<testsuite>%s</testsuite>' "${case-}" >"$report"
SCRIPT
}

test_a_filter_that_matches_nothing_is_a_failure() {
    local option
    pretend_project
    for option in --no-install --quick; do
        project/test --no-install "$option" NoSuchTest >report </dev/null
        expect "status with $option" 1 $?
        expect "last lines with $option" 'Failed:
  the filter NoSuchTest: it matches no test

0 passed, 1 failed, 0 skipped' "$(tail -n 4 report)"
    done
}

test_a_filter_that_matches_a_test_is_a_success() {
    pretend_project
    project/test --no-install 'touch.*/1' >report </dev/null
    expect status 0 $?
    expect "last line" '1 passed, 0 failed, 0 skipped' "$(tail -n 1 report)"
}

# ./run in a project that has nothing but it; what it has cmake do goes to the file "cmake".
pretend_project_to_run() {
    mkdir -p project/tools/demo
    cp "$project_root/run" project/
    cp -r "$project_root/tools/lib" project/tools/
    : >project/tools/demo/desktop.py
    pretend cmake <<<"echo \"\$*\" >>'$PWD/cmake'"
}

test_run_builds_all_that_is_installed() {
    pretend_project_to_run
    DISPLAY=:7 project/run --no-install >/dev/null </dev/null
    expect status 0 $?
    expect targets "$(sed -nE 's/^install\(TARGETS ([^ ]+) .*/\1/p' "$project_root"/*/CMakeLists.txt | sort)" \
        "$(sed -n 's/.*--target //p' cmake | tr ' ' '\n' | sort)"
}

test_warnings_of_a_new_compiler_stop_nobody_who_only_wants_to_run_it() {
    expect "warnings are errors" "$(printf 'debug ON\nrelease OFF')" "$(python3 -c '
import json, sys
for preset in json.load(open(sys.argv[1]))["configurePresets"]:
    value = preset.get("cacheVariables", {}).get("PANEL_COMPANION_WERROR")
    if value:
        print(preset["name"], value)' "$project_root/CMakePresets.json")"
}
