#!/usr/bin/env bash
# Takes a screenshot of korvil-studio in a real window on a virtual X
# server: a copy of the example project is opened, the window shows itself,
# grabs itself once painted and quits.
#
#   tools/screenshot.sh [KORVIL_STUDIO] [PNG]
#
# Defaults: build/apps/korvil-studio and build/artifacts/korvil-studio.png.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
studio="${1:-$root/build/apps/korvil-studio}"
picture="${2:-$root/build/artifacts/korvil-studio.png}"

command -v xvfb-run >/dev/null || { echo "screenshot.sh: xvfb-run is not installed (tools/dev.sh setup)" >&2; exit 2; }
[ -x "$studio" ] || { echo "screenshot.sh: $studio: not built" >&2; exit 2; }

# The example stays untouched: the window works on a copy.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$root/examples/calculator" "$work/"
mkdir -p "$(dirname "$picture")"
rm -f "$picture"

export ZELTAHOME="${ZELTAHOME:-$root/share/korvil}"
export XDG_CONFIG_HOME="$work/config"
QT_QPA_PLATFORM=xcb xvfb-run -a -s "-screen 0 1440x900x24" \
  "$studio" --screenshot "$picture" "$work/calculator/calculator.rtp"
[ -s "$picture" ] || { echo "screenshot.sh: no picture was written" >&2; exit 1; }
echo "$picture"
