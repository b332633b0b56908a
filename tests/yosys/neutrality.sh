# Tracking does not change the netlist: it is the same, byte for byte, with tracking and without the plugin.
. "${0%/*}/flow.sh"
locate "$1"

# same what flow: compares a synthesis with and without tracking.
same() {
  run log "read_verilog $source; kpt_track -top $top; $2; kpt_stage; write_rtlil on.il"
  yosys -q -p "read_verilog $source; $2; write_rtlil off.il" >log 2>&1 || fail "yosys without the plugin"
  cmp on.il off.il || fail "$1: tracking changed the netlist"
}

same synth "synth -flatten -top $top"
# Newer versions of Yosys make cells of $display, which async2sync does not know with several triggers.
quiet='delete t:$print t:$check'
if [ "$top" != des ]; then
  same cells "synth -flatten -top $top; $quiet; async2sync; $cells"
  same vendor "synth_ice40 -top $top"
  same recognised "synth -flatten -top $top; $quiet; async2sync; dffunmap; simplemap; opt; abc -dff; opt_clean; abc; opt"
fi
