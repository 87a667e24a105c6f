#!/usr/bin/env bash
# Installs the default build into a staging prefix and uses it as a host
# developer would: builds the example host against it with pkg-config and
# with CMake, runs both and the installed tavro-host on the bundled simulated
# cameras and, through --camera-library, on Aravis's fake camera; then builds
# the Debian packages, installs tavro and tavro-aravis, grabs from the fake
# camera with nothing set but the fake, removes tavro-aravis, grabs from the
# simulated cameras again and removes tavro.
# Usage: scripts/check-install.sh   (needs root or sudo for the package)
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=$root/build/default
work=$build/install-check
stage=$work/stage

step() { echo "-- $(date +%T) $*"; }
fail() { echo "check-install: $*" >&2; exit 1; }
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

cmake --preset default >/dev/null
cmake --build --preset default --target tavro oxel tavro-host oxel_aravis oxel-aravis-gv-fake
rm -rf "$work"
mkdir -p "$work"

step "install into $stage"
cmake --install "$build" --prefix "$stage" --strip >/dev/null
libdir=$(cmake -LA -N "$build" | sed -n 's/^CMAKE_INSTALL_LIBDIR:PATH=//p')
for f in bin/tavro-host "$libdir/tavro/libtavro.so" "$libdir/tavro/liboxel.so.1" \
         include/tavro/tavro_host.h include/oxel/oxel_c.h include/oxel/oxel_sim.h \
         share/tavro/producers/oxel_u3v.cti share/doc/tavro/README.md \
         share/doc/tavro/examples/grab_one.c "$libdir/pkgconfig/tavro.pc" \
         "$libdir/cmake/Tavro/TavroConfig.cmake"; do
  [ -e "$stage/$f" ] || fail "not installed: $f"
done
# The plug-in finds the camera library beside itself, wherever the prefix is.
readelf -d "$stage/$libdir/tavro/libtavro.so" | grep -Eq 'R(UN)?PATH.*\[\$ORIGIN\]' ||
  fail "libtavro.so does not look beside itself for liboxel.so.1"
if readelf -d "$stage/bin/tavro-host" "$stage/$libdir/tavro/liboxel.so.1" | grep -Eq 'R(UN)?PATH'; then
  fail "an installed file carries a build-tree run path"
fi

# The guide shows the example host as it is.
sed -n '/^<!-- examples\/grab_one.c -->/,/^```$/p' docs/host-integration.md | sed '1,2d;$d' |
  diff -u examples/grab_one.c - || fail "docs/host-integration.md no longer shows examples/grab_one.c"

# A grab through the example must report the first camera's full image.
expect_grab() {
  local output
  output=$(env -u GENICAM_GENTL64_PATH GENICAM_GENTL64_PATH="$stage/share/tavro/producers" "$@")
  echo "$output" | grep -q "user value 42" || fail "$1: no finished callback: $output"
  echo "$output" | grep -q "1936 x 1216 grey image from OX-U3-23C" || fail "$1: $output"
}

step "example with pkg-config"
cp examples/grab_one.c examples/Makefile "$work/"
mkdir -p "$work/pkgconfig" && mv "$work/grab_one.c" "$work/Makefile" "$work/pkgconfig/"
PKG_CONFIG_PATH="$stage/$libdir/pkgconfig" make -s -C "$work/pkgconfig"
expect_grab "$work/pkgconfig/grab_one"
# The simulator's control header compiles as C from the installed include path too.
printf '#include <oxel/oxel_sim.h>\nint main(void) { return OxelSim_PatternMono8(0, 0, 0) == 255; }\n' |
  cc -std=c99 -Wall -Wextra -Werror -pedantic -x c - -fsyntax-only \
    $(PKG_CONFIG_PATH="$stage/$libdir/pkgconfig" pkg-config --cflags tavro)

step "example with CMake"
cmake -S "$stage/share/doc/tavro/examples" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$stage" \
  -DCMAKE_C_FLAGS="-Wall -Wextra -Werror" >/dev/null
cmake --build "$work/cmake" >/dev/null
expect_grab "$work/cmake/grab_one"

