#!/usr/bin/env bash
# The 64-bit Windows build's editor under wine, on an X server of its own
# (Xvfb): a small Windows host opens it in a window, drags the volume
# slider, clicks undo and redo, opens and closes it a hundred times, and
# reads back what the editor's window shows, which must be what
# `tendrane panel` draws for the same events, pixel for pixel. The editor
# window's clipboard is checked against the Windows clipboard too, and its
# MIDI configuration dialog, the system's own, is opened from the main menu
# and driven from a second thread of the host. The fetch worker, which the
# last editor's close stops, must stop without waiting for the network.
#   wine_editor_test.sh SOURCE_DIR WIN_BUILD_DIR TENDRANE WORK
set -euo pipefail
source_dir=$1 win_build=$2 tendrane=$3 work=$4
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver

[ -x "$wine" ] || { echo "FAILED: $wine is missing; tools/setup-debian.sh host installs it"; exit 1; }
command -v x86_64-w64-mingw32-g++-posix >/dev/null || { echo "FAILED: no MinGW-w64 compiler"; exit 1; }
command -v xvfb-run >/dev/null || { echo "FAILED: xvfb-run is missing; tools/setup-debian.sh host installs it"; exit 1; }

# The Windows binaries, in the same build folder as the 64-bit cross build.
if [ ! -f "$win_build/build.ninja" ]; then
  cmake -S "$source_dir" -B "$win_build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_TOOLCHAIN_FILE="$source_dir/cmake/mingw-x86_64.cmake" -DTENDRANE_CORE_ONLY=ON >/dev/null
fi
# The panel's images and fonts are PNG files: a build without a PNG decoder
# has no editor (the plug-in says so, and the editor host then ends with
# status 77), and only the clipboard is checked there; the test then ends
# as skipped (CTest's "skipped", never a pass). A build that reads PNG (libpng, or our reader over zlib) whose
# plug-in says it has no editor fails.
decoder=yes
grep -qE "TENDRANE_HAVE_(LIBPNG|ZLIB)" "$win_build/build.ninja" || decoder=no
cmake --build "$win_build" --target tendrane_vst tendrane_editor_host tendrane_editor_clipboard \
  tendrane_editor_midi_config tendrane_url_fetch_test -j 2 | tail -n 2
"$source_dir/tests/host/windows/check_dll.sh" x86_64-w64-mingw32-objdump "$win_build/vst/Tendrane.dll"

mkdir -p "$work"
run=$(mktemp -d "$work/run-XXXXXX")
cp "$win_build/vst/Tendrane.dll" "$win_build/vst/editor_host.exe" "$win_build/vst/editor_clipboard.exe" \
  "$win_build/vst/editor_midi_config.exe" "$win_build/vst/url_fetch_test.exe" "$run/"

# The headless panel of the same events, with empty preferences as the
# fresh wine prefix has them.
printf 'wait 300\n' > "$run/opened.events"
printf 'drag 308 461 330 461 11\nwait 300\nclick 105 49\nwait 300\nclick 145 49\nwait 1800\n' > "$run/gestures.events"
for name in opened gestures; do
  XDG_CONFIG_HOME="$run/config-$name" "$tendrane" panel --factory 0 --events "$run/$name.events" \
    -o "$run/$name-panel.png"
done

