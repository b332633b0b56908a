# Names that a written netlist keeps: kpt_stage counts those that it does not, and -names gives lasting ones.
. "${0%/*}/flow.sh"
locate "$1"

[ "$top" = elevator ] || cells=
flow="read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $cells; rename -hide w:*"
[ "$top" = des ] || run log "$flow; kpt_stage"  # des takes 10 seconds
[ "$top" = des ] || grep -q '^Warning: [0-9]* registers have private names, which write_verilog replaces: kpt_stage -names gives lasting ones\.$' log ||
  fail "not told of private names"

run log "$flow; kpt_stage -names; kpt_save kpt.xml; kpt_show -o shown; write_rtlil gate.il
         write_verilog -noattr gate.v; write_json gate.json; write_blif -cname gate.blif; write_edif -nogndvcc gate.edif"
! grep -q 'private names' log || fail "told of private names although there are none"
grep -q '_kpt_1_' shown || fail "no name was given"

# Each transformed register, or its instance if it is a cell, has this name in every format.
sed -n '/<key_points_set type="transformed">/,/<\/key_points_set>/s/ *<name>\(.*\)<\/name>/\1/p' kpt.xml |
  sed 's/\[[0-9]*\]$//' | sort -u >names
[ -s names ] || fail "no names in the database"
! grep '\$' names || fail "private names"
for file in gate.v gate.json gate.blif gate.edif; do
  tr -s ' \t(){}",;' '\n' <$file | sed 's/^\\//; p; s/\[[0-9]*\]$//' | sort -u | comm -23 names - >absent
  [ ! -s absent ] || fail "not in $file: $(head -n 3 absent | tr '\n' ' ')"
done

# des takes a minute, and its proof shows nothing more.
[ "$top" = des ] || prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the names given"; }
