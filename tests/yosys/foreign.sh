# A design from outside this project: every register is accounted for, the database can be read back,
# and a proof with it succeeds.
. "${0%/*}/flow.sh"
locate "$1"

run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; kpt_stage
         kpt_save kpt.xml; kpt_show -o saved; write_rtlil gate.il"
sed -n '/^Registers of stage/,/^State machines/p' log
expect log '0 unknown'
total=$(sed -n 's/^ *\([0-9]*\)  of \([0-9]*\) reference registers accounted for$/\1 \2/p' log)
[ "${total% *}" = "${total#* }" ] || fail "not all registers accounted for: $total"
[ "$(wc -l <saved)" -eq "${total#* }" ] || fail "the database lists other registers than the total"
grep -q 'Facts not recorded: 0\.' log || fail "facts were not recorded"

run log "kpt_load kpt.xml; kpt_show -o loaded"
cmp saved loaded || fail "a loaded database says something else"
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }
grep -h 'Matched\|Of those cells' with.log
