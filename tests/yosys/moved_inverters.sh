# The inverters of a chain of registers move in one pass. A register that kept its inverter then has the
# input of its old inverter as its data input, because the register before it moved.
. "${0%/*}/flow.sh"
source=chain.v
top=chain

cat >chain.v <<'V'
module chain(input clk, input d, output y);
  reg p = 1'b0, q = 1'b0, r = 1'b1;
  always @(posedge clk) begin
    p <= d;
    q <= p;
    r <= q;
  end
  assign y = r;
endmodule
V
run log "read_verilog chain.v; proc; kpt_track; techmap; opt; dfflegalize -cell \$_DFF_P_ 1; opt_ffinv
         kpt_stage; kpt_show -o shown; kpt_save kpt.xml; write_rtlil gate.il"
expect shown 'p = p' 'q = q' 'r = r'
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }
