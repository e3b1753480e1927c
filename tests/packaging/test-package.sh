#!/usr/bin/env bash
# Builds the Debian package from a finished build, checks that it carries
# every file a desktop needs, validates the desktop entry and the metainfo,
# unpacks it into a scratch root and asks the unpacked program its version.
set -euo pipefail
build=$1
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT

fail() { echo "FAIL: $*" >&2; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$tmp/out" >"$tmp/cpack.log" 2>&1 || { cat "$tmp/cpack.log"; fail "cpack"; }
deb=$(ls "$tmp"/out/*.deb)
[ -f "$deb" ] || fail "no package was written"

udevdir=$(pkg-config --variable=udevdir udev 2>/dev/null || echo /lib/udev)
dpkg-deb --contents "$deb" | awk '{print $NF}' | sed 's#^\./#/#' >"$tmp/contents"
for f in \
    /usr/bin/pdf-brelvonic \
    /usr/share/applications/pdf-brelvonic.desktop \
    /usr/share/metainfo/pdf-brelvonic.metainfo.xml \
    /usr/share/mime/packages/pdf-brelvonic-show.xml \
    /usr/share/icons/hicolor/scalable/apps/pdf-brelvonic.svg \
    /usr/share/icons/hicolor/48x48/apps/pdf-brelvonic.png \
    /usr/share/icons/hicolor/256x256/apps/pdf-brelvonic.png \
    /usr/share/man/man1/pdf-brelvonic.1.gz \
    "$udevdir/rules.d/70-pdf-brelvonic-remotes.rules"; do
  grep -qx "$f" "$tmp/contents" || fail "the package lacks $f"
done

# Dependencies come from the program's libraries, not from a hand-written list.
depends=$(dpkg-deb --field "$deb" Depends)
for lib in libqt6widgets6 libc6; do
  grep -q "$lib" <<<"$depends" || fail "Depends lacks $lib: $depends"
done

# The maintainer scripts refresh udev and the desktop's caches.
dpkg-deb -e "$deb" "$tmp/control"
for tool in "udevadm control --reload-rules" update-desktop-database update-mime-database gtk-update-icon-cache; do
  grep -q "$tool" "$tmp/control/postinst" || fail "postinst does not run $tool"
done

dpkg-deb -x "$deb" "$tmp/root"
desktop-file-validate "$tmp/root/usr/share/applications/pdf-brelvonic.desktop"
appstreamcli validate --no-net "$tmp/root/usr/share/metainfo/pdf-brelvonic.metainfo.xml" >/dev/null \
  || appstreamcli validate --no-net "$tmp/root/usr/share/metainfo/pdf-brelvonic.metainfo.xml"
grep -q 'sub-class-of type="application/json"' "$tmp/root/usr/share/mime/packages/pdf-brelvonic-show.xml" \
  || fail "the show type is not a kind of JSON"
zcat "$tmp/root/usr/share/man/man1/pdf-brelvonic.1.gz" | grep -q '^\.SH FILES' || fail "the man page has no FILES section"

version=$(QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$tmp" timeout 60 "$tmp/root/usr/bin/pdf-brelvonic" --version || true)
grep -q "0\.1" <<<"$version" || fail "the unpacked program answered '$version' to --version"
echo "package ok: $(basename "$deb")"
