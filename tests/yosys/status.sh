# The result of a proof is recorded: each fact is proved, claimed or refuted, and a file keeps that.
. "${0%/*}/flow.sh"
locate elevator

# status log netlist database: proves as much as it can, and records the result.
status() {
  run "$1" "read_rtlil $2; rename $top gate; read_verilog $KPT_RTL/cells.v; proc; flatten gate; design -stash gate
            read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold; design -stash gold
            design -copy-from gold gold; design -copy-from gate gate
            kpt_load $3; kpt_apply -encfile codes gold gate; pmuxtree; setundef -zero; async2sync
            equiv_make -encfile codes gold gate equiv; hierarchy -top equiv; equiv_induct -seq 1
            kpt_status; kpt_save read.xml"
}

run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $cells; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
status log gate.il kpt.xml
expect log 'Facts: 21 proved, 0 claimed, 0 refuted, 4 not in the proof. Unproven cells: 0.'
[ "$(grep -c '<attribute name="status" value="proved">' read.xml)" -eq 21 ] || fail "the file does not keep it"

# A fact whose cells are unproven stays claimed, and so do the facts that were proven with its help.
sed -e 's/>floor\[0\]</>other</' -e 's/>moving</>floor[0]</' -e 's/>other</>moving</' kpt.xml >swapped.xml
status log gate.il swapped.xml
expect log 'Unproven: moving.' 'Unproven: floor[0].'
grep -q '^Facts: 0 proved, 21 claimed, 0 refuted, 4 not in the proof\. Unproven cells: [1-9]' log ||
  { grep Facts log; fail "proved with the help of what is false"; }
grep -q '<attribute name="note" value="unproven">' read.xml || fail "the file does not tell what is unproven"
grep -q '<attribute name="note" value="proven if what is unproven holds">' read.xml ||
  fail "the file does not tell what was proven with the help of the unproven"

# A proof by induction does not look at power-up values; the status does.
cat >holds.v <<'V'
module holds(input clk, output y);
  reg q = 1'b0;
  always @(posedge clk) q <= q;
  assign y = q;
endmodule
V
source=holds.v
top=holds
run log "read_verilog holds.v; proc; kpt_track; opt; kpt_stage; kpt_save kpt.xml; write_rtlil gate.il"
status log gate.il kpt.xml
expect log 'Facts: 1 proved, 0 claimed, 0 refuted, 0 not in the proof. Unproven cells: 0.'
sed 's/stuck_at_zero/stuck_at_one/' kpt.xml >wrong.xml
status log gate.il wrong.xml
expect log 'Warning: Refuted by power-up values: q.'
grep -q '^Facts: 0 proved, 0 claimed, 1 refuted, ' log || fail "not refuted"

refused 'There is no module other' "read_verilog holds.v; proc; kpt_track; kpt_stage; kpt_status other"
refused 'There is no keypoint database called kpt' "read_verilog holds.v; kpt_status holds"
