# kpt_prove does the whole proof in one command; without the database the same netlist stays unproven.
. "${0%/*}/flow.sh"

# proven log design netlist database [option]: gold is the source.
proven() {
  locate "$2"
  run "$1" "read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold
            read_rtlil $3; rename $top gate; read_verilog $KPT_RTL/cells.v; kpt_load $4; kpt_prove ${5:-} gold gate"
}

for design in elevator fifo framer mult16; do
  locate $design
  run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; rename -hide w:*; kpt_stage
           kpt_save kpt.xml; write_rtlil gate.il"
  proven log $design gate.il kpt.xml -assert
  grep -q '^Facts: [1-9][0-9]* proved, 0 claimed, 0 refuted, .* Unproven cells: 0\.$' log || fail "$design: $(grep Facts log)"
done

# Into cells of a technology.
locate elevator
run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; $cells; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
proven log elevator gate.il kpt.xml -assert

# A wrong database proves nothing; without -assert that is told, and is no error.
sed -e 's/>floor\[0\]</>other</' -e 's/>moving</>floor[0]</' -e 's/>other</>moving</' kpt.xml >wrong.xml
proven log elevator gate.il wrong.xml
grep -q '^Facts: 0 proved, [1-9][0-9]* claimed, ' log || fail "proven all the same"
sources="read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold; read_rtlil gate.il; rename $top gate"
refused 'Found [1-9][0-9]* unproven' "$sources; read_verilog $KPT_RTL/cells.v; kpt_load wrong.xml; kpt_prove -assert gold gate"
# As far as the proof goes is the user's choice.
run log "$sources; read_verilog $KPT_RTL/cells.v; kpt_load kpt.xml; kpt_prove -simple 1 -induct 1 gold gate"
grep -q 'EQUIV_INDUCT' log || fail "not proven by induction"

refused 'Give two modules' "kpt_prove gold"
refused 'There is no module gold' "kpt_prove gold gate"
refused 'There is no keypoint database called kpt' "$sources; kpt_prove gold gate"
refused 'There is a module equiv already' "$sources; kpt_load kpt.xml; read_verilog $KPT_RTL/cells.v; kpt_prove gold gate; kpt_prove gold gate"

# In the netlist, an output is a register itself; in the source it is a choice among equal values.
cat >choice.v <<'V'
module choice(input clk, input [1:0] s, input [3:0] d, output reg [3:0] y, output [3:0] same);
  reg [3:0] r;
  always @(posedge clk) r <= r ^ d;
  always @* case (s)
    2'd0: y = r;
    2'd1: y = {2{r[1:0]}};
    default: y = {d[1:0], r[1:0]};
  endcase
  assign same = r;
endmodule
V
run log "read_verilog choice.v; hierarchy -top choice; proc; kpt_track -top choice; synth -flatten -top choice
         rename -hide w:*; kpt_stage; kpt_save kpt.xml; write_rtlil gate.il"
run log "read_verilog choice.v; proc; rename choice gold; read_rtlil gate.il; rename choice gate; kpt_load kpt.xml
         kpt_prove -assert gold gate"

# Gates of both sides that compute the same are merged before the solver is asked, which would take many
# minutes to show that two multipliers are equal.
cat >product.v <<'V'
module product(input clk, input [11:0] a, input [11:0] b, output reg [23:0] p);
  reg [11:0] x, y;
  always @(posedge clk) begin
    x <= a; y <= b; p <= x * y;
  end
endmodule
V
run log "read_verilog product.v; kpt_track -top product; synth -flatten -top product; rename -hide w:*; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
(
  ulimit -t 60
  run log "read_verilog product.v; proc; rename product gold; read_rtlil gate.il; rename product gate; kpt_load kpt.xml
           kpt_prove -assert gold gate"
)
# What nothing reads is compared all the same: that the netlist is always in a state with a code.
locate elevator
run log "read_verilog $source; kpt_track -top $top; synth -flatten -top $top; rename -hide w:*; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
run log "read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold; read_rtlil gate.il; rename $top gate
         kpt_load kpt.xml; kpt_prove -assert gold gate; select -assert-any equiv/w:kpt:code:* %ci1 equiv/t:\$equiv %i"

# A net without a driver may have any value there, too.
cat >nothing.v <<'V'
module nothing(input clk, input d, output reg q);
  wire driven;
  always @(posedge clk) q <= d & driven;
endmodule
V
run log "read_verilog nothing.v; proc; kpt_track -top nothing; opt_clean; kpt_stage; kpt_save kpt.xml"
sed 's/d & driven/1'"'"'b0/' nothing.v >zero.v
run log "read_verilog nothing.v; proc; rename nothing gold; read_verilog zero.v; proc; rename nothing gate
         kpt_load kpt.xml; kpt_prove gold gate"
expect log 'Unproven: q.'

# What the source leaves open, synthesis chooses; settled before, it has nothing to choose.
cat >open.v <<'V'
module open(input clk, input [1:0] s, input [1:0] wa, input we, input d, output reg q, output m);
  reg [1:0] r;
  reg [3:0] words [3:0];
  always @(posedge clk) begin
    case (s)
      2'd0: r <= {d, q};
      2'd1: r <= {q, d};
      default: r <= 2'bxx;
    endcase
    q <= r[0] ^ r[1];
    if (we) words[wa] <= {r, s};
  end
  assign m = ^words[s];
