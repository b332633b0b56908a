# Registers that were merged with the bits of a state machine's code are in the machine's map.
. "${0%/*}/flow.sh"

# When the ring has a one-hot code, each of its bits has the same data input as another register.
cat >ring.v <<'V'
module ring(input clk, input go, output qa, output qb, output qc);
  (* fsm_encoding = "auto" *) reg [1:0] state;
  reg da, db, dc;
  always @(posedge clk) begin
    case (state)
      2'd0: state <= 2'd1;
      2'd1: state <= 2'd3;
      default: state <= 2'd0;
    endcase
    da <= state == 2'd3;
    db <= state == 2'd0;
    dc <= state == 2'd1;
  end
  assign qa = da & go, qb = db & go, qc = dc & go;
endmodule
V
source=ring.v
top=ring
run log "read_verilog $source; hierarchy -top $top; proc; opt -nodffe -nosdff; kpt_track; fsm; opt; simplemap; opt
         opt_clean; kpt_stage; kpt_show -o shown; kpt_save kpt.xml; write_rtlil gate.il"
expect log '3 merged into another register' '2 in a re-encoded state machine' \
  '5 of 5 reference registers accounted for' 'State machines: 1. New registers: 0. Facts not recorded: 0.'
codes='machine of da db dc: 00100>001 01001>010 10011>100'
expect shown "state[0] $codes" "state[1] $codes" "da $codes" "db $codes" "dc $codes"
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }

# Two machines that become one stand in one map, with the states in which both can be together.
cat >both.v <<'V'
module both(input clk, input rst, input go, output [2:0] is, output [2:0] js);
  (* fsm_encoding = "auto" *) reg [1:0] s;
  (* fsm_encoding = "auto" *) reg [2:0] t;
  always @(posedge clk)
    if (rst) s <= 2'd0;
    else case (s)
      2'd0: if (go) s <= 2'd1;
      2'd1: s <= go ? 2'd2 : 2'd0;
      default: s <= 2'd0;
    endcase
  always @(posedge clk)
    if (rst) t <= 3'd5;
    else case (t)
      3'd5: if (go) t <= 3'd6;
      3'd6: t <= go ? 3'd3 : 3'd5;
      default: t <= 3'd5;
    endcase
  assign is = {s == 2'd2, s == 2'd1, s == 2'd0};
  assign js = {t == 3'd3, t == 3'd6, t == 3'd5};
endmodule
V
source=both.v
top=both
run log "read_verilog $source; hierarchy -top $top; proc; opt -nodffe -nosdff; kpt_track -audit; fsm -encoding one-hot
         dffunmap; techmap; opt; simplemap; opt; abc -dff; opt_clean; kpt_stage; kpt_show -o shown; kpt_save kpt.xml
         write_rtlil gate.il"
expect log '5 in a re-encoded state machine' 'State machines: 2. New registers: 0. Facts not recorded: 0.'
grep -q '^Audit: .*, 0 are false\.$' log || fail "false: $(grep Audit log)"
[ "$(wc -l <shown)" -eq 5 ] || fail "not all registers: $(cat shown)"
[ "$(sed 's/^[^ ]* //' shown | sort -u | wc -l)" -eq 1 ] || fail "not in one map: $(cat shown)"
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }
