# kpt_prove -undef proves a netlist that was synthesised with the freedom of undefined values, and no netlist
# that is wrong where the source is defined.
. "${0%/*}/flow.sh"

cat >free.v <<'V'
module free(input clk, input [1:0] s, input [2:0] one, input d, input e, input [1:0] wa, input we,
            output reg q, output held, output [1:0] y, output reg p, output m);
  reg hold, last, lasted, idle, idled;
  reg [2:0] words [2:0];
  wire either = s[1] ? 1'bx : d;
  always @(posedge clk) begin
    q <= either & we | ~we & either;
    if (e) hold <= s[0] ? 1'bx : q;
    (* parallel_case *)
    case (1'b1)
      one[0]: p <= d;
      one[1]: p <= ~d;
      one[2]: p <= e;
      default: p <= 1'bx;
    endcase
    last <= 1'bx;
    lasted <= last & ~e;
    if (d) idle <= 1'bx;
    if (e) idled <= idle;
    if (we) words[wa] <= {s, d};
  end
  assign held = hold ^ lasted ^ (idled & we);
  assign y = e ? {q, hold} : 2'bxx;
  assign m = e ? ^words[wa] : 1'bx;
endmodule
V

# synthesised file source: a netlist with the names of its source.
synthesised() {
  run log "read_verilog $2; hierarchy -top $top; proc; kpt_track -top $top; synth -flatten -top $top; kpt_stage
           kpt_save $1.xml; write_rtlil $1.il"
}

# proofs log read [option]: proves what the commands read.
proofs() {
  run "$1" "read_verilog $source; hierarchy -top $top; proc; flatten; rename $top gold
            $2; rename $top gate; kpt_load kpt.xml; kpt_prove ${3:-} gold gate"
}

source=free.v
top=free
synthesised kpt free.v
proofs log 'read_rtlil kpt.il' -undef
grep -q '^Facts: 13 proved, 0 claimed, 0 refuted, .* Unproven cells: 0\.$' log || fail "unproven: $(grep Facts log)"
grep -q '^The source leaves [1-9][0-9]* of the compared values to the netlist, always or at times\.$' log ||
  fail "not told of choices"
# It did choose.
proofs log 'read_rtlil kpt.il'
grep -q 'Unproven cells: [1-9]' log || fail "proven without the option: the netlist has no choices to take"
# Without the names as well.
run log "read_verilog free.v; hierarchy -top free; proc; kpt_track -top free; synth -flatten -top free
         rename -hide w:*; kpt_stage; kpt_save kpt.xml; write_rtlil hidden.il"
proofs log 'read_rtlil hidden.il' -undef
grep -q 'Unproven cells: 0\.$' log || fail "unproven without names: $(grep Facts log)"
synthesised kpt free.v

# wrong what edit: synthesises an edited source, and its proof fails with the database of the right one.
wrong() {
  sed "$2" free.v >wrong.v
  ! cmp -s free.v wrong.v || fail "$1: nothing was edited"
  synthesised wrong wrong.v
  proofs wrong.log 'read_rtlil wrong.il' -undef
  grep -q 'Unproven cells: [1-9]' wrong.log || fail "$1: proven all the same"
}
wrong 'another value where it is defined' 's/1.bx : d;/1'"'"'bx : ~d;/'
wrong 'a choice in more cases' 's/= s\[1\] ? 1.bx : d;/= s[0] ^ d;/'
wrong 'outputs in another order' 's/{q, hold}/{hold, q}/'
wrong 'another case' 's/p <= ~d;/p <= d;/'
wrong 'a register that does not hold' 's/if (e) hold/hold/'
wrong 'another value in a memory' 's/<= {s, d};/<= {s, e};/'
wrong 'another function' 's/\^words/|words/'
wrong 'undefined logic that is surely 0' 's/last & ~e/last | e/'
wrong 'a choice that a reader reads otherwise' '
  s/reg hold,/reg flag, hold,/
  s/if (e) hold/if (e) flag <= s[0]; if (e) hold/
  s/held = hold/held = flag ^ hold/'

# What a netlist itself leaves undefined may become any value.
cat >closed.v <<'V'
module closed(input clk, input d, input e, output reg q, output never);
  always @(posedge clk) q <= e ? 1'b0 : d;
  assign never = d === 1'bx;
endmodule
V
source=closed.v
top=closed
run log "read_verilog closed.v; hierarchy -top closed; proc; kpt_track; opt_clean; kpt_stage; kpt_save kpt.xml"
sed 's/d === 1.bx/1'"'"'b0/' closed.v >right.v
proofs log 'read_verilog right.v; proc' -undef
grep -q 'Unproven cells: 0\.$' log || fail "a comparison with an undefined constant is true: $(grep Facts log)"
sed 's/1.b0 : d/1'"'"'bx : d/' right.v >open.v
proofs log 'read_verilog open.v; proc' -undef
expect log 'Unproven: q.'
sed 's/d === 1.bx/1'"'"'b1/' closed.v >always.v
proofs log 'read_verilog always.v; proc' -undef
grep -q 'Unproven cells: [1-9]' log || fail "a comparison with an undefined constant may be true"

# A loop of undefined logic ends, and counts as defined.
cat >loop.v <<'V'
module loop(input clk, input d, input e, output reg q);
  wire a, b;
  assign a = e ? 1'bx : b;
  assign b = a & d;
  always @(posedge clk) q <= b;
endmodule
V
source=loop.v
top=loop
run log "read_verilog loop.v; hierarchy -top loop; proc; kpt_track; opt_clean; kpt_stage; kpt_save kpt.xml"
proofs log 'read_verilog loop.v; proc' -undef
grep -q '^Facts: ' log || fail "no end"

# The state is undefined when two parallel cases are active. The netlist then goes to a state without a code.
cat >machine.v <<'V'
module machine(input clk, input rst, input go, input [2:0] one, input d, output reg q, output at, output reg [1:0] y);
  reg [2:0] s;
  reg k;
  assign at = s == 3'd0;
  always @(posedge clk) begin
    k <= d;
    if (rst) s <= 3'd0;
    else case (s)
      3'd0: if (go)
        (* parallel_case *)
        case (1'b1)
          one[0]: s <= 3'd3;
          one[1]: s <= 3'd5;
          one[2]: s <= 3'd6;
        endcase
      3'd3: s <= d ? 3'd5 : 3'd0;
      3'd5: s <= go ? 3'd6 : 3'd3;
      3'd6: s <= 3'd0;
      default: s <= 3'bx;
    endcase
    if (rst) q <= 1'b0;
    else if (s == 3'd3 || s == 3'd6) q <= d ^ k;
    case (s)
      3'd0: y <= {d, k};
      3'd3: y <= {k, q};
      3'd5: y <= 2'b10;
      default: y <= 2'bx;
    endcase
  end
endmodule
V
source=machine.v
top=machine
# In the netlist, the machine as the database knows it, and a source that has the edit.
machine() {
  sed "$2" machine.v >edited.v
  run log "read_verilog edited.v; hierarchy -top machine; proc; kpt_track -top machine; synth -flatten -top machine
           rename -hide w:*; kpt_stage; kpt_save kpt.xml; write_rtlil gate.il"
  expect log '3 in a re-encoded state machine'
  proofs "$1" 'read_rtlil gate.il' -undef
}
machine log ''
grep -q '^Facts: 5 proved, 0 claimed, 0 refuted, .* Unproven cells: 0\.$' log || fail "machine: $(grep Facts log)"
for edit in "s/if (rst) s <= 3'd0/if (rst) s <= 3'd3/" "s/one\[1\]: s <= 3'd5/one[1]: s <= 3'd6/" "s/go ? 3'd6/d ? 3'd6/" \
            "s/at = s == 3'd0/at = s == 3'd6/" 's/else if (s == 3/else if (d | s == 3/' 's/{d, k}/{k, k}/'; do
  machine wrong.log "$edit"
  cmp -s machine.v edited.v && fail "nothing was edited: $edit"
  grep -q 'Unproven cells: [1-9]' wrong.log || fail "proven all the same: $edit"
done

# A choice between the constants, and an output that is never defined and that holds itself.
cat >never.v <<'V'
module never(input clk, input d, input e, input g, output reg idle, output reg q, output reg k);
  reg hold;
  wire open = e ? 1'bx : d;
  always @(posedge clk) begin
    if (d) idle <= 1'bx;
    q <= open ? 1'b1 : 1'b0;
    hold <= d ^ k;
    if (g) k <= open ? 1'b0 : hold;
  end
endmodule
V
source=never.v
top=never
synthesised kpt never.v
proofs log 'read_rtlil kpt.il' -undef
grep -q 'Unproven cells: 0\.$' log || fail "a choice between constants, or one that holds itself: $(grep Facts log)"
