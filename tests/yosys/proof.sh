# When the register names of the gate module are removed, the proof of the elevator succeeds with the
# database and not without it. A wrong database does not make a proof succeed.
. "${0%/*}/flow.sh"
locate elevator

run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $cells; rename -hide w:*; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
if prove without.log gate.il; then
  fail "nothing was left to prove without the database"
fi
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }
grep -q 'Matched 16 registers, 5 constants and 1 state machines' with.log ||
  { grep Matched with.log; fail "other registers matched"; }

# wrong what edit...: sed changes the database, and the proof with it fails.
wrong() {
  what=$1
  shift
  sed "$@" kpt.xml >wrong.xml
  ! cmp -s kpt.xml wrong.xml || fail "$what: nothing was edited"
  if prove wrong.log gate.il wrong.xml; then
    fail "$what: proven all the same"
  fi
  echo "$what: $(grep -o 'ERROR: Found [0-9]* unproven' wrong.log | cut -c8-)"
}

wrong 'a swapped pair' -e 's/>floor\[0\]</>other</' -e 's/>moving</>floor[0]</' -e 's/>other</>moving</'
wrong 'a wrong constant' 's/elim_type="stuck_at_one"/elim_type="stuck_at_zero"/'
wrong 'a wrong polarity' 's/\(<\/*\)inverts>/\1noninverts>/'
wrong 'a wrong state code' '/<state index="3">/,/<\/reference>/s/index="0"> 1 /index="0"> 0 /'

# A warning names each register that a module lacks.
run log "read_rtlil gate.il; rename $top gate; kpt_load kpt.xml; kpt_apply -encfile codes gate gate"
expect log 'Warning: Module gate has no register armed.'

# A warning names each register whose net is gone: opt_clean between flatten and kpt_apply deletes the nets
# that are named after pins.
run log "read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold; read_rtlil gate.il
         rename $top gate; read_verilog $KPT_RTL/cells.v; proc; flatten gate; opt_clean -purge gate
         kpt_load kpt.xml; kpt_apply -encfile codes gold gate"
expect log 'Warning: Module gate has no net for register armed.'
grep -q '^Warning: Module gate has no net for state bit ' log || fail "not told of state bits"
missing=$(sed -n 's/^Matched .* \([0-9]*\) are missing\.$/\1/p' log)
[ "$missing" -eq "$(grep -c '^Warning: Module gate has no ' log)" ] || fail "$missing are missing, other warnings"

# A machine two of whose states have one code is left out of a proof, with a warning.
sed '/<transformed>/,/<\/transformed>/s/\(<value index="[0-9]*">\) 1 /\1 0 /' kpt.xml >same.xml
! cmp -s kpt.xml same.xml || fail "no code was edited"
run log "read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold; read_rtlil gate.il
         rename $top gate; read_verilog $KPT_RTL/cells.v; proc; flatten gate
         kpt_load same.xml; kpt_apply -encfile codes gold gate"
expect log 'Warning: Two states of a state machine have the same code in the netlist, so the proof leaves the machine out.'
grep -q ' and 0 state machines;' log || fail "the machine is in the proof"
[ ! -s codes ] || fail "codes were written"
