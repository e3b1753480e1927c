#!/usr/bin/env bash
# Starts the program: on the user's files when given, else on a demo set made here.
set -euo pipefail
build="$1"; shift
files=("$@")
if [ ${#files[@]} -eq 0 ]; then
  # The build writes the demo set; write it again if it was deleted since.
  demo="$build/demo-set"
  compgen -G "$demo/*.pdf" >/dev/null || "$build/make-demo-set" "$demo"
  files=("$demo"/*.pdf)
fi

# A display counts only when it answers: a stale DISPLAY from an old ssh
# session must not make the program fail at start.
display_reachable() {
  if [ -n "${WAYLAND_DISPLAY:-}" ]; then
    local socket="$WAYLAND_DISPLAY"
    [ "${socket#/}" != "$socket" ] || socket="${XDG_RUNTIME_DIR:-/nonexistent}/$socket"
    [ -S "$socket" ] && return 0
  fi
  [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1
}

if ! display_reachable; then
  echo "No display reachable: running under Xvfb (a virtual 1920x1080 screen, nothing is shown here)."
  unset WAYLAND_DISPLAY
  exec xvfb-run -a -s "-screen 0 1920x1080x24" "$build/pdf-brelvonic" "${files[@]}"
fi
exec "$build/pdf-brelvonic" "${files[@]}"
