# Passes after which names, or registers that vanished, would lead to wrong conclusions.
. "${0%/*}/flow.sh"

# after file passes: runs the passes; `shown` has the final output of kpt_show, and `log` the log.
after() {
  run log "read_verilog $1; hierarchy -auto-top; proc; kpt_track; $2; kpt_stage; kpt_show -o shown"
}

# An inverter moves from the data input to the readers: the net keeps its name and holds the inverse.
cat >flip.v <<'V'
module flip(input clk, input d, input a, output y, output z);
  reg q = 1'b0;
  always @(posedge clk) q <= ~d;
  assign y = ~q;
  assign z = ~q;
endmodule
V
after flip.v 'opt -nodffe -nosdff; simplemap; opt_ffinv; opt_clean'
expect shown 'q ~ q'

# The technology does not have the power-up value, so the flip-flop keeps the inverse.
cat >preset.v <<'V'
module preset(input clk, input d, output reg q);
  initial q = 1'b1;
  always @(posedge clk) q <= d;
endmodule
V
after preset.v 'simplemap; zinit; opt_clean'
grep -q '^q ~ ' shown || fail "zinit: $(cat shown)"
expect log '1 kept inverted'

# New names: by rename, by splitting, by flattening, by a copy of the design.
cat >names.v <<'V'
module half(input clk, input d, output reg q);
  always @(posedge clk) q <= d;
endmodule
module names(input clk, input [1:0] d, output [1:0] y, output z);
  reg [1:0] r;
  always @(posedge clk) r <= d;
  assign y = ~r;
  half h(.clk(clk), .d(d[0] ^ r[1]), .q(z));
endmodule
V
after names.v 'cd names; rename r other; cd ..; opt_clean'
expect shown 'r[0] = other[0]' 'r[1] = other[1]' 'h.q = h.q'
after names.v 'splitnets; opt_clean'
expect shown 'r[0] = r[0]' 'r[1] = r[1]'
after names.v 'flatten; opt_clean -purge'
expect shown 'h.q = z'
expect log '3 of 3 reference registers accounted for'
after names.v 'design -save kept; design -load kept; opt_clean'
expect log '3 kept under their name'

# Registers that become part of something else are unknown, not eliminated.
cat >shift.v <<'V'
module shift(input clk, input d, output q);
  reg [3:0] r;
  always @(posedge clk) r <= {r[2:0], d};
  assign q = r[3];
endmodule
V
after shift.v 'simplemap; shregmap -minlen 2; opt_clean'
expect log '4 unknown' '0 without fanout'

# A register that becomes the read port of a memory is still a register, and comes back with the port.
cat >memory.v <<'V'
module memory(input clk, input we, input [2:0] wa, input [2:0] ra, input [3:0] d, output reg [3:0] q);
  reg [3:0] m [7:0];
  always @(posedge clk) begin
    if (we) m[wa] <= d;
    q <= m[ra];
  end
endmodule
V
after memory.v 'opt; memory_dff; opt_clean'
expect shown 'q[0] = q[0]' 'q[3] = q[3]'
after memory.v 'opt; memory_dff; memory_collect; memory_map; opt; techmap; opt_clean'
expect shown 'q[0] = q[0]' 'q[3] = q[3]'

# A register that a memory takes for its address then drives nothing. It is unknown, not without fanout.
cat >address.v <<'V'
module address(input clk, input we, input [2:0] wa, input [2:0] ra, input [3:0] d, output [3:0] q);
  reg [3:0] m [7:0];
  reg [2:0] a;
  always @(posedge clk) begin
    if (we) m[wa] <= d;
    a <= ra;
  end
  assign q = m[a];
endmodule
V
after address.v 'opt; memory_dff; opt_clean'
expect log '3 unknown' '0 without fanout' '35 of 35 reference registers accounted for' \
  'Not counted, because reading Verilog made them for writes to memories and selected bits: 11.'

# A bit that nothing reads is without fanout, also when another pass than opt_clean removes it.
cat >narrow.v <<'V'
module narrow(input clk, input [7:0] d, output [3:0] q);
  reg [7:0] r;
  always @(posedge clk) r <= d;
  assign q = r[3:0];
endmodule
V
after narrow.v 'wreduce; opt_clean'
expect log '4 kept under their name' '4 without fanout' '0 unknown'

# After async2sync, a register with an asynchronous reset holds another value until the next edge.
cat >reset.v <<'V'
module reset(input clk, input rst, input d, output reg p, output reg q);
  always @(posedge clk or posedge rst) if (rst) p <= 0; else p <= d;
  always @(posedge clk) q <= d;
endmodule
V
after reset.v 'opt; async2sync; opt_clean'
expect log '1 kept under their name' '1 unknown' 'State machines: 0. New registers: 1. Facts not recorded: 0.' \
  'Unknown after async2sync: 1.'
expect shown 'q = q'

# When a machine is not put back into the netlist, its bits are unknown.
if [ -e "$KPT_RTL/elevator.v" ]; then
  after "$KPT_RTL/elevator.v" 'flatten; opt -nodffe -nosdff; fsm -nomap'
  expect log '3 unknown'
fi

# A register that nothing reads is without fanout, also when a pass that may make registers part of something
# else ran without effect before the pass that simplified its reader away.
cat >unread.v <<'V'
module unread(input clk, input d, output y);
  reg r;
  always @(posedge clk) r <= d;
  wire zero = 1'b0;
  assign y = d | (zero & r);
endmodule
V
run log "read_verilog unread.v; hierarchy -top unread; proc -noopt; kpt_track; proc; opt_clean; kpt_stage
         kpt_show -o shown"
expect shown 'r no fanout'
