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
