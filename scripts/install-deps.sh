#!/usr/bin/env bash
# Installs every Debian 12 package that building, running and testing need.
# Run as root (or with sudo available); packages already present are skipped.
set -euo pipefail

packages=(
  # Compiler and build tools (make comes with build-essential).
  build-essential cmake ninja-build pkg-config ccache
  # Qt 6 Core/Gui/Widgets/Network/DBus/Test and the OpenGL headers its CMake files ask for.
  qt6-base-dev qt6-base-dev-tools libgl-dev
  # MuPDF is a static library whose package names none of what it links:
  # every library of `pkg-config --static --libs mupdf`, plus harfbuzz.
  libmupdf-dev libharfbuzz-dev libfreetype-dev libjpeg-dev libopenjp2-7-dev
  libjbig2dec0-dev libgumbo-dev libmujs-dev libbrotli-dev libpng-dev zlib1g-dev
  # Qt SVG: the application icon is drawn from its SVG at every size a window asks for.
  qt6-svg-dev
  # Benchmarks, and poppler's cairo backend for the side-by-side render benchmark.
  libbenchmark-dev libpoppler-glib-dev
  # The video source (PipeWire), and for its tests a private PipeWire with its
  # session manager, a session bus and a GStreamer consumer.
  libpipewire-0.3-dev libspa-0.2-dev pipewire pipewire-bin wireplumber dbus-daemon
  gstreamer1.0-pipewire gstreamer1.0-tools gstreamer1.0-plugins-base gstreamer1.0-plugins-good
  libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
  # The clang build and the fuzzers (`make fuzz`): clang with libFuzzer and
  # the sanitizer runtimes.
  clang libclang-rt-14-dev llvm
  # Running without a display (make run under Xvfb, window tests), a font for
  # rendered text, and screenshots of the virtual screen (import).
  xvfb xauth x11-utils fonts-dejavu-core imagemagick
  # The console's Chinese texts (screenshots, and any machine without a CJK font).
  fonts-wqy-microhei
  # The output window's X11 states and the X screen saver kept off (Xlib,
  # XScreenSaver); the window tests read the pointer's image (XFixes).
  libx11-dev libxss-dev libxfixes-dev
  # Window tests on two screens: Xorg with the dummy driver, arranged by xrandr.
  xserver-xorg-core xserver-xorg-video-dummy x11-xserver-utils
  # The screen-saver inhibit is tested against a fake service on a private session bus.
  dbus-daemon
  # Clicker input: evdev devices and their hot-plug, key characters, X11 raw
  # input; xdotool sends keys to a test X server, pkexec installs device access.
  libevdev-dev libudev-dev libxkbcommon-dev libx11-dev libxi-dev xdotool pkexec
  # The Debian package: icons rendered from SVG, the checks of the desktop entry
  # and metainfo, and udev's own pkg-config file that names its rules folder.
  librsvg2-bin desktop-file-utils appstream udev
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
echo "Installing: ${missing[*]}"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
