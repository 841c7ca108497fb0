#!/usr/bin/env bash
# The desktop entry's MimeType line is the one the decoder chain gives: what
# ormidon_desktop_mime_types prints now must be what the shipped entry says.
set -euo pipefail
tool=${1:?path to ormidon_desktop_mime_types}
entry=${2:?path to the shipped desktop entry}
want=$(QT_QPA_PLATFORM=offscreen "$tool")
have=$(grep '^MimeType=' "$entry")
if [ "$want" != "$have" ]; then
  echo "FAIL: the MimeType line of $entry is not the one the decoders give." >&2
  diff <(tr ';' '\n' <<<"$have") <(tr ';' '\n' <<<"$want") >&2 || true
  echo "Put this line into $entry:" >&2
  echo "$want" >&2
  exit 1
fi
# Types any image viewer must open, and a few Qt reads that a hand-written list forgot.
for type in image/jpeg image/png image/tiff image/gif image/bmp application/pdf \
            image/x-icon image/x-portable-graymap image/x-xbitmap; do
  grep -q "[=;]$type;" <<<"$have" || { echo "FAIL: $type is missing from the MimeType line" >&2; exit 1; }
done
echo "PASS: the MimeType line lists $(tr ';' '\n' <<<"${have#MimeType=}" | grep -c .) types"
