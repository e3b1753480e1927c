#!/usr/bin/env bash
# Runs a command on a private X server with two screens side by side: Xorg
# with the dummy driver, DUMMY0 1920x1080 (the main screen) at 0,0 and DUMMY1
# 1280x1024 to the right of it. The server gets a free display number of its
# own, is ended by its PID afterwards, and leaves nothing behind.
# Exit status: the command's; 77 (skipped) when Xorg or its dummy driver is
# not installed.
set -u
if ! command -v Xorg >/dev/null || ! command -v xrandr >/dev/null ||
   ! compgen -G "/usr/lib/xorg/modules/drivers/dummy_drv.so" >/dev/null; then
  echo "Xorg with the dummy driver is not installed: skipped"
  exit 77
fi

dir=$(mktemp -d)
server=""
cleanup() {
  if [ -n "$server" ]; then kill "$server" 2>/dev/null; wait "$server" 2>/dev/null; fi
  rm -rf "$dir"
}
trap cleanup EXIT

cat > "$dir/xorg.conf" <<'CONF'
Section "Device"
  Identifier "dummy"
  Driver "dummy"
  VideoRam 256000
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5.0-1000.0
  VertRefresh 5.0-200.0
  Modeline "1920x1080" 148.50 1920 2008 2052 2200 1080 1084 1089 1125 +hsync +vsync
  Modeline "1280x1024" 108.00 1280 1328 1440 1688 1024 1025 1028 1066 +hsync +vsync
EndSection
Section "Screen"
  Identifier "screen"
  Device "dummy"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1920x1080"
    Virtual 3200 1080
  EndSubSection
EndSection
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "DontVTSwitch" "true"
EndSection
CONF

# The server writes the display number it took to fd 3.
Xorg -displayfd 3 -config "$dir/xorg.conf" -configdir "$dir" -logfile "$dir/xorg.log" \
  -noreset -nolisten tcp -novtswitch -sharevts 3>"$dir/display" >/dev/null 2>&1 &
server=$!
for _ in $(seq 1 200); do
  [ -s "$dir/display" ] && break
  kill -0 "$server" 2>/dev/null || break
  sleep 0.05
done
if ! [ -s "$dir/display" ]; then
  echo "Xorg did not start:"; tail -n 20 "$dir/xorg.log" 2>/dev/null
  exit 1
fi
export DISPLAY=":$(tr -d '[:space:]' < "$dir/display")"
xrandr --addmode DUMMY1 1280x1024 &&
  xrandr --output DUMMY0 --mode 1920x1080 --pos 0x0 --primary &&
  xrandr --output DUMMY1 --mode 1280x1024 --right-of DUMMY0 || { echo "xrandr failed"; exit 1; }
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb
"$@"
