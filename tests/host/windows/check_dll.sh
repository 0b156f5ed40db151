#!/usr/bin/env bash
# Checks a Windows build of the plug-in: it exports exactly VSTPluginMain and
# main, and needs no DLL beside the system's own (the runtime is inside).
#   check_dll.sh OBJDUMP Tendrane.dll
set -euo pipefail
export LC_ALL=C
objdump=$1
dll=$2
dump=$("$objdump" -p "$dll")

exports=$(printf '%s\n' "$dump" | awk '/\[Ordinal\/Name Pointer\] Table/ {on=1; next} on && /^[ \t]*\[/ {print $NF; next} on {on=0}' | sort | tr '\n' ' ')
if [ "$exports" != "VSTPluginMain main " ]; then
  echo "FAILED: $dll exports '$exports', not 'VSTPluginMain main'"
  exit 1
fi

imports=$(printf '%s\n' "$dump" | awk '/DLL Name:/ {print tolower($3)}' | sort -u | tr '\n' ' ')
for dll_name in $imports; do
  case "$dll_name" in
    kernel32.dll|user32.dll|gdi32.dll|advapi32.dll|shell32.dll|ole32.dll|oleaut32.dll|comdlg32.dll|\
    wininet.dll|winmm.dll|msvcrt.dll|ws2_32.dll|shlwapi.dll|comctl32.dll|api-ms-win-*|ucrtbase.dll) ;;
    *) echo "FAILED: $dll needs $dll_name beside it"; exit 1 ;;
  esac
done
echo "$dll: exports $exports; imports $imports"
