#!/bin/bash
# tools/translations.sh [LANGUAGE...]: takes new texts of the sources into all translations/*.ts, drops those that are gone,
# and begins the files of further languages, such as "it".
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

files=(translations/*.ts)
for language; do
    files+=("translations/panel-companion_$language.ts")
done
"$(qtpaths6 --query QT_HOST_BINS)/lupdate" -locations none -no-ui-lines -no-obsolete -source-language en -I . \
    ui app platform/qt translations resources/scenes -ts "${files[@]}"
