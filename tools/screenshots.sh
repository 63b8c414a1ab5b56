#!/bin/bash
# tools/screenshots.sh [--references]: with the debug build, writes docs/screenshots, a picture of every state of the
# screens. With --references it writes instead what ./test compares the screens with: tests/ui/pictures, every state at
# three sizes and two scales, and tests/ui/ScreenReader.txt, what a screen reader finds in it and where Tab goes.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder=docs/screenshots
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT

# The pictures are to look alike wherever they are made.
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
unset LANGUAGE QT_SCALE_FACTOR QT_STYLE_OVERRIDE QT_QPA_PLATFORMTHEME

tools/fetch-fonts.sh
if [[ ! -f build/fonts/Poppins-Regular.ttf ]]; then
    echo "The pictures are set in Poppins, which is not in build/fonts." >&2
    exit 1
fi
cmake --preset debug >/dev/null
cmake --build --preset debug --target screen-gallery >/dev/null

# Few colours are used: a palette of 256 halves a file, and no eye tells.
shrink() {
    local folder=$1 picture
    mkdir -p "$folder"
    for picture in "$fresh"/*.png; do
        convert "$picture" -dither None -colors 256 -strip -define png:compression-level=9 "$folder/$(basename "$picture")"
    done
}

if [[ ${1-} == --references ]]; then
    cmake --build --preset debug --target ui_test >/dev/null
    for scale in 1 2; do
        QT_SCALE_FACTOR=$scale PANEL_COMPANION_NEW_PICTURES=$fresh \
            build/debug/bin/ui_test --gtest_brief --gtest_filter='ReferencePictureTest.*'
    done
    PANEL_COMPANION_NEW_TEXT=tests/ui/ScreenReader.txt \
        build/debug/bin/ui_test --gtest_brief --gtest_filter='ScreenReaderTest.*'
    rm -rf tests/ui/pictures
    shrink tests/ui/pictures
    mv "$fresh"/made-with@*.txt tests/ui/pictures
    git diff --stat -- tests/ui
    exit
fi

gallery() {
    build/debug/bin/screen-gallery "$@" 2> >(grep -v -e 'This plugin does not support' -e XDG_RUNTIME_DIR >&2)
}
gallery "$fresh"
for scale in 1.5 2; do
    QT_SCALE_FACTOR=$scale gallery "$fresh/scaled" paired
    mv "$fresh/scaled/paired.png" "$fresh/paired@${scale}x.png"
done
rmdir "$fresh/scaled"

if command -v chromium >/dev/null && command -v chromedriver >/dev/null; then
    cmake --build --preset debug --target panel-simulator panelctl >/dev/null
    mkdir "$fresh/upload"
    convert "$fresh/paired.png" -resize 640x "$fresh/upload/Timetable.png"
    tools/lib/isolated.sh /usr/bin/python3 tools/demo/panel-page.py build/debug/bin "$fresh/upload/Timetable.png" \
        "$fresh/panel-page.png"
    rm -r "$fresh/upload"
else
    echo "panel-page.png stays as it is: chromium or chromedriver is not here." >&2
fi

shrink "$folder"
ls -l "$folder"
