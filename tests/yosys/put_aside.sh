# Designs that are saved and come back: what was done in between is not recorded for them.
. "${0%/*}/flow.sh"

cat >pair.v <<'V'
module pair(input clk, input a, input b, output y);
  reg p, q;
  always @(posedge clk) begin
    p <= a;
    q <= b & p;
  end
  assign y = ~q;
endmodule
V
cat >other.v <<'V'
module other(input clk, input a, output reg p);
  always @(posedge clk) p <= a;
endmodule
V
start="read_verilog pair.v; hierarchy -top pair; proc; kpt_track"

# as_before passes: both registers exist unchanged.
as_before() {
  run log "$start; $1; kpt_stage; kpt_show -o shown"
  expect shown 'p = p' 'q = q'
  expect log '2 of 2 reference registers accounted for' \
    'State machines: 0. New registers: 0. Facts not recorded: 0.'
}

as_before "design -push-copy; connect -set p 1'b0; opt; design -pop"
as_before "design -save kept; connect -set p 1'b0; opt; design -load kept"
as_before 'design -push; read_verilog other.v; proc; opt; design -pop; opt'
as_before 'design -stash kept; read_verilog other.v; proc; opt; design -load kept; opt'
as_before 'design -save kept; design -reset; read_verilog other.v; proc; opt; design -load kept'
as_before 'design -push; design -push; read_verilog other.v; design -pop; design -pop'
as_before 'rename pair another; design -save kept; design -load kept; opt'

# A register that is lost in one copy exists in the other.
run log "$start; techmap; design -save kept; abc -dff; opt_clean; design -load kept; kpt_stage; kpt_show -o shown"
expect shown 'p = p' 'q = q'

refused 'The design that is followed is stored away: restore it with design -pop or -load' \
  "$start; design -push; read_verilog other.v; proc; kpt_stage"
refused 'The design that is followed is stored away: restore it with design -pop or -load' \
  "$start; design -save kept; design -reset; read_verilog pair.v; proc; kpt_stage"

# ends message passes: tracking ends with that message, and nothing can be recorded.
ends() {
  refused 'No registers are being followed: use kpt_track' "$2; kpt_stage"
  grep -qx "Warning: tracking of registers ends: $1" refused.log || { cat refused.log; fail "not told: $1"; }
}

taken='replaced the design that is followed, and no copy of it is saved'
ends "design -reset $taken" "$start; design -reset; read_verilog other.v; proc"
ends "design -load $taken" "read_verilog pair.v; proc; design -save early; kpt_track; opt; design -load early"
ends "design -pop $taken" \
  "read_verilog other.v; design -push; $start; design -pop; proc"
ends 'the top module pair is gone' "$start; delete pair; read_verilog pair.v; proc; opt"
ends 'the top module pair is gone' "$start; design -save kept; opt; design -copy-from kept pair; opt"
# A copy that was saved in an earlier stage says nothing of the registers of the next.
ends "design -load $taken" "$start; design -save kept; kpt_stage -next two; opt; design -load kept"