step "installed tavro-host finds its plug-in and cameras"
env -u GENICAM_GENTL64_PATH "$stage/bin/tavro-host" --quiet grab --colour -o "$work/staged.png" |
  grep -q "$stage/share/tavro/producers" || fail "staged tavro-host did not use its own producers"
[ -s "$work/staged.png" ] || fail "staged tavro-host saved no image"

step "installed tavro-host on the library over Aravis"
for f in "$libdir/tavro/aravis/liboxel.so.1" "$libdir/tavro/aravis/oxel-aravis-fake-camera.xml" \
         "$libdir/tavro/aravis/oxel-aravis-gv-fake" share/doc/tavro-aravis/copyright; do
  [ -e "$stage/$f" ] || fail "not installed: $f"
done
# A plain install keeps the simulator beside the plug-in.
[ "$(readlink "$stage/$libdir/tavro/liboxel.so.1")" = liboxel.so.1.0.0 ] ||
  fail "the staged install replaced the simulator"
env -u GENICAM_GENTL64_PATH OXEL_ARAVIS_FAKE=1 "$stage/bin/tavro-host" --quiet \
  --camera-library "$stage/$libdir/tavro/aravis/liboxel.so.1" grab -o "$work/staged-aravis.png" |
  grep -q "from camera 0 (Fake) .*camera library: Aravis" ||
  fail "staged tavro-host did not grab from the Aravis fake camera"

step "Debian packages"
(cd "$build" && cpack -G DEB >/dev/null)
deb=$(ls "$build"/package/tavro_*.deb)
aravis_deb=$(ls "$build"/package/tavro-aravis_*.deb)
[ "$(dpkg-deb -f "$deb" Package)" = tavro ] || fail "$deb is not the tavro package"
[ "$(dpkg-deb -f "$aravis_deb" Package)" = tavro-aravis ] || fail "$aravis_deb is not tavro-aravis"
# Another process may hold the package database for a while.
dpkg_retry() {
  for _ in $(seq 60); do
    if $SUDO env DEBIAN_FRONTEND=noninteractive dpkg "$@" >"$work/dpkg.log" 2>&1; then return 0; fi
    grep -q 'lock' "$work/dpkg.log" || { cat "$work/dpkg.log" >&2; return 1; }
    sleep 5
  done
  return 1
}
remove_packages() {
  $SUDO dpkg -r tavro-aravis >/dev/null 2>&1 || true
  $SUDO dpkg -r tavro >/dev/null 2>&1 || true
}
trap remove_packages EXIT
packaged_grab() {
  env -u GENICAM_GENTL64_PATH -u TAVRO_OXEL_LIBRARY "$@" /usr/bin/tavro-host --quiet grab \
    -o "$work/packaged.png"
}
dpkg_retry -i "$deb" || fail "dpkg -i $deb failed"
packaged_grab | grep -q 'producers: /usr/share/tavro/producers' ||
  fail "packaged tavro-host did not grab"
[ -s "$work/packaged.png" ] || fail "packaged tavro-host saved no image"
pkg-config --exists tavro || fail "the package's tavro.pc is not found"

step "tavro-aravis: real cameras without setting anything, the simulator back when it goes"
dpkg_retry -i "$aravis_deb" || fail "dpkg -i $aravis_deb failed"
packaged_grab OXEL_ARAVIS_FAKE=1 | grep -q 'from camera 0 (Fake) .*camera library: Aravis' ||
  fail "with tavro-aravis the packaged tavro-host did not grab from the fake camera"
[ -s /usr/share/doc/tavro-aravis/copyright ] || fail "tavro-aravis carries no licence notice"
dpkg_retry -r tavro-aravis || fail "dpkg -r tavro-aravis failed"
packaged_grab | grep -q 'producers: /usr/share/tavro/producers' ||
  fail "without tavro-aravis the simulated cameras are not back"
dpkg_retry -r tavro || fail "dpkg -r tavro failed"
trap - EXIT
[ ! -e /usr/bin/tavro-host ] || fail "dpkg -r left /usr/bin/tavro-host"
step "install checks passed"
