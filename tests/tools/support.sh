# shellcheck shell=bash
# What the tests of the shell libraries share. They run in a folder of their own.

expect() { # WHAT WANTED GOT
    [[ $2 == "$3" ]] || printf '%s: wanted %q, got %q\n' "$1" "$2" "$3"
}

# Puts a program into this test's own folder of programs, which comes first in PATH.
pretend() { # NAME, with a bash script on standard input
    mkdir -p "$PWD/bin"
    { printf '#!/bin/bash\n' && cat; } >"bin/$1"
    chmod +x "bin/$1"
    [[ $PATH == "$PWD/bin:"* ]] || PATH=$PWD/bin:$PATH
}