endmodule
V
run log "read_verilog open.v; kpt_track -settle -top open; synth -flatten -top open; rename -hide w:*; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
expect log '19 of 19 reference registers accounted for'
run log "read_verilog open.v; proc; rename open gold; read_rtlil gate.il; rename open gate; kpt_load kpt.xml
         kpt_prove -assert gold gate"

# The machine of this netlist is in no state after a reset. A code of zeros does not stand for it.
cat >coded.v <<'V'
module coded(input clk, input rst, input go, output idle, output [1:0] at);
  reg [2:0] s;
  always @(posedge clk or posedge rst)
    if (rst) s <= 3'b000;
    else case (s)
      3'b000: if (go) s <= 3'b101;
      3'b101: s <= go ? 3'b110 : 3'b011;
      3'b110: s <= go ? 3'b000 : 3'b111;
      3'b011: s <= go ? 3'b111 : 3'b101;
      3'b111: s <= 3'b000;
    endcase
  assign idle = s == 3'b000;
  assign at = {s == 3'b110, s == 3'b101};
endmodule
V
run log "read_verilog coded.v; kpt_track -top coded; synth -flatten -top coded; rename -hide w:*; kpt_stage
         kpt_save kpt.xml; write_rtlil gate.il"
expect log '3 in a re-encoded state machine'
[ "$(grep -c '_DFF_PP1_' gate.il)" -eq 1 ] || fail "not one register is set by the reset"
sed 's/_DFF_PP1_/_DFF_PP0_/' gate.il >wrong.il
run log "read_verilog coded.v; proc; rename coded gold; read_rtlil gate.il; rename coded gate; kpt_load kpt.xml
         kpt_prove -assert gold gate"
run log "read_verilog coded.v; proc; rename coded gold; read_rtlil wrong.il; rename coded gate; kpt_load kpt.xml
         kpt_prove gold gate"
expect log 'Unproven: s[0].'

# What is proven first is no longer assumed, so a first proof of the easy values must not take away what
# the others need: that never is 0, and that u and v are equal.
cat >order.v <<'V'
module order(input clk, input a, input b, input e, input f, output r);
  reg never, u, v, s;
  always @(posedge clk) begin
    never <= 1'b0;
    if (e) u <= a;
    if (e) v <= a;
    if (f) s <= never ^ u ^ v ^ b;
  end
  assign r = s & u;
endmodule
V
run log "read_verilog order.v; kpt_track -top order; synth -flatten -top order; kpt_stage; kpt_save kpt.xml
         write_rtlil gate.il"
run log "read_verilog order.v; proc; rename order gold; read_rtlil gate.il; rename order gate; kpt_load kpt.xml
         kpt_prove -assert gold gate"

# A register of the netlist that no fact names may be a copy of one. The proof compares it as well.
cat >copy.v <<'V'
module copy(input clk, input e, input f, input a, input b, output reg q, output reg p);
  reg r;
  always @(posedge clk) begin
    if (e) r <= a;
    if (f) q <= r ^ b;
    if (f) p <= r & b;
  end
endmodule
V
run log "read_verilog copy.v; proc; kpt_track; opt_clean; kpt_stage; kpt_save kpt.xml"
sed -e 's/reg r;/reg r, c;/' -e 's/if (e) r <= a;/& if (e) c <= a;/' -e 's/q <= r/q <= c/' copy.v >copied.v
# copied file option: proves the netlist in the file.
copied() {
  run log "read_verilog copy.v; proc; rename copy gold; read_verilog $1; proc; simplemap; rename copy gate; kpt_load kpt.xml
           kpt_prove ${2:-} gold gate"
}
for option in '' -undef; do
  copied copied.v $option
  expect log '1 more registers of the netlist seem to be copies, and are compared as well.'
  grep -q 'Unproven cells: 0\.$' log || fail "a copy is unproven: $(grep Facts log)"
done
for edit in 's/c <= a/c <= ~a/' 's/if (e) c/if (e | b) c/'; do
  sed "$edit" copied.v >wrong.v
  copied wrong.v
  expect log 'Unproven: q.'
done

# From r = 1 at power-up, this netlist is not reset. But once it has agreed with the source for two clocks, r is
# 0. So one step has to prove it, and more steps are for who asks for them.
cat >reset.v <<'V'
module reset(input clk, input rst, input d, output reg r);
  always @(posedge clk)
    if (rst) r <= 1'b0;
    else r <= r & d;
endmodule
V
run log "read_verilog reset.v; proc; kpt_track; opt_clean; kpt_stage; kpt_save kpt.xml"
sed -e 's/if (rst) r <= 1.b0/if (rst) r <= r \& d/' -e "s/else r <= r & d/else r <= 1'b0/" reset.v >wrong.v
reset="read_verilog reset.v; proc; rename reset gold; read_verilog wrong.v; proc; rename reset gate; kpt_load kpt.xml"
for option in '' -undef; do
  run log "$reset; kpt_prove $option gold gate"
  expect log 'Unproven: r.'
done
run log "$reset; kpt_prove -induct 2 gold gate"
grep -q 'Unproven cells: 0\.$' log || fail "this netlist is no example: $(grep Facts log)"
