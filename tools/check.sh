#!/bin/bash
# Checks of the source text: form, scripts, where tests stand, and which folder may include what.
#
#   tools/check.sh [CHECK...]     all but "tidy" unless some are named; tools/check.sh --list names them
#
# Exit status: 1 if a check fails, 77 if all that ran were skipped.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 2
failures=0 passes=0

skipped() { # NAME REASON
    printf 'skipped - %s: %s\n' "$1" "$2"
}

# A check that prints nothing has found nothing.
check() { # NAME COMMAND...
    local name=$1 output
    shift
    output=$("$@" 2>&1)
    if [[ -z $output ]]; then
        ((++passes))
        printf 'ok - %s\n' "$name"
    else
        ((++failures))
        printf 'not ok - %s\n%s\n' "$name" "$output"
    fi
}

sources() {
    find . \( -name build -o -name .git -o -name node_modules \) -prune -o \
        -type f \( -name '*.h' -o -name '*.cpp' \) -printf '%P\n' | LC_ALL=C sort
}

shell_scripts() {
    find run test .ci/run tools tests packaging -type f \( ! -name '*.*' -o -name '*.sh' \) -perm -u+x ! -path 'tools/lib/*' \
        -exec grep -lE -m 1 '^#!/bin/(ba)?sh' {} + | LC_ALL=C sort
}

# Quoted includes of what is compiled into programs: "includer-folder included-folder file", tests left out.
# shellcheck disable=SC2016 # the fields are awk's
folder_includes() {
    sources | grep -vE '^(tests|bench)/|/testing/|Test\.cpp$' |
        xargs -r -d '\n' awk '
            match($0, /^#include "[^"]+\//) {
                from = FILENAME; sub(/\/[^\/]*$/, "", from)
                to = substr($0, 11, RLENGTH - 11)
                if (from != to) print from, to, FILENAME
            }'
}

# The arrows of the architecture. What is not listed is not allowed; "*" stands for every folder.
layers='
platform
panel            platform
touchback        platform
discovery        platform
views            platform
dashboard        platform panel touchback discovery views
platform/avahi   platform
platform/curl    platform platform/posix
platform/dbus    platform
platform/portal  platform
platform/posix   platform
platform/qt      platform platform/posix translations
platform/wayland platform
platform/x11     platform
translations
ui               platform views discovery dashboard translations
simulator        platform platform/avahi platform/posix
cli              platform platform/avahi platform/curl platform/posix platform/qt panel discovery touchback
app              *
'

layers_broken() {
    folder_includes | awk -v layers="$layers" '
        BEGIN {
            n = split(layers, line, "\n")
            for (i = 1; i <= n; i++) {
                m = split(line[i], folder, " ")
                for (j = 1; j <= m; j++) allowed[folder[1], folder[j]] = 1
            }
        }
        !(($1, $1) in allowed) { print $3 ": the folder " $1 " has no place in the layers of tools/check.sh"; next }
        !(($1, $2) in allowed) && !(($1, "*") in allowed) { print $3 ": " $1 " must not include " $2 }' |
        LC_ALL=C sort -u
}

# Between folders, and between the top-level folders as wholes.
cycles() {
    folder_includes | awk '{ print $1, $2 }' | LC_ALL=C sort -u | { tsort >/dev/null; } 2>&1
    folder_includes | sed -E 's#^([^/ ]+)[^ ]* ([^/ ]+)[^ ]*#\1 \2#' | awk '$1 != $2 { print $1, $2 }' | LC_ALL=C sort -u |
        { tsort >/dev/null; } 2>&1
}

# Where a library's headers are named outside the folders that adapt it.
foreign_headers() { # PATTERN FOLDER-PATTERN
    sources | grep -vE "^(tests|bench|$2)/" | xargs -r -d '\n' grep -HnE "^#include <($1)"
}

linked_by_logic() {
    grep -HnE '(Qt6|CURL|X11|PkgConfig)::' {platform,panel,touchback,discovery,views,dashboard}/CMakeLists.txt
}

unformatted() {
    sources | xargs -r -d '\n' clang-format --dry-run 2>&1 | grep 'clang-format-violations' | cut -d: -f1 | uniq -c |
        awk '{ print $2 ": " $1 " places" }'
}

check_form() {
    local name="the sources have the form of .clang-format" major
    if ! command -v clang-format >/dev/null; then
        skipped "$name" "clang-format is not installed (./test --with-optional installs it)"
        return
    fi
    major=$(clang-format --version | sed -E 's/.*version ([0-9]+).*/\1/')
    if [[ $major != 14 ]]; then
        skipped "$name" "clang-format is version $major, which lays some lines out otherwise than 14"
        return
    fi
    check "$name" unformatted
}

