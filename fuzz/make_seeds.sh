#!/usr/bin/env bash
# make_seeds.sh OUT [SHARED]: writes the starting inputs of every fuzz target
# as OUT/<family>/<name>: a selector byte (which extension of the family) and
# a file. The real and generated pictures beside the project are the best
# seeds there are; without them each extension gets a short file of zeros.
set -euo pipefail
out=$1 shared=${2:-}
families=(degas:NEO,PI1,PI2,PI3 degasc:PC1,PC2,PC3 tiny:TNY,TN1,TN2,TN3
          spectrum:SPU,SPC,SPS crack:CA1,CA2,CA3 macpaint:MAC)
# The Qt plugin's and the GdkPixbuf loader's targets take all 18, in the order of the table.
all=NEO,PI1,PI2,PI3,PC1,PC2,PC3,TNY,TN1,TN2,TN3,SPU,SPC,SPS,CA1,CA2,CA3,MAC
families+=(qtplugin:$all pixbuf:$all)
rm -rf "$out"

# seed FAMILY SELECTOR NAME [FILE]
seed() {
  mkdir -p "$out/$1"
  { printf "\\$(printf %03o "$2")"; if [ -n "${4:-}" ]; then cat "$4"; else head -c 64 /dev/zero; fi; } > "$out/$1/$3"
}

for entry in "${families[@]}"; do
  family=${entry%%:*}
  IFS=, read -ra extensions <<< "${entry#*:}"
  for i in "${!extensions[@]}"; do
    ext=${extensions[$i]}
    seed "$family" "$i" "zeros-$ext"
    [ -n "$shared" ] || continue
    while IFS= read -r -d '' file; do
      selector=$i
      # SPU files claim the one length the decoder accepts (selector bit 7).
      [ "$family:$ext" = spectrum:SPU ] && selector=$((0x81))
      seed "$family" "$selector" "$(basename "$(dirname "$file")")-$(basename "$file")" "$file"
    done < <(find "$shared/corpus" "$shared/synthetic" -type f -iname "*.$ext" -print0 2>/dev/null)
  done
done
