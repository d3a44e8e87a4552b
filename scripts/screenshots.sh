#!/usr/bin/env bash
# Takes the README's screenshots: runs the tour, opens its shot in `maxhost gui` under Xvfb at 100 % and 150 %
# UI scale, opens the manager and the advanced reset dialog (scripts/screenshots.ms) and saves each window as a
# PNG under docs/images/. Needs a build (build/bin/maxhost) and xvfb (scripts/install-deps.sh installs it).
set -euo pipefail
cd "$(dirname "$0")/.."
maxhost=build/bin/maxhost
[ -x "$maxhost" ] || { echo "screenshots: build maxhost first" >&2; exit 1; }
# A fixed, plain folder: its name shows in the pictures' file names.
work=/tmp/vandrels-tour
rm -rf "$work" && mkdir -p "$work"
trap 'rm -rf "$work"' EXIT
export MAXHOST_TEMP="$work/scenes"
"$maxhost" --ini "$work/tour.ini" run examples/tour.ms > "$work/tour.log"
for scale in 1 1.5; do
  name=$([ "$scale" = 1 ] && echo 100 || echo 150)
  out="$work/shots-$name"
  xvfb-run -a -s "-screen 0 1920x1080x24" env QT_QPA_PLATFORM=xcb \
    "$maxhost" --ini "$work/gui-$name.ini" --ui-scale "$scale" --script scripts/screenshots.ms --grab "$out" \
    gui "$MAXHOST_TEMP/tour_shot.max" > "$work/gui-$name.log" 2>&1 || { cat "$work/gui-$name.log" >&2; exit 1; }
  mkdir -p docs/images
  cp "$out/HostMainWindow.png" "docs/images/host-window-$name.png"
  cp "$out/VandrelsQtManager.png" "docs/images/manager-$name.png"
  cp "$out/VandrelsQtAdvancedReset.png" "docs/images/advanced-reset-$name.png"
done
echo "screenshots written to docs/images/"
