#!/bin/bash
# tools/screenshots.sh: writes docs/screenshots, a picture of every state of the screens, with the debug build.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder=docs/screenshots
fresh=$(mktemp -d)
trap 'rm -rf "$fresh"' EXIT

# The pictures are to look alike wherever they are made.
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
unset QT_SCALE_FACTOR QT_STYLE_OVERRIDE QT_QPA_PLATFORMTHEME

[[ ! -x tools/fetch-fonts.sh ]] || tools/fetch-fonts.sh
cmake --preset debug >/dev/null
cmake --build --preset debug --target screen-gallery >/dev/null
build/debug/bin/screen-gallery "$fresh" 2>/dev/null
QT_SCALE_FACTOR=2 build/debug/bin/screen-gallery "$fresh/twice" paired 2>/dev/null
mv "$fresh/twice/paired.png" "$fresh/paired@2x.png"
rmdir "$fresh/twice"

mkdir -p "$folder"
for picture in "$fresh"/*.png; do
    # Few colours are used: a palette of 256 halves a file, and no eye tells.
    convert "$picture" -dither None -colors 256 -strip -define png:compression-level=9 "$folder/$(basename "$picture")"
done
ls -l "$folder"
