# kpt_track -audit: a fact that a simulation refutes is not recorded, and a warning names register and pass.
. "${0%/*}/flow.sh"
locate elevator

# A wrong mapping: it inverts the data of each flip-flop. After two flip-flops this does not show.
cat >wrong.v <<'V'
module \$_DFF_P_ (input D, input C, output Q);
  \$_DFF_N_ _TECHMAP_REPLACE_ (.D(~D), .C(~C), .Q(Q));
endmodule
V
cat >two.v <<'V'
module two(input clk, input rst, input d, output y);
  reg p, q = 1'b0;
  always @(posedge clk) begin
    p <= d & !rst;
    q <= p;
  end
  assign y = q;
endmodule
V
start='read_verilog two.v; proc; opt_clean'
run log "$start; kpt_track -audit; techmap; techmap -map wrong.v; kpt_stage; kpt_show -o shown"
expect log 'Warning: The audit refutes the fact about register p that dates from techmap. It is not recorded.' \
  'Audit: 1 facts hold in 256 runs of 64 cycles, 0 have no known values, 1 are false.' '1 unknown'
expect shown 'q = q'
[ "$(wc -l <shown)" -eq 1 ] || fail "recorded all the same: $(cat shown)"

# Without the audit, the fact is recorded.
run log "$start; kpt_track; techmap; techmap -map wrong.v; kpt_stage; kpt_show -o shown"
expect shown 'p = p' 'q = q'

# As a command, with its own number of runs; facts without a known value are counted.
run log "$start; kpt_track -audit; techmap; kpt_audit -runs 64 -cycles 10; kpt_stage"
expect log 'Audit: 2 facts hold in 64 runs of 10 cycles, 0 have no known values, 0 are false.'
cat >never.v <<'V'
module never(input clk, input d, output reg y);
  always @(posedge clk) y <= y ^ d;
endmodule
V
run log "read_verilog never.v; proc; kpt_track -audit; techmap; kpt_stage"
expect log 'Audit: 0 facts hold in 256 runs of 64 cycles, 1 have no known values, 0 are false.' \
  '1 kept under their name'
refused 'There is no reference netlist: use kpt_track -audit' "$start; kpt_track; kpt_audit"

# Facts of all kinds hold: the machine and its codes, constants, merged and inverted registers.
run log "read_verilog $source; kpt_track -top $top -audit; synth -flatten -top $top; zinit; opt; kpt_stage"
grep -q '^Audit: 2[0-9] facts hold in 256 runs of 64 cycles, 0 have no known values, 0 are false\.$' log ||
  { grep Audit log; fail "facts do not hold"; }
expect log 'State machines: 1. New registers: 0. Facts not recorded: 0.'

# A reset is active at edges of all clocks, also in the first cycle. So a register whose reset became
# synchronous is not blamed for a reset between two edges.
cat >pulse.v <<'V'
module pulse(input clk, input other, input arst, input d, output reg q, output reg y, output reg z);
  always @(negedge clk or posedge arst) if (arst) q <= 1'b1; else q <= d;
  always @(posedge clk) y <= q;
  always @(posedge other) z <= ~q;
endmodule
V
run log "read_verilog pulse.v; proc; kpt_track -audit; zinit -all; async2sync; kpt_stage"
expect log 'Audit: 2 facts hold in 256 runs of 64 cycles, 0 have no known values, 0 are false.'

# The next stage has a reference of its own.
run log "read_verilog $source; kpt_track -top $top -audit; synth -flatten -top $top -run :fine
         kpt_stage -next two; synth -run fine:; kpt_stage"
[ "$(grep -c '^Audit: .*, 0 are false\.$' log)" -eq 2 ] || fail "not audited twice"

# An audit does not change the netlist either, however early it runs.
flow="synth -flatten -top $top -run :fine"
run log "read_verilog $source; kpt_track -top $top -audit; $flow; kpt_stage -next two; synth -run fine:; $cells
         kpt_stage; write_rtlil on.il"
yosys -q -p "read_verilog $source; $flow; synth -run fine:; $cells; write_rtlil off.il" >log 2>&1 || fail "yosys alone"
cmp on.il off.il || fail "the audit changed the netlist"
