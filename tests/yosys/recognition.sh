# Registers that abc -dff makes anew are found again by what they compute, and only those.
. "${0%/*}/flow.sh"

cat >found.v <<'V'
module found(input clk, input rst, input a, input b, output y, output z, output w);
  reg p, q, r, s, t, one;
  reg u = 1'b1, v = 1'b1;
  always @(posedge clk) begin
    p <= a & ~rst;
    q <= rst | (b ^ p);
    r <= ~rst & (a ^ q ^ r);
    s <= rst | ~(a ^ q ^ r);
    t <= t ^ p;
    one <= rst | one;
    u <= a ^ q;
    v <= a & b;
  end
  assign y = ~(q | r), z = s ^ t ^ one ^ u, w = v;
endmodule
V
source=found.v
top=found
start="read_verilog found.v; proc; kpt_track; opt; techmap; simplemap; opt_clean"
run log "$start; abc -dff; opt_clean; rename -hide w:*; rename -enumerate; kpt_stage; kpt_show -o shown; kpt_save kpt.xml
         write_rtlil gate.il"
[ "$(sed 's/[0-9]*_$/N/' shown)" = 'one = _N
p = _N
q = _N
r = _N
s ~ _N
v ~ _N' ] || fail "found: $(cat shown)"
[ "$(sed -n 's/^r = //p' shown)" = "$(sed -n 's/^s ~ //p' shown)" ] || fail "r and s are not one: $(cat shown)"
# The inverse of u has moved behind the logic that reads it, and nothing ever gives t a value.
expect log '2 unknown' '8 of 8 reference registers accounted for'
prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "unproven with the database"; }

# The designs of the other tests, machines and all.
for design in elevator fifo framer; do
  locate $design
  run log "read_verilog $source; kpt_track -top $top -audit; synth -flatten -top $top; dffunmap; simplemap; opt
           abc -dff; opt_clean; rename -hide w:*; kpt_stage; kpt_save kpt.xml; write_rtlil gate.il"
  sed -n '/^Registers of stage/,/^Following/p' log
  grep -q '^Audit: .*, 0 are false\.$' log || fail "$design: false facts"
  expect log '0 unknown'
  prove with.log gate.il kpt.xml || { tail -n 20 with.log; fail "$design: unproven with the database"; }
done
