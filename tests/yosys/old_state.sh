# The register of a state machine's old code stays beside the new code. A technology without preset
# inverts it, and then it is lost. The recorded codes are those of the source.
. "${0%/*}/flow.sh"
source=lives.v
top=lives

cat >lives.v <<'V'
module lives(input clk, input rst, input go, output [2:0] is, output [1:0] s);
  (* fsm_encoding = "auto" *) reg [1:0] state = 2'd3;
  always @(posedge clk)
    if (rst) state <= 2'd0;
    else
      case (state)
        2'd0: if (go) state <= 2'd3;
        2'd3: state <= go ? 2'd1 : 2'd0;
        default: state <= 2'd0;
      endcase
  assign is = {state == 2'd1, state == 2'd3, state == 2'd0};
  reg [1:0] copy;
  always @(posedge clk) copy <= state ^ {2{go}};
  assign s = copy;
endmodule
V
run log "read_verilog lives.v; hierarchy -top lives; kpt_track; synth -run coarse:fine -flatten; techmap
         dfflegalize -cell \$_DFF_P_ 0; abc -dff; kpt_stage; kpt_show -o shown"
expect shown 'state[0] machine of is[0] is[2] is[1]: 00>001 01>010 11>100'
