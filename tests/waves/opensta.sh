# A timing program reads the Tcl file and finds every pin that it names.
. "${0%/*}/flow.sh"
locate_bench elevator
synthesise
"$KPTDB" export kpt.xml --format tcl -o kpt.tcl

cat >ask.tcl <<END
read_liberty $KPT_RTL/cells.lib
read_verilog gate.v
link_design elevator
source kpt.tcl
foreach name [lsort [array names kpt::pin]] {
  set pin [get_pins \$kpt::pin(\$name)]
  puts "PIN \$name [get_property \$pin full_name] \$kpt::sense(\$name)"
}
foreach name [lsort [array names kpt::net]] {
  puts "NET \$name [get_property [get_nets \$kpt::net(\$name)] full_name]"
}
puts "CONSTANT \$kpt::constant(powered)"
exit
END
sta -no_splash -exit ask.tcl >sta.log 2>&1 || { cat sta.log >&2; fail 'OpenSTA ended with an error'; }
"$KPTDB" export kpt.xml --format sqlite -o kpt.db
sqlite3 -separator ' ' kpt.db "SELECT 'PIN', name, successor || '/' || successor_type, sense FROM answers
  WHERE successor_type IS NOT NULL ORDER BY name" >expected
grep '^PIN ' sta.log >found || true
[ "$(wc -l <expected)" -ge 13 ] || fail "the database has hardly a pin: $(cat expected)"
cmp expected found || { cat sta.log >&2; fail 'OpenSTA finds other pins'; }
grep -qx 'CONSTANT 1' sta.log || fail 'the constant is not there'
echo "$(wc -l <found) pins and $(grep -c '^NET ' sta.log || true) nets found in OpenSTA"
