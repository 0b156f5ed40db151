#!/usr/bin/env bash
# The 64-bit Windows build of the plug-in under wine: the same small host,
# built for Windows and for Linux, renders a patch through Tendrane.dll and
# through Tendrane.so, and the two renders must agree.
#   wine_host_test.sh SOURCE_DIR WIN_BUILD_DIR TENDRANE LINUX_HOST LINUX_PLUGIN PATCH WORK
set -euo pipefail
source_dir=$1 win_build=$2 tendrane=$3 linux_host=$4 linux_plugin=$5 patch=$6 work=$7
wine=/usr/lib/wine/wine64
rate=44100

[ -x "$wine" ] || { echo "FAILED: $wine is missing; tools/setup-debian.sh host installs it"; exit 1; }
command -v x86_64-w64-mingw32-g++-posix >/dev/null || { echo "FAILED: no MinGW-w64 compiler"; exit 1; }

# The Windows binaries, in the same build folder as the 64-bit cross build.
if [ ! -f "$win_build/build.ninja" ]; then
  cmake -S "$source_dir" -B "$win_build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_TOOLCHAIN_FILE="$source_dir/cmake/mingw-x86_64.cmake" -DTENDRANE_CORE_ONLY=ON >/dev/null
fi
cmake --build "$win_build" --target tendrane_vst tendrane_render_host -j 2 | tail -n 2
"$source_dir/tests/host/windows/check_dll.sh" x86_64-w64-mingw32-objdump "$win_build/vst/Tendrane.dll"

mkdir -p "$work"
run=$(mktemp -d "$work/run-XXXXXX")
cp "$win_build/vst/Tendrane.dll" "$win_build/vst/render_host.exe" "$run/"
# The plug-in keeps a startup bank in the preferences: a private folder.
export XDG_CONFIG_HOME="$run/config"
"$tendrane" chunk write --program "$patch" -o "$run/patch.bin"
"$linux_host" "$linux_plugin" "$run/patch.bin" $rate "$run/linux.raw"

export WINEPREFIX="$run/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
(cd "$run" && timeout -k 10 300 "$wine" render_host.exe Tendrane.dll patch.bin $rate windows.raw)
timeout -k 5 60 /usr/lib/wine/wineserver -k 2>/dev/null || true

python3 - "$run/linux.raw" "$run/windows.raw" <<'PY'
import struct, sys
a = open(sys.argv[1], "rb").read()
b = open(sys.argv[2], "rb").read()
if len(a) != len(b) or not a:
    print("FAILED: renders of %d and %d bytes" % (len(a), len(b)))
    sys.exit(1)
x = struct.unpack("<%df" % (len(a) // 4), a)
y = struct.unpack("<%df" % (len(b) // 4), b)
peak = max(abs(v) for v in x)
diff = max(abs(p - q) for p, q in zip(x, y))
print("Linux peak %.4f; largest difference Windows - Linux %.3g over %d frames" % (peak, diff, len(x) // 2))
if peak < 0.01:
    print("FAILED: the Linux render is silent")
    sys.exit(1)
if diff > 1e-4:
    print("FAILED: the Windows render differs")
    sys.exit(1)
PY
rm -rf "$run"
