#!/usr/bin/env bash
# Checks that every translatable text of the sources has a finished translation in each .ts:
# lupdate brings a copy of the file up to date with the sources, and the copy must hold no
# new, unfinished, vanished or empty entry.
set -euo pipefail
lupdate=${1:?path to lupdate}
root=${2:?source folder}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
for ts in "$root"/translations/*.ts; do
  copy=$work/$(basename "$ts")
  cp "$ts" "$copy"
  "$lupdate" "$root/src" -ts "$copy" -no-obsolete -locations none >"$work/lupdate.log" 2>&1
  found=$(grep -o 'Found [0-9]* source text(s) ([0-9]* new' "$work/lupdate.log" || true)
  [ -n "$found" ] || { echo "FAIL: lupdate said nothing about $ts"; cat "$work/lupdate.log"; exit 1; }
  new=${found##*(}; new=${new%% new}
  unfinished=$(grep -c 'type="unfinished"' "$copy" || true)
  vanished=$(grep -cE 'type="(vanished|obsolete)"' "$copy" || true)
  empty=$(grep -cE '<translation>\s*</translation>|<numerusform>\s*</numerusform>' "$copy" || true)
  if [ "$new" != 0 ] || [ "$unfinished" != 0 ] || [ "$vanished" != 0 ] || [ "$empty" != 0 ]; then
    echo "FAIL: $(basename "$ts"): $new new, $unfinished unfinished, $vanished vanished, $empty empty"
    grep -B2 'type="unfinished"' "$copy" | grep '<source>' || true
    status=1
  fi
done
[ $status = 0 ] && echo "1 passed, 0 failed" || echo "0 passed, 1 failed"
exit $status
