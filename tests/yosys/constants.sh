# A second stage finds a constant for a register that the first stage inverted. The composition gives the
# value of the reference register, and so does a flow that is recorded in one stage.
. "${0%/*}/flow.sh"
source=constant.v
top=constant

# A register that starts at one and stays there. A technology without preset keeps its inverse, and the
# next passes find that the inverse is stuck at zero.
cat >constant.v <<'V'
module constant(input clk, input d, output y, output z);
  reg kept = 1'b1;
  reg one = 1'b1;
  always @(posedge clk) kept <= d;
  always @(posedge clk) one <= one;
  assign y = kept;
  assign z = one;
endmodule
V
start="read_verilog $source; proc; opt_clean; kpt_track"

run log "$start -name first; simplemap; zinit; kpt_stage -next second; opt; kpt_stage; write_rtlil gate.il
         kpt_show -name first -o inverted; kpt_show -name second -o found; kpt_compose all first second
         kpt_show -name all -o composed; kpt_save -name all all.xml"
grep -q '^z ~ ' inverted || fail "not inverted by the first stage: $(cat inverted)"
grep -q ' stuck at zero$' found || fail "no constant of the second stage: $(cat found)"
expect composed 'z stuck at one'
prove log gate.il all.xml all || { tail -n 20 log; fail "unproven by the composed stages"; }

run log "$start -name one; simplemap; zinit; opt; kpt_stage; kpt_show -name one -o one; kpt_save -name one one.xml"
expect one 'z stuck at one'
prove log gate.il one.xml one || { tail -n 20 log; fail "unproven by the flow recorded in one"; }