export WINEPREFIX="$run/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
cat > "$run/under-x.sh" <<'SH'
#!/usr/bin/env bash
# Both Windows programs on the X server that xvfb-run started.
cd "$1"
timeout -k 10 600 "$2" editor_clipboard.exe > clipboard.log 2>&1
echo $? > clipboard.status
timeout -k 10 600 "$2" editor_host.exe Tendrane.dll opened.ppm gestures.ppm > host.log 2>&1
echo $? > host.status
timeout -k 10 300 "$2" editor_midi_config.exe Tendrane.dll > midi-config.log 2>&1
echo $? > midi-config.status
timeout -k 10 120 "$2" url_fetch_test.exe > url-fetch.log 2>&1
echo $? > url-fetch.status
timeout -k 5 60 "$3" -k 2>/dev/null || true
SH
chmod +x "$run/under-x.sh"
xvfb-run -a -s "-screen 0 1280x1024x24" "$run/under-x.sh" "$run" "$wine" "$wineserver"
# wine prints its own notes with the programs' lines: ours are the ones shown.
grep -hE '^(FAILED|passed|editor rectangle|volume|after undo|100 openings|written|copied|pasted|no editor|dialog|while open|Make Default|after OK|after Cancel|stopping|threads)' "$run"/*.log || true
clipboard_status=$(cat "$run/clipboard.status" 2>/dev/null || echo missing)
failed=0
[ "$clipboard_status" = 0 ] || { echo "FAILED: editor_clipboard.exe ended with status $clipboard_status (see $run/clipboard.log)"; failed=1; }
host_status=$(cat "$run/host.status" 2>/dev/null || echo missing)
if [ "$host_status" = 77 ]; then
  if [ "$decoder" = yes ]; then
    echo "FAILED: the plug-in says it has no editor, though its build reads PNG with libpng"
    failed=1
  fi
  [ "$failed" = 0 ] || { echo "FAILED: the logs are kept in $run"; exit 1; }
  echo "SKIPPED: the Windows build in $win_build reads no PNG, so its plug-in has no editor"
  rm -rf "$run"
  exit 77
fi
[ "$host_status" = 0 ] || { echo "FAILED: editor_host.exe ended with status $host_status (see $run/host.log)"; failed=1; }
midi_status=$(cat "$run/midi-config.status" 2>/dev/null || echo missing)
[ "$midi_status" = 0 ] || { echo "FAILED: editor_midi_config.exe ended with status $midi_status (see $run/midi-config.log)"; failed=1; }
fetch_status=$(cat "$run/url-fetch.status" 2>/dev/null || echo missing)
[ "$fetch_status" = 0 ] || { echo "FAILED: url_fetch_test.exe ended with status $fetch_status (see $run/url-fetch.log)"; failed=1; }

python3 - "$run" <<'PY' || failed=1
# The window's pictures (PPM) against the headless panel's (PNG), by RGB.
import struct, sys, zlib

def read_png(path):
    data = open(path, "rb").read()
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        raise ValueError(path + " is not a PNG")
    pos, idat, header = 8, b"", None
    while pos < len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        body = data[pos + 8:pos + 8 + length]
        if kind == b"IHDR":
            header = struct.unpack(">IIBBBBB", body)
        elif kind == b"IDAT":
            idat += body
        pos += 12 + length
    width, height, depth, colour, _, _, interlace = header
    channels = {2: 3, 6: 4}.get(colour)
    if depth != 8 or channels is None or interlace != 0:
        raise ValueError("%s: only 8-bit RGB or RGBA without interlace is read here" % path)
    raw, stride = zlib.decompress(idat), width * channels
    rows, previous, pos = [], bytearray(stride), 0
    for _ in range(height):
        kind, line = raw[pos], bytearray(raw[pos + 1:pos + 1 + stride])
        pos += 1 + stride
        for i in range(stride):
            a = line[i - channels] if i >= channels else 0
            b = previous[i]
            c = previous[i - channels] if i >= channels else 0
            if kind == 1: line[i] = (line[i] + a) & 255
            elif kind == 2: line[i] = (line[i] + b) & 255
            elif kind == 3: line[i] = (line[i] + (a + b) // 2) & 255
            elif kind == 4:
                p = a + b - c
                pa, pb, pc = abs(p - a), abs(p - b), abs(p - c)
                line[i] = (line[i] + (a if pa <= pb and pa <= pc else b if pb <= pc else c)) & 255
        rows.append(line)
        previous = line
    rgb = bytearray()
    for line in rows:
        for x in range(width):
            rgb += line[x * channels:x * channels + 3]
    return width, height, bytes(rgb)

def read_ppm(path):
    data = open(path, "rb").read()
    fields, pos = [], 0
    while len(fields) < 4:
        while data[pos:pos + 1].isspace(): pos += 1
        start = pos
        while not data[pos:pos + 1].isspace(): pos += 1
        fields.append(data[start:pos])
    if fields[0] != b"P6" or fields[3] != b"255":
        raise ValueError(path + " is not an 8-bit binary PPM")
    return int(fields[1]), int(fields[2]), data[pos + 1:]

run, bad = sys.argv[1], 0
for name in ("opened", "gestures"):
    try:
        w1, h1, shown = read_ppm("%s/%s.ppm" % (run, name))
        w2, h2, panel = read_png("%s/%s-panel.png" % (run, name))
    except (OSError, ValueError) as e:
        print("FAILED: %s: %s" % (name, e))
        bad += 1
        continue
    if (w1, h1) != (w2, h2) or len(shown) != len(panel) or len(shown) != w1 * h1 * 3:
        print("FAILED: %s: the window shows %dx%d, the panel is %dx%d" % (name, w1, h1, w2, h2))
        bad += 1
        continue
    # The plant sways a little with no note, at a phase that follows the
    # ticks of each side's clock: its disc is left out here, and its pictures
    # are pinned by the plant's own tests.
    def in_plant(p):
        dx, dy = p % w1 - 192, p // w1 - 264
        return dx * dx + dy * dy <= 114 * 114
    differ = [i // 3 for i in range(0, len(shown), 3)
              if shown[i:i + 3] != panel[i:i + 3] and not in_plant(i // 3)]
    if differ:
        xs, ys = [i % w1 for i in differ], [i // w1 for i in differ]
        print("FAILED: %s: %d of %d pixels differ, from (%d, %d) to (%d, %d)"
              % (name, len(differ), w1 * h1, min(xs), min(ys), max(xs), max(ys)))
        for i in differ[:5]:
            print("  (%d, %d): window %s, panel %s" % (i % w1, i // w1, shown[3 * i:3 * i + 3].hex(), panel[3 * i:3 * i + 3].hex()))
        bad += 1
    else:
        print("%s: the window and the headless panel agree on every pixel outside the plant" % name)
sys.exit(1 if bad else 0)
PY

if [ "$failed" != 0 ]; then
  echo "FAILED: the pictures and logs are kept in $run"
  exit 1
fi
rm -rf "$run"
