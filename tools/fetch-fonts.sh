#!/usr/bin/env bash
# Fetches the four weights of Poppins (SIL Open Font License) that the screens are set in, from a pinned npm package,
# into build/fonts, where the build embeds them. Without npm or a network nothing is changed and the build falls back
# on Manrope: a font is not worth a failed set-up.
set -u
cd "$(dirname "$0")/.." || exit 1

package=@expo-google-fonts/poppins@0.4.1
checksum=de5ee7515fec3f68ce73aea4ceec8dee1d51434a3791bcdf1b994e76385a3c89
target=build/fonts

[ -f "$target/Poppins-Regular.ttf" ] && exit 0
command -v npm >/dev/null 2>&1 || { echo "fonts: npm is not installed, Manrope stands in for Poppins"; exit 0; }

work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
archive=$(cd "$work" && timeout 60 npm pack --silent "$package" 2>/dev/null | tail -n 1)
if [ -z "$archive" ] || ! echo "$checksum  $work/$archive" | sha256sum --check --status; then
    echo "fonts: $package could not be fetched, Manrope stands in for Poppins"
    exit 0
fi

tar -xzf "$work/$archive" -C "$work" || exit 1
mkdir -p "$target"
cp "$work/package/LICENSE_FONT" "$target/OFL.txt" || exit 1
for face in 200ExtraLight 500Medium 600SemiBold 400Regular; do # Regular comes last: it marks the set as complete
    cp "$work/package/$face/Poppins_$face.ttf" "$target/Poppins-${face#[0-9][0-9][0-9]}.ttf" || exit 1
done
echo "fonts: Poppins is in $target"
