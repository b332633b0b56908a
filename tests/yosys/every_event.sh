# Synthesis into cells does everything to the elevator's registers that a database can record.
. "${0%/*}/flow.sh"
locate elevator

run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $cells; kpt_stage
         kpt_save kpt.xml; kpt_show -o saved"
expect log '1 kept inverted' '14 kept in a technology cell' '1 merged into another register' \
  '4 stuck at zero' '1 stuck at one' '4 without fanout' '3 in a re-encoded state machine' '0 unknown' \
  '28 of 28 reference registers accounted for' 'State machines: 1. New registers: 0. Facts not recorded: 0.'
expect saved 'powered stuck at one' \
  'trip_count[4] stuck at zero' 'last_press[3] no fanout'
cell=$(sed -n 's/^was_moving = \(.* (FLOP\/Q)\)$/\1/p' saved)
expect saved "was_moving_too = $cell"
grep -q '^armed ~ .* (FLOP/Q)$' saved || fail "armed is not inverted"
grep -q '^floor\[0\] = .* (FLOP/Q)$' saved || fail "floor[0] is in no cell"
grep -q '^state\[2\] machine of .* (FLOP/Q): 000>00001 ' saved || fail "no codes of the state machine"

run log "kpt_load kpt.xml; kpt_show -o loaded; kpt_save again.xml"
cmp saved loaded || fail "a loaded database says something else"
cmp kpt.xml again.xml || fail "a loaded database is saved otherwise"

# Without a technology registers keep their names, through the hierarchy too.
run log "read_verilog $source; kpt_track -top $top; synth -top $top; kpt_stage; kpt_show -o hierarchy"
expect log '0 unknown' '28 of 28 reference registers accounted for'
expect hierarchy 'button[3].b.lamp = button[3].b.lamp' 'floor[1] = floor[1]'

# Each map says which pass made its registers what they are, and in which stage; a file keeps that.
[ "$(grep -c '<transformation ' kpt.xml)" -eq "$(grep -c '<attribute name="stage" value="kpt">' kpt.xml)" ] ||
  fail "not every map has its stage"
for pass in 'opt_dff' 'opt_clean'; do
  grep -q "<attribute name=\"pass\" value=\"$pass\">" kpt.xml || fail "no map of $pass"
done
