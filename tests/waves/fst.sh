# A dump in FST, which a program of GTKWave unpacks into a pipe, is shown like the VCD from which it was
# made. So is a dump that gzip compressed.
. "${0%/*}/flow.sh"
locate_bench elevator
synthesise
simulate_both
vcd2fst gate.vcd gate.fst >/dev/null
gzip -k gate.vcd
"$KPTDB" wave kpt.xml gate.vcd --scope tb.dut -o shown.vcd >/dev/null
fst2vcd gate.fst | "$KPTDB" wave kpt.xml - --scope tb.dut -o shown_fst.vcd >/dev/null
"$KPTDB" wave kpt.xml gate.vcd.gz --scope tb.dut -o shown_gz.vcd >/dev/null
cmp shown.vcd shown_gz.vcd || fail 'packed, it is shown otherwise'
# FST changes the order of changes at one time.
for file in shown shown_fst; do
  sed '/^\$timescale/d' "$file.vcd" | awk '/^#/ { time = $0 } { print time, $0 }' | sort >"$file.sorted"
done
cmp shown.sorted shown_fst.sorted || fail 'as FST, it is shown otherwise'
