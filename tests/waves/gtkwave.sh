# The real GTKWave shows the registers under the names of the source: at every moment that the test
# looks at, it shows the values of the source's simulation.
. "${0%/*}/flow.sh"
locate_bench elevator
synthesise
simulate_both
"$KPTDB" export kpt.xml --format gtkwave --dump gate.vcd --scope tb.dut -o view

cat >ask.tcl <<'END'
foreach time {105000 815000 1635000 2405000 3995000} {
  gtkwave::setMarker $time
  for {set k 0} {$k < [gtkwave::getTotalNumTraces]} {incr k} {
    puts "SHOWN $time [gtkwave::getTraceNameFromIndex $k] [gtkwave::getTraceValueAtMarkerFromIndex $k]"
  }
}
exit
END
# The signals of the source itself: the traces to compare with.
cat >source.gtkw <<'END'
@28
tb.dut.armed
tb.dut.moving
tb.dut.was_moving
tb.dut.was_moving_too
tb.dut.state[2:0]
@22
tb.dut.floor[1:0]
tb.dut.timer[1:0]
END
# view dump file: prints what GTKWave shows.
view() {
  timeout 120 xvfb-run -a gtkwave --nomenu -S ask.tcl "$1" "$2" 2>gtkwave.err | sed -n 's/^SHOWN //p'
}
view gate.vcd view/kpt.gtkw >shown
view rtl.vcd source.gtkw >source
[ "$(wc -l <source)" -eq 35 ] || { cat gtkwave.err source >&2; fail 'GTKWave did not answer'; }

values=0
while read -r time name value; do
  grep -qxF "$time $name $value" shown || { grep -F "$time $name " shown >&2; fail "at $time $name is $value"; }
  values=$((values + 1))
done <source
[ "$(sort -u -k 2 source | wc -l)" -gt 12 ] || fail 'hardly a value ever changes'
grep -q ' powered = 1 ' shown || fail 'the constant is not shown'
echo "$values values in GTKWave are those of the source"
