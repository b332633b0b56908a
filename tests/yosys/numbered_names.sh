# A name made from a number proves nothing, because one register has it now and another one later. A
# register that clk2fflogic removed stays unknown, although another register has its name again.
. "${0%/*}/flow.sh"

cat >numbered.v <<'V'
module numbered(input clk, input a, input b, output y);
  reg p, q, r, s;
  always @(posedge clk) begin
    p <= a;
    q <= b & p;
    r <= a ^ q;
    s <= b | r;
  end
  assign y = ~(q | s);
endmodule
V
run log "read_verilog numbered.v; proc; kpt_track; opt_clean; rename -hide w:*; rename -enumerate w:*; techmap
         clk2fflogic; opt_clean; rename -hide w:*; rename -enumerate w:*; kpt_stage; kpt_show -o shown"
expect log '4 unknown' '4 of 4 reference registers accounted for'
[ ! -s shown ] || fail "something is said of a lost register: $(cat shown)"

# abc -dff makes all registers anew. It finds no function for q, which never has a value, and p now has
# the number that q had.
cat >lost.v <<'V'
module lost(input clk, input a, input b, output y, output z);
  reg p;
  (* who = "q" *) reg q;
  reg n;
  always @(posedge clk) begin
    p <= a;
    q <= q ^ p;
    n <= b;
  end
  assign y = ~p, z = q ^ b ^ n;
endmodule
V
run log "read_verilog lost.v; proc; opt_clean; kpt_track; rename -hide w:*; rename -enumerate; tee -o before dump a:who
         techmap; abc -dff; opt_clean; rename -hide w:*; rename -enumerate; kpt_stage; kpt_show -o shown"
number=$(sed -n 's/.*wire \\\(_[0-9]*_\).*/\1/p' before)
[ -n "$number" ] || fail "q had no number before: $(cat before)"
grep -qxF "p = $number" shown || fail "no other register has the number of q, $number: $(cat shown)"
expect log '1 unknown' '3 of 3 reference registers accounted for'
! grep -q '^q ' shown || fail "something is said of a lost register: $(cat shown)"
