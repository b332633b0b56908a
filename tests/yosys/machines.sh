# State machines on various paths through synthesis are recorded completely, and proven.
. "${0%/*}/flow.sh"
source=$(cd "${0%/*}" && pwd)/machines.v
top=machines

# way passes machines line...: a flow, the number of machines that it records, and lines of kpt_show.
way() {
  passes=$1 count=$2
  shift 2
  run log "read_verilog $source; hierarchy -top $top; kpt_track; $passes; kpt_stage; kpt_show -o shown
           kpt_save kpt.xml; flatten; write_rtlil gate.il"
  expect log '6 in a re-encoded state machine' '8 of 8 reference registers accounted for' \
    "State machines: $count. New registers: 0. Facts not recorded: 0."
  expect shown "$@"
  prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven: $passes"; }
}

way "synth -flatten -top $top" 2 \
  'g.state[2] machine of g.state[0] d2 g.state[2] g.state[3]: 000>0001 110>0010 101>0100 011>1000'
way "synth -top $top" 2 \
  'g.state[2] machine of g.state[0] g.done g.state[2] g.state[3]: 000>0001 110>0010 101>0100 011>1000'

alone='proc; flatten; opt -nodffe -nosdff'
way "$alone; fsm -encoding binary; opt; memory; opt; techmap; opt" 2 \
  'f.state[0] machine of f.state[0] f.state[1]: 000>00 110>01 101>10 011>11'
way "$alone; fsm -expand -encoding binary; opt; techmap; opt" 2 \
  'f.state[0] machine of f.state[0] f.state[1]: 000>00 110>01 101>10 011>11'
# A machine that is re-encoded a second time.
way "$alone; fsm -encoding binary; synth -flatten -top $top" 2 \
  'f.state[0] machine of f.state[0] f.state[1] d1 f.state[3]: 000>0001 110>0100 101>0010 011>1000'

# Flip-flops that keep the inverse of a state bit.
run log "read_verilog $source; hierarchy -top $top; kpt_track; $alone; fsm -encoding binary; techmap; opt; opt_clean
         setattr -set init 2'b11 w:f.state; zinit; opt_clean; kpt_stage; kpt_show -o shown
         kpt_save kpt.xml; write_rtlil gate.il"
grep -q '^f\.state\[0\] machine of .*flip.*: 000>11 110>10 101>01 011>00$' shown || fail "not inverted: $(cat shown)"
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven: inverted state bits"; }

# The stage ends while the machines are not in the netlist, so their registers are unknown.
run log "read_verilog $source; hierarchy -top $top; kpt_track; $alone; fsm -encoding binary; opt_clean; fsm -nomap
         kpt_stage"
expect log '6 unknown' '8 of 8 reference registers accounted for'
