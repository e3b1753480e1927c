#!/usr/bin/env bash
# Starts the program: on the user's files when given, else on a demo set made here.
set -euo pipefail
build="$1"; shift
files=("$@")
if [ ${#files[@]} -eq 0 ]; then
  demo="$build/demo-set"
  "$build/make-demo-set" "$demo"
  files=("$demo"/*.pdf)
fi
if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "No display found: running under Xvfb (virtual screen, nothing visible here)."
  exec xvfb-run -a -s "-screen 0 1920x1080x24" "$build/pdf-brelvonic" "${files[@]}"
fi
exec "$build/pdf-brelvonic" "${files[@]}"