check_shell() {
    if ! command -v shellcheck >/dev/null; then
        skipped "shellcheck has no complaint" "shellcheck is not installed (./test --with-optional installs it)"
        return
    fi
    local -a scripts
    mapfile -t scripts < <(shell_scripts)
    check "shellcheck has no complaint" shellcheck -x -f gcc "${scripts[@]}"
}

python_errors() {
    find tools tests \( -name "*.py" -o -name mutate \) -print0 | xargs -0 -r python3 -c '
import ast, sys
for name in sys.argv[1:]:
    try:
        ast.parse(open(name, encoding="utf-8").read(), name)
    except SyntaxError as error:
        print(f"{name}: {error}")'
}

tidy_complaints() {
    # How each source is compiled on its own, with what the debug build has generated.
    cmake --preset debug -B build/tidy -DPANEL_COMPANION_UNITY_TESTS=OFF >/dev/null || return
    sed -i 's|/build/tidy|/build/debug|g' build/tidy/compile_commands.json
    sources | grep '\.cpp$' | grep -v '^tests/fuzz/' |
        xargs -r -d '\n' -n 4 -P "$(nproc)" clang-tidy --quiet -p build/tidy 2>/dev/null | grep -E '(warning|error):'
}

check_tidy() {
    if ! command -v clang-tidy >/dev/null || [[ ! -f build/debug/compile_commands.json ]]; then
        skipped "clang-tidy has no complaint" "clang-tidy or the debug build is missing"
        return
    fi
    check "clang-tidy has no complaint" tidy_complaints
}

# A unit test, which stands beside its class, touches nothing outside its own process.
worldly_unit_tests() {
    sources | grep 'Test\.cpp$' | grep -vE '^tests/' | xargs -r -d '\n' grep -HnE \
        '\b(pipe2?|socket|socketpair|fork|kill|raise|signal|sigaction|mkfifo) ?\(|\bQ(Core|Gui)?Application\b|\bQ[A-Za-z]*Widget\b|<sys/socket\.h>|^#include "tests/'
}

# Folders whose tests are left out under the thread sanitizer: ONE_THREAD in their CMakeLists.txt. The tests of cli/ are not
# linked with the probe of displays.
threads_in_one_thread_folders() {
    sources | grep -E '^(app|cli|discovery|touchback|ui|views|tests/ui)/' | grep -v '^cli/DesktopDisplayProbe\.cpp$' |
        xargs -r -d '\n' grep -HnE 'std::(j?thread|async)\b|\bQThread|QtConcurrent|pthread_create'
}

# Sources that do not include their own header first, which shows that the header needs nothing before it.
own_header_not_first() {
    local source header
    sources | grep '\.cpp$' | while read -r source; do
        header=${source%.cpp}.h
        [[ ! -f $header ]] || [[ $(grep -m 1 '^#include' "$source") == *"\"$header\""* ]] ||
            printf '%s: include "%s" first\n' "$source" "$header"
    done
}

check_headers() {
    check "every source includes its own header first" own_header_not_first
    check "Qt's headers stay in adapters and widgets" \
        foreign_headers 'Q[A-Z]|Qt' 'platform/(qt|avahi|dbus|portal|wayland|x11)|translations|ui|app|cli|simulator'
    check "X11's headers stay in their adapter and panelctl's probe" foreign_headers '(X11|xcb)/' 'platform/x11|cli'
    check "Wayland's headers stay in their adapter and panelctl's probe" foreign_headers 'wayland-' 'platform/wayland|cli'
    check "libcurl's headers stay in their adapter" foreign_headers 'curl/' 'platform/curl'
    check "the command-line library's headers stay in one file" foreign_headers 'CLI/' 'platform'
    check "the JSON library's headers stay in the simulated panel and panelctl" foreign_headers 'nlohmann/' 'simulator|cli'
    check "the HTTP server's headers stay in the simulated panel" foreign_headers 'microhttpd' 'simulator'
    check "Avahi's own headers are used nowhere: it is spoken to over D-Bus" foreign_headers 'avahi-' 'none'
    check "what decides links no toolkit" linked_by_logic
}

check_layers() {
    check "no folder includes one that the layers keep from it" layers_broken
    check "no folder includes one that includes it back" cycles
}

check_python() { check "the Python scripts parse" python_errors; }
check_tests() {
    check "unit tests touch no pipe, signal, socket or window" worldly_unit_tests
    check "folders whose tests skip the thread sanitizer start no thread" threads_in_one_thread_folders
}

all=(form shell python tests layers headers)
if [[ ${1-} == --list ]]; then
    printf '%s\n' "${all[@]}" tidy
    exit
fi
for name in "${@:-${all[@]}}"; do
    if ! declare -F "check_$name" >/dev/null; then
        printf 'check.sh: there is no check "%s"\n' "$name" >&2
        exit 2
    fi
    "check_$name"
done
((failures == 0)) || exit 1
((passes)) || exit 77
